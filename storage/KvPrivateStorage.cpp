#include "storage/KvPrivateStorage.h"

#include "storage/StgElements.h"

KvPrivateStorage::KvPrivateStorage(IStorage* owned)
    : storage(owned), enumeration(std::make_unique<stg::Enumeration>()) {}

KvPrivateStorage::KvPrivateStorage(const char* filePath, unsigned mode)
    : enumeration(std::make_unique<stg::Enumeration>()), path(filePath) {
  const stg::WideName wide = stg::WidePathOf(path);
  HRESULT status =
      StgOpenStorage(wide.c_str(), nullptr, stg::OpenFlagsOf(mode), nullptr, 0, &storage);
  if (FAILED(status) && (mode & OpenModeCreate) && stg::IsAbsent(status)) {
    status = StgCreateDocfile(wide.c_str(), stg::FlagsOf(mode), 0, &storage);
  }
  if (FAILED(status)) storage = nullptr;
}

KvPrivateStorage::~KvPrivateStorage() {
  ReleaseElement();
}

void KvPrivateStorage::ReleaseElement() {
  enumeration = std::make_unique<stg::Enumeration>();
  if (storage) storage->Release();
  storage = nullptr;
}

void KvPrivateStorage::Close() {
  if (storage) storage->Commit(STGC_DEFAULT);
  delete this;
}

// --- elements

IKvStream* KvPrivateStorage::CreateStream(const char* name, unsigned mode) {
  IStream* stream = nullptr;
  if (!storage || FAILED(storage->CreateStream(stg::WideNameOf(name).c_str(), stg::FlagsOf(mode), 0,
                                               0, &stream))) {
    return nullptr;
  }
  return stg::WrapStream(stream);
}

IKvStream* KvPrivateStorage::OpenStream(const char* name, unsigned mode) {
  IStream* stream = nullptr;
  if (storage && SUCCEEDED(storage->OpenStream(stg::WideNameOf(name).c_str(), nullptr,
                                               stg::OpenFlagsOf(mode), 0, &stream))) {
    return stg::WrapStream(stream);
  }
  return (mode & OpenModeCreate) ? CreateStream(name, mode) : nullptr;
}

bool KvPrivateStorage::DeleteStream(const char* name) {
  return storage && SUCCEEDED(storage->DestroyElement(stg::WideNameOf(name).c_str()));
}

IKvStorage* KvPrivateStorage::CreateStorage(const char* name, unsigned mode, bool, bool) {
  IStorage* sub = nullptr;
  if (!storage || FAILED(storage->CreateStorage(stg::WideNameOf(name).c_str(), stg::FlagsOf(mode),
                                                0, 0, &sub))) {
    return nullptr;
  }
  return new KvPrivateStorage(sub);
}

IKvStorage* KvPrivateStorage::OpenStorage(const char* name, unsigned mode, bool native,
                                          bool external) {
  IStorage* sub = nullptr;
  if (!storage) return nullptr;
  const HRESULT status = storage->OpenStorage(stg::WideNameOf(name).c_str(), nullptr,
                                              stg::OpenFlagsOf(mode), nullptr, 0, &sub);
  if (SUCCEEDED(status)) return new KvPrivateStorage(sub);
  const bool makesIt = (mode & OpenModeCreate) && stg::IsAbsent(status);
  return makesIt ? CreateStorage(name, mode, native, external) : nullptr;
}

bool KvPrivateStorage::FindFirst(KvString& name, unsigned& attributes) {
  return enumeration->First(storage, name, attributes);
}

bool KvPrivateStorage::FindNext(KvString& name, unsigned& attributes) {
  return enumeration->Next(name, attributes);
}
