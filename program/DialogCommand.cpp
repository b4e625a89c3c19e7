// fxbox dialog: opens the dialog of a filter class by itself and prints its text on each change.
#include <iostream>
#include <memory>

#include "base/CodePage.h"
#include "component/Fxbox4.h"
#include "core/AnimDialog.h"
#include "core/AnimInterfaces.h"
#include "host/QuietDialogHost.h"
#include "platform/component/SystemInterfaces.h"
#include "program/Commands.h"
#include "program/Host.h"
#include "program/Messages.h"

namespace program {
namespace {

using platform::ComPtr;

struct DialogOptions {
  std::string item;
  bool once = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox dialog ZNFilter.Sepia.1
  fxbox dialog 'ZNFilter.UnsharpMask.1(Percent=150,Radius=1.5)' | while read text; do ...; done)";

// The host's side of one dialog: prints the filter's text at the end of each change.
class DialogHost final : public host::QuietDialogHost<DialogHost> {
 public:
  explicit DialogHost(ComPtr<IAnimFilterParameter> edited) : filter(std::move(edited)) {}

  bool IsClosed() const { return isClosed; }

  HRESULT STDMETHODCALLTYPE Post(int, int message, std::intptr_t a, std::intptr_t,
                                 std::intptr_t*) override {
    if (message == core::kMessageBracketEnd) Print();
    if (message == core::kMessageClosed) isClosed = true;
    if (message == core::kMessageContextHelp && a) {
      std::cerr << base::ToUtf8(reinterpret_cast<const char*>(a)) << '\n';
    }
    return S_OK;
  }

 private:
  void Print() {
    char text[4096] = "";
    filter->GetParameter(text, sizeof text);
    std::cout << base::ToUtf8(text) << std::endl;
  }

  ComPtr<IAnimFilterParameter> filter;
  bool isClosed = false;
};

// "PROGID" or "PROGID(TEXT)", taken apart and checked.
ChainText TakeItem(const std::string& item, IAnimFilterCreator& creator, std::string& progId) {
  const auto open = item.find('(');
  progId = item.substr(0, open);
  const auto filters = ListFilters(creator);
  if (!FindFilter(filters, progId)) throw UsageError(Quoted(progId) + ": there is no such filter");
  ChainText chain;
  chain.text = open == std::string::npos ? item + "()" : item;
  chain.text = CheckChainText(chain, filters, creator);
  return chain;
}

ComPtr<IAnimFilterDialog> MakeDialog(IAnimFilterCreator& creator, const std::string& progId,
                                     DialogHost& host) {
  ComPtr<IAnimFilterDialog> dialog;
  creator.CreateFilterDialog(progId.c_str(), host.AsArgument(), IAnimFilterDialog::kIid,
                             dialog.PutVoid());
  if (!dialog) throw UsageError(progId + ": this filter has no dialog");
  return dialog;
}

// Gives the dialog its filter; the point holds it until the dialog ends.
void Connect(IAnimFilterDialog& dialog, IUnknown& filter) {
  const auto points = ComPtr<IConnectionPointContainer>::Query(&dialog);
  ComPtr<IConnectionPoint> point;
  DWORD cookie = 0;
  if (points) points->FindConnectionPoint(IAnimFilterParameter::kIid, point.Put());
  if (point) point->Advise(&filter, &cookie);
}

int RunDialog(const DialogOptions& options) {
  const auto creator = MakeCreator();
  std::string progId;
  const ChainText chain = TakeItem(ChainTextOf(options.item), *creator.Get(), progId);
  ComPtr<IAnimFilterParameter> filter;
  creator->CreateFilter(progId.c_str(), IAnimFilterParameter::kIid, filter.PutVoid());
  const auto open = chain.text.find('(');
  const std::string text = chain.text.substr(open + 1, chain.text.rfind(')') - open - 1);
  if (!text.empty()) filter->SetParameter(text.c_str(), 1);
  const auto host = ComPtr<DialogHost>::Attach(new DialogHost(filter));
  const auto dialog = MakeDialog(*creator.Get(), progId, *host.Get());
  Connect(*dialog.Get(), *filter.Get());
  if (dialog->Open(0, 0, 0) != S_OK) {
    dialog->Close();
    throw FileError(progId, "no window can be opened here (fxbox log tells why)");
  }
  dialog->Show();
  while (!host->IsClosed() && FxboxPumpEvents(true) == S_OK) {
    if (options.once) dialog->Close();
  }
  return kDone;
}

}  // namespace

void AddDialogCommand(const Command& program) {
  const auto options = std::make_shared<DialogOptions>();
  const Command command =
      program.Add("dialog", "Open the dialog of a filter and print its text on changes");
  command.Take("item TEXT", options->item, "PROGID, or PROGID(TEXT) to begin with a text")
      .Required();
  command.Flag("--once", options->once, "Close the dialog when it has been shown (a check)");
  command.Footer(kExamples);
  command.Runs([options] { return RunDialog(*options); });
}

}  // namespace program
