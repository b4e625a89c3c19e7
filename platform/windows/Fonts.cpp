// The fonts of the system: the files that the registry names and those of the font folder.
#include <windows.h>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SFNT_NAMES_H
#include FT_TRUETYPE_IDS_H
#include FT_TRUETYPE_TABLES_H

#include <cstdio>
#include <memory>
#include <set>

#include "platform/FontFaces.h"
#include "platform/SystemServices.h"
#include "platform/windows/Text.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kFontsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";

// --- the files

fs::path FontFolder() {
  wchar_t folder[MAX_PATH];
  const UINT length = GetWindowsDirectoryW(folder, MAX_PATH);
  return length > 0 && length < MAX_PATH ? fs::path(folder) / L"Fonts" : fs::path();
}

// Adds the files that the key's values name; a bare name lies in the font folder.
void AddNamedFiles(HKEY root, const fs::path& folder, std::set<fs::path>& files) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, kFontsKey, 0, KEY_READ | KEY_WOW64_64KEY, &key) != ERROR_SUCCESS) return;
  constexpr DWORD kMost = 16384;  // what a name may have, and more than a path has
  const auto name = std::make_unique<wchar_t[]>(kMost);
  const auto value = std::make_unique<wchar_t[]>(kMost);
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = kMost;
    DWORD bytes = (kMost - 1) * sizeof(wchar_t);
    DWORD type = 0;
    const LSTATUS status = RegEnumValueW(key, i, name.get(), &nameLength, nullptr, &type,
                                         reinterpret_cast<BYTE*>(value.get()), &bytes);
    if (status == ERROR_MORE_DATA) continue;
    if (status != ERROR_SUCCESS) break;
    value[bytes / sizeof(wchar_t)] = L'\0';
    if (type == REG_SZ && value[0]) files.insert(folder / value.get());
  }
  RegCloseKey(key);
}

void AddFilesOf(const fs::path& folder, std::set<fs::path>& files) {
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    if (at->is_regular_file(error)) files.insert(at->path());
  }
}

std::set<fs::path> FontFiles() {
  std::set<fs::path> files;
  const fs::path folder = FontFolder();
  AddNamedFiles(HKEY_LOCAL_MACHINE, folder, files);
  AddNamedFiles(HKEY_CURRENT_USER, folder, files);
  AddFilesOf(folder, files);
  return files;
}

// --- what a file says of itself

unsigned long ReadStream(FT_Stream stream, unsigned long offset, unsigned char* buffer,
                         unsigned long count) {
  const auto file = static_cast<std::FILE*>(stream->descriptor.pointer);
  const bool found = _fseeki64(file, offset, SEEK_SET) == 0;
  if (count == 0) return found ? 0 : 1;  // a seek: what is not 0 is its failure
  return found ? static_cast<unsigned long>(std::fread(buffer, 1, count, file)) : 0;
}

// An open file that faces are read from, piece by piece: collections have many megabytes.
class FontStream {
 public:
  explicit FontStream(const fs::path& path) : file(_wfopen(path.c_str(), L"rb")) {
    if (!file) return;
    _fseeki64(file, 0, SEEK_END);
    stream.size = static_cast<unsigned long>(_ftelli64(file));
    stream.descriptor.pointer = file;
    stream.read = ReadStream;
  }
  ~FontStream() {
    if (file) std::fclose(file);
  }
  FontStream(const FontStream&) = delete;
  FontStream& operator=(const FontStream&) = delete;

  FT_Face Open(FT_Library library, int index) {
    FT_Open_Args arguments = {};
    arguments.flags = FT_OPEN_STREAM;
    arguments.stream = &stream;
    FT_Face face = nullptr;
    return file && FT_Open_Face(library, &arguments, index, &face) == 0 ? face : nullptr;
  }

 private:
  std::FILE* file;
  FT_StreamRec stream = {};
};

// The name of the family for menus that know four styles only, in English.
std::string PlainFamily(FT_Face face) {
  for (FT_UInt i = 0; i < FT_Get_Sfnt_Name_Count(face); ++i) {
    FT_SfntName name;
    if (FT_Get_Sfnt_Name(face, i, &name) != 0) continue;
    if (name.name_id != TT_NAME_ID_FONT_FAMILY || name.platform_id != TT_PLATFORM_MICROSOFT ||
        name.language_id != TT_MS_LANGID_ENGLISH_UNITED_STATES) {
      continue;
    }
    std::wstring wide;
    for (FT_UInt b = 0; b + 1 < name.string_len; b += 2) {
      wide += static_cast<wchar_t>(name.string[b] << 8 | name.string[b + 1]);
    }
    return Utf8Of(wide);
  }
  return {};
}

void AddFace(FT_Face face, FontFace found, std::vector<FontFace>& faces) {
  if (!FT_IS_SCALABLE(face) || !face->family_name) return;
  found.family = face->family_name;
  if (face->style_name) found.style = face->style_name;
  found.weight = face->style_flags & FT_STYLE_FLAG_BOLD ? 700 : 400;
  found.slanted = (face->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
  const auto table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
  if (table && table->usWeightClass) found.weight = table->usWeightClass;
  if (table && table->usWidthClass) found.width = table->usWidthClass;
  faces.push_back(found);
  if (const std::string plain = PlainFamily(face); !plain.empty() && plain != found.family) {
    found.family = plain;
    faces.push_back(found);
  }
}

void AddFacesOf(FT_Library library, const fs::path& file, std::vector<FontFace>& faces) {
  FontFace found;
  found.file = file;
  for (long count = 1; found.index < count; ++found.index) {
    FontStream stream(file);
    const FT_Face face = stream.Open(library, found.index);
    if (!face) return;
    count = face->num_faces;
    AddFace(face, found, faces);
    FT_Done_Face(face);
  }
}

std::vector<FontFace> ReadFaces() {
  std::vector<FontFace> faces;
  FT_Library library = nullptr;
  if (FT_Init_FreeType(&library) != 0) return faces;
  for (const fs::path& file : FontFiles()) AddFacesOf(library, file, faces);
  FT_Done_FreeType(library);
  SortFaces(faces);
  return faces;
}

// What the system writes its own messages in, where that is an outline font, else the first one.
std::string ChooseDefault(const std::vector<FontFace>& faces) {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  std::string wanted;
  if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) {
    wanted = Utf8Of(metrics.lfMessageFont.lfFaceName);
  }
  for (const FontFace& face : faces) {
    if (face.family == wanted) return wanted;
  }
  return faces.empty() ? std::string() : faces.front().family;
}

class RegisteredFonts final : public Fonts {
 public:
  RegisteredFonts() : faces(ReadFaces()), defaultFamily(ChooseDefault(faces)) {}
  const std::vector<FontFace>& Faces() override { return faces; }
  const std::string& DefaultFamily() override { return defaultFamily; }

 private:
  std::vector<FontFace> faces;
  std::string defaultFamily;
};

}  // namespace

Fonts& SystemFonts() {
  static FontsWhenAsked<RegisteredFonts> fonts;
  return fonts;
}

}  // namespace platform
