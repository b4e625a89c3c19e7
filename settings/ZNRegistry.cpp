#include "settings/ZNRegistry.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string_view>

#include "base/CodePage.h"
#include "base/NumberScan.h"
#include "platform/PathText.h"
#include "platform/Services.h"
#include "settings/TextBuffers.h"

namespace {

namespace fs = std::filesystem;
using settings::CopyTo;
using settings::CopyWhole;
using settings::IsBuffer;

constexpr char kIniName[] = "Sennet.ini";
constexpr char kInfName[] = "Tesmar.inf";
constexpr char kIniPathKey[] = "IniFilePath";
constexpr char kSectionJoint[] = "_#_";
constexpr std::size_t kNameRoom = 11;     // either file name with its closing zero
constexpr std::size_t kPathBuffer = 260;  // bytes, the closing zero among them
constexpr std::size_t kStartBuffer = 1023;
constexpr std::size_t kInfValueLength = 511;
constexpr int kNumberBuffer = 20;
constexpr int kBoolBuffer = 6;
constexpr int kUserBuffer = 5;

const platform::Services& System() {
  return platform::CurrentServices();
}

const char* ErrorText(int code) {
  switch (code) {
    case kRegistryBufferTooSmall:
      return "ZNRegistry - Fehler: \xFC"
             "bergebener Puffer zu klein f\xFCr Registry Eintrag";
    case kRegistryKeyUnreadable:
      return "ZNRegistry - Fehler: Registry-Key nicht lesbar";
    case kRegistryKeyMissing:
      return "ZNRegistry - Fehler: Registry-Key existiert nicht";
    case kRegistryKeyUnwritable:
      return "ZNRegistry - Fehler: Registry-Key nicht schreibbar";
    case kRegistryKeyNotMade:
      return "ZNRegistry - Fehler: Registry-Key konnte nicht erzeugt werden";
    case kRegistryWrongArguments:
      return "ZNRegistry - Fehler: falsche/fehlende Aufrufparameter";
    case kRegistryIniUnwritable:
      return "ZNRegistry - Fehler: Ini-Datei nicht schreibbar";
    case kRegistryIniUnreadable:
      return "ZNRegistry - Fehler: Ini-Datei nicht lesbar";
    case kRegistryPathTooLong:
      return "ZNRegistry - Fehler: \xFC"
             "bergebener Puffer zu klein f\xFCr Pfad und Name";
    case kRegistryNotInitialised:
      return "ZNRegistry - Fehler: noch nicht initialisiert";
    case kRegistryNoConversion:
      return "ZNRegistry - Fehler: Datenkonvertierung";
    case kRegistryDefaultTooLong:
      return "ZNRegistry - Fehler: Default l\xE4nger als Platz in Ziel";
    case kRegistryKeyKept:
      return "ZNRegistry - Warnung: Existierender Registry-Key wurde nicht \xFC"
             "berschrieben";
    default:
      return "ZNRegistry - Fehler: kein g\xFCltiger Fehlercode";
  }
}

bool IsGiven(const char* text) {
  return text && *text;
}

std::string TextOf(const char* text) {
  return text ? text : "";
}

// A line of the file ends where these stand.
bool FitsOneLine(const char* text) {
  return std::string_view(text).find_first_of("\r\n") == std::string_view::npos;
}

std::string WithSeparator(std::string folder) {
  const bool has = !folder.empty() && (folder.back() == '\\' || folder.back() == '/');
  return has ? folder : folder + platform::kFolderSeparator;
}

std::string ProgramFolder() {
  return WithSeparator(platform::PathText(System().process->Program().parent_path()));
}

bool Exists(const fs::path& file) {
  std::error_code ignored;
  return fs::exists(file, ignored);
}

fs::path BackupOf(const fs::path& file) {
  fs::path backup = file;
  return backup += ".bak";
}

void Copy(const fs::path& from, const fs::path& to) {
  System().files->Replace(to, [&from](const fs::path& made) {
    std::ifstream in(from, std::ios::binary);
    std::ofstream out(made, std::ios::binary);
    const bool empty = in.peek() == std::ifstream::traits_type::eof();
    if (!empty) out << in.rdbuf();
    return in.is_open() && static_cast<bool>(out.flush());
  });
}

// Whether the file can be read, after a lost one has come back from its backup; makes that backup.
int CareForIni(const fs::path& ini) {
  const fs::path backup = BackupOf(ini);
  if (!Exists(ini) && Exists(backup)) Copy(backup, ini);
  if (!Exists(ini)) return kRegistryIniMissing;
  if (!std::ifstream(ini, std::ios::binary)) return kRegistryIniClosed;
  if (!Exists(backup)) Copy(ini, backup);
  return kRegistryDone;
}

std::optional<bool> ScanBool(std::string_view text) {
  if (text == "true") return true;
  if (text == "false") return false;
  return std::nullopt;
}

// A number is written with a point, whatever the locale of the process says, and read so.
std::optional<double> ScanNumber(std::string_view text) {
  return base::ScanDoubleWith(text, ".");
}

std::string Printed(bool value) {
  return value ? "true" : "false";
}

std::string Printed(int value) {
  return std::to_string(value);
}

std::string Printed(double value) {
  char text[400];  // the largest has 309 digits before the point
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
  return {text, end};
}

// Reads a text through a buffer of the given size and converts it.
template <class Value, class Scan>
int ReadConverted(ZNRegistry& registry, const char* section, const char* key, int size, Scan scan,
                  Value* out) {
  if (!out) return kRegistryWrongArguments;
  char text[kNumberBuffer];
  if (const int error = registry.Read(section, key, text, size)) return error;
  const std::optional<Value> value = scan(text);
  if (!value) return kRegistryNoConversion;
  *out = *value;
  return kRegistryDone;
}

template <class Value>
int OrDefault(int error, Value* out, Value defaultValue) {
  if (!out) return kRegistryWrongArguments;
  if (error) *out = defaultValue;
  return kRegistryDone;
}

int OrDefault(int error, KvString& out, const char* defaultValue) {
  if (error) out = defaultValue;
  return kRegistryDone;
}

int OrDefault(int error, char* buffer, int size, const char* defaultValue) {
  if (!IsBuffer(buffer, size)) return kRegistryWrongArguments;
  if (!error) return kRegistryDone;
  return CopyTo(buffer, size, TextOf(defaultValue)) ? kRegistryDone : kRegistryDefaultTooLong;
}

int AsPath(int error, KvString& out) {
  if (!error && !out.IsEmpty()) out = WithSeparator(out.ToStdString());
  return error;
}

int AsPath(int error, char* buffer, int size) {
  if (error || !*buffer) return error;
  return CopyWhole(buffer, size, WithSeparator(buffer)) ? kRegistryDone : kRegistryPathTooLong;
}

// The user's number as a section says it. A user who has none gets the next one of the machine.
std::string UserSection(ZNRegistry& registry) {
  char number[kUserBuffer];
  if (registry.ReadKey(HKEY_CURRENT_USER, "User", number, kUserBuffer) == kRegistryDone) {
    return std::string("User") + number;
  }
  KvString last;
  registry.ReadKey(HKEY_LOCAL_MACHINE, "LastUser", last);
  const auto lastNumber = base::ScanInt(last.View());
  char next[16];
  std::snprintf(next, sizeof next, "%.4d",
                lastNumber && *lastNumber < INT32_MAX ? *lastNumber + 1 : 1);
  registry.WriteKey(HKEY_LOCAL_MACHINE, "LastUser", next, false);
  registry.WriteKey(HKEY_CURRENT_USER, "User", next, false);
  return std::string("User") + next;
}

// Runs a machine-wide operation on the section of the user.
template <class Operation>
int ForUser(ZNRegistry& registry, const char* section, const char* key, Operation operation) {
  KvString ignored;
  if (!registry.GetRegistryInfo(ignored, ignored, ignored, ignored)) return kRegistryNotInitialised;
  if (!IsGiven(section) || !IsGiven(key)) return kRegistryWrongArguments;
  return operation((UserSection(registry) + kSectionJoint + section).c_str());
}

}  // namespace

