// Any bytes as a stored picture of each generation, as a note and as a compressed stream.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "storage/KvPrivateStorage.h"
#include "storage/KvZlib.h"
#include "storage/kvPicBox.h"
#include "tests/storage/MemoryStream.h"

namespace {

void Put(IKvStorage& storage, const char* name, const std::string& bytes) {
  IKvStream* stream = storage.CreateStream(name, OpenModeRewrite);
  if (!stream) std::abort();
  stream->Write(bytes.data(), static_cast<unsigned>(bytes.size()));
  stream->Close();
}

void Decompress(const std::string& bytes) {
  test::MemoryStream source(bytes);
  KvZlibRead reader(&source);
  char block[777];
  std::size_t total = 0;
  while (const unsigned got = reader.Read(block, sizeof block)) {
    total += got;
    if (total > 1 << 20) break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(bytes), size);
  Decompress(content);
  KvMemoryStorage memory(0);
  kvPicBox box(&memory, OpenModeReadWrite);
  Put(*box.StorageOf(picbox::kPictures), "a.inf", content);
  char block[kvPicBox::kBlockBytes];
  static_cast<void>(box.GetImageInfo("a", block));
  for (int place = 0; place < picbox::kPlaceCount; ++place) {
    IKvStorage* storage = box.StorageOf(static_cast<picbox::Place>(place));
    Put(*storage, "a", content);
    kvPicBox::Bytes picture, mask, header;
    box.GetQuick("a", "", &picture, &mask);
    if (picture.empty() && !mask.empty()) std::abort();
    box.GetJPegHeader("a", &header);
    KvString tag;
    box.AnalyzeFile("a", tag);
    bool wantPicture = true, wantMask = false;
    unsigned room = 0;
    box.GetImageFileInfo("a", &wantPicture, &wantMask, &room, nullptr);
    storage->DeleteStream("a");
  }
  return 0;
}
