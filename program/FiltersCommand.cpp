// fxbox filters: every filter class that the library knows or finds registered.
#include <iostream>
#include <memory>

#include "program/Commands.h"
#include "program/FilterReference.h"
#include "program/Host.h"
#include "program/Json.h"
#include "program/Messages.h"

namespace program {
namespace {

struct FiltersOptions {
  bool json = false;
  bool markdown = false;
  bool glossary = false;
  bool examples = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox filters
  fxbox filters --json
  fxbox describe ZNFilter.Sepia.1      tells more about one of them)";

const char* StateName(const FilterEntry& entry) {
  if (!entry.row) return "other module";
  return "built";
}

Json JsonOf(const FilterEntry& entry) {
  Json json{{"progId", base::ToUtf8(entry.progId)}};
  json["gloss"] = entry.row ? JsonText(entry.row->gloss) : Json(nullptr);
  json["class"] = entry.row ? JsonText(entry.row->className) : Json(nullptr);
  json["order"] = entry.order;
  json["state"] = StateName(entry);
  const auto text = DefaultTextOf(entry);
  json["defaultText"] = text ? Json(*text) : Json(nullptr);
  return json;
}

void PrintEntry(const FilterEntry& entry) {
  std::string name = base::ToUtf8(entry.progId);
  name.resize(std::max<std::size_t>(name.size() + 2, 32), ' ');
  std::string gloss = entry.row ? base::ToUtf8(entry.row->gloss) : "class of another module";
  std::cout << name << gloss << ", order " << entry.order << '\n';
  if (const auto text = DefaultTextOf(entry)) std::cout << "    " << *text << '\n';
}

int ListAll(const FiltersOptions& options) {
  const auto creator = MakeCreator();
  if (options.markdown) {
    std::cout << FilterReference(*creator.Get());
  } else if (options.glossary) {
    std::cout << Glossary(*creator.Get());
  } else if (options.examples) {
    std::cout << Examples(*creator.Get());
  } else if (options.json) {
    Json list = Json::array();
    for (const FilterEntry& entry : ListFilters(*creator.Get())) list.push_back(JsonOf(entry));
    PrintJson(list);
  } else {
    for (const FilterEntry& entry : ListFilters(*creator.Get())) PrintEntry(entry);
  }
  return kDone;
}

}  // namespace

void AddFiltersCommand(const Command& program) {
  const auto options = std::make_shared<FiltersOptions>();
  const Command command = program.Add("filters", "List all filters");
  command.Flag("--json", options->json, "As JSON");
  // For the project's own documents, and so not in the help.
  command.Flag("--markdown", options->markdown).Hide();
  command.Flag("--glossary", options->glossary).Hide();
  command.Flag("--examples", options->examples).Hide();
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return ListAll(*options); });
}

}  // namespace program
