// The dialogs of the crop filters: a view with handles, and the numbers below it.
#pragma once

#include <span>

#include "dialogs/DialogClass.h"

namespace dialogs {

// The picture's size comes from the host by the named call "PictureSize" with the tag list text
// Width, Height; until then the filter alone keeps to a ratio.
CPdibFilterDialog* NewCropDialog(const DialogClass& row);

std::span<const PanelField> CropFields();
std::span<const PanelRow> CropRows();
const char* CropDefaultText();
std::span<const PanelField> RotCropFields();
std::span<const PanelRow> RotCropRows();
const char* RotCropDefaultText();
std::span<const PanelField> PrintCropFields();
std::span<const PanelRow> PrintCropRows();
const char* PrintCropDefaultText();

}  // namespace dialogs
