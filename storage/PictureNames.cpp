#include "storage/PictureNames.h"

#include <algorithm>
#include <iterator>

#include "base/CodePage.h"
#include "imageio/ImageLoader.h"

namespace picbox {
namespace {

constexpr std::string_view kForbidden = "\"*/:;<>?\\|";
constexpr std::string_view kStorageNames[] = {"Pictures", "PicMask", "OnlyPic", "OnlyMask",
                                              "Pic_Mask"};
constexpr char kNoteEnding[] = ".inf";

constexpr std::string_view kPictureEndings[] = {
    ".bmp", ".gif", ".jpe", ".jpeg", ".jpg", ".pcd", ".png", ".psd", ".tif",
    ".j2k", ".jp2", ".jpf", ".jpc",  ".ras", ".pnm", ".pgm", ".ppm", ".tiff",
    ".bay", ".bmq", ".crw", ".cs1",  ".dcr", ".fff", ".mrw", ".nef", ".orf",
    ".pef", ".raf", ".raw", ".rdc",  ".srf", ".x3f", ".cr2", ".dng"};

struct TypeRow {
  int type;
  const char* tag;
  const char* suffix;
};
constexpr TypeRow kTypes[] = {{1, "jpg", ".JPG"},   {2, "tif", ".TIF"},  {3, "aap", ".AAP"},
                              {4, "psd", ".PSD"},   {5, "acc", ""},      {6, "ppx", ".PPX"},
                              {7, "bmp", ".BMP"},   {8, "acc", ""},      {9, "gif", ".GIF"},
                              {10, "png", ".PNG"},  {11, "znx", ""},     {12, "gif", ""},
                              {13, "jp2", ".JPEG"}, {14, "ras", ".RAS"}, {15, "ppm", ".PNM"},
                              {16, "pcd", ".PCD"},  {17, "raw", ""}};

const TypeRow* RowOf(int type) {
  const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                   [type](const TypeRow& row) { return row.type == type; });
  return found == std::end(kTypes) ? nullptr : found;
}

}  // namespace

std::string CleanName(std::string_view name) {
  std::string clean(name);
  for (char& c : clean) {
    const bool isPlain = c >= 32 && c <= 126 && kForbidden.find(c) == kForbidden.npos;
    if (!isPlain) c = '_';
  }
  return clean;
}

std::string AddExtension(std::string_view name, std::string_view extension) {
  std::string clean = CleanName(name);
  if (extension.empty()) return clean;
  const std::size_t point = clean.rfind('.');
  const bool cuts = point != clean.npos && (imageio::ImageLoader::IsImage(clean.c_str()) ||
                                            SameText(TailOf(clean), extension));
  if (cuts) clean.resize(point);
  return clean + "." + std::string(extension);
}

bool SameText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return base::ToLower(x) == base::ToLower(y); });
}

bool EndsWithText(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameText(text.substr(text.size() - end.size()), end);
}

std::string UpperText(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), base::ToUpper);
  return upper;
}

std::string_view TailOf(std::string_view name) {
  const std::size_t point = name.rfind('.');
  return point == name.npos ? std::string_view() : name.substr(point + 1);
}

std::string_view StemOf(std::string_view name) {
  return name.substr(0, name.rfind('.'));
}

bool IsNote(std::string_view name) {
  return EndsWithText(name, kNoteEnding);
}

bool CanBeName(std::string_view name) {
  if (name.empty() || name == "." || name == ".." || IsNote(name)) return false;
  return std::none_of(std::begin(kStorageNames), std::end(kStorageNames),
                      [name](std::string_view storage) { return SameText(storage, name); });
}

std::string PictureTag(std::string_view name) {
  for (const std::string_view ending : kPictureEndings) {
    if (!EndsWithText(name, ending)) continue;
    return std::string(name.substr(name.size() - ending.size() + 1));
  }
  return {};
}

int KindOfTag(std::string_view tag) {
  return SameText(tag.substr(0, 2), "JP") || SameText(tag, "PCD") ? 2 : 1;
}

const char* TagOfType(int type) {
  const TypeRow* row = RowOf(type);
  return row ? row->tag : "";
}

const char* SuffixOfType(int type) {
  const TypeRow* row = RowOf(type);
  return row ? row->suffix : "";
}

}  // namespace picbox
