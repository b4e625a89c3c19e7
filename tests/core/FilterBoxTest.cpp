// Scripts as a host gets them: texts each time, items once in a process.
#include "core/FilterBox.h"

#include <gmock/gmock.h>

#include "platform/component/ComObject.h"
#include "storage/KvPrivateStorage.h"

namespace {

using platform::ComPtr;
using testing::ElementsAre;
using testing::IsEmpty;

class ScriptHost final : public platform::ComObject<ScriptHost, IAnimHostScript> {
 public:
  std::vector<std::string> taken;
  std::vector<std::string> items;

  HRESULT STDMETHODCALLTYPE TakeScript(const char* name, const char* text) override {
    taken.push_back(std::string(name) + ": " + text);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RunItem(const char* name, const char* item) override {
    items.push_back(std::string(name) + ": " + item);
    return E_FAIL;
  }
};

class Scripts {
 public:
  KvMemoryStorage storage{1024};

  Scripts& With(const char* name, const std::string& text) {
    IKvStorage* const folder = storage.OpenStorage("Scripts", OpenModeReadWrite, false, false);
    IKvStream* const stream = folder->CreateStream(name, OpenModeReadWrite);
    stream->Write(text.data(), static_cast<unsigned>(text.size()));
    stream->Close();
    folder->Close();
    return *this;
  }
};

// In one test, since the process remembers.
TEST(FilterBoxTest, GivesEachScriptAndRunsItOnce) {
  Scripts scripts;
  scripts.With("First.Page", "one\r\n\r\ntwo\nthree").With("First.seq", "s\r\n").With("abc", "x");
  const auto host = ComPtr<ScriptHost>::Attach(new ScriptHost);
  { const FilterBox box(host.Get(), &scripts.storage, nullptr); }
  EXPECT_THAT(host->taken, IsEmpty()) << "there are no words yet";
  scripts.With("color.strings", "red\tRed");
  { const FilterBox box(host.Get(), &scripts.storage, "First.Page"); }
  EXPECT_THAT(host->taken, ElementsAre("color.strings: red\tRed",
                                       "First.Page: one\r\n\r\ntwo\nthree", "First.seq: s\r\n"));
  EXPECT_THAT(host->items, ElementsAre("First.Page: one", "First.Page: two", "First.Page: three",
                                       "First.seq: s"));
  host->taken.clear();
  host->items.clear();
  { const FilterBox box(host.Get(), &scripts.storage, "First.Page"); }
  EXPECT_THAT(host->taken, ElementsAre("First.Page: one\r\n\r\ntwo\nthree", "First.seq: s\r\n"));
  EXPECT_THAT(host->items, IsEmpty());
  { const FilterBox box(host.Get(), &scripts.storage, "abc", "Another"); }
  EXPECT_THAT(host->items, ElementsAre("Another: x")) << "too short a name for a twin";
  { const FilterBox box(host.Get(), &scripts.storage, "abc"); }
  EXPECT_THAT(host->items, ElementsAre("Another: x", "abc: x")) << "names count, not streams";
}

TEST(FilterBoxTest, DoesNothingWithoutHostStorageOrStream) {
  const auto host = ComPtr<ScriptHost>::Attach(new ScriptHost);
  KvMemoryStorage empty{1024};
  EXPECT_TRUE(FilterBox(host.Get(), &empty, "Missing.Page").IsBound());
  FilterBox(host.Get(), nullptr, "Missing.Page");
  EXPECT_THAT(host->taken, IsEmpty());
  EXPECT_FALSE(FilterBox(nullptr, &empty, "Missing.Page").IsBound());
}

}  // namespace
