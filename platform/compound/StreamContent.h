// The bytes of an open stream. Changes stay beside what the file holds until they are linked.
#pragma once

#include <functional>
#include <memory>

#include "platform/compound/CompoundFile.h"

namespace platform::compound {

// Shared by a stream and its clones; at its end it brings what was written to the disk.
class StreamContent final : public OpenElement {
 public:
  StreamContent(std::shared_ptr<CompoundFile> holder, Id element);
  ~StreamContent() override;
  StreamContent(const StreamContent&) = delete;
  StreamContent& operator=(const StreamContent&) = delete;

  // Throws STG_E_REVERTED when the element is gone.
  CompoundFile& File();
  Id Element() const { return id; }
  std::uint64_t Size();

  // Gives the number of bytes that are there. Throws STG_E_DOCFILECORRUPT when there should be
  // some and the chain ends before.
  std::size_t Read(std::uint64_t at, void* buffer, std::size_t count);
  // What a failed change has left is forgotten with the stream: the file keeps what it had. All
  // later changes fail like it.
  void Write(std::uint64_t at, const void* buffer, std::size_t count);
  void Resize(std::uint64_t size);
  // The file's view of the stream becomes this one.
  void Flush() override;

  void Leave(bool keeps) override;

 private:
  void Load();
  void Change(const std::function<void()>& change);
  void MakeLarge();
  void MakeSmall(std::size_t size);
  void WriteLarge(std::uint64_t at, const std::uint8_t* bytes, std::size_t count);
  void WritePart(std::size_t index, std::size_t offset, const std::uint8_t* bytes,
                 std::size_t count);
  void WriteRun(std::size_t index, const std::uint8_t* bytes, std::size_t sectors);
  void WriteZeros(std::uint64_t from, std::uint64_t to);
  void OwnSector(std::size_t index);
  void DropSectorsFrom(std::size_t index);
  std::size_t RunFrom(std::size_t index, std::size_t most) const;
  std::size_t ReadLarge(std::uint64_t at, std::uint8_t* buffer, std::size_t count);
  void Discard();

  std::shared_ptr<CompoundFile> file;
  const Id id;
  bool isLoaded = false;
  bool isChanged = false;
  HRESULT failure = S_OK;
  std::uint64_t length = 0;
  bool isSmall = true;
  Bytes small;                   // the content, when it is small
  Chain chain;                   // where it lies, when it is not; all of it after a change
  std::vector<Sector> replaced;  // what the file still uses for it
};

}  // namespace platform::compound
