// Names of elements: which are allowed, and their order.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/compound/Format.h"

namespace platform::compound {

// 1 to 31 units, none of / \ : !
bool IsValidName(std::u16string_view name);

// Shorter names come first, equally long ones in the order of their upper-case units.
using NameKey = std::pair<std::size_t, std::u16string>;
NameKey KeyOf(std::u16string_view name);

}  // namespace platform::compound
