// fxbox text-key: any text as a parameter of a chain text.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "base/PercentText.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

struct TextKeyOptions {
  std::vector<std::string> lines;
  std::string key = "Text";
};

constexpr char kExamples[] = R"text(Examples:
  fxbox text-key "Größe, 2 m"
      prints Text=Gr%C3%B6%C3%9Fe%2C%202%20m
  fxbox text-key "Summer" "in the hills"
      two lines
  fxbox apply -c "ZNFilter.Text.1($(fxbox text-key "Größe"))" -o out.png photo.jpg)text";

int PrintKey(const TextKeyOptions& options) {
  std::string text;
  for (const std::string& line : options.lines) {
    if (&line != &options.lines.front()) text += '\n';
    text += line;
  }
  std::cout << options.key << '=' << base::PercentEncode(text) << '\n';
  return kDone;
}

}  // namespace

void AddTextKeyCommand(const Command& program) {
  const auto options = std::make_shared<TextKeyOptions>();
  const Command command = program.Add("text-key", "Write any text as a parameter of a chain text");
  command.Take("LINE", options->lines, "The text, each argument a line").Required();
  command.Take("--key TEXT", options->key, "The parameter: Text, Font or Picture")
      .OneOf({"Text", "Font", "Picture"})
      .ShowDefault();
  command.Footer(kExamples);
  command.Runs([options] { return PrintKey(*options); });
}

}  // namespace program
