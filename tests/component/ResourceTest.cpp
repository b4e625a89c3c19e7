// The module's resource: an icon of the right form for every class, its twin, and the scripts.
#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "base/Dib.h"
#include "core/AnimChain.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "filters/FilterClasses.h"
#include "platform/ModuleResource.h"
#include "platform/component/ComObject.h"
#include "tests/platform/CompoundSupport.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

// Last: its names for plain types would be in the way of ours.
#include <zlib.h>

namespace testing_support {
namespace {

HMODULE LoadTheModule() {
#ifdef _WIN32
  const HMODULE module = LoadLibraryA(FXBOX_MODULE);
#else
  const HMODULE module = dlopen(FXBOX_MODULE, RTLD_NOW | RTLD_LOCAL);
#endif
  EXPECT_NE(module, nullptr);
  return module;
}

using CreateCreator = HRESULT(STDAPICALLTYPE*)(REFIID iid, void** result);
CreateCreator FindCreateCreator() {
#ifdef _WIN32
  return reinterpret_cast<CreateCreator>(
      reinterpret_cast<void*>(GetProcAddress(LoadTheModule(), "FxboxCreateCreator")));
#else
  return reinterpret_cast<CreateCreator>(dlsym(LoadTheModule(), "FxboxCreateCreator"));
#endif
}

std::string ResourceOfTheModule() {
  const HMODULE module = LoadTheModule();
  const auto bytes = platform::FindModuleResource(module, "KvResourceStorage", "STORAGE");
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::u16string Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

// What stands behind the head of a picture, decompressed.
std::string BodyOf(const std::string& stream) {
  std::string body(100000, '\0');
  auto size = static_cast<uLongf>(body.size());
  EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(body.data()), &size,
                       reinterpret_cast<const Bytef*>(stream.data()) + 10,
                       static_cast<uLong>(stream.size() - 10)),
            Z_OK);
  body.resize(size);
  return body;
}

template <class Record>
Record RecordAt(const std::string& bytes, std::size_t offset) {
  Record record = {};
  if (offset + sizeof record <= bytes.size()) std::memcpy(&record, &bytes[offset], sizeof record);
  return record;
}

class ResourceTest : public testing::Test {
 protected:
  ResourceTest() {
    std::filesystem::copy_file(FXBOX_RESOURCE, folder / "resource");
    root = Open(folder / "resource", kReading);
    pictures = OpenStorage(root, u"Pictures", kReading);
  }
  TemporaryFolder folder;
  StoragePtr root;
  StoragePtr pictures;
};

TEST_F(ResourceTest, IsInTheModule) {
  EXPECT_TRUE(ResourceOfTheModule() == ReadFile(FXBOX_RESOURCE));
}

TEST_F(ResourceTest, HasAnIconAndItsTwinForEveryClass) {
  std::set<std::string> names = {"NullName"};
  for (const FilterClass& row : FilterClasses()) {
    if (row.iconName) names.insert(row.iconName);
  }
  std::set<std::string> seen;
  for (const std::string& name : names) {
    for (const std::string& form : {name, name + "_foc"}) {
      const std::string stream = ReadStream(pictures, Wide(form));
      ASSERT_EQ(stream.substr(0, 10), std::string("\1JPG\0\10\0\0\0\0", 10)) << form;
      const std::string body = BodyOf(stream);
      ASSERT_EQ(body.size(), 4256u);
      EXPECT_EQ(RecordAt<std::uint32_t>(body, 8), 2392u);
      const auto colour = RecordAt<base::DibHeader>(body, 12);
      const auto mask = RecordAt<base::DibHeader>(body, 12 + 2392 + 4);
      EXPECT_EQ(RecordAt<std::uint32_t>(body, 12 + 2392), 1848u);
      EXPECT_EQ(colour.biSizeImage, 2352u);
      EXPECT_EQ(colour.biBitCount, 24);
      EXPECT_EQ(mask.biSizeImage, 784u);
      EXPECT_EQ(mask.biClrUsed, 256u);
      for (const auto& header : {colour, mask}) {
        EXPECT_EQ(header.biWidth, 28);
        EXPECT_EQ(header.biHeight, 28);
      }
      // Nothing in the corner, something in the middle.
      const std::string maskRows = body.substr(12 + 2392 + 4 + 40 + 1024);
      EXPECT_EQ(maskRows.front(), '\xFF');
      EXPECT_EQ(maskRows[14 * 28 + 14], '\0');
      EXPECT_TRUE(seen.insert(body).second) << form << " looks like another one";
    }
  }
  EXPECT_EQ(NamesOf(pictures).size(), seen.size() + 3);  // and the storages of the old format
}

// A host's page that shows icons.
class IconPage final : public platform::ComObject<IconPage, IAnimIconPage> {
 public:
  std::map<std::string, std::string> shown;

  HRESULT STDMETHODCALLTYPE SetIconPicture(const char* name, const void* colour,
                                           std::uint32_t colourBytes, const void* mask,
                                           std::uint32_t maskBytes) override {
    shown[name] = std::string(static_cast<const char*>(colour), colourBytes) +
                  std::string(static_cast<const char*>(mask), maskBytes);
    return S_OK;
  }
};

TEST_F(ResourceTest, IconsShowTheirPicturesOnThePage) {
  platform::ComPtr<IAnimFilterCreator> creator;
  platform::ComPtr<IAnimFilter> filter;
  platform::ComPtr<IAnimLinkable> icon;
  ASSERT_EQ(FindCreateCreator()(IAnimFilterCreator::kIid, creator.PutVoid()), S_OK);
  ASSERT_EQ(creator->CreateFilter("ZNFilter.Sepia.1", IAnimFilter::kIid, filter.PutVoid()), S_OK);
  ASSERT_EQ(filter->CreateIcon(IAnimLinkable::kIid, icon.PutVoid()), S_OK);
  const auto page = platform::ComPtr<IconPage>::Attach(new IconPage);
  int status = -1;
  ASSERT_EQ(icon->Link(page.Get(), &status), S_OK);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(page->shown.size(), 2u);
  for (const auto& [name, bitmaps] : page->shown) {
    std::string stored = BodyOf(ReadStream(pictures, Wide(name))).substr(8);
    EXPECT_TRUE(bitmaps == stored.substr(4, 2392) + stored.substr(2392 + 8)) << name;
  }
  EXPECT_EQ(page->shown.count("icons4_sepia_foc"), 1u);
}

TEST_F(ResourceTest, HasTheScripts) {
  const StoragePtr scripts = OpenStorage(root, u"Scripts", kReading);
  for (const char16_t* name : {u"color.strings", u"GradCurvesDialog.Page"}) {
    const std::string text = ReadStream(scripts, name);
    EXPECT_TRUE(text.ends_with("\r\n"));
  }
}

}  // namespace
}  // namespace testing_support
