// fxbox-desk: opens the window.
#include <cstring>
#include <iostream>

#include "component/Fxbox4.h"
#include "desk/DeskWindow.h"
#include "host/ComponentRuntime.h"
#include "platform/Services.h"
#include "platform/WorkerPool.h"
#include "program/Messages.h"

namespace {

constexpr char kHelp[] = R"(Shows what the filters of fxbox make of a picture.

Usage: fxbox-desk [OPTIONS] [PICTURE|BOX::NAME|CHAIN]...

Opens the first picture, with the chain of a .chain file if one is named; further pictures are at
hand in the menu. A chain alone waits for its picture.

Options:
  -h,--help      Print this help
  --version      Print the version
  --export FILE  Where "Export again" writes, without asking
  --tell         Say on standard output what is shown, for programs that watch
)";

// False when the program has to end at once, with *status.
bool TakeArguments(const std::vector<std::string>& arguments, desk::DeskOptions& options,
                   int& status) {
  status = program::kDone;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "-h" || argument == "--help") {
      std::cout << kHelp;
      return false;
    }
    if (argument == "--version") {
      std::cout << "fxbox-desk " FXBOX_VERSION "\n";
      return false;
    }
    if (argument == "--tell") {
      options.tells = true;
    } else if (argument == "--export" && i + 1 < arguments.size()) {
      options.exportFile = arguments[++i];
    } else if (argument.starts_with("--")) {
      std::cerr << "fxbox-desk: " << argument << ": wrong use (fxbox-desk --help tells more)\n";
      status = program::kWrongUse;
      return false;
    } else {
      options.files.push_back(argument);
    }
  }
  return true;
}

int Run(const desk::DeskOptions& options) {
  const host::ComponentRuntime runtime;
  const auto pool = platform::ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool);
  FxboxSetWorkers(pool.Get());
  int status = program::kDone;
  {
    desk::DeskWindow window(options);
    if (window.Open()) {
      while (window.IsOpen() && FxboxPumpEvents(TRUE) == S_OK) {
      }
    } else {
      std::cerr << "fxbox-desk: no window can be opened here (fxbox log tells why)\n";
      status = program::kSomeFailed;
    }
  }
  FxboxSetWorkers(nullptr);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const platform::Services& services = platform::CurrentServices();
  services.terminal->Start(std::cout, std::cerr);
  desk::DeskOptions options;
  options.state = services.process->StateFolder() / "fxbox-desk";
  int status = 0;
  if (!TakeArguments(services.terminal->Arguments(argc, argv), options, status)) return status;
  try {
    return Run(options);
  } catch (const std::exception& error) {
    std::cerr << "fxbox-desk: " << error.what() << '\n';
    return program::kSomeFailed;
  }
}
