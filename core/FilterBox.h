// FilterBox: feeds the scripts of a storage to the host.
#pragma once

#include <unknwn.h>

#include <string>

#include "base/Export.h"
#include "base/Guid.h"
#include "base/KvInterfaces.h"
#include "platform/component/ComPtr.h"

// What a host offers that takes scripts: texts of lines whose meaning is the host's own. Texts are
// in the code page and live as long as the call. A failure code is passed over.
struct IAnimHostScript : IUnknown {
  static constexpr IID kIid = base::Guid("{6A0C7E42-9B1D-4D5A-8F37-2E6B1C94D0A8}");

  // A whole script, as it is stored.
  virtual HRESULT STDMETHODCALLTYPE TakeScript(const char* name, const char* text) = 0;
  // One item of a script: a line that is not empty, without its end.
  virtual HRESULT STDMETHODCALLTYPE RunItem(const char* name, const char* item) = 0;

 protected:
  ~IAnimHostScript() = default;
};

// Made where a script is to be run, and done with when it is made. A host without the interface, or
// no storage, makes a box that does nothing. A stream that is missing is skipped. Any thread.
class FXBOX_API FilterBox {
 public:
  // `storage` holds the storage "Scripts", and stays the caller's; it is used while the constructor
  // runs. The first box of the process gives the host the words of colours, "color.strings". Then
  // the stream `script` is given to the host, and the one whose name ends in "seq" in place of the
  // last four letters. Their items are run once in a process: `scriptName` is the name that counts
  // for the first, where it is another one than the stream's.
  FilterBox(IUnknown* host, IKvStorage* storage, const char* script,
            const char* scriptName = nullptr);

  // Whether the host takes scripts.
  bool IsBound() const { return static_cast<bool>(receiver); }

 private:
  void Give(const std::string& stream, const std::string& name);
  void GiveWords();
  void Parse(const std::string& name, const KvString& text);

  platform::ComPtr<IAnimHostScript> receiver;
  IKvStorage* storage;
};
