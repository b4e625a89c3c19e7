// The clipboard formats of chains, filters and their parameters.
#pragma once

#include <ole2.h>

#include <optional>
#include <string>

#include "base/Export.h"
#include "base/KvString.h"

struct IAnimFilterChain;

// All formats hold one text in global memory. A text of the plain kind has one of the four ProgIDs
// of size, offset and shadow filters; what is "fit for IA" has none of them.
enum class TransferFormat {
  FilterChain,
  FilterChainFitForIA,
  Filter,
  FilterFitForIA,
  ScaleFilter,
  FilterNotForTrash,
  FilterNotForTrashFitForIA,
  FilterParameter,
  FilterDialog,
  FilterDialogFitForIA,
  MergeChains
};

// Whether a chain text or ProgID holds none of the four ProgIDs. Null holds none.
FXBOX_API bool IsFitForIA(const char* text);

// The name under which the format is registered, "KVVeltraneAnimFilterChain".
FXBOX_API const char* TransferFormatName(TransferFormat format);
// As the system numbers it: content, all of it, global memory.
FXBOX_API FORMATETC TransferFormatRecord(TransferFormat format);

// Adds a format with its text; a null object or text does nothing.
FXBOX_API void AddTransferText(IDataObject* object, TransferFormat format, const char* text);
// Whether the object has data of the format; not for a null object.
FXBOX_API bool HoldsTransferText(IDataObject* object, TransferFormat format);
// Nothing where the object does not hold it.
FXBOX_API std::optional<std::string> ReadTransferText(IDataObject* object, TransferFormat format);

// A text in the code page that every program takes, in the system's own format for it.
FXBOX_API void AddPlainText(IDataObject* object, const char* text);
FXBOX_API std::optional<std::string> ReadPlainText(IDataObject* object);

// The same for one format.
template <TransferFormat format>
void AddTransferTextOf(IDataObject* object, const char* text) {
  AddTransferText(object, format, text);
}
inline constexpr auto* AddFilterChain = &AddTransferTextOf<TransferFormat::FilterChain>;
inline constexpr auto* AddFilterChainFitForIA =
    &AddTransferTextOf<TransferFormat::FilterChainFitForIA>;
inline constexpr auto* AddFilter = &AddTransferTextOf<TransferFormat::Filter>;
inline constexpr auto* AddFilterFitForIA = &AddTransferTextOf<TransferFormat::FilterFitForIA>;
inline constexpr auto* AddScaleFilter = &AddTransferTextOf<TransferFormat::ScaleFilter>;
inline constexpr auto* AddFilterNotForTrash = &AddTransferTextOf<TransferFormat::FilterNotForTrash>;
inline constexpr auto* AddFilterNotForTrashFitForIA =
    &AddTransferTextOf<TransferFormat::FilterNotForTrashFitForIA>;
inline constexpr auto* AddFilterParameter = &AddTransferTextOf<TransferFormat::FilterParameter>;
inline constexpr auto* AddFilterDialog = &AddTransferTextOf<TransferFormat::FilterDialog>;
inline constexpr auto* AddFilterDialogFitForIA =
    &AddTransferTextOf<TransferFormat::FilterDialogFitForIA>;
inline constexpr auto* AddMergeChains = &AddTransferTextOf<TransferFormat::MergeChains>;

// Whether the object holds one of the formats of a group, and its text: that of the first format of
// the group that is there.
FXBOX_API bool HoldsAnyFilterChain(IDataObject* object);   // both chains and the one to merge
FXBOX_API bool HoldsAnyFilter(IDataObject* object);        // the five of one filter
FXBOX_API bool HoldsAnyFilterDialog(IDataObject* object);  // both dialogs
FXBOX_API bool HoldsFilterParameter(IDataObject* object);
FXBOX_API std::optional<std::string> ReadAnyFilterChain(IDataObject* object);
FXBOX_API std::optional<std::string> ReadAnyFilter(IDataObject* object);
FXBOX_API std::optional<std::string> ReadAnyFilterDialog(IDataObject* object);
FXBOX_API std::optional<std::string> ReadFilterParameter(IDataObject* object);

// A chain's text, of up to 64,000 bytes; empty, and a line in the log, when it is longer or the
// chain has none to give.
FXBOX_API void SaveChainAsText(IAnimFilterChain* chain, KvString& text, const char* open,
                               const char* close);
