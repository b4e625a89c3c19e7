#include "host/ChainTexts.h"

#include <cstring>
#include <optional>
#include <string_view>

#include "base/PercentText.h"
#include "core/ChainText.h"
#include "filters/text/FontChoice.h"
#include "filters/text/PictureSign.h"
#include "host/ChainCheck.h"
#include "host/Texts.h"
#include "imageio/ImageFile.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFont = "Font";
constexpr std::string_view kPicture = "Picture";
constexpr std::string_view kText = "Text";

// Where the value of a key lies, as the filters find it.
struct Place {
  std::size_t start, length;
};

std::optional<Place> PlaceOfValue(std::string_view parameters, std::string_view key) {
  const std::size_t found = parameters.find(std::string(key).append("="));
  if (found == std::string_view::npos) return std::nullopt;
  const std::size_t start = found + key.size() + 1;
  const std::size_t end = std::min(parameters.find(',', start), parameters.size());
  return Place{start, end - start};
}

bool HasTextKey(const FilterEntry& entry, std::string_view key) {
  if (!entry.row) return false;
  for (const ParameterDescription& row : entry.row->describe()) {
    if (row.kind == ParameterKind::Text && row.key == key) return true;
  }
  return false;
}

// Gives the chain with the parameters that `rewrite` makes of each item's, called with the item and
// its number from 1.
template <class Rewrite>
ChainText Rewritten(const ChainText& chain, Rewrite rewrite) {
  ChainText result = chain;
  std::size_t from = 0;
  int number = 0;
  for (const ChainTextItem& item :
       SplitChainText(chain.text.c_str(), chain.open.c_str(), chain.close.c_str())) {
    // The name alone may stand in other items' parameters as well.
    const std::string front = item.name + chain.open;
    from = result.text.find(front + item.parameters + chain.close, from) + front.size();
    const std::string parameters = rewrite(item, ++number);
    result.text.replace(from, item.parameters.size(), parameters);
    from += parameters.size();
  }
  return result;
}

using Warn = std::function<void(const std::string&)>;

class Completion {
 public:
  Completion(const ChainText& chain, const std::vector<FilterEntry>& filters,
             const fs::path& folder, const Warn& warn)
      : chain_(chain), filters_(filters), folder_(folder), warn_(warn) {}

  ChainText Run() {
    return Rewritten(chain_, [this](const ChainTextItem& item, int number) {
      number_ = number;
      name_ = item.name;
      return Completed(item);
    });
  }

 private:
  std::string Completed(const ChainTextItem& item) const {
    std::string parameters = item.parameters;
    const FilterEntry* const entry = FindFilter(filters_, item.name);
    if (!entry) return parameters;
    if (HasTextKey(*entry, kFont)) CheckFont(parameters);
    const auto place = PlaceOfValue(parameters, kPicture);
    if (!place || place->length == 0 || !HasTextKey(*entry, kPicture)) return parameters;
    const std::string given = base::PercentDecode(parameters.substr(place->start, place->length));
    return parameters.replace(place->start, place->length, base::PercentEncode(FullPath(given)));
  }

  void CheckFont(const std::string& parameters) const {
    const auto place = PlaceOfValue(parameters, kFont);
    if (!place) return;
    const std::string family = base::PercentDecode(parameters.substr(place->start, place->length));
    const text::FamilyChoice choice = text::ChooseFamily(family);
    if (!choice.isSubstitute || !warn_) return;
    warn_(Where() + "the font \"" + family + "\" is not there, taking \"" + choice.family + '"');
  }

  // Of a picture whose head can be read.
  std::string FullPath(const std::string& given) const {
    const std::string full = Utf8Of(folder_ / PathOf(given));
    try {
      text::CheckSignPath(full);
      const imageio::ImageReader reader(PathOf(full));
    } catch (const text::SignError& error) {
      throw ChainError(Where() + given + ": " + error.what(), {number_, 0, 0, name_});
    } catch (const imageio::ImageError& error) {
      throw ChainError(Where() + given + ": " + error.what(), {number_, 0, 0, name_});
    }
    return full;
  }

  std::string Where() const {
    return "chain item " + std::to_string(number_) + " (" + name_ + "): ";
  }

  const ChainText& chain_;
  const std::vector<FilterEntry>& filters_;
  const fs::path& folder_;
  const Warn& warn_;
  int number_ = 0;  // of the item at hand, from 1
  std::string name_;
};

// Whether the filter writes a text, and no picture in its place.
bool WritesText(const ChainTextItem& item, const std::vector<FilterEntry>& filters) {
  const FilterEntry* const entry = FindFilter(filters, item.name);
  if (!entry || !HasTextKey(*entry, kText)) return false;
  const auto picture = PlaceOfValue(item.parameters, kPicture);
  return !picture || picture->length == 0;
}

std::string WithValue(std::string parameters, std::string_view key, const std::string& value) {
  if (const auto place = PlaceOfValue(parameters, key)) {
    return parameters.replace(place->start, place->length, value);
  }
  if (!parameters.empty()) parameters += ',';
  return parameters.append(key).append("=").append(value);
}

}  // namespace

ChainText WithTexts(const ChainText& chain, const std::vector<FilterEntry>& filters,
                    const std::vector<std::string>& texts) {
  auto next = texts.begin();
  const ChainText filled = Rewritten(chain, [&](const ChainTextItem& item, int) {
    const bool isTaken = next != texts.end() && WritesText(item, filters);
    return isTaken ? WithValue(item.parameters, kText, base::PercentEncode(*next++))
                   : item.parameters;
  });
  if (next == texts.end()) return filled;
  throw ChainError("no filter of the chain writes the text \"" + *next +
                   "\": ZNFilter.Text.1() at its end would");
}

ChainText WithFullPaths(const ChainText& chain, const std::vector<FilterEntry>& filters,
                        const fs::path& folder, const Warn& warn) {
  return Completion(chain, filters, folder, warn).Run();
}

}  // namespace host
