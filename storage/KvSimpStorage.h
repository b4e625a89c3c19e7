// A folder as a storage: its streams are files that other programs can open.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/KvInterfaces.h"

// Paths are in the system's code page with "\" between their parts; on Linux a part is looked for
// exactly and then without regard to case. A stream that is opened with OpenModeCreate takes its
// place when it is closed: until then the file from before is there. Streams throw KvFileException
// where a file stays locked or denied for 400 ms, or its folder cannot be made; nothing else
// throws. One thread at a time.
class FXBOX_API KvSimpStorage : public IKvStorage {
 public:
  // The folder as it is named, which may not be there yet: it is made with the first stream, or at
  // once with `external` and OpenModeCreate.
  KvSimpStorage(const char* path, unsigned mode, bool native, bool external);
  ~KvSimpStorage() override;

  // The folder of a box: without `external` its name gets the suffix "_kv", at the first "/" or at
  // the end. Never null or bad. The caller ends it with Close.
  static KvSimpStorage* CreateNewKvStorage(const char* path, unsigned mode, bool native,
                                           bool external);
  // Does nothing and gives false.
  static bool FlushAll() { return false; }

  IKvStream* CreateStream(const char* name, unsigned mode) override;
  IKvStream* OpenStream(const char* name, unsigned mode) override;
  // Deletes a file, never a folder.
  bool DeleteStream(const char* name) override;
  // Both give a storage on the folder below, whether it is there or not.
  IKvStorage* CreateStorage(const char* name, unsigned mode, bool native, bool external) override;
  IKvStorage* OpenStorage(const char* name, unsigned mode, bool native, bool external) override;
  bool RemoveStorage(const char* name) override;
  // `name` brings a pattern with "*" and "?", empty for everything. Sorted; names that begin with a
  // point are left out.
  bool FindFirst(KvString& name, unsigned& attributes) override;
  bool FindNext(KvString& name, unsigned& attributes) override;
  bool Exists(const char* name) override;
  void Close() override;
  void Flush() override {}
  // With a "\" at the end.
  const char* GetPathText() override { return path; }
  KvString GetPath() override { return path; }
  bool IsNative() override { return native; }
  bool IsExternal() override { return external; }
  int GetStorageKind() override { return static_cast<int>(StorageKind::Folder); }

  virtual bool IsBad() { return bad; }
  virtual void SetPath(const char* newPath, unsigned mode);

 private:
  struct Element {
    std::string name;
    unsigned attributes;
  };
  KvString PathOf(const char* name) const;
  void MakeFolder() const;

  bool native;
  bool external;
  KvString path;
  bool bad = false;
  std::vector<Element> found;  // what an enumeration has still to deliver, from `next` on
  std::size_t next = 0;
};
