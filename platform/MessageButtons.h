// The buttons of message boxes.
#pragma once

namespace platform {

// The button that a style makes the default one: 1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes,
// 7 No. The lowest four bits are the set of buttons, bits 8 and 9 the place of the default one.
constexpr int DefaultButton(unsigned style) {
  constexpr int kSets[6][3] = {{1, 1, 1}, {1, 2, 1}, {3, 4, 5}, {6, 7, 2}, {6, 7, 6}, {4, 2, 4}};
  const unsigned set = style & 15;
  const unsigned place = style >> 8 & 3;
  return set < 6 && place < 3 ? kSets[set][place] : 1;
}

}  // namespace platform
