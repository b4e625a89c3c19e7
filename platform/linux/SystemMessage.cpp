// The words for the codes of compound files; others are told as numbers.
#include "platform/SystemMessage.h"

#include <cstdio>
#include <utility>

namespace platform {

std::string SystemMessage(HRESULT status) {
  constexpr std::pair<HRESULT, const char*> kMessages[] = {
      {STG_E_INVALIDFUNCTION, "Unable to perform requested operation."},
      {STG_E_FILENOTFOUND, "The file could not be found."},
      {STG_E_PATHNOTFOUND, "The path could not be found."},
      {STG_E_TOOMANYOPENFILES, "There are too many open files."},
      {STG_E_ACCESSDENIED, "Access denied."},
      {STG_E_INSUFFICIENTMEMORY, "There is not enough memory."},
      {STG_E_WRITEFAULT, "A disk error occurred during a write operation."},
      {STG_E_READFAULT, "A disk error occurred during a read operation."},
      {STG_E_SHAREVIOLATION, "A share violation has occurred."},
      {STG_E_LOCKVIOLATION, "A lock violation has occurred."},
      {STG_E_FILEALREADYEXISTS, "The element exists already, or the file is no compound file."},
      {STG_E_MEDIUMFULL, "There is not enough disk space."},
      {STG_E_INVALIDHEADER, "The compound file has an invalid head."},
      {STG_E_INVALIDNAME, "The name is not valid."},
      {STG_E_REVERTED, "The element's storage was closed or the element was deleted."},
      {STG_E_OLDFORMAT, "The compound file has a version that is not known."},
      {STG_E_DOCFILECORRUPT, "The compound file is damaged."},
      {STG_E_DOCFILETOOLARGE, "The compound file is too large."},
  };
  for (const auto& [code, message] : kMessages) {
    if (code == status) return message;
  }
  char text[32];
  std::snprintf(text, sizeof text, "status 0x%08X", static_cast<unsigned>(status));
  return text;
}

}  // namespace platform
