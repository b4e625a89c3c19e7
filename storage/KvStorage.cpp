#include "storage/KvStorage.h"

#include <chrono>
#include <thread>

#include "platform/SystemMessage.h"
#include "settings/ZNDebugMonitor.h"
#include "storage/StgElements.h"

namespace {

constexpr char kTopic[] = "KvStorage_Quillan";
constexpr int kTries = 100;
constexpr int kOpenStorageTries = 3;
constexpr std::chrono::milliseconds kPause(10);

void Pause() {
  std::this_thread::sleep_for(kPause);
}

// Three calls, as the developer who reads the monitor expects them.
void Tell(HRESULT status, const char* words, const char* name) {
  ZNDebugMonitor(kTopic, "%s", platform::SystemMessage(status).c_str());
  ZNDebugMonitor(kTopic, "%s%s", words, name ? name : "");
  ZNDebugMonitor(kTopic, "\n");
}

KvString FolderOf(const KvString& path) {
  const int at = path.ReverseFind('\\');
  return at < 0 ? path : path.Left(at);
}

}  // namespace

// --- the file

KvStorage::KvStorage(const char* filePath, unsigned mode, bool, bool)
    : KvStorage(filePath, stg::OpenFlagsOf(mode), mode) {}

KvStorage* KvStorage::OpenShared(const char* path) {
  return new KvStorage(path, STGM_READ | STGM_SHARE_DENY_WRITE, OpenModeRead);
}

KvStorage::KvStorage(const char* filePath, DWORD openFlags, unsigned mode)
    : enumeration(std::make_unique<stg::Enumeration>()), path(filePath) {
  HRESULT status = S_OK;
  for (int i = 0; i < kTries; ++i) {
    status = OpenFile(openFlags, mode);
    if (SUCCEEDED(status)) break;
    TellOpenFailure(status);
    if (!stg::IsHeld(status)) break;
    Pause();
  }
  bad = FAILED(status) ? 1 : 0;
  openStatus = status;
  folder = FolderOf(path);
}

KvStorage::KvStorage(IStorage* owned)
    : storage(owned), enumeration(std::make_unique<stg::Enumeration>()) {}

KvStorage::~KvStorage() {
  enumeration.reset();
  if (storage) storage->Release();
}

HRESULT KvStorage::OpenFile(DWORD openFlags, unsigned mode) {
  const stg::WideName wide = stg::WidePathOf(path);
  HRESULT status = StgOpenStorage(wide.c_str(), nullptr, openFlags, nullptr, 0, &storage);
  if (FAILED(status) && (mode & OpenModeCreate) && stg::IsAbsent(status)) {
    status = StgCreateDocfile(wide.c_str(), stg::FlagsOf(mode), 0, &storage);
  }
  if (FAILED(status)) storage = nullptr;
  return status;
}

void KvStorage::TellOpenFailure(HRESULT status) const {
  const DWORD before = GetLastError();
  ZNDebugMonitor(kTopic, "%s", platform::SystemMessage(status).c_str());
  ZNDebugMonitor(kTopic, "%s", static_cast<const char*>(path));
  ZNDebugMonitor(kTopic, " in new KVStorage\n ");
  SetLastError(before == 0 ? static_cast<DWORD>(status) : before);
}

KvStorage* KvStorage::CreateNewKvStorage(const char* path, unsigned mode, bool, bool) {
  auto made = std::make_unique<KvStorage>(path, mode, false, false);
  return made->IsBad() ? nullptr : made.release();
}

void KvStorage::Close() {
  delete this;
}

// --- streams

IKvStream* KvStorage::CreateStream(const char* name, unsigned mode) {
  const stg::WideName wide = stg::WideNameOf(name);
  for (int i = 0; storage && i < kTries; ++i) {
    IStream* stream = nullptr;
    const HRESULT status = storage->CreateStream(wide.c_str(), stg::FlagsOf(mode), 0, 0, &stream);
    if (SUCCEEDED(status)) return stg::WrapStream(stream);
    Tell(status, "", name);
    if (!stg::IsHeld(status)) break;
    Pause();
  }
  return nullptr;
}

IKvStream* KvStorage::OpenStream(const char* name, unsigned mode) {
  const stg::WideName wide = stg::WideNameOf(name);
  for (int i = 0; storage && i < kTries; ++i) {
    IStream* stream = nullptr;
    HRESULT status = storage->OpenStream(wide.c_str(), nullptr, stg::OpenFlagsOf(mode), 0, &stream);
    if (FAILED(status) && (mode & OpenModeCreate) && stg::IsAbsent(status)) {
      status = storage->CreateStream(wide.c_str(), stg::FlagsOf(mode), 0, 0, &stream);
    }
    if (SUCCEEDED(status)) return stg::WrapStream(stream);
    // A shared or locked stream is not waited for: callers rely on a quick answer.
    if (status != STG_E_ACCESSDENIED) {
      Tell(status, "", name);
      break;
    }
    Pause();
  }
  return nullptr;
}

bool KvStorage::DeleteStream(const char* name) {
  return storage && SUCCEEDED(storage->DestroyElement(stg::WideNameOf(name).c_str()));
}

// --- storages

IKvStorage* KvStorage::CreateStorage(const char* name, unsigned mode, bool, bool) {
  const stg::WideName wide = stg::WideNameOf(name);
  for (int i = 0; storage && i < kTries; ++i) {
    IStorage* sub = nullptr;
    const HRESULT status = storage->CreateStorage(wide.c_str(), stg::FlagsOf(mode), 0, 0, &sub);
    if (SUCCEEDED(status)) return Wrap(sub);
    if (!stg::IsHeld(status)) {
      Tell(status, "", name);
      break;
    }
    Pause();
  }
  return nullptr;
}

IKvStorage* KvStorage::OpenStorage(const char* name, unsigned mode, bool, bool) {
  const stg::WideName wide = stg::WideNameOf(name);
  for (int i = 0; storage && i < kOpenStorageTries; ++i) {
    IStorage* sub = nullptr;
    HRESULT status =
        storage->OpenStorage(wide.c_str(), nullptr, stg::OpenFlagsOf(mode), nullptr, 0, &sub);
    if (FAILED(status)) Tell(status, " on OpenStorage with ", name);
    if (FAILED(status) && (mode & OpenModeCreate) && stg::IsAbsent(status)) {
      status = storage->CreateStorage(wide.c_str(), stg::FlagsOf(mode), 0, 0, &sub);
    }
    if (SUCCEEDED(status)) return Wrap(sub);
    if (!stg::IsHeld(status)) break;
    Pause();
  }
  return nullptr;
}

// --- elements

bool KvStorage::FindFirst(KvString& name, unsigned& attributes) {
  return enumeration->First(storage, name, attributes);
}

bool KvStorage::FindNext(KvString& name, unsigned& attributes) {
  return enumeration->Next(name, attributes);
}

bool KvStorage::Exists(const char* name) {
  KvString found;
  unsigned attributes = 0;
  for (bool any = FindFirst(found, attributes); any; any = FindNext(found, attributes)) {
    if (found == name) return true;
  }
  return false;
}

bool KvStorage::CopyTo(KvStorage* target) {
  if (!storage || !target || !target->storage) return true;
  return SUCCEEDED(storage->CopyTo(0, nullptr, nullptr, target->storage));
}

void KvStorage::GetStat(STATSTG* out) {
  if (storage) storage->Stat(out, STATFLAG_DEFAULT);
}
