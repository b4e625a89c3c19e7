// Numbers of clipboard formats, and media, as winuser.h and ole2.h say.
#include <ole2.h>
#include <winbase.h>
#include <winuser.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "base/CodePage.h"

namespace {

constexpr UINT kFirstFormat = 0xC000;
constexpr std::size_t kMostFormats = 0x4000;

std::mutex lock;

std::vector<std::string>& Names() {
  static std::vector<std::string> names;
  return names;
}

bool SameName(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return base::ToLower(x) == base::ToLower(y); });
}

}  // namespace

UINT RegisterClipboardFormatA(const char* name) {
  if (!name || !*name) return 0;
  const std::lock_guard guard(lock);
  auto& names = Names();
  auto found = std::find_if(names.begin(), names.end(),
                            [&](const std::string& known) { return SameName(known, name); });
  if (found == names.end()) {
    if (names.size() == kMostFormats) return 0;
    found = names.insert(names.end(), name);
  }
  return kFirstFormat + static_cast<UINT>(found - names.begin());
}

int GetClipboardFormatNameA(UINT format, char* buffer, int size) {
  const std::lock_guard guard(lock);
  if (format < kFirstFormat || format - kFirstFormat >= Names().size()) return 0;
  if (!buffer || size < 1) return 0;
  const std::string& name = Names()[format - kFirstFormat];
  const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(buffer, name.data(), length);
  buffer[length] = 0;
  return static_cast<int>(length);
}

void ReleaseStgMedium(STGMEDIUM* medium) {
  if (!medium) return;
  if (medium->tymed == TYMED_ISTREAM && medium->pstm) medium->pstm->Release();
  if (medium->tymed == TYMED_ISTORAGE && medium->pstg) medium->pstg->Release();
  if (medium->pUnkForRelease) {
    medium->pUnkForRelease->Release();
  } else if (medium->tymed == TYMED_HGLOBAL) {
    GlobalFree(medium->hGlobal);
  } else if (medium->tymed == TYMED_FILE) {
    CoTaskMemFree(medium->lpszFileName);
  }
  *medium = {};
}
