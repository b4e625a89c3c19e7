#include "program/WholePicture.h"

#include <cstdlib>
#include <cstring>

#include "base/Dib.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "program/PictureInput.h"

namespace program {
namespace {

base::DibHeader HeaderOf(const BYTE* dib) {
  base::DibHeader header;
  std::memcpy(&header, dib, sizeof header);
  return header;
}

// Whether a plane has this depth and the size of the picture.
bool HasShape(const BYTE* dib, int bits, const MemoryPicture& picture) {
  const base::DibHeader header = HeaderOf(dib);
  return std::abs(header.Bits()) == bits && header.biWidth == picture.Width() &&
         std::abs(std::int64_t{header.biHeight}) == picture.Height();
}

}  // namespace

std::optional<std::string> SharedIdOf(const std::string& input) {
  const std::string_view prefix = kSharedPrefix;
  if (input.compare(0, prefix.size(), prefix) != 0) return std::nullopt;
  if (input.size() == prefix.size()) throw UsageError(input + ": the id is missing");
  return ChainTextOf(input.substr(prefix.size()));
}

imageio::Rows RowsOf(const MemoryPicture& picture, const std::string& where) {
  if (!picture.IsValid()) throw FileError(where, "holds no picture");
  const bool fits = HasShape(picture.Image(), base::kColourBits, picture) &&
                    (!picture.Mask() || HasShape(picture.Mask(), 8, picture));
  if (!fits) throw FileError(where, "the picture has not 24 bits with a mask of its size");
  return {picture.ColourRows(), picture.MaskRows()};
}

std::unique_ptr<MemoryPicture> ReadWhole(const std::string& name) {
  const PictureInput input(PathOf(name), {});
  try {
    imageio::ImageReader reader = input.Open();
    const imageio::ImageInfo& info = reader.Info();
    auto picture =
        std::make_unique<MemoryPicture>("whole", info.width, info.height, true, info.hasMask);
    if (!picture->IsValid()) throw FileError(input.Name(), "there is not enough memory for it");
    const bool complete = reader.Read({picture->ColourRows(), picture->MaskRows()},
                                      [](double) { return !IsInterrupted(); });
    return complete ? std::move(picture) : nullptr;
  } catch (const imageio::ImageError& error) {
    throw FileError(input.Name(), error.what());
  }
}

}  // namespace program
