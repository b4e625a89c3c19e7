#include "program/FilterReference.h"

namespace program {
namespace {

std::vector<FilterFacts> OwnFacts(IAnimFilterCreator& creator) {
  std::vector<FilterFacts> all;
  for (const FilterEntry& entry : ListFilters(creator)) {
    if (entry.row) all.push_back(FactsOf(entry, creator));
  }
  return all;
}

// A bar would end the cell of a table.
std::string Cell(const std::string& text) {
  std::string cell;
  for (const char c : text) cell += c == '|' ? "\\|" : std::string(1, c);
  return cell;
}

std::string KeyTable(const FilterFacts& facts) {
  std::string text =
      "| Key | Kind | Default | Range | Meaning |\n"
      "| --- | --- | --- | --- | --- |\n";
  for (const KeyFacts& key : facts.keys) {
    text += "| `" + key.key + "` | " + key.kind + " | " + key.defaultValue.value_or("") + " | " +
            RangeText(key) + " | " + Cell(key.gloss) + " |\n";
  }
  return text + "\n";
}

// "Sepia" of "ZNFilter.Sepia.1".
std::string ShortName(const FilterFacts& facts) {
  const std::size_t start = facts.progId.find('.') + 1;
  return facts.progId.substr(start, facts.progId.rfind('.') - start);
}

std::string Section(const FilterFacts& facts) {
  std::string text = "## " + facts.progId + "\n\n";
  if (!facts.icon.empty()) text += "![](../resources/icons/" + facts.icon + ".svg)\n";
  text += facts.gloss + ". Class `" + facts.className + "`, order " + std::to_string(facts.order) +
          ".\n\n";
  const std::string name = ShortName(facts);
  text.append("![").append(name).append("](samples/").append(name).append(".jpg)\n\n");
  if (!facts.note.empty()) text += "This class is " + facts.note + ".\n\n";
  if (!facts.keys.empty()) text += KeyTable(facts);
  if (facts.defaultText) text += "Default: `" + *facts.defaultText + "`\n\n";
  if (!facts.preview.empty()) text += "Preview: " + PreviewText(facts.preview) + ".\n\n";
  if (!facts.keys.empty()) text += "Example: `" + facts.example + "`\n\n";
  return text;
}

// "CSepiaFilter" gives "Sepia".
std::string WordOf(std::string className) {
  constexpr std::string_view kEnding = "Filter";
  if (className.size() > kEnding.size() && className.ends_with(kEnding)) {
    className.resize(className.size() - kEnding.size());
  }
  const bool hasPrefix =
      className.size() > 1 && className[0] == 'C' && className[1] >= 'A' && className[1] <= 'Z';
  return hasPrefix ? className.substr(1) : className;
}

constexpr char kMadeBy[] = "<!-- Made from the class table by `make docs`; do not edit. -->\n\n";

}  // namespace

std::string FilterReference(IAnimFilterCreator& creator) {
  std::string text = "# Filters\n\n";
  text += kMadeBy;
  text +=
      "In the order of lists. A chain text names a filter and sets some of its keys:\n"
      "`ZNFilter.Sepia.1(Sepia=050)`. A key that is left out keeps its default. Ranges are those\n"
      "that the dialogs offer; the library takes any number. A chain that sorts its filters\n"
      "places lower orders first.\n\n";
  for (const FilterFacts& facts : OwnFacts(creator)) text += Section(facts);
  text.pop_back();
  return text;
}

std::string Examples(IAnimFilterCreator& creator) {
  std::string text;
  for (const FilterFacts& facts : OwnFacts(creator)) {
    text += ShortName(facts) + " " + facts.example + "\n";
  }
  return text;
}

std::string Glossary(IAnimFilterCreator& creator) {
  std::string text = "# Glossary\n\n";
  text += kMadeBy;
  text +=
      "The words that classes and files are named by, many of them German, and what they do.\n\n"
      "| Word | In English | Class | ProgID |\n| --- | --- | --- | --- |\n";
  for (const FilterFacts& facts : OwnFacts(creator)) {
    text += "| " + WordOf(facts.className) + " | " + Cell(facts.gloss) + " | `" + facts.className +
            "` | `" + facts.progId + "` |\n";
  }
  return text;
}

}  // namespace program