ZNRegistry::ZNRegistry(const char* section, const char* extra) {
  ZNRegistry::InitFromInf(section, extra);
}

ZNRegistry::ZNRegistry(const char* company, const char* product, const char* version,
                       const char* id, const char* extra) {
  ZNRegistry::Init(company, product, version, id, extra);
}

int ZNRegistry::Init(const char* company, const char* product, const char* version, const char* id,
                     const char* extra) {
  initialised = 0;
  iniPath.clear();
  keyPath.clear();
  keyParts[0] = TextOf(company);
  keyParts[1] = TextOf(product);
  keyParts[2] = TextOf(version);
  shortId = TextOf(id);
  sectionPrefix = IsGiven(extra) ? extra : shortId;
  std::string joined;
  for (const std::string& part : keyParts) {
    if (!part.empty()) joined += part + '\\';
  }
  if (joined.empty() || shortId.empty()) return kRegistryWrongArguments;
  keyPath = joined;
  FindIni(kStartBuffer);
  initialised = 1;
  return kRegistryDone;
}

int ZNRegistry::InitFromInf(const char* section, const char* extra) {
  if (!IsGiven(section)) return kRegistryWrongArguments;
  const std::string folder = ProgramFolder();
  if (folder.size() + kNameRoom > kPathBuffer) return kRegistryPathTooLong;
  fs::path inf = platform::PathFromText(folder + kInfName);
  if (!Exists(inf)) inf = kInfName;
  const char* const keys[] = {"Company", "Product", "Version", "ShortId"};
  std::string values[4];
  for (int i = 0; i < 4; ++i) {
    values[i] = System().profiles->Read(inf, section, keys[i]).substr(0, kInfValueLength);
    if (values[i].empty()) return kRegistryIniUnreadable;
  }
  return ZNRegistry::Init(values[0].c_str(), values[1].c_str(), values[2].c_str(),
                          values[3].c_str(), extra);
}

