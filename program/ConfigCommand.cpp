// fxbox config: the settings in the registry and in Sennet.ini.
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

#include "base/CodePage.h"
#include "platform/PathText.h"
#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Messages.h"
#include "settings/ZNRegistry.h"

namespace program {
namespace {

struct ConfigOptions {
  std::vector<std::string> names;  // UTF-8, as the rest
  std::string inf = "ZNGallery";
  std::string product;
  std::string file;
  bool user = false;
};

constexpr char kExamples[] =
    R"(A setting is SECTION KEY in the settings file, or KEY alone in the registry. The file Tesmar.inf
beside the program names the product; share/fxbox4 has a sample.

Examples:
  fxbox config set Locations Filter /srv/filters
  fxbox config get Locations Filter
  fxbox config set IniFilePath /srv/settings
  fxbox config list --file ./Sennet.ini
  fxbox config get IniFilePath --as Firm,Product,1.0,PR)";

// Where a product says who it is.
std::filesystem::path ProductFile() {
  return platform::CurrentServices().process->Program().parent_path() / "Tesmar.inf";
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; std::getline(stream, word, ',');) words.push_back(word);
  return words;
}

// The settings that the options name: those of a product, or those in one file.
class Settings {
 public:
  explicit Settings(const ConfigOptions& options) : user(options.user), oneFile(options.file) {
    const int error = Open(options);
    if (error == kRegistryIniUnreadable) {
      throw FileError(Utf8Of(ProductFile()),
                      "it is missing or names no product " + options.inf +
                          ": copy the sample of that name there, or name a product by --as "
                          "COMPANY,PRODUCT,VERSION,ID or a file by --file");
    }
    Demand(error, "the product");
    char name[1024];
    Demand(registry.GetIniPathAndName(name, sizeof name), "Sennet.ini");
    ini = platform::PathFromText(name);
    KvString parts[4];
    registry.GetRegistryInfo(parts[0], parts[1], parts[2], parts[3]);
    for (int i = 0; i < 3; ++i) {
      if (!parts[i].IsEmpty()) productKey.append("\\").append(parts[i].ToStdString());
    }
    prefix = parts[3].ToStdString();
  }

  std::string Get(const std::vector<std::string>& names) {
    KvString text;
    if (names.size() == 1) {
      Demand(registry.ReadKey(HiveOf(), Text(names[0]).c_str(), text), names[0]);
    } else {
      const std::string section = Text(names[0]), key = Text(names[1]);
      Demand(user ? registry.ReadUser(section.c_str(), key.c_str(), text)
                  : registry.Read(section.c_str(), key.c_str(), text),
             names[0] + " " + names[1]);
    }
    return text.ToStdString();
  }

  void Set(const std::vector<std::string>& names) {
    const std::string key = Text(names[names.size() - 2]), value = Text(names.back());
    if (names.size() == 2) {
      Demand(registry.WriteKey(HiveOf(), key.c_str(), value.c_str(), false), names[0]);
    } else {
      const std::string section = Text(names[0]);
      Demand(user ? registry.WriteUser(section.c_str(), key.c_str(), value.c_str())
                  : registry.Write(section.c_str(), key.c_str(), value.c_str()),
             names[0] + " " + names[1]);
    }
  }

  void Delete(const std::vector<std::string>& names) {
    Get(names);  // what is not there cannot be deleted
    bool deleted = false;
    if (names.size() == 1) {
      deleted = Registry().DeleteTree(Hive(), RootKey() + "\\" + Text(names[0])) ==
                platform::RegistryResult::Done;
    } else {
      deleted = Profiles().Write(ini, FullSection(Text(names[0])), Text(names[1]), std::nullopt);
    }
    if (!deleted) throw FileError(names.size() == 1 ? names[0] : Utf8Of(ini), "cannot be changed");
  }

  void List() {
    if (oneFile.empty()) ListKeys(RootKey());
    for (const std::string& section : Profiles().Sections(ini)) {
      std::cout << '[' << base::ToUtf8(section) << "]\n";
      for (const std::string& key : Profiles().Keys(ini, section)) {
        std::cout << base::ToUtf8(key) << '=' << base::ToUtf8(Profiles().Read(ini, section, key))
                  << '\n';
      }
    }
  }

 private:
  static platform::Registry& Registry() { return *platform::CurrentServices().registry; }
  static platform::Profiles& Profiles() { return *platform::CurrentServices().profiles; }

