// A third party's module from its registration to its removal. The test is a host that links the
// library itself. Whoever runs it compares the registry before and after.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objbase.h>

#include <algorithm>
#include <string>
#include <vector>

#include "component/Fxbox4.h"
#include "core/AnimChain.h"
#include "core/AnimInterfaces.h"
#include "platform/Services.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "tests/component/CreatorNames.h"

namespace {

using platform::ComPtr;
using testing::ElementsAre;

constexpr char kSwap[] = "ThirdParty.Swap.1";

int CallModule(const char* function) {
  int status = -1;
  const auto failure =
      platform::CurrentServices().modules->Call(FXBOX_THIRD_PARTY_MODULE, function, status);
  EXPECT_FALSE(failure.has_value()) << *failure;
  return status;
}

ComPtr<IAnimFilterCreator> NewCreator() {
  ComPtr<IAnimFilterCreator> creator;
  EXPECT_EQ(S_OK, FxboxCreateCreator(IAnimFilterCreator::kIid, creator.PutVoid()));
  return creator;
}

// One row of two pixels.
class Source final : public platform::ComObject<Source, IAnimFilterDestCallsThis> {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int, int width, int height,
                                     BYTE** colourRows, BYTE** maskRows) override {
    constexpr BYTE kPixels[] = {1, 2, 3, 10, 20, 30};
    for (int i = 0; i < height; ++i) {
      std::copy_n(kPixels + 3 * srcX, 3 * width, colourRows[destY + i] + 3 * destX);
      std::fill_n(maskRows[destY + i] + destX, width, BYTE{0});
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetAbort(bool) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Prepare(bool*, int*, bool) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetInfo(int*, int*, int*, int*, int*, int*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t) override { return S_OK; }
};

// Pulls one row through a chain of this text.
std::vector<int> Pull(IAnimFilterCreator& creator, const char* text) {
  ComPtr<IAnimFilterChain> chain;
  EXPECT_EQ(S_OK, creator.CreateChain(IAnimFilterChain::kIid, chain.PutVoid()));
  const auto source = ComPtr<Source>::Attach(new Source);
  chain->SetSource(source.Get());
  chain->SetChainText(text, "(", ")", &creator);
  int count = 0;
  chain->GetCount(&count);
  ComPtr<IAnimFilterDestCallsThis> tail;
  chain->GetAt(count - 1, IAnimFilterDestCallsThis::kIid, tail.PutVoid());
  if (!tail) return {};
  bool changed = false;
  int revision = -1;
  tail->Prepare(&changed, &revision, true);
  BYTE colour[6] = {};
  BYTE mask[2] = {};
  BYTE* colourRow = colour;
  BYTE* maskRow = mask;
  EXPECT_EQ(S_OK, tail->ReadRows(0, 0, 0, 0, 2, 1, &colourRow, &maskRow));
  tail.Reset();
  chain->RemoveAll();
  return {colour, colour + 6};
}

struct ThirdParty : testing::Test {
  void SetUp() override { CoInitialize(nullptr); }
  void TearDown() override {
    CallModule("DllUnregisterServer");
    CoUninitialize();
  }
};

TEST_F(ThirdParty, ComesAndGoesWithItsRegistration) {
  EXPECT_THAT(component_test::NamesOf(*NewCreator().Get()), testing::Not(testing::Contains(kSwap)));

  ASSERT_EQ(S_OK, CallModule("DllRegisterServer"));
  {
    const auto creator = NewCreator();
    const std::vector<std::string> names = component_test::NamesOf(*creator.Get());
    const auto found = std::find(names.begin(), names.end(), kSwap);
    ASSERT_NE(names.end(), found);
    EXPECT_EQ("ZNFilter.Optimize.1", found[-1]);
    EXPECT_EQ("ZNFilter.HSB.1", found[1]);
    EXPECT_THAT(Pull(*creator.Get(), "ThirdParty.Swap.1()ZNFilter.Zero.1()"),
                ElementsAre(3, 2, 1, 30, 20, 10));
    EXPECT_THAT(Pull(*creator.Get(), "ThirdParty.Swap.1()ZNFilter.Invert.1(Inversity=100)"),
                ElementsAre(252, 253, 254, 225, 235, 245));
    CoFreeUnusedLibraries();
    EXPECT_THAT(Pull(*creator.Get(), "ThirdParty.Swap.1()"), ElementsAre(3, 2, 1, 30, 20, 10));
  }
  CoFreeUnusedLibraries();

  ASSERT_EQ(S_OK, CallModule("DllUnregisterServer"));
  const auto creator = NewCreator();
  EXPECT_THAT(component_test::NamesOf(*creator.Get()), testing::Not(testing::Contains(kSwap)));
  EXPECT_THAT(Pull(*creator.Get(), "ThirdParty.Swap.1()ZNFilter.Zero.1()"),
              ElementsAre(1, 2, 3, 10, 20, 30));
}

}  // namespace
