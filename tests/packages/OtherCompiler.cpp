// A host in C++ for a compiler of the other family: its tables of virtual functions on one side,
// those of the module on the other. It lives without that family's run-time libraries.
#include <component/Fxbox4.h>
#include <core/AnimChain.h>
#include <core/AnimInterfaces.h>
#include <stdio.h>
#include <string.h>

namespace {

constexpr int kWidth = 6;
constexpr int kHeight = 5;

BYTE ByteAt(int y, int i) {
  return static_cast<BYTE>(13 * i + 29 * y);
}

class Source final : public IAnimFilterDestCallsThis {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
    const bool isKnown =
        memcmp(&iid, &kIid, sizeof iid) == 0 || memcmp(&iid, &IID_IUnknown, sizeof iid) == 0;
    *result = isKnown ? this : nullptr;
    if (isKnown) AddRef();
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override {
    for (int y = 0; y < height; ++y) {
      for (int i = 0; i < 3 * width; ++i) {
        colourRows[destY + y][3 * destX + i] = ByteAt(srcY + y, 3 * srcX + i);
      }
      memset(maskRows[destY + y] + destX, 0, static_cast<size_t>(width));
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetAbort(bool) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Prepare(bool*, int*, bool) override {
    if (!destination) return S_OK;
    destination->SetPictureSize(kWidth, kHeight);
    destination->SetExtent(kWidth, kHeight);
    destination->SetOffset(0, 0);
    return destination->SetTargetSize(kWidth, kHeight);
  }
  HRESULT STDMETHODCALLTYPE GetInfo(int*, int*, int*, int*, int*, int*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* given) override {
    destination = nullptr;  // not counted
    if (!given) return S_OK;
    const HRESULT status = given->QueryInterface(IAnimFilterSrcCallsThis::kIid,
                                                 reinterpret_cast<void**>(&destination));
    if (destination) destination->Release();
    return status;
  }
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t) override { return S_OK; }

  ULONG references = 1;

 private:
  IAnimFilterSrcCallsThis* destination = nullptr;
};

bool PullsInverted(IAnimFilterDestCallsThis& tail) {
  BYTE colour[kHeight][3 * kWidth], mask[kHeight][kWidth];
  BYTE* colourRows[kHeight];
  BYTE* maskRows[kHeight];
  for (int y = 0; y < kHeight; ++y) {
    colourRows[y] = colour[y];
    maskRows[y] = mask[y];
  }
  bool changed = false;
  int revision = 0;
  tail.Prepare(&changed, &revision, false);
  if (tail.ReadRows(0, 0, 0, 0, kWidth, kHeight, colourRows, maskRows) != S_OK) return false;
  for (int y = 0; y < kHeight; ++y) {
    for (int i = 0; i < 3 * kWidth; ++i) {
      if (colour[y][i] != 255 - ByteAt(y, i)) return false;
    }
  }
  return true;
}

int Run(Source& source, IAnimFilterCreator& creator) {
  IAnimFilterChain* chain = nullptr;
  IAnimFilterDestCallsThis* tail = nullptr;
  char text[200] = "";
  creator.CreateChain(IAnimFilterChain::kIid, reinterpret_cast<void**>(&chain));
  if (!chain) return printf("no chain\n"), 2;
  chain->SetSource(&source);
  chain->SetChainText("ZNFilter.Invert.1(Inversity=100)", "(", ")", &creator);
  chain->GetChainText(text, sizeof text, "(", ")", false);
  printf("%s\n", text);
  chain->GetAt(-1, IAnimFilterDestCallsThis::kIid, reinterpret_cast<void**>(&tail));
  const bool isRight = tail && PullsInverted(*tail);
  if (tail) tail->Release();
  chain->SetSource(nullptr);
  chain->Release();
  return isRight && strcmp(text, "ZNFilter.Invert.1(Inversity=100)") == 0 ? 0 : 3;
}

}  // namespace

int main() {
  IAnimFilterCreator* creator = nullptr;
  FxboxCreateCreator(IAnimFilterCreator::kIid, reinterpret_cast<void**>(&creator));
  if (!creator) return printf("no creator\n"), 1;
  Source source;
  const int status = Run(source, *creator);
  creator->Release();
  printf("status %d, references %lu\n", status, source.references);
  return status == 0 && source.references != 1 ? 4 : status;
}
