#include "filters/text/PictureSign.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "filters/pixels/Compose.h"
#include "filters/pixels/resampling/Resampling.h"
#include "imageio/ImageFile.h"
#include "picture/MemoryPicture.h"

namespace text {
namespace {

namespace fs = std::filesystem;
using base::kBytesPerPixel;

constexpr char kTooLarge[] = "the picture is too large for a watermark";

// A system that keeps names in UTF-16 has none for bytes that are no UTF-8.
fs::path PathOf(const std::string& utf8) {
  try {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
  } catch (const std::system_error&) {
    throw SignError("the picture's path is no UTF-8");
  }
}

using Picture = std::unique_ptr<MemoryPicture>;

Picture NewPicture(std::int64_t width, std::int64_t height) {
  constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
  if (width * height > kMostPixels) throw SignError(kTooLarge);
  auto picture = std::make_unique<MemoryPicture>("sign", static_cast<int>(width),
                                                 static_cast<int>(height), true, true);
  if (!picture->IsValid()) throw SignError(kTooLarge);
  return picture;
}

Picture ReadPicture(const std::string& path) {
  try {
    imageio::ImageReader reader(PathOf(path));
    Picture picture = NewPicture(reader.Info().width, reader.Info().height);
    reader.Read({picture->ColourRows(), picture->MaskRows()});
    return picture;
  } catch (const imageio::ImageError& error) {
    throw SignError(error.what());
  }
}

// A file as it was when it was read.
struct FileVersion {
  std::string path;
  std::uintmax_t bytes = 0;
  fs::file_time_type time = {};

  explicit FileVersion(const std::string& utf8) : path(utf8) {
    std::error_code error;
    bytes = fs::file_size(PathOf(utf8), error);
    time = fs::last_write_time(PathOf(utf8), error);
  }
  bool operator==(const FileVersion&) const = default;

  // A file that is being changed may have the same time afterwards.
  bool IsSettled() const {
    return time < fs::file_time_type::clock::now() - std::chrono::seconds(2);
  }
};

// The picture that was read last is kept: the same watermark lies over picture after picture, and a
// dialog prepares it with each change.
class LastRead {
 public:
  std::shared_ptr<const MemoryPicture> Read(const std::string& path) {
    constexpr std::int64_t kMostPixels = 16 << 20;
    CheckSignPath(path);
    const FileVersion now(path);
    {
      const std::lock_guard hold(lock);
      if (kept && version == now) return kept;
    }
    const std::shared_ptr<const MemoryPicture> fresh = ReadPicture(path);
    if (now.IsSettled() && std::int64_t{fresh->Width()} * fresh->Height() <= kMostPixels) {
      const std::lock_guard hold(lock);
      kept = fresh;
      version = now;
    }
    return fresh;
  }

 private:
  std::mutex lock;
  std::shared_ptr<const MemoryPicture> kept;
  FileVersion version{std::string()};
};

LastRead& Signs() {
  static LastRead signs;
  return signs;
}

Picture CopyOf(const MemoryPicture& picture) {
  Picture copy = NewPicture(picture.Width(), picture.Height());
  for (int y = 0; y < picture.Height(); ++y) {
    std::memcpy(copy->ColourRows()[y], picture.ColourRows()[y], base::ColourBytes(picture.Width()));
    std::memcpy(copy->MaskRows()[y], picture.MaskRows()[y],
                static_cast<std::size_t>(picture.Width()));
  }
  return copy;
}

Picture ScaledTo(int height, const MemoryPicture& picture) {
  if (picture.Height() == height) return CopyOf(picture);
  const double ratio = static_cast<double>(height) / picture.Height();
  const auto width = static_cast<std::int64_t>(std::floor(picture.Width() * ratio + 0.5));
  Picture scaled = NewPicture(std::max<std::int64_t>(width, 1), height);
  scaled->Clear();
  const std::atomic<bool> never{false};
  if (!kernels::Resample(picture.Rows(), scaled->Rows(), {.ratioX = ratio, .ratioY = ratio},
                         never)) {
    throw SignError("the picture is too narrow to be enlarged");
  }
  return scaled;
}

void Weaken(MemoryPicture& picture, int opacity) {
  for (int y = 0; y < picture.Height(); ++y) {
    BYTE* const mask = picture.MaskRows()[y];
    for (int x = 0; x < picture.Width(); ++x) {
      mask[x] = static_cast<BYTE>(255 - (255 - mask[x]) * opacity / 100);
    }
  }
}

// --- turning

// Sums of up to four pixels, weighted by their share and their opacity.
struct Mixture {
  double opacity = 0, blue = 0, green = 0, red = 0;

