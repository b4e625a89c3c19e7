#include "program/PictureInput.h"

#include <charconv>

#include "program/BoxPictures.h"
#include "program/Messages.h"
#include "program/WholePicture.h"

namespace program {
namespace {

// Passes over a picture of as many pixels as the limit allows.
constexpr double kMostPasses = 20;

std::string Millions(std::int64_t pixels) {
  constexpr std::int64_t kMillion = 1'000'000;
  if (pixels < kMillion) return std::to_string(pixels) + " pixels";
  std::string text = std::to_string(pixels / kMillion);
  const std::int64_t tenth = pixels % kMillion * 10 / kMillion;
  if (tenth > 0) text.append(".").append(std::to_string(tenth));
  return text + " million pixels";
}

std::string Hint(std::int64_t limit) {
  return " (--limit allows " + Millions(limit) + "; a larger number allows more)";
}

bool IsPicture(const Bytes& bytes) {
  return imageio::FormatOfBytes(bytes.data(), bytes.size()) != imageio::Format::Unknown;
}

}  // namespace

void PictureLimits::Check(const std::string& where, const std::string& what, std::int64_t width,
                          std::int64_t height) const {
  if (width * height <= pixels) return;
  throw FileError(where, what + " of " + std::to_string(width) + "x" + std::to_string(height) +
                             " is beyond the limit" + Hint(pixels));
}

PictureLimits ParseLimit(const std::string& text) {
  constexpr std::int64_t kMost = std::int64_t{1} << 62;
  constexpr std::string_view kUnits = "kMG";
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  auto [at, error] = std::from_chars(text.data(), end, number);
  const std::size_t unit = at == end ? kUnits.npos : kUnits.find(*at);
  for (std::size_t i = 0; unit != kUnits.npos && i <= unit && number < kMost / 1000; ++i) {
    number *= 1000;
  }
  if (unit != kUnits.npos) ++at;
  if (error != std::errc() || at != end || number < 1) {
    throw UsageError("--limit: " + Quoted(text) + " is no number of pixels such as 500M");
  }
  return {number};
}

PictureInput::PictureInput(const std::filesystem::path& file, const PictureLimits& pictureLimits)
    : name(file == kStandard ? "standard input" : Utf8Of(file)), path(file), limits(pictureLimits) {
  if (const auto id = SharedIdOf(name)) {
    shared = std::make_unique<SharedPicture>(id->c_str());
    if (!shared->IsValid()) throw FileError(name, "nobody shares a picture under this id");
  } else if (file == kStandard) {
    bytes = ReadStandardInput(IsPicture);
  } else if (const auto inBox = SplitBoxInput(Utf8Of(file))) {
    bytes = ReadBoxInput(*inBox);
  } else if (IsPipe(file)) {
    bytes = ReadPipe(file, IsPicture);
  }
}

imageio::ImageReader PictureInput::NewReader() const {
  if (shared) return {RowsOf(*shared, name), shared->Width(), shared->Height()};
  if (bytes) return {bytes->data(), bytes->size()};
  return imageio::ImageReader(path);
}

imageio::ImageReader PictureInput::Open() const {
  imageio::ImageReader reader = NewReader();
  limits.Check(name, "the picture", reader.Info().fullWidth, reader.Info().fullHeight);
  reader.LimitWork({static_cast<double>(limits.pixels) * kMostPasses, Hint(limits.pixels)});
  return reader;
}

}  // namespace program
