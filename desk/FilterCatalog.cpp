#include "desk/FilterCatalog.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>

#include "base/CodePage.h"
#include "base/KvString.h"
#include "core/AnimDialog.h"
#include "core/AnimHost.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "desk/Words.h"
#include "host/FilterFacts.h"
#include "host/FilterList.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

namespace desk {
namespace {

using platform::ComPtr;

// In the order in which they are listed.
struct Group {
  const char* key;  // of Words
  std::vector<const char*> classes;
};

const std::vector<Group>& Groups() {
  static const std::vector<Group> groups = {
      {"GROUP_TONE",
       {"Tonwert", "WhiteBlackGrey", "GradCurves", "BrightnessContrast", "Optimize", "Exposure",
        "Exposure2", "Histo"}},
      {"GROUP_COLOUR",
       {"HSB", "ColorTuning", "Gamma", "RGBColor", "AdoptColor", "DuoColor", "RgbMixer",
        "BlackWhiteness", "Sepia", "Invert"}},
      {"GROUP_DETAIL",
       {"UnsharpMask", "Sharpen", "Blur", "BlurGauss", "BlurSel", "Staub", "RedEye", "FindEdges",
        "Emboss"}},
      {"GROUP_PLACE",
       {"Crop", "RotCrop", "Rotate", "Scale", "Scale100", "Offset", "PrintCrop", "PrintScale",
        "PrintPad"}},
      {"GROUP_FRAME",
       {"Passpartout", "Rauchglas", "SoftFrame", "Shadow", "ImgBg", "Transparency", "InvertMask"}},
      {"GROUP_TEXT", {"Text", "WaterSign"}}};
  return groups;
}

// "ZNFilter.Sepia.1" is "Sepia".
std::string ShortName(const std::string& progId) {
  const auto from = progId.find('.');
  const auto end = progId.rfind('.');
  return from == end ? progId : progId.substr(from + 1, end - from - 1);
}

std::size_t GroupOf(const std::string& progId) {
  const std::string name = ShortName(progId);
  std::size_t index = 0;
  for (const Group& group : Groups()) {
    if (std::find(group.classes.begin(), group.classes.end(), name) != group.classes.end()) break;
    ++index;
  }
  return index;
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The words that dialogs have for keys.
class DialogWords {
 public:
  explicit DialogWords(IAnimFilterCreator& creator) {
    creator.CreateFilterDialog("ZNFilter.Sepia.1", 0, IAnimRunnable::kIid, dialog.PutVoid());
  }
  // In the code page; empty where there are none.
  std::string For(const char* key) const {
    std::array<char, 512> buffer = {};
    if (!dialog || !key) return {};
    dialog->Dispatch("Localize", reinterpret_cast<std::intptr_t>(key),
                     reinterpret_cast<std::intptr_t>(buffer.data()), buffer.size());
    return std::string(key) == buffer.data() ? "" : buffer.data();
  }

 private:
  ComPtr<IAnimRunnable> dialog;
};

// What an icon shows itself on: takes its name and picture.
class IconPage final : public platform::ComObject<IconPage, IAnimIconPage, IAnimHostPage> {
 public:
  explicit IconPage(const DialogWords& ofDialogs) : words(ofDialogs) {}

  std::shared_ptr<const MemoryPicture> picture;

  HRESULT STDMETHODCALLTYPE SetIconPicture(const char*, const void* colour, std::uint32_t,
                                           const void* mask, std::uint32_t) override {
    if (picture || !colour || !mask) return S_OK;
    auto copy = std::make_shared<MemoryPicture>("icon", static_cast<const BYTE*>(colour),
                                                static_cast<const BYTE*>(mask), 0, 0, 0, 0);
    if (copy->IsValid() && copy->MaskRows()) picture = std::move(copy);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetButtonState(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Localize(const char* key, KvString* result) override {
    if (result) *result = words.For(key);
    return S_OK;
  }

 private:
  const DialogWords& words;
};

void TakeIcon(IAnimFilterCreator& creator, const DialogWords& words, CatalogEntry& entry) {
  ComPtr<IAnimFilter> filter;
  creator.CreateFilter(entry.progId.c_str(), IAnimFilter::kIid, filter.PutVoid());
  ComPtr<IAnimFilterIcon> icon;
  if (filter) filter->CreateIcon(IAnimFilterIcon::kIid, icon.PutVoid());
  const auto link = ComPtr<IAnimLinkable>::Query(icon.Get());
  if (!link) return;
  const auto page = ComPtr<IconPage>::Attach(new IconPage(words));
  int status = 0;
  link->Link(static_cast<IAnimIconPage*>(page.Get()), &status);
  std::array<char, 256> name = {};
  icon->GetDisplayName(name.data(), static_cast<int>(name.size()));
  entry.name = base::ToUtf8(name.data());
  entry.icon = page->picture;
  link->Unlink();
}

CatalogEntry Describe(IAnimFilterCreator& creator, const DialogWords& words,
                      const host::FilterEntry& listed) {
  const host::FilterFacts facts = host::FactsOf(listed, creator);
  CatalogEntry entry;
  entry.progId = listed.progId;
  entry.gloss = facts.gloss;
  entry.preview = facts.preview;
  entry.order = listed.order;
  entry.start = base::FromUtf8(facts.defaultText.value_or(facts.newText));
  const std::size_t group = GroupOf(listed.progId);
  entry.group = Words(group < Groups().size() ? Groups()[group].key : "GROUP_MORE");
  TakeIcon(creator, words, entry);
  const std::string key = "FILTER_" + ShortName(entry.progId);
  if (const std::string ours = Words(key); ours != key) entry.name = ours;
  if (entry.name.empty()) entry.name = facts.gloss.empty() ? ShortName(entry.progId) : facts.gloss;
  return entry;
}

}  // namespace

FilterCatalog::FilterCatalog(IAnimFilterCreator& creator) {
  const DialogWords words(creator);
  for (const host::FilterEntry& listed : host::ListFilters(creator)) {
    if (ShortName(listed.progId) == "Zero") continue;
    entries.push_back(Describe(creator, words, listed));
  }
  std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
    return GroupOf(a.progId) < GroupOf(b.progId);
  });
}

const CatalogEntry* FilterCatalog::Find(const std::string& progId) const {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const CatalogEntry& entry) {
    return entry.progId == progId;
  });
  return found == entries.end() ? nullptr : &*found;
}

std::string FilterCatalog::NameOf(const std::string& progId) const {
  const CatalogEntry* const entry = Find(progId);
  return entry ? entry->name : progId;
}

std::vector<const CatalogEntry*> FilterCatalog::Search(const std::string& words) const {
  std::vector<const CatalogEntry*> found;
  for (const CatalogEntry& entry : entries) {
    const std::string all = Lower(entry.name + " " + entry.gloss + " " + entry.progId);
    std::istringstream asked(Lower(words));
    std::string word;
    bool hasAll = true;
    while (asked >> word) hasAll = hasAll && all.find(word) != std::string::npos;
    if (hasAll) found.push_back(&entry);
  }
  return found;
}

}  // namespace desk