  void Add(const MemoryPicture& from, std::int64_t x, std::int64_t y, double share) {
    if (x < 0 || y < 0 || x >= from.Width() || y >= from.Height() || share <= 0) return;
    const BYTE* const colour = from.ColourRows()[y] + x * kBytesPerPixel;
    const double weight = share * (255 - from.MaskRows()[y][x]);
    opacity += weight;
    blue += weight * colour[base::kBlue];
    green += weight * colour[base::kGreen];
    red += weight * colour[base::kRed];
  }
  void Store(BYTE* colour, BYTE* mask) const {
    *mask = static_cast<BYTE>(255 - static_cast<int>(std::min(opacity + 0.5, 255.0)));
    if (opacity <= 0) return;
    colour[base::kBlue] = base::TruncateAndClampByte(blue / opacity + 0.5);
    colour[base::kGreen] = base::TruncateAndClampByte(green / opacity + 0.5);
    colour[base::kRed] = base::TruncateAndClampByte(red / opacity + 0.5);
  }
};

// What lies at a place between four pixels, of which (x, y) is the lower left one's centre.
Mixture At(const MemoryPicture& from, double x, double y) {
  const double left = std::floor(x);
  const double bottom = std::floor(y);
  const double right = x - left;
  const double above = y - bottom;
  const auto column = static_cast<std::int64_t>(left);
  const auto row = static_cast<std::int64_t>(bottom);
  Mixture mixture;
  mixture.Add(from, column, row, (1 - right) * (1 - above));
  mixture.Add(from, column + 1, row, right * (1 - above));
  mixture.Add(from, column, row + 1, (1 - right) * above);
  mixture.Add(from, column + 1, row + 1, right * above);
  return mixture;
}

// A picture at its place: the first pixel of its bottom row.
struct Placed {
  Picture picture;
  Box box;
};

// The anchor within the picture, in pixels from its lower left corner.
struct Anchor {
  double x, y;
};

Anchor AnchorIn(const MemoryPicture& picture, Align align) {
  const double share = align == Align::Left ? 0.0 : align == Align::Centre ? 0.5 : 1.0;
  return {picture.Width() * share, picture.Height() / 2.0};
}

double Pixels(std::int64_t units) {
  return static_cast<double>(units) / kUnit;
}

Placed PutUnturned(Picture picture, const Anchor& anchor, const Placement& placement) {
  const auto left =
      static_cast<std::int64_t>(std::floor(Pixels(placement.anchor.x) - anchor.x + 0.5));
  const auto bottom =
      static_cast<std::int64_t>(std::floor(Pixels(placement.anchor.y) - anchor.y + 0.5));
  const Box box = Box{0, 0, picture->Width(), picture->Height()}.MovedBy(left, bottom);
  return {std::move(picture), box};
}

// Around the turned corners.
Box TurnedBox(const MemoryPicture& picture, const Anchor& anchor, const Placement& placement) {
  Outline corners;
  for (const double x : {0.0, static_cast<double>(picture.Width())}) {
    for (const double y : {0.0, static_cast<double>(picture.Height())}) {
      corners.points.push_back(placement.turn({static_cast<std::int64_t>((x - anchor.x) * kUnit),
                                               static_cast<std::int64_t>((y - anchor.y) * kUnit)}));
    }
  }
  return BoxOf(corners, placement.anchor);
}

Placed PutTurned(const MemoryPicture& from, const Anchor& anchor, const Placement& placement) {
  Placed placed;
  placed.box = TurnedBox(from, anchor, placement);
  if (placement.stepX == 0) placed.box = placed.box.CutTo(placement.Picture());
  if (placed.box.IsEmpty()) return placed;
  const int width = placed.box.right - placed.box.left;
  const int height = placed.box.top - placed.box.bottom;
  placed.picture = NewPicture(width, height);
  const Turn& turn = placement.turn;
  for (int y = 0; y < height; ++y) {
    BYTE* const colour = placed.picture->ColourRows()[y];
    BYTE* const mask = placed.picture->MaskRows()[y];
    const double dy = placed.box.bottom + y + 0.5 - Pixels(placement.anchor.y);
    for (int x = 0; x < width; ++x) {
      const double dx = placed.box.left + x + 0.5 - Pixels(placement.anchor.x);
      // Turned back.
      const double u = dx * turn.cosine + dy * turn.sine + anchor.x - 0.5;
      const double v = dy * turn.cosine - dx * turn.sine + anchor.y - 0.5;
      At(from, u, v).Store(colour + base::ColourOffset(x), mask + x);
    }
  }
  return placed;
}

// --- the overlay

class SignOverlay final : public Overlay {
 public:
  SignOverlay(Placed placed, const Placement& placement)
      : placed_(std::move(placed)),
        placement_(placement),
        steps_(placement.StepsFor(placed_.box)) {}

