#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

#include "program/CommandPages.h"

namespace program {
namespace {

constexpr char kAuthor[] = "The Fxbox developers <fxbox@example.org>";

// Text of a page: what roff would read as its own is taken from it.
std::string Plain(const std::string& text) {
  std::string plain;
  bool atStart = true;
  for (const char c : text) {
    if (atStart && (c == '.' || c == '\'')) plain += "\\&";
    plain += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    atStart = c == '\n';
  }
  return plain;
}

std::string Title(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return name;
}

// "-o,--output FILE"
std::string Heading(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.get_lnames()) {
    names += (names.empty() ? "--" : ", --") + name;
  }
  if (names.empty()) names = option.get_single_name();
  const std::string heading = "\\fB" + Plain(names) + "\\fR";
  const bool takesValue = option.get_expected_max() > 0 && !option.get_positional();
  const std::string type = option.get_type_name();
  return takesValue && !type.empty() ? heading + " \\fI" + Plain(type) + "\\fR" : heading;
}

std::string Described(const CLI::Option& option) {
  std::string text = ".TP\n" + Heading(option) + "\n" + Plain(option.get_description()) + "\n";
  if (!option.get_default_str().empty()) {
    text += "Default: " + Plain(option.get_default_str()) + ".\n";
  }
  return text;
}

std::string Synopsis(const CLI::App& command, const std::string& called) {
  std::string text = ".SH SYNOPSIS\n\\fB" + Plain(called) + "\\fR";
  if (!command.get_subcommands([](const CLI::App*) { return true; }).empty()) {
    text += " \\fICOMMAND\\fR";
  }
  text += " [\\fIOPTION\\fR]...";
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    const std::string name = "\\fI" + Plain(option->get_single_name()) + "\\fR" +
                             (option->get_expected_max() > 1 ? "..." : "");
    text += option->get_required() ? " " + name : " [" + name + "]";
  }
  return text + "\n";
}

std::string Options(const CLI::App& command) {
  std::string text;
  for (const CLI::Option* option : command.get_options()) {
    if (IsShown(*option)) text += Described(*option);
  }
  return text.empty() ? text : ".SH OPTIONS\n" + text;
}

std::string Commands(const CLI::App& command, const std::string& page) {
  std::string text;
  for (const CLI::App* sub : ShownCommands(command)) {
    const std::string name = page + "-" + sub->get_name();
    text += ".TP\n\\fB" + Plain(name) + "\\fR(1)\n" + Plain(sub->get_description()) + "\n";
  }
  return text.empty() ? text : ".SH COMMANDS\n" + text;
}

// The examples, lines as they are.
std::string Footer(const CLI::App& command) {
  if (command.get_footer().empty()) return {};
  return ".SH NOTES\n.nf\n" + Plain(command.get_footer()) + "\n.fi\n";
}

void AddPages(const CLI::App& command, const std::string& page, const std::string& version,
              std::vector<Page>& pages) {
  std::string called = page;
  std::replace(called.begin(), called.end(), '-', ' ');
  std::string text = ".TH " + Title(page) + " 1 \"\" \"" + version + "\" \"User Commands\"\n";
  text += ".SH NAME\n" + Plain(page) + " \\- " + Plain(command.get_description()) + "\n";
  text += Synopsis(command, called) + Commands(command, page) + Options(command) + Footer(command);
  text +=
      ".SH EXIT STATUS\n0: all is done. 1: an input failed, the others are done. 2: wrong use, "
      "nothing was read or written.\n";
  text += ".SH AUTHOR\n" + Plain(kAuthor) + "\n";
  pages.push_back({"man/" + page + ".1", text});
  for (const CLI::App* sub : ShownCommands(command)) {
    AddPages(*sub, page + "-" + sub->get_name(), version, pages);
  }
}

}  // namespace

std::vector<Page> ManualPages(const CLI::App& program, const std::string& version) {
  std::vector<Page> pages;
  AddPages(program, program.get_name(), "fxbox " + version, pages);
  return pages;
}

}  // namespace program
