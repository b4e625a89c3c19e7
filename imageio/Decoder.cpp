#include "imageio/Decoder.h"

#include <cmath>

#include "base/Dib.h"
#include "base/Rows.h"

namespace imageio {

void Decoder::SetSize(std::int64_t width, std::int64_t height) {
  if (width < 1 || height < 1) throw ImageError("the picture has no size");
  if (!base::DibBytes(base::kColourBits, width, height)) {
    throw ImageError("the picture is too large");
  }
  head.size = {static_cast<int>(width), static_cast<int>(height)};
}

void Decoder::NoteBits(int bits) {
  head.notes.push_back("its samples of " + std::to_string(bits) + " bits are taken with 8 bits");
}

std::string LibraryMessage(const char* text) {
  std::string message = text;
  while (!message.empty() && (message.back() == '.' || message.back() == '\n')) message.pop_back();
  const bool word = message.size() > 1 && message[1] >= 'a' && message[1] <= 'z';
  if (word && message[0] >= 'A' && message[0] <= 'Z') {
    message[0] = static_cast<char>(message[0] - 'A' + 'a');
  }
  return message.empty() ? "the picture is damaged" : message;
}

double PixelsAMetre(double anInch) {
  return std::round(anInch / 0.0254);
}

double PixelsAnInch(std::uint32_t aMetre) {
  const double exact = aMetre * 0.0254;
  const double whole = std::round(exact);
  return PixelsAMetre(whole) == aMetre ? whole : exact;
}

void StoreSamples(const BYTE* samples, int width, int channels, int stride, const RowBuffer& row) {
  const int green = channels < 3 ? 0 : 1;
  const int blue = channels < 3 ? 0 : 2;
  BYTE* colour = row.colour;
  const BYTE* pixel = samples;
  for (int x = 0; x < width; ++x, pixel += stride, colour += base::kBytesPerPixel) {
    colour[base::kBlue] = pixel[blue];
    colour[base::kGreen] = pixel[green];
    colour[base::kRed] = pixel[0];
  }
  if (row.mask == nullptr || channels % 2 != 0) return;
  const BYTE* alpha = samples + channels - 1;
  for (int x = 0; x < width; ++x, alpha += stride) row.mask[x] = static_cast<BYTE>(255 - *alpha);
}

}  // namespace imageio
