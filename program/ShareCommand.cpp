// fxbox share: keeps a picture in shared memory.
#include <chrono>
#include <iostream>
#include <memory>
#include <thread>

#include "base/CodePage.h"
#include "picture/SharedPicture.h"
#include "program/Commands.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "program/WholePicture.h"

namespace program {
namespace {

struct ShareOptions {
  std::string input;
  std::string id;
  bool quiet = false;
};

constexpr char kExamples[] = R"(Example:
  fxbox share photo.jpg --id holiday
      shares it until Ctrl-C; meanwhile others may run
  fxbox apply -c 'ZNFilter.Sepia.1(Sepia=050)' -o sepia.png shared:holiday
A program that uses the library finds the picture under the same id.)";

void WaitForInterrupt() {
  constexpr std::chrono::milliseconds kPause(20);
  while (!IsInterrupted()) std::this_thread::sleep_for(kPause);
}

int Share(const ShareOptions& options) {
  const std::string name = kSharedPrefix + options.id;
  const auto id = SharedIdOf(name);
  CatchInterrupts();
  auto decoded = ReadWhole(options.input);
  if (!decoded) return kInterrupted;
  const int width = decoded->Width();
  const SharedPicture picture(id->c_str(), "", decoded->Image(), decoded->Mask(), width, width, 0,
                              0);
  decoded.reset();
  if (!picture.IsValid()) throw FileError(name, "the picture cannot be shared");
  if (!picture.IsFirst()) throw FileError(name, "somebody shares a picture under this id");
  if (!options.quiet) {
    std::cout << name << "  " << width << 'x' << picture.Height() << '\n' << std::flush;
  }
  WaitForInterrupt();
  return kDone;
}

}  // namespace

void AddShareCommand(const Command& program) {
  const auto options = std::make_shared<ShareOptions>();
  const Command command =
      program.Add("share", "Keep a picture in memory that other programs share, until Ctrl-C");
  command.Take("PICTURE", options->input, "Picture file").Required();
  command.Take("--id ID", options->id, "What others find it by").Required();
  command.Flag("--quiet", options->quiet, "Print nothing but errors");
  command.Footer(kExamples);
  command.Runs([options] { return Share(*options); });
}

}  // namespace program
