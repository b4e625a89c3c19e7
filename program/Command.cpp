#include "program/Command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>

#include "program/Messages.h"

namespace program {
namespace {

// Declares what `names` name, with or without something that stands for its value.
template <class Value>
CLI::Option* Declare(CLI::App& app, const std::string& names, Value& value,
                     const std::string& help) {
  const std::size_t blank = std::min(names.find(' '), names.size());
  CLI::Option* const option = app.add_option(names.substr(0, blank), value, help);
  return option->type_name(blank < names.size() ? names.substr(blank + 1) : "");
}

OptionHelp HelpOf(const CLI::Option& option) {
  OptionHelp help;
  help.letters = option.get_snames();
  help.names = option.get_lnames();
  help.argument = option.get_single_name();
  help.value = option.get_type_name();
  help.description = option.get_description();
  help.defaultText = option.get_default_str();
  help.isRequired = option.get_required();
  help.mostValues = static_cast<std::size_t>(option.get_expected_max());
  return help;
}

CommandHelp HelpOf(const CLI::App& app) {
  CommandHelp help{app.get_name(), app.get_description(), app.get_footer(), {}, {}};
  for (const CLI::Option* const option : app.get_options()) {
    if (!option->get_group().empty()) help.options.push_back(HelpOf(*option));
  }
  for (const CLI::App* const command : app.get_subcommands({})) {
    if (!command->get_group().empty()) help.commands.push_back(HelpOf(*command));
  }
  return help;
}

// A first word that is none of the commands.
void CheckCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].empty() || arguments[0][0] == '-') return;
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({}))
    names.push_back(command->get_name());
  if (std::find(names.begin(), names.end(), arguments[0]) != names.end()) return;
  throw UsageError("unknown command " + Quoted(arguments[0]) + Suggestion(arguments[0], names) +
                   " (fxbox --help tells more)");
}

}  // namespace

Option Option::Required() const {
  return Option(option->required());
}

Option Option::Between(int least, int most) const {
  return Option(option->check(CLI::Range(least, most)));
}

Option Option::Between(double least, double most) const {
  return Option(option->check(CLI::Range(least, most)));
}

Option Option::Positive() const {
  return Option(option->check(CLI::Range(1, std::numeric_limits<int>::max(), "POSITIVE")));
}

Option Option::OneOf(std::vector<std::string> words) const {
  return Option(option->check(CLI::IsMember(std::move(words))));
}

Option Option::Words(int least, int most) const {
  return Option(option->expected(least, most));
}

Option Option::ShowDefault() const {
  return Option(option->capture_default_str());
}

Option Option::Hide() const {
  return Option(option->group(""));
}

Command Command::Add(const std::string& name, const std::string& help) const {
  app->require_subcommand(1);
  return {*app->add_subcommand(name, help), *chosen};
}

void Command::Footer(const std::string& text) const {
  app->footer(text);
}

void Command::Hide() const {
  app->group("");
}

void Command::Runs(Action action) const {
  app->callback([action = std::move(action), to = chosen] { *to = action; });
}

Option Command::Flag(const std::string& names, bool& given, const std::string& help) const {
  return Option(app->add_flag(names, given, help));
}

Option Command::Take(const std::string& names, std::string& value, const std::string& help) const {
  return Option(Declare(*app, names, value, help));
}

Option Command::Take(const std::string& names, std::optional<std::string>& value,
                     const std::string& help) const {
  return Option(Declare(*app, names, value, help));
}

Option Command::Take(const std::string& names, std::vector<std::string>& values,
                     const std::string& help) const {
  CLI::Option* const option = Declare(*app, names, values, help);
  if (!option->get_positional()) option->allow_extra_args(false);
  return Option(option);
}

Option Command::Take(const std::string& names, int& value, const std::string& help) const {
  return Option(Declare(*app, names, value, help));
}

Option Command::Take(const std::string& names, std::optional<int>& value,
                     const std::string& help) const {
  return Option(Declare(*app, names, value, help));
}

Option Command::Take(const std::string& names, std::optional<double>& value,
                     const std::string& help) const {
  return Option(Declare(*app, names, value, help));
}

Option Command::Choose(const std::string& names, const std::map<std::string, int>& words,
                       int& value, const std::string& help) const {
  CLI::Option* const option = Declare(*app, names, value, help);
  return Option(option->transform(CLI::CheckedTransformer(words).description("")));
}

CommandHelp Command::Help() const {
  return HelpOf(*app);
}

CommandLine::CommandLine(const std::string& name, const std::string& help,
                         const std::string& version)
    : app(std::make_unique<CLI::App>(help, name)) {
  // Ahead of the commands, which take it over: "/" begins a path on every system.
  app->allow_windows_style_options(false);
  app->set_version_flag("--version", name + " " + version, "Print the version");
}

CommandLine::~CommandLine() = default;

Command CommandLine::Program() {
  return {*app, chosen};
}

Action CommandLine::Read(std::vector<std::string> arguments) {
  CheckCommand(*app, arguments);
  std::reverse(arguments.begin(), arguments.end());  // the library takes them last one first
  try {
    app->parse(std::move(arguments));
  } catch (const CLI::ParseError& outcome) {
    if (outcome.get_exit_code() != 0) {
      throw UsageError(std::string(outcome.what()) + " (fxbox --help tells more)");
    }
    app->exit(outcome);  // prints it
    return nullptr;
  }
  return chosen;
}

}  // namespace program
