// The filter that does nothing.
#pragma once

#include "core/PdibFilter.h"

extern const FilterClass kNullClass;

class CNullFilter final : public CPdibFilter {
 public:
  explicit CNullFilter(const FilterClass& row) : CPdibFilter(row) {}

  bool IsDirty() override { return false; }
  void Commit() override {}
  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int flag) override;
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

  static std::vector<ParameterDescription> Describe() { return {}; }

 private:
  std::optional<RowReach> Reach() override { return RowReach(); }
  std::optional<base::RowView> Lend(int width, int height) override {
    return LendBorrowed(width, height);
  }
};
