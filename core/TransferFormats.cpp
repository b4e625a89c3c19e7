#include "core/TransferFormats.h"

#include <winbase.h>
#include <winuser.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "core/AnimChain.h"
#include "core/Diagnostics.h"

namespace {

constexpr const char* kNames[] = {"KVVeltraneAnimFilterChain",
                                  "KVVeltraneAnimFilterChainFitForIA",
                                  "KVVeltraneAnimFilter",
                                  "KVVeltraneAnimFilterFitForIA",
                                  "KVVeltraneAnimScaleFilter",
                                  "KVVeltraneAnimFilterNotForTrash",
                                  "KVVeltraneAnimFilterNotForTrashFitForIA",
                                  "KVVeltraneAnimFilterParameter",
                                  "KVVeltraneAnimFilterDialog",
                                  "KVVeltraneAnimFilterDialogFitForIA",
                                  "KvVeltraneAnimFilterMergeChains"};

constexpr const char* kNotFit[] = {"ZNFilter.Scale.1", "ZNFilter.Scale100.1", "ZNFilter.Offset.1",
                                   "ZNFilter.Shadow.1"};

constexpr TransferFormat kChains[] = {
    TransferFormat::FilterChain, TransferFormat::FilterChainFitForIA, TransferFormat::MergeChains};
constexpr TransferFormat kFilters[] = {
    TransferFormat::Filter, TransferFormat::FilterFitForIA, TransferFormat::ScaleFilter,
    TransferFormat::FilterNotForTrash, TransferFormat::FilterNotForTrashFitForIA};
constexpr TransferFormat kDialogs[] = {TransferFormat::FilterDialog,
                                       TransferFormat::FilterDialogFitForIA};

// Shared, as clipboards of old wanted it.
constexpr UINT kBlockFlags = 0x2042;
// The terminator and one byte more.
constexpr std::size_t kBehindText = 2;

constexpr int kFirstSize = 4000;
constexpr int kSizeLimit = 100000;

HGLOBAL BlockOf(const char* text) {
  const std::size_t length = std::strlen(text);
  const HGLOBAL block = GlobalAlloc(kBlockFlags, length + kBehindText);
  if (!block) return nullptr;
  std::memcpy(GlobalLock(block), text, length + 1);
  GlobalUnlock(block);
  return block;
}

// Up to the terminator, or the whole block without one.
std::string TextOf(HGLOBAL block) {
  const auto* bytes = static_cast<const char*>(GlobalLock(block));
  if (!bytes) return {};
  const char* end = std::find(bytes, bytes + GlobalSize(block), '\0');
  std::string text(bytes, end);
  GlobalUnlock(block);
  return text;
}

FORMATETC RecordOf(UINT format) {
  return {static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
}

void AddText(IDataObject* object, FORMATETC record, const char* text) {
  if (!object || !text) return;
  STGMEDIUM medium = {};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = BlockOf(text);
  if (!medium.hGlobal) return;
  if (FAILED(object->SetData(&record, &medium, TRUE))) ReleaseStgMedium(&medium);
}

std::optional<std::string> ReadText(IDataObject* object, FORMATETC record) {
  STGMEDIUM medium = {};
  if (!object || FAILED(object->GetData(&record, &medium))) return std::nullopt;
  std::optional<std::string> text;
  if (medium.tymed == TYMED_HGLOBAL) text = TextOf(medium.hGlobal);
  ReleaseStgMedium(&medium);
  return text;
}

bool HoldsAny(IDataObject* object, std::span<const TransferFormat> formats) {
  return std::any_of(formats.begin(), formats.end(),
                     [&](TransferFormat format) { return HoldsTransferText(object, format); });
}

std::optional<std::string> ReadAny(IDataObject* object, std::span<const TransferFormat> formats) {
  for (const TransferFormat format : formats) {
    if (auto text = ReadTransferText(object, format)) return text;
  }
  return std::nullopt;
}

}  // namespace

bool IsFitForIA(const char* text) {
  return !text || std::none_of(std::begin(kNotFit), std::end(kNotFit), [&](const char* progId) {
    return std::strstr(text, progId) != nullptr;
  });
}

const char* TransferFormatName(TransferFormat format) {
  return kNames[static_cast<int>(format)];
}

FORMATETC TransferFormatRecord(TransferFormat format) {
  return RecordOf(RegisterClipboardFormatA(TransferFormatName(format)));
}

void AddTransferText(IDataObject* object, TransferFormat format, const char* text) {
  AddText(object, TransferFormatRecord(format), text);
}

bool HoldsTransferText(IDataObject* object, TransferFormat format) {
  FORMATETC record = TransferFormatRecord(format);
  return object && object->QueryGetData(&record) == S_OK;
}

std::optional<std::string> ReadTransferText(IDataObject* object, TransferFormat format) {
  return ReadText(object, TransferFormatRecord(format));
}

void AddPlainText(IDataObject* object, const char* text) {
  AddText(object, RecordOf(CF_TEXT), text);
}

std::optional<std::string> ReadPlainText(IDataObject* object) {
  return ReadText(object, RecordOf(CF_TEXT));
}

bool HoldsAnyFilterChain(IDataObject* object) {
  return HoldsAny(object, kChains);
}

bool HoldsAnyFilter(IDataObject* object) {
  return HoldsAny(object, kFilters);
}

bool HoldsAnyFilterDialog(IDataObject* object) {
  return HoldsAny(object, kDialogs);
}

bool HoldsFilterParameter(IDataObject* object) {
  return HoldsTransferText(object, TransferFormat::FilterParameter);
}

std::optional<std::string> ReadAnyFilterChain(IDataObject* object) {
  return ReadAny(object, kChains);
}

std::optional<std::string> ReadAnyFilter(IDataObject* object) {
  return ReadAny(object, kFilters);
}

std::optional<std::string> ReadAnyFilterDialog(IDataObject* object) {
  return ReadAny(object, kDialogs);
}

std::optional<std::string> ReadFilterParameter(IDataObject* object) {
  return ReadTransferText(object, TransferFormat::FilterParameter);
}

void SaveChainAsText(IAnimFilterChain* chain, KvString& text, const char* open, const char* close) {
  text.Empty();
  if (!chain) return;
  for (int size = kFirstSize; size <= kSizeLimit; size *= 2) {
    std::vector<char> buffer(static_cast<std::size_t>(size));
    if (SUCCEEDED(chain->GetChainText(buffer.data(), size, open, close, false))) {
      text = buffer.data();
      return;
    }
  }
  core::LogLine(-1, "Error in SaveChainAsText: String too long");
}
