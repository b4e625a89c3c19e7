#include "storage/KvErrors.h"

#include <utility>

#include "platform/RawFile.h"
#include "settings/MessageDialog.h"
#include "settings/ZNDebugMonitor.h"

namespace {

constexpr unsigned kExclamation = 0x30;

constexpr std::pair<FileCause, const char*> kCauseTexts[] = {
    {FileCause::NotFound, "\nThe file could not be located."},
    {FileCause::BadPath, "\nAll or part of the path is invalid."},
    {FileCause::TooManyOpenFiles, "\nThe permitted number of open files was exceeded."},
    {FileCause::AccessDenied, "\nThe file could not be accessed."},
    {FileCause::InvalidFile, "\nThere was an attempt to use an invalid file handle."},
    {FileCause::RemoveCurrentFolder, "\nThe current working directory cannot be removed."},
    {FileCause::FolderFull, "\nThere are no more directory entries."},
    {FileCause::BadSeek, "\nThere was an error trying to set the file pointer."},
    {FileCause::HardIo, "\nThere was a hardware error."},
    {FileCause::SharingViolation, "\nSHARE.EXE was not loaded, or a shared region was locked."},
    {FileCause::LockViolation, "\nThere was an attempt to lock a region that was already locked."},
    {FileCause::DiskFull, "\nThe disk is full."},
    {FileCause::EndOfFile, "\nThe end of file was reached."},
};

FileCause CauseOf(int systemError) {
  constexpr std::pair<int, FileCause> kCauses[] = {
      {platform::kNoError, FileCause::None},
      {platform::kFileNotFound, FileCause::NotFound},
      {platform::kPathNotFound, FileCause::BadPath},
      {platform::kTooManyOpenFiles, FileCause::TooManyOpenFiles},
      {platform::kAccessDenied, FileCause::AccessDenied},
      {platform::kSharingViolation, FileCause::SharingViolation},
      {platform::kLockViolation, FileCause::LockViolation},
      {platform::kDiskFull, FileCause::DiskFull},
  };
  for (const auto& [number, cause] : kCauses) {
    if (number == systemError) return cause;
  }
  return FileCause::Generic;
}

}  // namespace

KvStreamException::~KvStreamException() = default;

CKvError::CKvError(const char* message, std::uint32_t errorCode, const char* file, int line)
    : text("CGalleryError-Exception: "), code(errorCode) {
  text += message;
  location.Format("%s(%d)", file, line);
  ZNDebugMonitor("KVExeption", "%s(%d):%s", file, line, message);
}

KvFileException::KvFileException(int osError, const char* file)
    : cause(CauseOf(osError)), systemError(osError), fileName(file) {}

KvString KvFileException::Message() const {
  KvString message;
  message.Format("Error processing file '%s'", static_cast<const char*>(fileName));
  for (const auto& [which, text] : kCauseTexts) {
    if (which == cause) message += text;
  }
  return message;
}

void ReportFileError(const KvFileException& error) {
  if (error.Cause() == FileCause::None) return;
  ZNMessageBox(error.Message(), "", kExclamation);
}
