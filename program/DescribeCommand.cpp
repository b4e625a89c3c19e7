// fxbox describe: the keys of one filter class.
#include <algorithm>
#include <iostream>
#include <memory>

#include "program/Commands.h"
#include "program/FilterReference.h"
#include "program/Host.h"
#include "program/Json.h"
#include "program/Messages.h"

namespace program {
namespace {

struct DescribeOptions {
  std::string progId;
  bool json = false;
};

constexpr char kExamples[] = R"(Example:
  fxbox describe ZNFilter.Sepia.1)";

constexpr char kTextHint[] =
    R"(  A text is percent-encoded UTF-8: fxbox apply --text "any text" sets Text, fxbox text-key writes
  all of them, fxbox fonts lists the families
)";

bool IsText(const KeyFacts& key) {
  return key.kind == "text";
}

const FilterEntry& Find(const std::vector<FilterEntry>& filters, const std::string& progId) {
  if (const FilterEntry* const entry = FindFilter(filters, progId)) return *entry;
  std::vector<std::string> names;
  for (const FilterEntry& entry : filters) names.push_back(entry.progId);
  throw UsageError("unknown filter " + Quoted(progId) + Suggestion(progId, names));
}

Json JsonOf(const KeyFacts& key) {
  Json json{{"key", key.key}, {"kind", key.kind}};
  json["default"] = key.defaultValue ? Json(*key.defaultValue) : Json(nullptr);
  json["least"] = HasRange(key) ? Json(key.least) : Json(nullptr);
  json["greatest"] = HasRange(key) ? Json(key.greatest) : Json(nullptr);
  json["gloss"] = key.gloss;
  return json;
}

Json JsonOf(const FilterFacts& facts) {
  Json json{{"version", kJsonVersion}, {"progId", facts.progId}};
  json["class"] = facts.className;
  json["gloss"] = facts.gloss;
  json["note"] = facts.note;
  json["preview"] = facts.preview.empty() ? Json(nullptr) : Json(facts.preview);
  json["order"] = facts.order;
  json["defaultText"] = facts.defaultText ? Json(*facts.defaultText) : Json(nullptr);
  json["newText"] = facts.newText;
  json["keys"] = Json::array();
  for (const KeyFacts& key : facts.keys) json["keys"].push_back(JsonOf(key));
  json["example"] = facts.example;
  return json;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text + "  ";
}

void PrintKeys(const std::vector<KeyFacts>& keys) {
  std::size_t widest = 0;
  for (const KeyFacts& key : keys) widest = std::max(widest, key.key.size());
  for (const KeyFacts& key : keys) {
    std::cout << "  " << Padded(key.key, widest) << Padded(key.kind, 12)
              << Padded(RangeText(key), 12)
              << Padded("default " + key.defaultValue.value_or("none"), 14) << key.gloss << '\n';
  }
}

void Print(const FilterFacts& facts) {
  std::cout << facts.progId << '\n';
  if (!facts.gloss.empty()) std::cout << "  " << facts.gloss << '\n';
  if (!facts.note.empty()) std::cout << "  " << facts.note << '\n';
  std::cout << "  order " << facts.order << '\n';
  if (facts.defaultText) std::cout << "Default text\n  " << *facts.defaultText << '\n';
  if (!facts.keys.empty()) {
    std::cout << "Keys (the range is what dialogs offer; any number is taken)\n";
    PrintKeys(facts.keys);
    if (std::any_of(facts.keys.begin(), facts.keys.end(), IsText)) std::cout << kTextHint;
  }
  if (!facts.preview.empty())
    std::cout << "Preview (--fit)\n  " << PreviewText(facts.preview) << '\n';
  std::cout << ForShell("Example\n  fxbox apply -c '" + facts.example + "' -o out.png photo.jpg\n");
}

int Describe(const DescribeOptions& options) {
  const auto creator = MakeCreator();
  const std::vector<FilterEntry> filters = ListFilters(*creator.Get());
  const FilterFacts facts = FactsOf(Find(filters, ChainTextOf(options.progId)), *creator.Get());
  if (options.json) {
    PrintJson(JsonOf(facts));
  } else {
    Print(facts);
  }
  return kDone;
}

}  // namespace

void AddDescribeCommand(const Command& program) {
  const auto options = std::make_shared<DescribeOptions>();
  const Command command = program.Add("describe", "Tell the keys of a filter");
  command.Take("PROGID", options->progId, "Name of the filter").Required();
  command.Flag("--json", options->json, "As JSON");
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return Describe(*options); });
}

}  // namespace program
