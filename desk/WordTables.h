// The tables that are made from resources/strings/desk; each ends with nulls.
#pragma once

#include "dialogs/WordEntry.h"

namespace desk {

using dialogs::WordEntry;

extern const WordEntry kWords_de[];
extern const WordEntry kWords_en[];

}  // namespace desk
