// The tables that are made from resources/strings; each ends with nulls.
#pragma once

#include "dialogs/WordEntry.h"

namespace dialogs {

extern const WordEntry kWords_de[];
extern const WordEntry kWords_en[];

}  // namespace dialogs
