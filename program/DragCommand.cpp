// fxbox drag: the texts that stand for chains on the clipboard and in drags.
#include <iostream>
#include <memory>

#include "base/CodePage.h"
#include "core/DragText.h"
#include "platform/Services.h"
#include "program/ChainOptions.h"
#include "program/Commands.h"
#include "program/Messages.h"
#include "program/StandardStreams.h"

namespace program {
namespace {

struct DragOptions {
  ChainOptions chain;
  std::string second;
  bool isReading = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox drag 'ZNFilter.Sepia.1(Sepia=050)' --second 'Old paper' > dragged.txt
  fxbox drag --read < mail.txt
      prints the chain on the first line and what came along with it behind that)";

int PrintDragText(const DragOptions& options) {
  const auto creator = MakeCreator();
  const ChainText chain = TakeChain(options.chain, *creator.Get());
  const std::string second = ChainTextOf(options.second);
  if (core::HoldsDragMarker(second)) throw UsageError("the second text holds a marker of drags");
  const auto text = core::MakeDragText(chain.text, second);
  if (!text) throw UsageError("a chain text that holds \"&&\" or a marker cannot be dragged");
  if (const auto failure = platform::CurrentServices().terminal->WriteOutput(*text)) {
    throw FileError("standard output", *failure);
  }
  return kDone;
}

int ReadDragged() {
  const Bytes bytes = ReadStandardInput();
  const auto content =
      core::ReadDragText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (!content) throw FileError("standard input", "there is no pair of markers in it");
  std::cout << base::ToUtf8(content->chain) << '\n';
  if (!content->second.empty()) std::cout << base::ToUtf8(content->second) << '\n';
  return kDone;
}

int RunDrag(const DragOptions& options) {
  if (!options.isReading) return PrintDragText(options);
  const ChainOptions& chain = options.chain;
  if (chain.chain || chain.file || !chain.texts.empty() || !options.second.empty()) {
    throw UsageError("--read takes the text from standard input and nothing else");
  }
  return ReadDragged();
}

}  // namespace

void AddDragCommand(const Command& program) {
  const auto options = std::make_shared<DragOptions>();
  const Command command = program.Add(
      "drag", "Print a chain as it is dragged and put on the clipboard, or read such a text");
  AddChainOptions(command, options->chain);
  command.Take("text CHAIN", options->chain.chain, "The chain text, in place of -c");
  command.Take("--second TEXT", options->second, "A text that goes along with the chain");
  command.Flag("--read", options->isReading,
               "Read a dragged text from standard input instead, with anything around it");
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return RunDrag(*options); });
}

}  // namespace program
