#include "platform/CompoundCheck.h"

#include "platform/RawFile.h"
#include "platform/compound/CompoundFile.h"

namespace platform {
namespace {

using compound::CompoundFile;
using compound::Directory;
using compound::Fail;
using compound::Failure;
using compound::Fault;
using compound::Id;

class ReadStore final : public compound::ByteStore {
 public:
  explicit ReadStore(std::unique_ptr<RawFile> opened) : file(std::move(opened)) {}

  std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count) override {
    return file->ReadAt(offset, buffer, count);
  }
  void Write(std::uint64_t, const void*, std::size_t) override { Fail(STG_E_ACCESSDENIED); }
  std::uint64_t Size() override { return file->Length(); }
  void SetSize(std::uint64_t) override { Fail(STG_E_ACCESSDENIED); }
  void Sync() override {}

 private:
  std::unique_ptr<RawFile> file;
};

std::u16string PathOf(Directory& elements, Id id) {
  std::u16string path;
  for (; id != compound::kNone && id != compound::kRoot; id = elements.At(id).owner) {
    path.insert(0, elements.At(id).name + (path.empty() ? u"" : u"/"));
  }
  return path;
}

}  // namespace

std::vector<CompoundFault> FindCompoundFaults(const std::filesystem::path& file, std::size_t most) {
  int error = 0;
  auto opened = RawFile::Open(file, FileUse::Read, error);
  if (!opened) return {{{}, "the file cannot be read", {}}};
  std::vector<CompoundFault> told;
  try {
    const auto whole = CompoundFile::Open(std::make_unique<ReadStore>(std::move(opened)),
                                          CompoundFile::Access::Read);
    Directory& elements = whole->Elements();
    for (const Fault& fault : whole->Faults(most)) {
      told.push_back({PathOf(elements, fault.stream), fault.words, PathOf(elements, fault.other)});
    }
  } catch (const Failure&) {
    told.push_back({{}, "the directory cannot be read", {}});
  }
  return told;
}

}  // namespace platform
