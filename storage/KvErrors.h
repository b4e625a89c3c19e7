// What storages, streams and the picture box throw.
#pragma once

#include <cstdint>

#include "base/Export.h"
#include "base/KvString.h"

// A fault in a compressed stream; thrown as a value. Copies share the text.
class FXBOX_API KvStreamException {
 public:
  KvStreamException(std::int32_t errorCode, const char* message) : code(errorCode), text(message) {}
  KvStreamException(const KvStreamException&) = default;
  KvStreamException& operator=(const KvStreamException&) = default;
  virtual ~KvStreamException();

  std::int32_t Code() const { return code; }
  const char* Message() const { return text; }

 private:
  std::int32_t code;
  KvString text;
};

// A misuse of the picture box. Made with new and thrown as a pointer; who catches it deletes it.
// Tells the debug monitor about itself under the topic "KVExeption".
class FXBOX_API CKvError {
 public:
  CKvError(const char* message, std::uint32_t errorCode, const char* file, int line);

  const KvString& Text() const { return text; }
  std::uint32_t Code() const { return code; }
  const KvString& Location() const { return location; }

 private:
  KvString text;  // "CGalleryError-Exception: " and the message
  std::uint32_t code;
  KvString location;  // "file(line)"
};

// A file of a storage that cannot be used. Thrown as a pointer by hosts' own storages; who catches
// it deletes it.
class FXBOX_API CStorageFileError {
 public:
  explicit CStorageFileError(const char* message) : text(message) {}
  const KvString& Text() const { return text; }

 private:
  KvString text;
};

// Why a file operation failed, in the numbering that hosts know.
enum class FileCause {
  None = 0,
  Generic = 1,
  NotFound = 2,
  BadPath = 3,
  TooManyOpenFiles = 4,
  AccessDenied = 5,
  InvalidFile = 6,
  RemoveCurrentFolder = 7,
  FolderFull = 8,
  BadSeek = 9,
  HardIo = 10,
  SharingViolation = 11,
  LockViolation = 12,
  DiskFull = 13,
  EndOfFile = 14,
};

// A file that cannot be opened, read or written; thrown as a value.
class FXBOX_API KvFileException {
 public:
  // `osError` in the numbers of platform/RawFile.h.
  KvFileException(int osError, const char* file);
  KvFileException(FileCause why, const char* file) : cause(why), systemError(0), fileName(file) {}

  FileCause Cause() const { return cause; }
  int SystemError() const { return systemError; }
  const KvString& FileName() const { return fileName; }
  // "Error processing file 'NAME'", and a second line where the cause has words.
  KvString Message() const;

 private:
  FileCause cause;
  int systemError;
  KvString fileName;
};

// Shows the message in a box, and nothing when there is no cause.
FXBOX_API void ReportFileError(const KvFileException& error);
