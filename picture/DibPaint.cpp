// Painting packed bitmaps on devices and into other bitmaps.
#include <algorithm>
#include <cstring>
#include <optional>

#include "base/Dib.h"
#include "base/Rows.h"
#include "picture/DibFunctions.h"
#include "picture/PackedDib.h"
#include "platform/Device.h"

namespace {

using picture::DibReader;
using picture::LockedDib;
using picture::Nearest;
using platform::DeviceArea;

struct Part {
  std::int64_t x, y, width, height;
};

bool IsWithin(const Part& part, std::int64_t width, std::int64_t height) {
  return part.x >= 0 && part.y >= 0 && part.width >= 1 && part.height >= 1 &&
         part.width <= width - part.x && part.height <= height - part.y;
}

Part PartOf(const DibRectangle* given, const Part& otherwise) {
  return given ? Part{given->x, given->y, given->width, given->height} : otherwise;
}

// What both have in common; its sides are below 1 when that is nothing.
Part Common(const Part& a, const Part& b) {
  const std::int64_t x = std::max(a.x, b.x);
  const std::int64_t y = std::max(a.y, b.y);
  return {x, y, std::min(a.x + a.width, b.x + b.width) - x,
          std::min(a.y + a.height, b.y + b.height) - y};
}

// Rows of a part that is painted, from the bottom up, as they lie in bitmaps.
class Pixels {
 public:
  Pixels(const Part& of, std::int64_t bytesPerPixel)
      : part(of),
        pixelBytes(bytesPerPixel),
        rowBytes((of.width * bytesPerPixel + 3) / 4 * 4),
        bytes(static_cast<std::size_t>(rowBytes * of.height)) {}

  // Line 0 is the top one.
  BYTE* Line(std::int64_t line) { return bytes.data() + (part.height - 1 - line) * rowBytes; }
  BYTE* First() { return bytes.data(); }

  const Part part;
  const std::int64_t pixelBytes;

 private:
  const std::int64_t rowBytes;
  std::vector<BYTE> bytes;
};

// Takes the pixels for `pixels`, a part of `to`, from `from` in the bitmap.
void Sample(const DibReader& reader, const Part& from, const Part& to, bool asColour,
            Pixels& pixels) {
  const Nearest across{from.width, to.width};
  const Nearest down{from.height, to.height};
  const Part& part = pixels.part;
  const auto take = [&](std::int64_t y, const BYTE* row) {
    const std::int64_t line = reader.Height() - 1 - y - from.y;
    if (line < 0 || line >= from.height) return;
    const std::int64_t skipped = part.y - to.y;
    const std::int64_t first = std::max(down.FirstTarget(line) - skipped, std::int64_t{0});
    const std::int64_t behind = std::min(down.FirstTarget(line + 1) - skipped, part.height);
    for (std::int64_t i = first; i < behind; ++i) {
      BYTE* at = pixels.Line(i);
      for (std::int64_t x = part.x - to.x; x < part.x - to.x + part.width; ++x) {
        const BYTE* const pixel = row + (from.x + across.SourceOf(x)) * pixels.pixelBytes;
        at = std::copy_n(pixel, pixels.pixelBytes, at);
      }
    }
  };
  asColour ? reader.ForEachColourRow(take) : reader.ForEachRow(take);
}

// What is painted on: a device or a bitmap.
class Canvas {
 public:
  virtual ~Canvas() = default;
  virtual Part Area() const = 0;
  virtual bool Read(Pixels& pixels) = 0;
  virtual bool Write(Pixels& pixels) = 0;
};

class DeviceCanvas final : public Canvas {
 public:
  explicit DeviceCanvas(void* context) : device(context) {}

  Part Area() const override {
    DeviceArea area;
    if (!platform::PaintableArea(device, area)) throw imageio::ImageError("no such device");
    return {area.x, area.y, area.width, area.height};
  }
  bool Read(Pixels& pixels) override {
    return platform::ReadDevice(device, AreaOf(pixels.part), pixels.First());
  }
  bool Write(Pixels& pixels) override {
    return platform::WriteDevice(device, AreaOf(pixels.part), pixels.First());
  }

 private:
  static DeviceArea AreaOf(const Part& part) {
    return {static_cast<int>(part.x), static_cast<int>(part.y), static_cast<int>(part.width),
            static_cast<int>(part.height)};
  }

