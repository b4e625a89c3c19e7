// Compressed streams: thin adapters between our streams and zlib.
#pragma once

#include <wtypes.h>
#include <zlib.h>

#include <memory>

#include "base/KvInterfaces.h"
#include "storage/KvErrors.h"

// What the three classes share: one zlib state with a small work buffer. The data are one plain
// zlib stream with nothing of our own around it. Faults throw KvStreamException with the text
// "Zlib-Fehler" and one of these codes.
class FXBOX_API ZlibImplementation {
 public:
  enum ErrorCode {
    kDeflateInit = -4,
    kInflateInit = -5,
    kDeflate = -6,
    kDeflateEnd = -8,
    kInflateEnd = -9,
    kNoBuffer = -10,
    kWrongMode = -11,
  };

 protected:
  enum class Mode { Closed, Compressing, Decompressing, Ended };

  explicit ZlibImplementation(unsigned bufferSize);
  // Lets go of what is open without finishing it.
  ~ZlibImplementation();
  ZlibImplementation(const ZlibImplementation&) = delete;
  ZlibImplementation& operator=(const ZlibImplementation&) = delete;

  // Without finishing it.
  void LetGo();
  void StartCompressing();
  void CompressBlock(const void* block, unsigned count, IKvWrite& target);
  void EndCompressing(IKvWrite& target);
  void StartDecompressing();
  // Fewer bytes than asked for at the end of the data, which a fault in them looks like as well.
  unsigned DecompressBlock(void* block, unsigned count, IKvRead& source);
  void EndDecompressing();
  // Whether the end marker was read, and the sum behind it is right.
  bool HasSeenEnd() const { return hasSeenEnd; }

 private:
  void NeedMode(Mode needed) const;
  void Drain(IKvWrite& target);
  void Refill(IKvRead& source);

  z_stream state = {};
  std::unique_ptr<BYTE[]> buffer;
  unsigned size;
  Mode mode = Mode::Closed;
  bool hasSeenEnd = false;
};

// Compresses what is written. The target, which has to live longer, is the caller's.
class FXBOX_API KvZlibWrite final : private ZlibImplementation, public IKvWrite {
 public:
  explicit KvZlibWrite(IKvWrite* target);
  // Writes out the end of the stream; throws when that fails, unless another exception is under
  // way.
  ~KvZlibWrite() noexcept(false);
  // Always 0.
  unsigned Write(const void* block, unsigned count) override;

 private:
  IKvWrite* inner;
  int exceptionsAtStart;
};

// Decompresses what is read. The source, which has to live longer, is the caller's; it is read in
// pieces of 100 bytes, so that the position behind the end lies less than that too far.
class FXBOX_API KvZlibRead final : private ZlibImplementation, public IKvRead {
 public:
  explicit KvZlibRead(IKvRead* source);
  ~KvZlibRead();
  unsigned Read(void* block, unsigned count) override;
  // Whether Read has come to the end marker of a stream that is whole.
  bool IsComplete() const { return HasSeenEnd(); }

 private:
  IKvRead* inner;
};

// Whole streams in one call.
class FXBOX_API KvZlib final : private ZlibImplementation, public IKvCompressor {
 public:
  KvZlib();
  unsigned Decompress(IKvWrite* target, IKvRead* source, unsigned limit) override;
  unsigned Compress(IKvRead* source, IKvWrite* target, unsigned limit) override;
};
