#include "platform/compound/TreeCopy.h"

#include <objbase.h>

#include <algorithm>
#include <limits>

#include "platform/component/ComPtr.h"

namespace platform::compound {
namespace {

constexpr DWORD kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

struct Item {
  std::u16string name;
  bool isStream;
};

// One storage that is still to be copied.
struct Job {
  ComPtr<IStorage> source;
  ComPtr<IStorage> target;
};

void Check(HRESULT status) {
  if (FAILED(status)) Fail(status);
}

std::vector<Item> ItemsOf(IStorage* storage) {
  std::vector<Item> items;
  ComPtr<IEnumSTATSTG> elements;
  Check(storage->EnumElements(0, nullptr, 0, elements.Put()));
  STATSTG stat = {};
  ULONG fetched = 0;
  while (elements->Next(1, &stat, &fetched) == S_OK) {
    items.push_back({stat.pwcsName, stat.type == STGTY_STREAM});
    CoTaskMemFree(stat.pwcsName);
  }
  return items;
}

void CopyStream(IStream* source, IStorage* target, const OLECHAR* name) {
  ComPtr<IStream> copy;
  Check(target->CreateStream(name, kWrite | STGM_CREATE, 0, 0, copy.Put()));
  ULARGE_INTEGER all;
  all.QuadPart = std::numeric_limits<std::uint64_t>::max();
  Check(source->CopyTo(copy.Get(), all, nullptr, nullptr));
  Check(copy->Commit(STGC_DEFAULT));
}

// The storage of the name in the target, with class and state of the source.
ComPtr<IStorage> CounterpartOf(IStorage* source, IStorage* target, const OLECHAR* name) {
  ComPtr<IStorage> made;
  if (FAILED(target->OpenStorage(name, nullptr, kWrite, nullptr, 0, made.Put()))) {
    Check(target->CreateStorage(name, kWrite, 0, 0, made.Put()));
  }
  STATSTG stat = {};
  Check(source->Stat(&stat, STATFLAG_NONAME));
  Check(made->SetClass(stat.clsid));
  Check(made->SetStateBits(stat.grfStateBits, std::numeric_limits<DWORD>::max()));
  return made;
}

void CopyStreamNamed(const Job& job, const std::u16string& name) {
  ComPtr<IStream> stream;
  Check(job.source->OpenStream(name.c_str(), nullptr, kRead, 0, stream.Put()));
  CopyStream(stream.Get(), job.target.Get(), name.c_str());
}

Job JobFor(const Job& job, const std::u16string& name) {
  ComPtr<IStorage> inner;
  Check(job.source->OpenStorage(name.c_str(), nullptr, kRead, nullptr, 0, inner.Put()));
  ComPtr<IStorage> made = CounterpartOf(inner.Get(), job.target.Get(), name.c_str());
  return {std::move(inner), std::move(made)};
}

bool IsLeftOut(const Item& item, const CopyFilter& filter) {
  const NameKey key = KeyOf(item.name);
  return (item.isStream ? filter.withoutStreams : filter.withoutStorages) ||
         std::find(filter.names.begin(), filter.names.end(), key) != filter.names.end();
}

}  // namespace

CopyFilter CopyFilter::Of(DWORD excludedCount, const IID* excluded, SNB exclude) {
  CopyFilter filter;
  for (DWORD i = 0; excluded && i < excludedCount; ++i) {
    filter.withoutStorages = filter.withoutStorages || IsEqualIID(excluded[i], IID_IStorage);
    filter.withoutStreams = filter.withoutStreams || IsEqualIID(excluded[i], IID_IStream);
  }
  for (; exclude && *exclude; ++exclude) filter.names.push_back(KeyOf(*exclude));
  return filter;
}

// A storage above another stays open while that one is copied: a chain of jobs, not of calls.
void CopyTree(IStorage* source, IStorage* target, const CopyFilter& filter) {
  std::vector<Job> jobs = {{ComPtr<IStorage>(source), ComPtr<IStorage>(target)}};
  std::vector<std::vector<Item>> left = {ItemsOf(source)};
  while (!jobs.empty()) {
    if (left.back().empty()) {
      jobs.pop_back();
      left.pop_back();
      continue;
    }
    const Item item = left.back().back();
    left.back().pop_back();
    if (jobs.size() == 1 && IsLeftOut(item, filter)) continue;
    if (item.isStream) {
      CopyStreamNamed(jobs.back(), item.name);
      continue;
    }
    jobs.push_back(JobFor(jobs.back(), item.name));
    left.push_back(ItemsOf(jobs.back().source.Get()));
  }
}

void CopyElement(IStorage* source, const OLECHAR* name, IStorage* target, const OLECHAR* newName) {
  ComPtr<IStream> stream;
  const HRESULT status = source->OpenStream(name, nullptr, kRead, 0, stream.Put());
  if (SUCCEEDED(status)) {
    CopyStream(stream.Get(), target, newName);
    return;
  }
  if (status != STG_E_FILENOTFOUND) Fail(status);
  ComPtr<IStorage> inner;
  Check(source->OpenStorage(name, nullptr, kRead, nullptr, 0, inner.Put()));
  const ComPtr<IStorage> made = CounterpartOf(inner.Get(), target, newName);
  CopyTree(inner.Get(), made.Get(), {});
}

}  // namespace platform::compound
