#include "imageio/ModuleFormats.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <mutex>

#include "imageio/Exif.h"
#include "imageio/formats/FormatModule.h"
#include "platform/OwnModule.h"

namespace imageio {
namespace {

struct ModuleRow {
  Format format;
  const char* name;
  const char* part;
};
constexpr ModuleRow kModules[] = {
    {Format::WebP, "WebP", "webp"},     {Format::JpegXl, "JPEG XL", "jxl"},
    {Format::Avif, "AVIF", "avif"},     {Format::Heif, "HEIF", "heif"},
    {Format::Raw, "camera raw", "raw"},
};

const ModuleRow* RowOf(Format format) {
  const auto row = std::find_if(std::begin(kModules), std::end(kModules),
                                [&](const ModuleRow& r) { return r.format == format; });
  return row == std::end(kModules) ? nullptr : row;
}

// The build says which modules there are: " webp jxl ".
bool IsBuilt(const ModuleRow& row) {
  return std::strstr(FXBOX_FORMAT_MODULES, (std::string(" ") + row.part + " ").c_str()) != nullptr;
}

const FormatFunctions* Load(const ModuleRow& row) {
  if (!IsBuilt(row)) {
    throw ImageError(std::string("this build of the library has no module for ") + row.name +
                     " pictures");
  }
  std::string reason;
  void* const entry = platform::FindInOwnModule(row.part, kFormatEntry, reason);
  const FormatFunctions* functions = entry ? reinterpret_cast<FormatEntry>(entry)() : nullptr;
  if (functions && functions->version == kFormatVersion) return functions;
  if (functions) reason = "it is of another version";
  throw ImageError(std::string(row.name) + " pictures need the module " +
                   platform::OwnModuleFile(row.part) + FXBOX_FORMAT_PACKAGE + ": " + reason);
}

// What cannot be loaded is tried again with the next picture.
const FormatFunctions& FunctionsOf(Format format) {
  static std::mutex lock;
  static std::array<const FormatFunctions*, std::size(kModules)> loaded = {};
  const ModuleRow& row = *RowOf(format);
  const std::lock_guard hold(lock);
  const FormatFunctions*& functions = loaded[static_cast<std::size_t>(&row - kModules)];
  if (!functions) functions = Load(row);
  return *functions;
}

std::vector<std::uint8_t> BytesOf(const FormatBlock& block) {
  return {block.bytes, block.bytes + block.count};
}
FormatBlock BlockOf(const std::vector<std::uint8_t>& bytes) {
  return {bytes.data(), bytes.size()};
}

// Some programs write the mark of JPEG files ahead of the data.
std::vector<std::uint8_t> ExifOf(const FormatBlock& block) {
  constexpr std::size_t kMark = 6;
  std::vector<std::uint8_t> exif = BytesOf(block);
  const bool isMarked = exif.size() >= kMark && std::memcmp(exif.data(), "Exif\0", kMark) == 0;
  if (isMarked) exif.erase(exif.begin(), exif.begin() + kMark);
  return exif;
}

std::vector<std::uint8_t> ReadWhole(Source& source) {
  constexpr std::uint64_t kMost = std::uint64_t{1} << 31;
  if (source.Size() > kMost) throw ImageError("the file is too large for its kind");
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(source.Size()));
  bytes.resize(source.ReadAt(0, bytes.data(), bytes.size()));
  return bytes;
}

class ModuleDecoder final : public Decoder {
 public:
  ModuleDecoder(Source& source, Format format)
      : functions(FunctionsOf(format)), bytes(ReadWhole(source)), file(nullptr, functions.close) {
    FormatHead told;
    Message message;
    file.reset(functions.open(bytes.data(), bytes.size(), &told, message.data()));
    if (!file) throw ImageError(message.data());
    SetSize(told.width, told.height);
    head.hasMask = told.hasAlpha != 0;
    head.metadata.exif = ExifOf(told.exif);
    head.metadata.profile = BytesOf(told.profile);
    head.metadata.xmp = BytesOf(told.xmp);
    if (format == Format::Raw) head.metadata.exif = ExifOfTiff(source);
    head.orientation = told.orientation;
    if (told.orientation < 1 || told.orientation > 8) {
      head.orientation = ExifOrientation(head.metadata.exif);
    }
    if (told.bits > 8) NoteBits(told.bits);
    if (told.pictures > 1) head.notes.push_back("it has several pictures, of which one is taken");
  }

