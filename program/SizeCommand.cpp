// fxbox size: the size of the result, without rows.
#include <iostream>
#include <memory>

#include "program/Arguments.h"
#include "program/ChainOptions.h"
#include "program/Commands.h"
#include "program/Messages.h"

namespace program {
namespace {

struct SizeOptions {
  ChainOptions chain;
  std::string size;
  std::optional<std::string> target;
  std::optional<double> zoom;
};

constexpr char kExamples[] = R"(Example:
  fxbox size -c 'ZNFilter.Scale100.1(HorizontalProz=50,VerticalProz=50)' 6000x4000)";

int PrintSize(const SizeOptions& options) {
  const Size size = ParseSize(options.size, "SIZE");
  const Size target = options.target ? ParseSize(*options.target, "--target") : size;
  const auto creator = MakeCreator();
  const ChainText chain = TakeChain(options.chain, *creator.Get());
  Pipeline pipeline(*creator.Get(), MakeBlankSource(size, target, options.zoom));
  pipeline.SetText(chain);
  const Size result = pipeline.Settle();
  std::cout << result.width << 'x' << result.height << '\n';
  return kDone;
}

}  // namespace

void AddSizeCommand(const Command& program) {
  const auto options = std::make_shared<SizeOptions>();
  const Command command =
      program.Add("size", "Print the size of the result for a picture of size WxH");
  AddChainOptions(command, options->chain);
  command.Take("SIZE", options->size, "Size of the picture, WxH").Required();
  command.Take("--target WxH", options->target, "Full-resolution size WxH to tell (default: SIZE)");
  command.Take("--zoom Z", options->zoom, "Tell the filters this zoom").Between(0.0001, 10000.0);
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return PrintSize(*options); });
}

}  // namespace program
