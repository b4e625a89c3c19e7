// fxbox text: the chain text that the chain hands out after it took one.
#include <iostream>
#include <memory>

#include "base/CodePage.h"
#include "program/ChainOptions.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

struct TextOptions {
  ChainOptions chain;
  bool active = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox text -c 'ZNFilter.Sepia.1(Sepia=50)'
      prints ZNFilter.Sepia.1(Sepia=050)
  fxbox text -c 'ZNFilter.Text.1(Size=040)' --text 'any text' >title.chain
      the chain with the text percent-encoded
  fxbox text -f stored.chain --lenient
      what the library makes of a text that the check refuses)";

int PrintText(const TextOptions& options) {
  const auto creator = MakeCreator();
  const ChainText chain = TakeChain(options.chain, *creator.Get());
  Pipeline pipeline(*creator.Get(), MakeBlankSource({1, 1}, {1, 1}));
  pipeline.SetText(chain);
  // Active parameters are the pending ones only after the chain was prepared.
  if (options.active) pipeline.Settle();
  std::cout << base::ToUtf8(pipeline.Text(chain, options.active)) << '\n';
  return kDone;
}

}  // namespace

void AddTextCommand(const Command& program) {
  const auto options = std::make_shared<TextOptions>();
  const Command command = program.Add("text", "Print a chain text as the chain hands it out");
  AddChainOptions(command, options->chain);
  command.Flag("--active", options->active,
               "The parameters that pulls work with, instead of those that were set");
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return PrintText(*options); });
}

}  // namespace program
