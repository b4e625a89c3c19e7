// The icon object of every filter class, filled from the class table.
#pragma once

#include "base/KvString.h"
#include "core/AnimIcon.h"
#include "core/FilterClass.h"
#include "platform/component/ComObject.h"

class CFilterIcon final : public platform::ComObject<CFilterIcon, IAnimFilterIcon, IAnimLinkable> {
 public:
  explicit CFilterIcon(const FilterClass& classRow) : row(classRow) {}

  HRESULT STDMETHODCALLTYPE IconCall1(std::intptr_t a, std::intptr_t b) override;
  HRESULT STDMETHODCALLTYPE GetLabel(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetLongLabel(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE IconCall4() override;
  HRESULT STDMETHODCALLTYPE GetAttribute(const char* name, char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE GetDisplayName(char* buffer, int size) override;
  KvString* STDMETHODCALLTYPE GetIconName(KvString* result) override;
  KvString* STDMETHODCALLTYPE GetNameKey(KvString* result) override;
  bool STDMETHODCALLTYPE IsDefaultActive() override;

  HRESULT STDMETHODCALLTYPE Link(IUnknown* host, int* status) override;
  HRESULT STDMETHODCALLTYPE Unlink() override;

 private:
  void TakeName(IUnknown* host);
  void ShowPictures(IUnknown* host) const;

  const FilterClass& row;
  KvString displayName;
  bool isActive = true;
};
