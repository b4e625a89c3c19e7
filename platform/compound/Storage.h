// A storage of a compound file as component.
#pragma once

#include <objidl.h>

#include <memory>
#include <string>

#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"
#include "platform/compound/CompoundFile.h"

namespace platform::compound {

class Storage final : public ComObject<Storage, IStorage>, public OpenElement {
 public:
  static constexpr IID kIid = base::Guid("{6B1C7B0E-0D0B-4C6B-9D6E-4A1B6E2F7C35}");

  Storage(std::shared_ptr<CompoundFile> holder, Id element, DWORD flags, std::u16string path = {});

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override;
  HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* name, DWORD flags, DWORD reserved1,
                                         DWORD reserved2, IStream** result) override;
  HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* name, void* reserved1, DWORD flags,
                                       DWORD reserved2, IStream** result) override;
  HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* name, DWORD flags, DWORD reserved1,
                                          DWORD reserved2, IStorage** result) override;
  HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* name, IStorage* priority, DWORD flags,
                                        SNB exclude, DWORD reserved, IStorage** result) override;
  HRESULT STDMETHODCALLTYPE CopyTo(DWORD excludedCount, const IID* excluded, SNB exclude,
                                   IStorage* target) override;
  HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* name, IStorage* target,
                                          const OLECHAR* newName, DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Revert() override;
  HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                         IEnumSTATSTG** result) override;
  HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* name) override;
  HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* oldName, const OLECHAR* newName) override;
  HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* name, const FILETIME* created,
                                            const FILETIME* accessed,
                                            const FILETIME* modified) override;
  HRESULT STDMETHODCALLTYPE SetClass(REFCLSID classId) override;
  HRESULT STDMETHODCALLTYPE SetStateBits(DWORD bits, DWORD mask) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD flags) override;

  void Leave(bool keeps) override;
  // Whether it is the same storage as the other or lies below it.
  bool IsWithin(const Storage& other) const;

 private:
  friend class ComObject<Storage, IStorage>;
  ~Storage() override;

  CompoundFile& File() const;
  void NeedWriting() const;
  void CheckChild(const OLECHAR* name, DWORD flags, bool isNew) const;
  Id FindChild(const OLECHAR* name, Type type) const;
  Id MakeRoomFor(const OLECHAR* name, DWORD flags) const;

  std::shared_ptr<CompoundFile> file;
  const Id id;
  const DWORD mode;
  const std::u16string name;  // of the root: its path
};

}  // namespace platform::compound
