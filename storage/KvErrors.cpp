#include "storage/KvErrors.h"

#include <iterator>
#include <utility>

#include "platform/RawFile.h"
#include "settings/MessageDialog.h"
#include "settings/ZNDebugMonitor.h"

namespace {

constexpr unsigned kExclamation = 0x30;

// From cause 2 on.
constexpr const char* kCauseTexts[] = {
    "\nThe file could not be located.",
    "\nAll or part of the path is invalid.",
    "\nThe permitted number of open files was exceeded.",
    "\nThe file could not be accessed.",
    "\nThere was an attempt to use an invalid file handle.",
    "\nThe current working directory cannot be removed.",
    "\nThere are no more directory entries.",
    "\nThere was an error trying to set the file pointer.",
    "\nThere was a hardware error.",
    "\nSHARE.EXE was not loaded, or a shared region was locked.",
    "\nThere was an attempt to lock a region that was already locked.",
    "\nThe disk is full.",
    "\nThe end of file was reached.",
};
constexpr int kFirstCauseWithText = 2;

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
  const int index = static_cast<int>(cause) - kFirstCauseWithText;
  if (index >= 0 && index < static_cast<int>(std::size(kCauseTexts))) message += kCauseTexts[index];
  return message;
}

void ReportFileError(const KvFileException& error) {
  if (error.Cause() == FileCause::None) return;
  ZNMessageBox(error.Message(), "", kExclamation);
}
