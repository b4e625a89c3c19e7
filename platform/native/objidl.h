// Stand-in for the system header of the same name: streams and storages of compound files. What the
// Linux side promises beyond the system's tables stands in objbase.h.
#pragma once

#include <unknwn.h>

enum STGTY { STGTY_STORAGE = 1, STGTY_STREAM = 2, STGTY_LOCKBYTES = 3, STGTY_PROPERTY = 4 };
enum STREAM_SEEK { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STATFLAG { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1, STATFLAG_NOOPEN = 2 };
enum STGMOVE { STGMOVE_MOVE = 0, STGMOVE_COPY = 1, STGMOVE_SHALLOWCOPY = 2 };
enum LOCKTYPE { LOCK_WRITE = 1, LOCK_EXCLUSIVE = 2, LOCK_ONLYONCE = 4 };
enum STGC {
  STGC_DEFAULT = 0,
  STGC_OVERWRITE = 1,
  STGC_ONLYIFCURRENT = 2,
  STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
  STGC_CONSOLIDATE = 8
};

inline constexpr DWORD STGM_DIRECT = 0;
inline constexpr DWORD STGM_TRANSACTED = 0x00010000;
inline constexpr DWORD STGM_SIMPLE = 0x08000000;
inline constexpr DWORD STGM_READ = 0;
inline constexpr DWORD STGM_WRITE = 1;
inline constexpr DWORD STGM_READWRITE = 2;
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x20;
inline constexpr DWORD STGM_SHARE_DENY_READ = 0x30;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x40;
inline constexpr DWORD STGM_FAILIFTHERE = 0;
inline constexpr DWORD STGM_CREATE = 0x00001000;
inline constexpr DWORD STGM_CONVERT = 0x00020000;
inline constexpr DWORD STGM_PRIORITY = 0x00040000;
inline constexpr DWORD STGM_NOSCRATCH = 0x00100000;
inline constexpr DWORD STGM_NOSNAPSHOT = 0x00200000;
inline constexpr DWORD STGM_DIRECT_SWMR = 0x00400000;
inline constexpr DWORD STGM_DELETEONRELEASE = 0x04000000;

// A list of names that ends in null.
using SNB = LPOLESTR*;

// The name belongs to whoever asked and is freed with CoTaskMemFree; null where it was not wanted.
struct STATSTG {
  LPOLESTR pwcsName;
  DWORD type;
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

struct ISequentialStream : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) = 0;
  virtual HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) = 0;

 protected:
  ~ISequentialStream() = default;
};

struct IStream : ISequentialStream {
  virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                         ULARGE_INTEGER* position) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count,
                                           ULARGE_INTEGER* read, ULARGE_INTEGER* written) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                               DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                                 DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IStream** result) = 0;

 protected:
  ~IStream() = default;
};

struct ILockBytes : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* buffer, ULONG count,
                                           ULONG* read) = 0;
  virtual HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER offset, const void* buffer, ULONG count,
                                            ULONG* written) = 0;
  virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
  virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                               DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                                 DWORD type) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD flags) = 0;

 protected:
  ~ILockBytes() = default;
};

struct IEnumSTATSTG : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG count, STATSTG* elements, ULONG* fetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG count) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** result) = 0;

 protected:
  ~IEnumSTATSTG() = default;
};

struct IStorage : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1,
                                                 DWORD reserved2, IStream** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* name, void* reserved1, DWORD mode,
                                               DWORD reserved2, IStream** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* name, DWORD mode, DWORD reserved1,
                                                  DWORD reserved2, IStorage** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode,
                                                SNB exclude, DWORD reserved, IStorage** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(DWORD excludedCount, const IID* excluded, SNB exclude,
                                           IStorage* target) = 0;
  virtual HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* name, IStorage* target,
                                                  const OLECHAR* newName, DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD flags) = 0;
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  virtual HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                                 IEnumSTATSTG** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* oldName,
                                                  const OLECHAR* newName) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* name, const FILETIME* created,
                                                    const FILETIME* accessed,
                                                    const FILETIME* modified) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetClass(REFCLSID classId) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetStateBits(DWORD bits, DWORD mask) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* result, DWORD flags) = 0;

 protected:
  ~IStorage() = default;
};

using LPSTORAGE = IStorage*;
using LPSTREAM = IStream*;
using LPLOCKBYTES = ILockBytes*;

inline constexpr IID IID_ILockBytes = {0x0000000A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IStorage = {0x0000000B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IStream = {0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumSTATSTG = {0x0000000D, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
