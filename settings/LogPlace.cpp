#include "settings/LogPlace.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <tuple>

#include "base/CodePage.h"
#include "base/NumberScan.h"
#include "platform/PathText.h"
#include "settings/ZNRegistry.h"

namespace settings {
namespace {

namespace fs = std::filesystem;

constexpr char kSection[] = "ZNGallery";

const platform::Services& System() {
  return platform::CurrentServices();
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), base::ToLower);
  return lower;
}

bool CanUse(const std::string& folder) {
  return !folder.empty() && System().files->CanReadAndWrite(platform::PathFromText(folder));
}

void TakeRegisteredFolder(ZNRegistry& settings, std::string& folder) {
  KvString registered;
  const int error = settings.ReadKey(HKEY_LOCAL_MACHINE, "IniFilePath", registered);
  if (!error && CanUse(registered.ToStdString())) folder = registered.ToStdString();
}

// The text up to its last folder separator; empty when it has none.
std::string FolderPart(const std::string& path) {
  return path.substr(0, path.find_last_of({'\\', platform::kFolderSeparator}) + 1);
}

// Data that has been moved as a whole takes its log folder along: what the settings say then begins
// with the place where the data was.
void FollowMovedData(const std::string& dataPath, std::string root, std::string& folder) {
  const std::string place = FolderPart(dataPath);
  if (root.empty() && dataPath.find(".ini") != std::string::npos) root = place;
  const bool onNetwork = root.starts_with("\\\\");
  if (!dataPath.ends_with(".ini") || onNetwork) return;
  if (Lower(place) == Lower(root) || !folder.starts_with(root)) return;
  const std::string moved = place + folder.substr(root.size());
  if (CanUse(moved)) folder = moved;
}

std::string ConfiguredFolder(std::string folder) {
  ZNRegistry settings(kSection, nullptr);
  int count = 0;
  settings.ReadDefault("Datapaths", "Path#", &count, 0);
  if (count >= 1) {
    int active = 0;
    settings.ReadDefault("Datapaths", "ActivePath", &active, 0);
    KvString dataPath, root, logFolder;
    const std::string key = std::string("Path").append(std::to_string(active));
    settings.ReadDefault("Datapaths", key.c_str(), dataPath, kSection);
    ZNRegistry data(kSection, dataPath);
    data.ReadDefault("Locations", "DataRoot", root, "");
    if (data.Read("Locations", "Log", logFolder) == kRegistryDone) folder = logFolder.ToStdString();
    FollowMovedData(dataPath.ToStdString(), root.ToStdString(), folder);
  }
  if (count < 1 || !CanUse(folder)) TakeRegisteredFolder(settings, folder);
  return folder;
}

struct Date {
  int year;
  int month;
  int day;
  auto operator<=>(const Date&) const = default;
};

// Where the date stands in the names of one kind of file.
struct DatedName {
  std::string_view front;  // in lower case, as the end
  std::string_view end;
  std::size_t least;  // characters
  std::size_t most;
  std::size_t bracket;

  bool Matches(std::string_view name) const {
    const std::string lower = Lower(name);
    return lower.starts_with(front) && lower.ends_with(end) && name.size() >= least &&
           name.size() <= most && name[bracket] == '(';
  }

  std::optional<Date> DateOf(std::string_view name) const {
    const auto year = base::ScanInt(name.substr(bracket + 1));
    const auto month = base::ScanInt(name.substr(bracket + 6));
    const auto day = base::ScanInt(name.substr(bracket + 9));
    if (!year || !month || !day) return std::nullopt;
    return Date{*year, *month, *day};
  }
};
constexpr std::size_t kAnyLength = std::string_view::npos;
constexpr DatedName kDatedNames[] = {{"", ".log", 20, kAnyLength, 4},
                                     {"logs", ".zip", 20, kAnyLength, 4},
                                     {"zng_ftp(", ".log", 23, 23, 7}};

bool IsOlder(std::string_view name, const Date& reference) {
  return std::any_of(std::begin(kDatedNames), std::end(kDatedNames), [&](const DatedName& kind) {
    const auto date = kind.Matches(name) ? kind.DateOf(name) : std::nullopt;
    return date && *date < reference;
  });
}

}  // namespace

std::string StemOf(const fs::path& file) {
  return platform::PathText(file.stem()).substr(0, kStemLength);
}

bool SameStem(const std::string& a, const char* b) {
  return Lower(a) == Lower(b);
}

std::string FindLogFolder(const std::string& before) {
  const std::string folder = ConfiguredFolder(before);
  if (!folder.empty()) return folder;
  fs::path own = System().process->StateFolder();
  if (own.empty()) own = System().process->TemporaryFolder();
  return platform::PathText(own / "fxbox4" / "log");
}

std::string LogFileName(const std::string& folder, const std::string& stem,
                        const platform::LocalTime& day) {
  std::array<char, 48> date;
  std::snprintf(date.data(), date.size(), "(%02d-%02d-%02d).log", day.year, day.month, day.day);
  const bool joined = folder.ends_with('\\') || folder.ends_with(platform::kFolderSeparator);
  return folder + (joined || folder.empty() ? "" : std::string(1, platform::kFolderSeparator)) +
         stem + date.data();
}

void RemoveOldLogs(const std::string& folder, const platform::LocalTime& today) {
  const bool january = today.month == 1;
  const Date reference = {today.year - (january ? 1 : 0), january ? 12 : today.month - 1,
                          today.day};
  std::error_code error;
  fs::directory_iterator entry(platform::PathFromText(folder), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    const bool plain = fs::is_regular_file(entry->symlink_status(ignored));
    if (plain && IsOlder(platform::PathText(entry->path().filename()), reference)) {
      fs::remove(entry->path(), ignored);
    }
  }
}

}  // namespace settings
