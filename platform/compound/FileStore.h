// A file of the system below a compound file, with the lock that keeps others out.
#pragma once

#include <memory>

#include "platform/compound/ByteStore.h"

namespace platform::compound {

struct FileAccess {
  bool writes = false;
  bool isExclusive = true;  // else others may read at the same time
};

// All throw Failure with the system's codes; STG_E_SHAREVIOLATION or STG_E_LOCKVIOLATION while
// somebody else has the file.
std::unique_ptr<ByteStore> OpenFile(const OLECHAR* path, FileAccess access);

// Makes a file with this content that appears whole and locked. STG_E_FILEALREADYEXISTS when there
// is one.
using FillStore = void (*)(ByteStore& store);
std::unique_ptr<ByteStore> CreateFile(const OLECHAR* path, FillStore fill);

// A file without a name, gone at its end.
std::unique_ptr<ByteStore> CreateUnnamedFile();

}  // namespace platform::compound
