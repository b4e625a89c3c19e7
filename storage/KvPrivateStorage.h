// Storages over a compound file without waiting: any element, global memory, a module's resource.
#pragma once

#include <objbase.h>

#include <memory>

#include "base/KvInterfaces.h"

namespace stg {
class Enumeration;
}

// As KvStorage, with one attempt and no report. Without an element every operation fails.
class FXBOX_API KvPrivateStorage : public IKvStorage {
 public:
  // Takes over the reference to an element, which may be null.
  explicit KvPrivateStorage(IStorage* owned);
  // Opens the file, or makes it with OpenModeCreate.
  KvPrivateStorage(const char* path, unsigned mode);
  ~KvPrivateStorage() override;
  KvPrivateStorage(const KvPrivateStorage&) = delete;
  KvPrivateStorage& operator=(const KvPrivateStorage&) = delete;

  IKvStream* CreateStream(const char* name, unsigned mode) override;
  // With OpenModeCreate a stream that cannot be opened, for whatever reason, is made anew.
  IKvStream* OpenStream(const char* name, unsigned mode) override;
  bool DeleteStream(const char* name) override;
  IKvStorage* CreateStorage(const char* name, unsigned mode, bool native, bool external) override;
  IKvStorage* OpenStorage(const char* name, unsigned mode, bool native, bool external) override;
  bool RemoveStorage(const char*) override { return false; }
  bool FindFirst(KvString& name, unsigned& attributes) override;
  bool FindNext(KvString& name, unsigned& attributes) override;
  bool Exists(const char*) override { return false; }
  // Commits first.
  void Close() override;
  void Flush() override {}
  const char* GetPathText() override { return path; }
  KvString GetPath() override { return {}; }
  bool IsNative() override { return false; }
  bool IsExternal() override { return false; }
  int GetStorageKind() override { return static_cast<int>(StorageKind::Private); }

  // Does nothing; keeps its slot.
  virtual void Reserved(int) {}

  // The element, which stays the storage's; null where there is none.
  IStorage* Element() const { return storage; }

 protected:
  void SetElement(IStorage* owned) { storage = owned; }
  void ReleaseElement();

 private:
  IStorage* storage = nullptr;
  std::unique_ptr<stg::Enumeration> enumeration;
  KvString path;
};

// A compound file in a block of global memory that ends with the object.
class FXBOX_API KvMemoryStorage : public KvPrivateStorage {
 public:
  // `size` is what the block has at first; it grows. Without memory there is no element.
  explicit KvMemoryStorage(int size);
  ~KvMemoryStorage() override;

  // Writes the whole compound file to a file, in one step, and ends the storage: afterwards every
  // operation fails, and a second call writes nothing. Streams and storages have to be closed.
  void DumpToFile(const char* target);
  int GetStorageKind() override { return static_cast<int>(StorageKind::Memory); }

 private:
  HGLOBAL block = nullptr;
  ILockBytes* bytes = nullptr;
};

// The compound file in the resource "KvResourceStorage" of type "STORAGE" of a module, for reading.
// A module without it gives a storage on which every operation fails. The module has to live
// longer.
class FXBOX_API KvResourceStorage : public KvPrivateStorage {
 public:
  explicit KvResourceStorage(HMODULE module);
  int GetStorageKind() override { return static_cast<int>(StorageKind::Resource); }
};

// A stream that lives in memory as long as the object.
class FXBOX_API KvTemporaryStream {
 public:
  KvTemporaryStream();
  ~KvTemporaryStream();
  KvTemporaryStream(const KvTemporaryStream&) = delete;
  KvTemporaryStream& operator=(const KvTemporaryStream&) = delete;

  // Read, write, seek as with any stream, but not Close: it stays the object's. Null without
  // memory.
  IKvStream* Stream() const { return stream; }

 private:
  KvMemoryStorage storage;
  IKvStream* stream;
};
