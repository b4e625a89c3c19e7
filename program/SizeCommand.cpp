// fxbox size: the size of the result, without rows.
#include <CLI/CLI.hpp>
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

void AddSizeCommand(CLI::App& program, Action& action) {
  const auto options = std::make_shared<SizeOptions>();
  CLI::App* const command =
      program.add_subcommand("size", "Print the size of the result for a picture of size WxH");
  AddChainOptions(*command, options->chain);
  command->add_option("SIZE", options->size, "Size of the picture, WxH")->required()->type_name("");
  command
      ->add_option("--target", options->target, "Full-resolution size WxH to tell (default: SIZE)")
      ->type_name("WxH");
  command->add_option("--zoom", options->zoom, "Tell the filters this zoom")
      ->check(CLI::Range(0.0001, 10000.0))
      ->type_name("Z");
  command->footer(ForShell(kExamples));
  command->callback([options, &action] { action = [options] { return PrintSize(*options); }; });
}

}  // namespace program
