// A compound file on disk that several processes may use: every operation waits for a moment when
// somebody else holds what it needs.
#pragma once

#include <objbase.h>

#include <memory>

#include "base/KvInterfaces.h"

namespace stg {
class Enumeration;
}

// Elements are opened exclusively, so two users of one box collide: an operation that finds its
// element held is tried again 100 times, 10 ms apart (OpenStorage 3 times). Nothing throws but
// std::bad_alloc; a failure is a null pointer or false, is told to the debug monitor under the
// topic "KvStorage_Quillan", and leaves the object usable. A storage and all that was opened from
// it belong to one thread; what was opened is closed before its storage.
//
// Changes are direct. On Linux the file holds the old or the new content after any end of the
// process: each stream counts from its Close on, what was deleted from the next such Close or the
// Close of the root on. On Windows the system writes in place.
class FXBOX_API KvStorage : public IKvStorage {
 public:
  // Opens the file, or makes it with OpenModeCreate. `path` is in the system's code page with "\"
  // between its parts. The flags are ignored. IsBad tells of a failure.
  KvStorage(const char* path, unsigned mode, bool native, bool external);
  // Takes over the reference to an element, which may be null.
  explicit KvStorage(IStorage* owned);
  ~KvStorage() override;
  KvStorage(const KvStorage&) = delete;
  KvStorage& operator=(const KvStorage&) = delete;

  // Null where the constructor would leave a bad object. The caller ends it with Close.
  static KvStorage* CreateNewKvStorage(const char* path, unsigned mode, bool native, bool external);
  // Opens the file for reading beside others who do the same, while the constructor's modes keep
  // them out. Nobody writes as long as it is open. Bad where the constructor's object would be.
  static KvStorage* OpenShared(const char* path);
  // Does nothing and gives false.
  static bool FlushAll() { return false; }

  IKvStream* CreateStream(const char* name, unsigned mode) override;
  // Waits for STG_E_ACCESSDENIED alone.
  IKvStream* OpenStream(const char* name, unsigned mode) override;
  bool DeleteStream(const char* name) override;
  IKvStorage* CreateStorage(const char* name, unsigned mode, bool native, bool external) override;
  IKvStorage* OpenStorage(const char* name, unsigned mode, bool native, bool external) override;
  bool RemoveStorage(const char*) override { return false; }
  bool FindFirst(KvString& name, unsigned& attributes) override;
  bool FindNext(KvString& name, unsigned& attributes) override;
  // Compares case as well.
  bool Exists(const char* name) override;
  void Close() override;
  void Flush() override {}
  const char* GetPathText() override { return path; }
  // What stands before the last "\" of the path, or all of it.
  KvString GetPath() override { return folder; }
  bool IsNative() override { return false; }
  bool IsExternal() override { return false; }
  int GetStorageKind() override { return static_cast<int>(StorageKind::Compound); }

  virtual void RemoveElement(const char* name) { DeleteStream(name); }
  // Everything in it is added to the target. True also where one of the two has no element.
  virtual bool CopyTo(KvStorage* target);
  virtual void GetStat(STATSTG* out);
  virtual bool IsBad() { return bad != 0; }
  // A new storage around an element, which it takes over.
  virtual KvStorage* Wrap(IStorage* owned) { return new KvStorage(owned); }

  // The element, which stays the storage's; null in a bad one.
  IStorage* Element() const { return storage; }
  // What the last attempt to open the file gave.
  HRESULT OpenStatus() const { return openStatus; }

 private:
  KvStorage(const char* path, DWORD openFlags, unsigned mode);
  HRESULT OpenFile(DWORD openFlags, unsigned mode);
  void TellOpenFailure(HRESULT status) const;

  IStorage* storage = nullptr;
  std::unique_ptr<stg::Enumeration> enumeration;
  std::int32_t bad = 0;
  KvString path;
  KvString folder;
  HRESULT openStatus = S_OK;
};
