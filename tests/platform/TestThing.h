// A small component class for tests.
#pragma once

#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

namespace testing_support {

struct INumber : IUnknown {
  static constexpr IID kIid = base::Guid("{6B1D3D0E-52D6-4C0B-9C9B-0B1E6B1E0001}");
  virtual HRESULT STDMETHODCALLTYPE GetNumber(int* number) = 0;

 protected:
  ~INumber() = default;
};

struct ISettable : IUnknown {
  static constexpr IID kIid = base::Guid("{6B1D3D0E-52D6-4C0B-9C9B-0B1E6B1E0002}");
  virtual HRESULT STDMETHODCALLTYPE SetNumber(int number) = 0;

 protected:
  ~ISettable() = default;
};

// Calls `gone`, when there is one, at its end.
class Thing final : public platform::ComObject<Thing, INumber, ISettable> {
 public:
  explicit Thing(int start, void (*atEnd)() = nullptr) : value(start), gone(atEnd) {}
  ~Thing() {
    if (gone) gone();
  }

  HRESULT STDMETHODCALLTYPE GetNumber(int* number) override {
    *number = value;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetNumber(int number) override {
    value = number;
    return S_OK;
  }

 private:
  int value;
  void (*gone)();
};

inline int NumberOf(const platform::ComPtr<INumber>& thing) {
  int number = -1;
  if (thing) thing->GetNumber(&number);
  return number;
}

// The class that TestModule serves, whose objects start with kModuleNumber.
inline constexpr CLSID kModuleClass = base::Guid("{6B1D3D0E-52D6-4C0B-9C9B-0B1E6B1E0010}");
inline constexpr int kModuleNumber = 77;

}  // namespace testing_support