int ZNRegistry::GetErrorText(int code, KvString& out) {
  out = ErrorText(code);
  return kRegistryDone;
}

int ZNRegistry::GetErrorText(int code, char* buffer, int size) {
  if (IsBuffer(buffer, size)) CopyTo(buffer, size, ErrorText(code));
  return kRegistryDone;
}

// --- the file

int ZNRegistry::FlushIniFile() {
  if (const int error = FindIni(kPathBuffer)) return error;
  System().profiles->Flush(platform::PathFromText(iniPath));
  return kRegistryDone;
}

std::string ZNRegistry::IniFolder() {
  KvString folder;
  const bool known = ReadKey(HKEY_LOCAL_MACHINE, kIniPathKey, folder) == kRegistryDone;
  return known && !folder.IsEmpty() ? WithSeparator(folder.ToStdString()) : ProgramFolder();
}

// Leaves the full name in iniPath when it fits `size` bytes with its closing zero.
int ZNRegistry::FindIni(std::size_t size) {
  if (iniPath.empty() && sectionPrefix.find(".ini") != std::string::npos) {
    iniPath = sectionPrefix;
    sectionPrefix = shortId;
  }
  if (iniPath.empty()) {
    const std::string folder = IniFolder();
    if (folder.size() + kNameRoom > size) return kRegistryPathTooLong;
    iniPath = folder + kIniName;
  }
  return iniPath.size() < size ? kRegistryDone : kRegistryPathTooLong;
}

int ZNRegistry::GetIniPathAndName(char* buffer, int size) {
  if (!IsBuffer(buffer, size)) return kRegistryWrongArguments;
  const int error = FindIni(static_cast<std::size_t>(size));
  if (!error) CopyTo(buffer, size, iniPath);
  return error;
}

int ZNRegistry::GetIniPath(KvString& out) {
  out = IniFolder();
  return kRegistryDone;
}

int ZNRegistry::GetIniPath(char* buffer, int size) {
  if (!IsBuffer(buffer, size)) return kRegistryWrongArguments;
  const std::string folder = IniFolder();
  if (folder.size() + kNameRoom > static_cast<std::size_t>(size)) return kRegistryPathTooLong;
  CopyTo(buffer, size, folder);
  return kRegistryDone;
}