  void* device;
};

class BitmapCanvas final : public Canvas {
 public:
  explicit BitmapCanvas(DibHandle handle) : dib(handle) {
    if (dib.Reader().Layout().bits != base::kColourBits) {
      throw imageio::ImageError("the bitmap has not 24 bits");
    }
  }

  Part Area() const override { return {0, 0, dib.Reader().Width(), dib.Reader().Height()}; }
  bool Read(Pixels& pixels) override {
    ForEachLine(pixels,
                [](BYTE* own, BYTE* line, std::size_t count) { std::memcpy(line, own, count); });
    return true;
  }
  bool Write(Pixels& pixels) override {
    ForEachLine(pixels,
                [](BYTE* own, BYTE* line, std::size_t count) { std::memcpy(own, line, count); });
    return true;
  }

 private:
  template <class Function>
  void ForEachLine(Pixels& pixels, Function function) {
    const Part& part = pixels.part;
    for (std::int64_t i = 0; i < part.height; ++i) {
      BYTE* const row = dib.Row(dib.Reader().Height() - 1 - part.y - i);
      function(row + base::ColourOffset(static_cast<int>(part.x)), pixels.Line(i),
               base::ColourBytes(static_cast<int>(part.width)));
    }
  }

  LockedDib dib;
};

std::unique_ptr<Canvas> CanvasOf(const DibTarget& target) {
  if (target.bitmap) return std::make_unique<BitmapCanvas>(target.bitmap);
  return std::make_unique<DeviceCanvas>(target.device);
}

void Blend(Pixels& old, Pixels& fresh, Pixels& mask) {
  for (std::int64_t i = 0; i < fresh.part.height; ++i) {
    BYTE* to = fresh.Line(i);
    const BYTE* below = old.Line(i);
    const BYTE* const held = mask.Line(i);
    for (std::int64_t x = 0; x < fresh.part.width; ++x) {
      for (int c = 0; c < base::kBytesPerPixel; ++c, ++to, ++below) {
        *to = static_cast<BYTE>((*to * (255 - held[x]) + *below * held[x]) / 255);
      }
    }
  }
}

bool Paint(Canvas& canvas, const DibRectangle* to, const DibReader& reader, const DibReader* mask,
           const DibRectangle* from) {
  const Part source = PartOf(from, {0, 0, reader.Width(), reader.Height()});
  if (!IsWithin(source, reader.Width(), reader.Height())) return false;
  const Part target = PartOf(to, {0, 0, source.width, source.height});
  if (target.width < 1 || target.height < 1) return false;
  const Part painted = Common(target, canvas.Area());
  if (painted.width < 1 || painted.height < 1) return true;
  Pixels fresh(painted, base::kBytesPerPixel);
  Sample(reader, source, target, true, fresh);
  if (mask) {
    Pixels old(painted, base::kBytesPerPixel), held(painted, 1);
    if (!canvas.Read(old)) return false;
    Sample(*mask, source, target, false, held);
    Blend(old, fresh, held);
  }
  return canvas.Write(fresh);
}

bool IsTarget(const DibTarget* target) {
  return target && (target->device != nullptr) != (target->bitmap != nullptr);
}

}  // namespace

extern "C" {

int DIBPaint(const DibTarget* target, const DibRectangle* to, DibHandle handle,
             const DibRectangle* from) try {
  if (!IsTarget(target)) return 0;
  const LockedDib dib(handle);
  return Paint(*CanvasOf(*target), to, dib.Reader(), nullptr, from) ? 1 : 0;
} catch (...) {
  return 0;
}

int DIBDrawWithMask(const DibTarget* target, const DibRectangle* to, DibHandle handle,
                    DibHandle maskHandle, const DibRectangle* from) try {
  if (!IsTarget(target)) return 0;
  const LockedDib dib(handle);
  const LockedDib mask(maskHandle);
  const bool fits = mask.Reader().Layout().bits == 8 &&
                    mask.Reader().Width() == dib.Reader().Width() &&
                    mask.Reader().Height() == dib.Reader().Height();
  if (!fits) return 0;
  return Paint(*CanvasOf(*target), to, dib.Reader(), &mask.Reader(), from) ? 1 : 0;
} catch (...) {
  return 0;
}

}  // extern "C"
