#include "storage/KvZlib.h"

#include <algorithm>
#include <exception>
#include <new>

namespace {

constexpr unsigned kStreamBuffer = 100;
constexpr unsigned kCompressorBuffer = 113;
constexpr unsigned kChunk = 100;

[[noreturn]] void Fail(ZlibImplementation::ErrorCode code) {
  throw KvStreamException(code, "Zlib-Fehler");
}

// The next piece of a stream of which `done` bytes have been moved.
unsigned NextChunk(unsigned done, unsigned limit) {
  return limit == 0 ? kChunk : std::min(kChunk, limit - done);
}

}  // namespace

ZlibImplementation::ZlibImplementation(unsigned bufferSize)
    : buffer(new (std::nothrow) BYTE[bufferSize]), size(bufferSize) {
  if (!buffer) Fail(kNoBuffer);
}

ZlibImplementation::~ZlibImplementation() {
  LetGo();
}

void ZlibImplementation::LetGo() {
  if (mode == Mode::Compressing) deflateEnd(&state);
  if (mode == Mode::Decompressing || mode == Mode::Ended) inflateEnd(&state);
  mode = Mode::Closed;
}

void ZlibImplementation::NeedMode(Mode needed) const {
  if (mode != needed) Fail(kWrongMode);
}

// --- compressing

void ZlibImplementation::StartCompressing() {
  NeedMode(Mode::Closed);
  state = {};
  if (deflateInit(&state, Z_DEFAULT_COMPRESSION) != Z_OK) Fail(kDeflateInit);
  mode = Mode::Compressing;
}

// Writes out what deflate has left in the buffer and makes room again.
void ZlibImplementation::Drain(IKvWrite& target) {
  const unsigned produced = size - state.avail_out;
  if (produced > 0) target.Write(buffer.get(), produced);
  state.next_out = buffer.get();
  state.avail_out = size;
}

void ZlibImplementation::CompressBlock(const void* block, unsigned count, IKvWrite& target) {
  NeedMode(Mode::Compressing);
  state.next_in = static_cast<Bytef*>(const_cast<void*>(block));
  state.avail_in = block ? count : 0;
  while (state.avail_in > 0) {
    state.next_out = buffer.get();
    state.avail_out = size;
    if (deflate(&state, Z_NO_FLUSH) != Z_OK) Fail(kDeflate);
    Drain(target);
  }
}

void ZlibImplementation::EndCompressing(IKvWrite& target) {
  NeedMode(Mode::Compressing);
  // What is left of a block whose writing failed may be gone by now.
  state.avail_in = 0;
  int result = Z_OK;
  while (result != Z_STREAM_END) {
    state.next_out = buffer.get();
    state.avail_out = size;
    result = deflate(&state, Z_FINISH);
    if (result != Z_OK && result != Z_STREAM_END) Fail(kDeflate);
    Drain(target);
  }
  mode = Mode::Closed;
  if (deflateEnd(&state) != Z_OK) Fail(kDeflateEnd);
}

// --- decompressing

void ZlibImplementation::StartDecompressing() {
  NeedMode(Mode::Closed);
  state = {};
  if (inflateInit(&state) != Z_OK) Fail(kInflateInit);
  mode = Mode::Decompressing;
}

void ZlibImplementation::Refill(IKvRead& source) {
  state.next_in = buffer.get();
  state.avail_in = std::min(source.Read(buffer.get(), size), size);
}

unsigned ZlibImplementation::DecompressBlock(void* block, unsigned count, IKvRead& source) {
  if (mode == Mode::Ended || !block) return 0;
  NeedMode(Mode::Decompressing);
  state.next_out = static_cast<Bytef*>(block);
  state.avail_out = count;
  while (state.avail_out > 0 && mode == Mode::Decompressing) {
    if (state.avail_in == 0) Refill(source);
    const int result = inflate(&state, Z_NO_FLUSH);
    if (result != Z_OK) mode = Mode::Ended;
    hasSeenEnd = result == Z_STREAM_END;
  }
  return count - state.avail_out;
}

void ZlibImplementation::EndDecompressing() {
  if (mode != Mode::Decompressing && mode != Mode::Ended) Fail(kWrongMode);
  mode = Mode::Closed;
  if (inflateEnd(&state) != Z_OK) Fail(kInflateEnd);
}

// --- streams

KvZlibWrite::KvZlibWrite(IKvWrite* target)
    : ZlibImplementation(kStreamBuffer),
      inner(target),
      exceptionsAtStart(std::uncaught_exceptions()) {
  StartCompressing();
}

KvZlibWrite::~KvZlibWrite() noexcept(false) {
  try {
    EndCompressing(*inner);
  } catch (...) {
    if (std::uncaught_exceptions() == exceptionsAtStart) throw;
  }
}

unsigned KvZlibWrite::Write(const void* block, unsigned count) {
  CompressBlock(block, count, *inner);
  return 0;
}

KvZlibRead::KvZlibRead(IKvRead* source) : ZlibImplementation(kStreamBuffer), inner(source) {
  StartDecompressing();
}

KvZlibRead::~KvZlibRead() = default;

unsigned KvZlibRead::Read(void* block, unsigned count) {
  return DecompressBlock(block, count, *inner);
}

// --- whole streams

KvZlib::KvZlib() : ZlibImplementation(kCompressorBuffer) {}

unsigned KvZlib::Decompress(IKvWrite* target, IKvRead* source, unsigned limit) {
  BYTE chunk[kChunk];
  unsigned done = 0;
  LetGo();  // of what an exception has left open
  StartDecompressing();
  while (limit == 0 || done < limit) {
    const unsigned got = DecompressBlock(chunk, NextChunk(done, limit), *source);
    if (got == 0) break;
    target->Write(chunk, got);
    done += got;
  }
  EndDecompressing();
  return done;
}

unsigned KvZlib::Compress(IKvRead* source, IKvWrite* target, unsigned limit) {
  BYTE chunk[kChunk];
  unsigned done = 0;
  LetGo();
  StartCompressing();
  while (limit == 0 || done < limit) {
    const unsigned wanted = NextChunk(done, limit);
    const unsigned got = std::min(source->Read(chunk, wanted), wanted);
    if (got == 0) break;
    CompressBlock(chunk, got, *target);
    done += got;
  }
  EndCompressing(*target);
  return done;
}