void ZNRegistry::CreateIniBackup() {
  if (FindIni(kPathBuffer) != kRegistryDone) return;
  const fs::path ini = platform::PathFromText(iniPath);
  Copy(ini, BackupOf(ini));
}

int ZNRegistry::SetIniFilePath(const char* path) {
  if (!IsGiven(path)) return kRegistryWrongArguments;
  iniPath.clear();
  return WriteKey(HKEY_LOCAL_MACHINE, kIniPathKey, path, false);
}

int ZNRegistry::HasIniFilePath(int* out) {
  if (!initialised) return kRegistryNotInitialised;
  if (!out) return kRegistryWrongArguments;
  KvString ignored;
  *out = ReadKey(HKEY_LOCAL_MACHINE, kIniPathKey, ignored) == kRegistryDone;
  return kRegistryDone;
}

bool ZNRegistry::GetRegistryInfo(KvString& company, KvString& product, KvString& version,
                                 KvString& id) {
  const bool known = initialised != 0;
  company = known ? keyParts[0] : std::string();
  product = known ? keyParts[1] : std::string();
  version = known ? keyParts[2] : std::string();
  id = known ? shortId : std::string();
  return known;
}

// What all readers and writers of the file ask first.
int ZNRegistry::Enter(const char* section, const char* key) {
  if (!initialised) return kRegistryNotInitialised;
  if (!IsGiven(section) || !IsGiven(key)) return kRegistryWrongArguments;
  return FindIni(kPathBuffer);
}

std::string ZNRegistry::FullSection(const char* section) const {
  return sectionPrefix + kSectionJoint + section;
}

int ZNRegistry::Write(const char* section, const char* key, const char* value) {
  if (const int error = Enter(section, key)) return error;
  if (!value || !FitsOneLine(section) || !FitsOneLine(key) || !FitsOneLine(value)) {
    return kRegistryWrongArguments;
  }
  const bool written =
      System().profiles->Write(platform::PathFromText(iniPath), FullSection(section), key, value);
  return written ? kRegistryDone : kRegistryIniUnwritable;
}

int ZNRegistry::Write(const char* section, const char* key, bool value) {
  return Write(section, key, Printed(value).c_str());
}

int ZNRegistry::Write(const char* section, const char* key, double value) {
  return Write(section, key, Printed(value).c_str());
}

int ZNRegistry::Write(const char* section, const char* key, int value) {
  return Write(section, key, Printed(value).c_str());
}

int ZNRegistry::Read(const char* section, const char* key, KvString& out) {
  if (const int error = Enter(section, key)) return error;
  const std::string text =
      System().profiles->Read(platform::PathFromText(iniPath), FullSection(section), key);
  if (text.empty()) return kRegistryIniUnreadable;
  out = text;
  return kRegistryDone;
}

int ZNRegistry::Read(const char* section, const char* key, char* buffer, int size) {
  if (const int error = Enter(section, key)) return error;
  if (!IsBuffer(buffer, size)) return kRegistryWrongArguments;
  if (const int error = CareForIni(platform::PathFromText(iniPath))) return error;
  const std::string text =
      System().profiles->Read(platform::PathFromText(iniPath), FullSection(section), key);
  CopyTo(buffer, size, text);
  return *buffer ? kRegistryDone : kRegistryIniUnreadable;
}

int ZNRegistry::Read(const char* section, const char* key, bool* out) {
  return ReadConverted(*this, section, key, kBoolBuffer, ScanBool, out);
}

int ZNRegistry::Read(const char* section, const char* key, double* out) {
  return ReadConverted(*this, section, key, kNumberBuffer, ScanNumber, out);
}

int ZNRegistry::Read(const char* section, const char* key, int* out) {
  return ReadConverted(*this, section, key, kNumberBuffer, base::ScanInt, out);
}

