// The commands of the program and their options, each declared in a line. Command.cpp alone sees
// the library that reads the command line, whose header takes longer to compile than what commands
// do.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace program {

// What a command does once the command line is read; gives the exit status. UsageError means status
// 2, any other exception status 1.
using Action = std::function<int()>;

// What --help shows; what is hidden from users is left out.
struct OptionHelp {
  std::vector<std::string> letters;  // "o" of -o
  std::vector<std::string> names;    // "output" of --output; both are empty for an argument
  std::string argument;              // its name
  std::string value;                 // what stands for the value
  std::string description;
  std::string defaultText;
  bool isRequired = false;
  std::size_t mostValues = 0;  // 0: a flag

  bool IsArgument() const { return letters.empty() && names.empty(); }
};
struct CommandHelp {
  std::string name;
  std::string description;
  std::string footer;
  std::vector<OptionHelp> options;
  std::vector<CommandHelp> commands;
};

// Says more about an option or argument that was just declared.
class Option {
 public:
  explicit Option(CLI::Option* declared) : option(declared) {}

  Option Required() const;
  Option Between(int least, int most) const;
  Option Between(double least, double most) const;
  Option Positive() const;
  Option OneOf(std::vector<std::string> words) const;
  Option Words(int least, int most) const;  // how many an argument takes
  Option ShowDefault() const;               // in help
  Option Hide() const;                      // from users

 private:
  CLI::Option* option;
};

// A command, or the program itself; copies stand for the same one. What options are read into lives
// as long as the action, which holds it.
class Command {
 public:
  // A command below this one, of which one must be named then. It begins with this one's footer.
  Command Add(const std::string& name, const std::string& help) const;
  void Footer(const std::string& text) const;  // below the options in help
  void Hide() const;                           // from users
  void Runs(Action action) const;

  Option Flag(const std::string& names, bool& given, const std::string& help = "") const;

  // `names` are those of the option and, behind a blank, what stands for its value in help, as
  // "-o,--output FILE"; or the name of an argument. An option with a list of values takes one
  // each time, an argument all.
  Option Take(const std::string& names, std::string& value, const std::string& help = "") const;
  Option Take(const std::string& names, std::optional<std::string>& value,
              const std::string& help = "") const;
  Option Take(const std::string& names, std::vector<std::string>& values,
              const std::string& help = "") const;
  Option Take(const std::string& names, int& value, const std::string& help) const;
  Option Take(const std::string& names, std::optional<int>& value, const std::string& help) const;
  Option Take(const std::string& names, std::optional<double>& value,
              const std::string& help) const;

  // One of these words, of which the number is taken.
  Option Choose(const std::string& names, const std::map<std::string, int>& words, int& value,
                const std::string& help) const;

  CommandHelp Help() const;

 private:
  friend class CommandLine;
  Command(CLI::App& itsApp, Action& chosenAction) : app(&itsApp), chosen(&chosenAction) {}

  CLI::App* app;
  Action* chosen;
};

// The program with all its commands, which are added to Program().
class CommandLine {
 public:
  CommandLine(const std::string& name, const std::string& help, const std::string& version);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  Command Program();

  // The action that the user chose; null when help or version was asked for, and printed. Throws a
  // UsageError.
  Action Read(std::vector<std::string> arguments);

 private:
  std::unique_ptr<CLI::App> app;
  Action chosen;
};

}  // namespace program
