// Streams that tell at their end whether everything was kept.
#pragma once

#include <objbase.h>

#include <memory>

#include "base/KvInterfaces.h"

// The base of the streams of this folder. Close does the same as Finish and destroys the object.
class FXBOX_API CheckedStream : public IKvStream {
 public:
  // The element's statistics in a compound file; a file leaves `*out` alone.
  virtual void GetStat(STATSTG* out) = 0;
  // Ends the stream but for Close: nothing else is called behind it. False when what was written
  // could not be kept; the element of a folder then has the content from before.
  virtual bool Finish() = 0;
  // Ends the stream and destroys the object. A file of a folder keeps the content from before; in a
  // compound file what was written stays, for its storage to delete.
  virtual void Abandon() = 0;

 protected:
  ~CheckedStream() = default;
};

// Ends any stream whose content is not wanted after all.
inline void Abandon(IKvStream* stream) {
  auto* checked = dynamic_cast<CheckedStream*>(stream);
  checked ? checked->Abandon() : stream->Close();
}

// A stream that is being written. When an exception ends the writing its content is not wanted.
struct AbandonStream {
  void operator()(IKvStream* stream) const { Abandon(stream); }
};
using WrittenStream = std::unique_ptr<IKvStream, AbandonStream>;

// Closes any stream; true where a stream cannot tell.
inline bool CloseChecked(IKvStream* stream) {
  auto* checked = dynamic_cast<CheckedStream*>(stream);
  const bool isKept = !checked || checked->Finish();
  stream->Close();
  return isKept;
}
inline bool CloseChecked(WrittenStream stream) {
  return CloseChecked(stream.release());
}