int ZNRegistry::ReadDefault(const char* section, const char* key, bool* out, bool defaultValue) {
  return OrDefault(Read(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadDefault(const char* section, const char* key, double* out,
                            double defaultValue) {
  return OrDefault(Read(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadDefault(const char* section, const char* key, int* out, int defaultValue) {
  return OrDefault(Read(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadDefault(const char* section, const char* key, KvString& out,
                            const char* defaultValue) {
  return OrDefault(Read(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadDefault(const char* section, const char* key, char* buffer, int size,
                            const char* defaultValue) {
  return OrDefault(Read(section, key, buffer, size), buffer, size, defaultValue);
}

int ZNRegistry::ReadPath(const char* section, const char* key, KvString& out,
                         const char* defaultValue) {
  return AsPath(ReadDefault(section, key, out, defaultValue), out);
}

int ZNRegistry::ReadPath(const char* section, const char* key, char* buffer, int size,
                         const char* defaultValue) {
  return AsPath(ReadDefault(section, key, buffer, size, defaultValue), buffer, size);
}

int ZNRegistry::ReadPath(const char* section, const char* key, KvString& out) {
  return AsPath(Read(section, key, out), out);
}

int ZNRegistry::ReadPath(const char* section, const char* key, char* buffer, int size) {
  return AsPath(Read(section, key, buffer, size), buffer, size);
}

// --- the same for a user

int ZNRegistry::WriteUser(const char* section, const char* key, bool value) {
  return WriteUser(section, key, Printed(value).c_str());
}

int ZNRegistry::WriteUser(const char* section, const char* key, double value) {
  return WriteUser(section, key, Printed(value).c_str());
}

int ZNRegistry::WriteUser(const char* section, const char* key, int value) {
  return WriteUser(section, key, Printed(value).c_str());
}

int ZNRegistry::WriteUser(const char* section, const char* key, const char* value) {
  return ForUser(*this, section, key, [&](const char* own) { return Write(own, key, value); });
}

int ZNRegistry::ReadUser(const char* section, const char* key, bool* out) {
  return ForUser(*this, section, key, [&](const char* own) { return Read(own, key, out); });
}

int ZNRegistry::ReadUser(const char* section, const char* key, double* out) {
  return ForUser(*this, section, key, [&](const char* own) { return Read(own, key, out); });
}

int ZNRegistry::ReadUser(const char* section, const char* key, int* out) {
  return ForUser(*this, section, key, [&](const char* own) { return Read(own, key, out); });
}

int ZNRegistry::ReadUser(const char* section, const char* key, KvString& out) {
  return ForUser(*this, section, key, [&](const char* own) { return Read(own, key, out); });
}

int ZNRegistry::ReadUser(const char* section, const char* key, char* buffer, int size) {
  return ForUser(*this, section, key,
                 [&](const char* own) { return Read(own, key, buffer, size); });
}

int ZNRegistry::ReadUserDefault(const char* section, const char* key, bool* out,
                                bool defaultValue) {
  return OrDefault(ReadUser(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadUserDefault(const char* section, const char* key, double* out,
                                double defaultValue) {
  return OrDefault(ReadUser(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadUserDefault(const char* section, const char* key, int* out, int defaultValue) {
  return OrDefault(ReadUser(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadUserDefault(const char* section, const char* key, KvString& out,
                                const char* defaultValue) {
  return OrDefault(ReadUser(section, key, out), out, defaultValue);
}

int ZNRegistry::ReadUserDefault(const char* section, const char* key, char* buffer, int size,
                                const char* defaultValue) {
  return OrDefault(ReadUser(section, key, buffer, size), buffer, size, defaultValue);
}

int ZNRegistry::ReadUserPath(const char* section, const char* key, KvString& out,
                             const char* defaultValue) {
  return AsPath(ReadUserDefault(section, key, out, defaultValue), out);
}

int ZNRegistry::ReadUserPath(const char* section, const char* key, char* buffer, int size,
                             const char* defaultValue) {
  return AsPath(ReadUserDefault(section, key, buffer, size, defaultValue), buffer, size);
}

int ZNRegistry::ReadUserPath(const char* section, const char* key, KvString& out) {
  return AsPath(ReadUser(section, key, out), out);
}

int ZNRegistry::ReadUserPath(const char* section, const char* key, char* buffer, int size) {
  return AsPath(ReadUser(section, key, buffer, size), buffer, size);
}
