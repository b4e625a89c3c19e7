// What the sharer process and the tests that run it agree on.
#pragma once

inline constexpr int kSharedWidth = 40;
inline constexpr int kSharedHeight = 30;
// On Windows, where a process that is killed has a status like any other.
inline constexpr int kKilledStatus = 99;