  int Open(const ConfigOptions& options) {
    if (options.product.empty() && options.file.empty()) {
      return registry.InitFromInf(Text(options.inf).c_str(), nullptr);
    }
    std::vector<std::string> words = SplitAtCommas(options.product);
    if (options.product.empty()) words = {"fxbox", "", "", options.inf};
    if (words.size() != 4) {
      throw UsageError("--as: " + Quoted(options.product) + " is not COMPANY,PRODUCT,VERSION,ID");
    }
    for (std::string& word : words) word = Text(word);
    std::string extra;
    if (!options.file.empty()) {
      std::error_code ignored;
      extra = platform::PathText(std::filesystem::absolute(PathOf(options.file), ignored));
      if (extra.find(".ini") == std::string::npos) {
        throw UsageError("--file: " + Quoted(options.file) + " is not named .ini");
      }
    }
    return registry.Init(words[0].c_str(), words[1].c_str(), words[2].c_str(), words[3].c_str(),
                         extra.empty() ? nullptr : extra.c_str());
  }

  void Demand(int error, const std::string& what) {
    if (error == kRegistryDone) return;
    if (error == kRegistryKeyMissing || error == kRegistryIniUnreadable) {
      throw FileError(what, "there is no such setting");
    }
    KvString text;
    registry.GetErrorText(error, text);
    throw FileError(what, base::ToUtf8(text.View()));
  }

  // The settings are in the code page, the command line is not.
  static std::string Text(const std::string& utf8) { return ChainTextOf(utf8); }

  HKEY HiveOf() const { return user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE; }
  platform::Hive Hive() const {
    return user ? platform::Hive::CurrentUser : platform::Hive::LocalMachine;
  }
  std::string RootKey() const { return "Software" + productKey; }

  std::string FullSection(const std::string& section) {
    std::string full = prefix + "_#_";
    KvString number;
    if (user && registry.ReadKey(HKEY_CURRENT_USER, "User", number) == kRegistryDone) {
      full += "User" + number.ToStdString() + "_#_";
    }
    return full + section;
  }

  void ListKeys(const std::string& key) {
    for (const std::string& name : Registry().Subkeys(Hive(), key)) {
      const std::string below = key + "\\" + name;
      std::cout << base::ToUtf8(below.substr(RootKey().size() + 1)) << '='
                << base::ToUtf8(Registry().Read(Hive(), below).value_or("")) << '\n';
      ListKeys(below);
    }
  }

  ZNRegistry registry;
  const bool user;
  const std::string oneFile;
  std::filesystem::path ini;
  std::string productKey;  // with a backslash in front of each word
  std::string prefix;
};

using Work = std::function<void(Settings&, const ConfigOptions&)>;

void AddPart(const Command& config, const char* name, const char* help, int least, int most,
             const char* arguments, Work work) {
  const auto options = std::make_shared<ConfigOptions>();
  const Command command = config.Add(name, help);
  if (most > 0) {
    command.Take("NAME", options->names, arguments).Required().Words(least, most);
  }
  command.Flag("--user", options->user, "The settings of this user instead of all");
  command.Take("--file FILE", options->file, "Another settings file (FILE.ini)");
  command.Take("--inf SECTION", options->inf,
               "Section of Tesmar.inf that names the product (ZNGallery)");
  command.Take("--as WORDS", options->product, "Name the product here: COMPANY,PRODUCT,VERSION,ID");
  command.Footer(ForShell(kExamples));
  command.Runs([options, work = std::move(work)] {
    if (options->names.size() == 1 && !options->file.empty()) {
      throw UsageError(
          "KEY alone is in the registry, and --file names a file (fxbox --help tells more)");
    }
    Settings settings(*options);
    work(settings, *options);
    return kDone;
  });
}

}  // namespace

void AddConfigCommand(const Command& program) {
  const Command config = program.Add("config", "Read and change the settings of the product");
  config.Footer(ForShell(kExamples));
  AddPart(config, "get", "Print a setting", 1, 2, "[SECTION] KEY",
          [](Settings& settings, const ConfigOptions& options) {
            std::cout << base::ToUtf8(settings.Get(options.names)) << '\n';
          });
  AddPart(config, "set", "Change a setting", 2, 3, "[SECTION] KEY VALUE",
          [](Settings& settings, const ConfigOptions& options) { settings.Set(options.names); });
  AddPart(config, "delete", "Delete a setting", 1, 2, "[SECTION] KEY",
          [](Settings& settings, const ConfigOptions& options) { settings.Delete(options.names); });
  AddPart(config, "list", "Print all settings", 0, 0, "",
          [](Settings& settings, const ConfigOptions&) { settings.List(); });
}

}  // namespace program
