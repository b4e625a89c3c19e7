// Collects small reads and writes, as the compressed streams make them, into large ones.
#pragma once

#include <wtypes.h>

#include <memory>

#include "base/KvInterfaces.h"

// Reads ahead, never more than the stream has left: a stream that fails and gives zeros for ever
// ends too.
class FXBOX_API BufferedReader final : public IKvRead {
 public:
  // Begins at the stream's position. The stream, which has to live longer, is the caller's.
  explicit BufferedReader(IKvStream& stream);
  unsigned Read(void* to, unsigned count) override;

 private:
  bool Refill();

  IKvStream* source;
  unsigned left;  // in the stream
  std::unique_ptr<BYTE[]> buffer;
  unsigned used = 0;
  unsigned filled = 0;
};

// Writes out with Flush, which the caller calls at the end.
class FXBOX_API BufferedWriter final : public IKvWrite {
 public:
  explicit BufferedWriter(IKvWrite& stream);
  // 0 from the first failure on.
  unsigned Write(const void* from, unsigned count) override;
  // False when anything was not written since the beginning.
  bool Flush();
  // What went through so far.
  unsigned long long Count() const { return count; }

 private:
  IKvWrite* target;
  std::unique_ptr<BYTE[]> buffer;
  unsigned filled = 0;
  unsigned long long count = 0;
  bool hasFailed = false;
};
