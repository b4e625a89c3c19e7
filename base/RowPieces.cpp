#include "base/RowPieces.h"

#include <cstring>

namespace base {

void CopyBytes(BYTE* to, const BYTE* from, std::size_t bytes) {
  std::memcpy(to, from, bytes);
}

}  // namespace base
