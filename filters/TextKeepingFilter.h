// The filter of a class that has no picture work yet: a stored chain survives it unchanged.
#pragma once

#include <string>

#include "core/PdibFilter.h"

extern const FilterClass kWaterSignClass, kTextClass;

// Keeps the text that it is given, whole, hands it out again, and passes rows through.
class CTextKeepingFilter final : public CPdibFilter {
 public:
  explicit CTextKeepingFilter(const FilterClass& row) : CPdibFilter(row) {}

  bool IsDirty() override;
  void Commit() override;
  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int flag) override;
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

  static std::vector<ParameterDescription> Describe() { return {}; }

 private:
  std::string pending;
  std::string active;
  bool committed = false;  // a new object counts as changed
};
