#include <functional>
#include <initializer_list>
#include <string_view>

#include "program/CommandPages.h"

namespace program {
namespace {

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

// A command with the words that lead to it: "fxbox box list".
struct Called {
  std::string words;
  const CommandHelp* help;
};

void Collect(const CommandHelp& help, const std::string& words, std::vector<Called>& all) {
  all.push_back({words, &help});
  for (const CommandHelp& sub : help.commands) {
    Collect(sub, Joined({words, " ", sub.name}), all);
  }
}

std::vector<Called> AllCommands(const CommandHelp& program) {
  std::vector<Called> all;
  Collect(program, program.name, all);
  return all;
}

// The first sentence or line, in single quotation marks of a shell.
std::string ShellQuoted(const std::string& description) {
  std::string text = description.substr(0, description.find_first_of("\n;"));
  std::string quoted;
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return Joined({"'", quoted, "'"});
}

// A word that may come behind those of a command.
struct Offer {
  std::string word;
  std::string meaning;
};

// Commands, then options by their names, and by their letters where those are wanted.
std::vector<Offer> OffersOf(const CommandHelp& command, bool withLetters) {
  std::vector<Offer> offers;
  for (const CommandHelp& sub : command.commands) offers.push_back({sub.name, sub.description});
  for (const OptionHelp& option : command.options) {
    const std::string& meaning = option.description;
    for (const std::string& name : option.names) offers.push_back({"--" + name, meaning});
    if (!withLetters) continue;
    for (const std::string& name : option.letters) offers.push_back({"-" + name, meaning});
  }
  return offers;
}

// The lines of a shell's case over the words of commands, each with what is done.
std::string Case(const std::vector<Called>& commands, const char* indent,
                 const std::function<std::string(const Called&)>& done) {
  std::string text;
  for (const Called& command : commands) {
    text += Joined({indent, ShellQuoted(command.words), ") ", done(command), " ;;\n"});
  }
  return text;
}

// The case that takes one word more for the command, where there is such a command.
std::string CaseOfWords(const std::vector<Called>& commands, const char* indent) {
  return Case({commands.begin() + 1, commands.end()}, indent,
              [](const Called&) { return "called=\"$called $word\""; });
}

std::string BashWords(const Called& command) {
  std::string words;
  for (const Offer& offer : OffersOf(*command.help, true)) {
    words += Joined({words.empty() ? "" : " ", offer.word});
  }
  return Joined({"words='", words, "'"});
}

std::string Bash(const std::vector<Called>& commands) {
  return "# Completion of fxbox for bash.\n"
         "_fxbox() {\n"
         "  local current=\"${COMP_WORDS[COMP_CWORD]}\" called=fxbox word\n"
         "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
         "    case \"$called $word\" in\n" +
         CaseOfWords(commands, "      ") +
         "    esac\n"
         "  done\n"
         "  local words=\n"
         "  case \"$called\" in\n" +
         Case(commands, "    ", BashWords) +
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "  [ ${#COMPREPLY[@]} -gt 0 ] || mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
         "}\n"
         "complete -o filenames -F _fxbox fxbox\n";
}

// Words with what they mean, "word:meaning" each.
std::string ZshWords(const Called& command) {
  std::string words;
  for (const Offer& offer : OffersOf(*command.help, false)) {
    words += Joined({" ", ShellQuoted(Joined({offer.word, ":", offer.meaning}))});
  }
  return Joined({"offered=(", words, " )"});
}

std::string Zsh(const std::vector<Called>& commands) {
  return "#compdef fxbox\n"
         "local called=fxbox word\n"
         "local -a offered\n"
         "for word in ${words[2,CURRENT-1]}; do\n"
         "  case \"$called $word\" in\n" +
         CaseOfWords(commands, "    ") + "  esac\ndone\ncase \"$called\" in\n" +
         Case(commands, "  ", ZshWords) + "esac\n_describe -o fxbox offered\n_files\n";
}

// The condition under which a command's words are offered.
std::string FishCondition(const Called& command) {
  if (command.words == "fxbox") return "__fish_use_subcommand";
  std::string words = command.words.substr(command.words.find(' ') + 1);
  std::string condition;
  for (std::size_t at = 0; at != std::string::npos;) {
    const std::size_t end = words.find(' ', at);
    const std::string word = words.substr(at, end - at);
    condition += Joined({condition.empty() ? "" : "; and ", "__fish_seen_subcommand_from ", word});
    at = end == std::string::npos ? end : end + 1;
  }
  return condition;
}

std::string Fish(const std::vector<Called>& commands) {
  std::string text = "# Completion of fxbox for fish.\n";
  for (const Called& command : commands) {
    const std::string front = Joined({"complete -c fxbox -n '", FishCondition(command), "'"});
    for (const CommandHelp& sub : command.help->commands) {
      text += Joined({front, " -a ", sub.name, " -d ", ShellQuoted(sub.description), "\n"});
    }
    for (const OptionHelp& option : command.help->options) {
      if (option.IsArgument()) continue;
      text += front;
      for (const std::string& name : option.letters) text += Joined({" -s ", name});
      for (const std::string& name : option.names) text += Joined({" -l ", name});
      if (option.mostValues > 0) text += " -r";
      text += Joined({" -d ", ShellQuoted(option.description), "\n"});
    }
  }
  return text;
}

}  // namespace

std::vector<Page> Completions(const CommandHelp& program) {
  const std::vector<Called> commands = AllCommands(program);
  return {{"completion/bash/fxbox", Bash(commands)},
          {"completion/zsh/_fxbox", Zsh(commands)},
          {"completion/fish/fxbox.fish", Fish(commands)}};
}

}  // namespace program