  bool Decode(RowSink& sink) override {
    Rows rows{&sink, head.size, head.hasMask ? 4 : 3};
    Message message;
    const FormatResult result = functions.decode(file.get(), &Rows::Take, &rows, message.data());
    if (rows.failure) std::rethrow_exception(rows.failure);
    if (result == FormatResult::Failed) throw ImageError(message.data());
    if (result == FormatResult::Done && rows.next != head.size.height) throw ImageError(kEndsEarly);
    return result == FormatResult::Done;
  }

 private:
  using Message = std::array<char, kFormatMessage>;

  // On their way through the module, which nothing that is thrown may pass.
  struct Rows {
    RowSink* sink;
    Size size;
    int channels;
    int next = 0;
    std::exception_ptr failure = nullptr;

    static int Take(void* context, int y, const std::uint8_t* samples) {
      Rows& self = *static_cast<Rows*>(context);
      try {
        if (y != self.next || y >= self.size.height) return 0;
        ++self.next;
        StoreSamples(samples, self.size.width, self.channels, self.channels, self.sink->Begin(y));
        return self.sink->End(y) ? 1 : 0;
      } catch (...) {
        self.failure = std::current_exception();
        return 0;
      }
    }
  };

  const FormatFunctions& functions;
  const std::vector<std::uint8_t> bytes;
  std::unique_ptr<void, void (*)(void*)> file;
};

}  // namespace

bool IsModuleFormat(Format format) {
  return RowOf(format) != nullptr;
}

std::unique_ptr<Decoder> OpenModuleFormat(Source& source, Format format) {
  return std::make_unique<ModuleDecoder>(source, format);
}

bool WriteModuleFormat(Output& output, Format format, const Picture& picture,
                       const WriteOptions& options, const Progress& progress) {
  const FormatFunctions& functions = FunctionsOf(format);
  if (!functions.write) {
    throw ImageError(std::string(RowOf(format)->name) +
                     " pictures can be read here, but not written");
  }
  std::vector<BYTE> pixels(picture.RowBytes() * static_cast<std::size_t>(picture.Height()));
  for (int y = 0; y < picture.Height(); ++y) {
    picture.Interleave(y, true, pixels.data() + picture.RowBytes() * static_cast<std::size_t>(y));
    if (!ReportStep(progress, y + 1, picture.Height())) return false;
  }
  FormatPicture given;
  given.width = picture.Width();
  given.height = picture.Height();
  given.hasAlpha = picture.HasAlpha();
  given.quality = std::clamp(options.jpegQuality, 1, 100);
  given.pixels = pixels.data();
  given.exif = BlockOf(options.metadata.exif);
  given.profile = BlockOf(options.metadata.profile);
  given.xmp = BlockOf(options.metadata.xmp);
  std::array<char, kFormatMessage> message;
  const auto put = [](void* to, const std::uint8_t* from, std::size_t count) {
    return static_cast<Output*>(to)->TryWrite(from, count) ? 1 : 0;
  };
  const FormatResult result = functions.write(&given, put, &output, message.data());
  if (result == FormatResult::Stopped) throw ImageError(kCannotWrite);
  if (result == FormatResult::Failed) throw ImageError(message.data());
  return true;
}

bool IsRawTiff(Source& file) {
  constexpr int kDngVersion = 50706;
  constexpr int kKindOfPicture = 254;
  constexpr int kSubDirectories = 330;
  if (!BytesOfTiff(file, kDngVersion).empty()) return true;
  const std::vector<std::uint8_t> kind = BytesOfTiff(file, kKindOfPicture);
  const bool isReduced = kind.size() == 4 && (kind[0] == 1 || kind[3] == 1);
  return isReduced && !BytesOfTiff(file, kSubDirectories).empty();
}

}  // namespace imageio
