#include "desk/LoadedPicture.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "program/PictureInput.h"

namespace desk {
namespace {

constexpr std::size_t kMostKept = 4;

// Sides that are half as large decode four times as fast; below that a first look gains nothing.
constexpr std::int64_t kQuickPixels = 2'000'000;

std::unique_ptr<MemoryPicture> NewPicture(int width, int height) {
  auto picture = std::make_unique<MemoryPicture>("desk", width, height, true, true);
  if (!picture->IsValid()) throw std::bad_alloc();
  return picture;
}

// Null when it was stopped.
PicturePointer Decode(imageio::ImageReader& reader, const imageio::Progress& progress) {
  auto picture = NewPicture(reader.Info().width, reader.Info().height);
  if (!reader.Read({picture->ColourRows(), picture->MaskRows()}, progress)) return nullptr;
  return picture;
}

}  // namespace

host::Size FittedSize(host::Size picture, host::Size box) {
  const double scale =
      std::min({1.0, static_cast<double>(std::max(box.width, 1)) / std::max(picture.width, 1),
                static_cast<double>(std::max(box.height, 1)) / std::max(picture.height, 1)});
  const auto side = [&](int length) {
    return std::max(1, static_cast<int>(std::lround(length * scale)));
  };
  return {side(picture.width), side(picture.height)};
}

imageio::Rows RowsOf(const MemoryPicture& picture) {
  return {picture.ColourRows(), picture.MaskRows()};
}

PicturePointer Reduced(const PicturePointer& picture, host::Size box,
                       const imageio::Progress& progress) {
  if (!picture || (picture->Width() <= box.width && picture->Height() <= box.height)) {
    return picture;
  }
  imageio::ImageReader reader(RowsOf(*picture), picture->Width(), picture->Height());
  reader.ReduceToFit(std::max(box.width, 1), std::max(box.height, 1));
  return Decode(reader, progress);
}

PicturePointer LoadedPicture::Full() const {
  const std::lock_guard hold(lock);
  return full;
}

void LoadedPicture::SetFull(PicturePointer picture) {
  const std::lock_guard hold(lock);
  full = std::move(picture);
  kept.clear();
}

void LoadedPicture::SetQuick(PicturePointer picture) {
  const std::lock_guard hold(lock);
  quick = std::move(picture);
}

PicturePointer LoadedPicture::Kept(host::Size size) const {
  const auto found = std::find_if(kept.begin(), kept.end(), [&](const PicturePointer& one) {
    return std::abs(one->Width() - size.width) <= 1 && std::abs(one->Height() - size.height) <= 1;
  });
  return found == kept.end() ? nullptr : *found;
}

void LoadedPicture::Keep(const PicturePointer& picture) {
  if (kept.size() == kMostKept) kept.erase(kept.begin());
  kept.push_back(picture);
}

PicturePointer LoadedPicture::For(host::Size box, const imageio::Progress& progress) {
  PicturePointer from;
  {
    const std::lock_guard hold(lock);
    if (PicturePointer found = Kept(FittedSize(fullSize, box))) return found;
    from = full ? full : quick;
  }
  PicturePointer made = Reduced(from, box, progress);
  const std::lock_guard hold(lock);
  if (made && made != full && from == (full ? full : quick)) Keep(made);
  return made;
}

void PictureLoader::Load(const std::filesystem::path& file, host::Size box, const Ready& onQuick,
                         const Ready& onFull, const imageio::Progress& progress) {
  const program::PictureInput input(file, program::PictureLimits{});
  imageio::ImageReader reader = input.Open();
  const host::Size size{reader.Info().fullWidth, reader.Info().fullHeight};
  const auto loaded = std::make_shared<LoadedPicture>(size);
  const bool isLarge = std::int64_t{size.width} * size.height > kQuickPixels;
  if (isLarge && reader.Info().format == imageio::Format::Jpeg) {
    imageio::ImageReader quick = input.Open();
    quick.ReduceToFit(std::max(box.width / 2, 1), std::max(box.height / 2, 1));
    loaded->SetQuick(Decode(quick, progress));
    onQuick(loaded);
  }
  PicturePointer full = Decode(reader, progress);
  if (!full) return;
  loaded->SetFull(std::move(full));
  onFull(loaded);
}

}  // namespace desk
