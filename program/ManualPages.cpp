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
std::string Heading(const OptionHelp& option) {
  std::string names;
  for (const std::string& name : option.letters) names += (names.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.names) names += (names.empty() ? "--" : ", --") + name;
  if (option.IsArgument()) names = option.argument;
  const std::string heading = "\\fB" + Plain(names) + "\\fR";
  const bool takesValue = option.mostValues > 0 && !option.IsArgument();
  return takesValue && !option.value.empty() ? heading + " \\fI" + Plain(option.value) + "\\fR"
                                             : heading;
}

std::string Described(const OptionHelp& option) {
  std::string text = ".TP\n" + Heading(option) + "\n" + Plain(option.description) + "\n";
  if (!option.defaultText.empty()) text += "Default: " + Plain(option.defaultText) + ".\n";
  return text;
}

std::string Synopsis(const CommandHelp& command, const std::string& called) {
  std::string text = ".SH SYNOPSIS\n\\fB" + Plain(called) + "\\fR";
  if (!command.commands.empty()) text += " \\fICOMMAND\\fR";
  text += " [\\fIOPTION\\fR]...";
  for (const OptionHelp& option : command.options) {
    if (!option.IsArgument()) continue;
    const std::string name =
        "\\fI" + Plain(option.argument) + "\\fR" + (option.mostValues > 1 ? "..." : "");
    text += option.isRequired ? " " + name : " [" + name + "]";
  }
  return text + "\n";
}

std::string Options(const CommandHelp& command) {
  std::string text;
  for (const OptionHelp& option : command.options) text += Described(option);
  return text.empty() ? text : ".SH OPTIONS\n" + text;
}

std::string Commands(const CommandHelp& command, const std::string& page) {
  std::string text;
  for (const CommandHelp& sub : command.commands) {
    const std::string name = page + "-" + sub.name;
    text += ".TP\n\\fB" + Plain(name) + "\\fR(1)\n" + Plain(sub.description) + "\n";
  }
  return text.empty() ? text : ".SH COMMANDS\n" + text;
}

// The examples, lines as they are.
std::string Footer(const CommandHelp& command) {
  if (command.footer.empty()) return {};
  return ".SH NOTES\n.nf\n" + Plain(command.footer) + "\n.fi\n";
}

void AddPages(const CommandHelp& command, const std::string& page, const std::string& version,
              std::vector<Page>& pages) {
  std::string called = page;
  std::replace(called.begin(), called.end(), '-', ' ');
  std::string text = ".TH " + Title(page) + " 1 \"\" \"" + version + "\" \"User Commands\"\n";
  text += ".SH NAME\n" + Plain(page) + " \\- " + Plain(command.description) + "\n";
  text += Synopsis(command, called) + Commands(command, page) + Options(command) + Footer(command);
  text +=
      ".SH EXIT STATUS\n0: all is done. 1: an input failed, the others are done. 2: wrong use, "
      "nothing was read or written.\n";
  text += ".SH AUTHOR\n" + Plain(kAuthor) + "\n";
  pages.push_back({"man/" + page + ".1", text});
  for (const CommandHelp& sub : command.commands) {
    AddPages(sub, page + "-" + sub.name, version, pages);
  }
}

}  // namespace

std::vector<Page> ManualPages(const CommandHelp& program, const std::string& version) {
  std::vector<Page> pages;
  AddPages(program, program.name, "fxbox " + version, pages);
  return pages;
}

}  // namespace program