  bool IsEmpty() const { return steps_.firstX > steps_.lastX || steps_.firstY > steps_.lastY; }

  void ComposeRow(std::uint8_t* colour, std::uint8_t* mask, int x, int y,
                  int count) const override {
    for (std::int64_t stepY = steps_.firstY; stepY <= steps_.lastY; ++stepY) {
      const std::int64_t row = y - placed_.box.bottom - stepY * placement_.stepY;
      if (row < 0 || row >= placed_.picture->Height()) continue;
      for (std::int64_t stepX = steps_.firstX; stepX <= steps_.lastX; ++stepX) {
        ComposeOne(colour, mask, x, count, static_cast<int>(row), stepX * placement_.stepX);
      }
    }
  }

 private:
  void ComposeOne(std::uint8_t* colour, std::uint8_t* mask, int x, int count, int row,
                  std::int64_t moved) const {
    const std::int64_t left = placed_.box.left + moved;
    const auto from = static_cast<int>(std::max<std::int64_t>(left, x));
    const auto until =
        static_cast<int>(std::min(left + placed_.picture->Width(), std::int64_t{x} + count));
    if (from >= until) return;
    const auto first = static_cast<int>(from - left);
    kernels::ComposeRow(colour ? colour + base::ColourOffset(from - x) : nullptr, mask + (from - x),
                        placed_.picture->ColourRows()[row] + base::ColourOffset(first),
                        placed_.picture->MaskRows()[row] + first, until - from);
  }

  Placed placed_;
  Placement placement_;
  Placement::Steps steps_;
};

}  // namespace

void CheckSignPath(const std::string& path) {
  const fs::path file = PathOf(path);
  const std::string start = path.substr(0, 2);
  const bool isShare = start == "//" || start == "\\\\";
  if (isShare || !file.is_absolute()) {
    throw SignError("the picture's path is not a full path on this machine");
  }
  std::error_code error;
  if (!fs::exists(file, error)) throw SignError("the picture is not there");
  if (!fs::is_regular_file(file, error)) throw SignError("the picture is no file");
}

int StepFor(double length, double spacing, const Placement& placement) {
  constexpr int kLeast = 8;
  constexpr int kMostAlong = 200;
  const int longer = std::max(placement.pictureWidth, placement.pictureHeight);
  return std::max(
      {kLeast, (longer + kMostAlong - 1) / kMostAlong, base::RoundToInt32(length + spacing)});
}

std::shared_ptr<const Overlay> DrawSign(const Sign& sign, Placement placement) {
  Picture picture = ScaledTo(sign.height, *Signs().Read(sign.path));
  Weaken(*picture, sign.opacity);
  if (sign.repeats) {
    placement.stepX = StepFor(picture->Width(), sign.spacing, placement);
    placement.stepY = StepFor(picture->Height(), sign.spacing, placement);
  }
  const Anchor anchor = AnchorIn(*picture, sign.align);
  Placed placed = placement.turn.IsNone() ? PutUnturned(std::move(picture), anchor, placement)
                                          : PutTurned(*picture, anchor, placement);
  if (placed.box.IsEmpty()) return nullptr;
  auto overlay = std::make_shared<SignOverlay>(std::move(placed), placement);
  if (overlay->IsEmpty()) return nullptr;
  return overlay;
}

}  // namespace text
