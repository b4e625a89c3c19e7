// What every byte that is kept outside memory passes through: readers and writers, streams, and
// storages that hold named streams and storages.
//
// One thread at a time for an object and what was opened from it. Nothing here throws by contract;
// an implementation that does says so. The order of the operations is the order of the slots, on
// which a host built by the same compiler may rely.
#pragma once

#include <cstdint>

#include "base/Export.h"
#include "base/KvString.h"

// Bits of the mode that an element is created or opened with.
enum OpenMode : std::uint32_t {
  OpenModeRead = 1,
  OpenModeWrite = 2,
  OpenModeCreate = 8,        // make the element when it is absent
  OpenModeTruncate = 0x40,   // with OpenModeCreate: empty an existing one; folders alone heed it
  OpenModeReadWrite = 0x0B,  // read, write, create
  OpenModeRewrite = 0x4B     // read, write, create, truncate
};

// What FindFirst and FindNext tell of an element; 0 for what is neither.
inline constexpr unsigned kStorageElement = 0x10;
inline constexpr unsigned kStreamElement = 0x20;

// What lies behind an IKvStorage.
enum class StorageKind : int { Folder = 1, Private = 2, Compound = 3, Memory = 4, Resource = 5 };

class FXBOX_API IKvRead {
 public:
  // Up to `count` bytes from the current position; gives the number read, 0 at the end of the data.
  virtual unsigned Read(void* buffer, unsigned count) = 0;

 protected:
  ~IKvRead() = default;
};

class FXBOX_API IKvWrite {
 public:
  // Files and compound files give the number of bytes written, compressed streams always 0: who may
  // have been given one must not rely on the result.
  virtual unsigned Write(const void* buffer, unsigned count) = 0;

 protected:
  ~IKvWrite() = default;
};

class FXBOX_API IKvSeek {
 public:
  // Length in bytes; the position stays.
  virtual unsigned GetLength() = 0;
  virtual unsigned GetPosition() = 0;
  // Origin 0 is the start, 1 the current position, 2 the end. Gives the new position; a file gives
  // -1 for another origin.
  virtual long Seek(long offset, int origin) = 0;
  // 1 where ranges can be locked (files), else 0 and nothing happens.
  virtual int LockRange(unsigned position, unsigned count) = 0;
  virtual int UnlockRange(unsigned position, unsigned count) = 0;

 protected:
  ~IKvSeek() = default;
};

class FXBOX_API IKvReadSeek : public IKvRead, public virtual IKvSeek {
 protected:
  ~IKvReadSeek() = default;
};

class FXBOX_API IKvWriteSeek : public IKvWrite, public virtual IKvSeek {
 protected:
  ~IKvWriteSeek() = default;
};

class FXBOX_API IKvReadWrite : public IKvReadSeek, public IKvWriteSeek {
 protected:
  ~IKvReadWrite() = default;
};

class KvFile;

// An open stream. Whoever opened it owns it until it is closed.
class FXBOX_API IKvStream : public IKvReadWrite {
 public:
  // Lets go of the element and destroys the object, which nobody deletes.
  virtual void Close() = 0;
  virtual void SetLength(unsigned length) = 0;
  // The file behind it, which belongs to the stream; null where there is none of its own.
  virtual KvFile* GetFile() = 0;

 protected:
  ~IKvStream() = default;
};

// A set of named streams and storages. Names are in the system's code page. Whoever opened it owns
// it until it is closed. `native` and `external` matter to folders alone.
class FXBOX_API IKvStorage {
 public:
  // Null on failure.
  virtual IKvStream* CreateStream(const char* name, unsigned mode) = 0;
  // Null when it is absent, unless the mode says to make it.
  virtual IKvStream* OpenStream(const char* name, unsigned mode) = 0;
  virtual bool DeleteStream(const char* name) = 0;
  // Null on failure.
  virtual IKvStorage* CreateStorage(const char* name, unsigned mode, bool native,
                                    bool external) = 0;
  virtual IKvStorage* OpenStorage(const char* name, unsigned mode, bool native, bool external) = 0;
  // True when a storage was removed, which folders alone can do; null removes the folder itself.
  virtual bool RemoveStorage(const char* name) = 0;
  // True while an element was delivered. A folder takes the pattern from `name` in FindFirst.
  virtual bool FindFirst(KvString& name, unsigned& attributes) = 0;
  virtual bool FindNext(KvString& name, unsigned& attributes) = 0;
  // Always false in private storages and those made of them.
  virtual bool Exists(const char* name) = 0;
  // Lets go of the storage and destroys the object.
  virtual void Close() = 0;
  virtual void Flush() = 0;
  // Valid as long as the storage.
  virtual const char* GetPathText() = 0;
  virtual KvString GetPath() = 0;
  virtual bool IsNative() = 0;
  virtual bool IsExternal() = 0;
  // One of StorageKind.
  virtual int GetStorageKind() = 0;
  virtual ~IKvStorage() = default;
};

// Moves a whole stream, compressed or decompressed. A limit of 0 means none. Both give the bytes
// moved.
class FXBOX_API IKvCompressor {
 public:
  virtual unsigned Decompress(IKvWrite* target, IKvRead* source, unsigned limit) = 0;
  virtual unsigned Compress(IKvRead* source, IKvWrite* target, unsigned limit) = 0;

 protected:
  ~IKvCompressor() = default;
};
