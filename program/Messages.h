// What the program says to its user, and how texts and file names come in and go out.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace program {

// The exit status of the program.
inline constexpr int kDone = 0;
inline constexpr int kSomeFailed = 1;  // some input failed, all others are done
inline constexpr int kWrongUse = 2;    // arguments or chain text; nothing was read or written
inline constexpr int kInterrupted = 130;

// The user asked for what cannot be: status 2. The text is the whole line behind "fxbox: ".
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file or module that failed: status 1. The line reads "fxbox: WHERE: what".
class FileError : public std::runtime_error {
 public:
  FileError(const std::string& where, const std::string& what)
      : std::runtime_error(where + ": " + what) {}
};

// Writes "fxbox: message" on standard error, always as one line.
void PrintError(const std::string& message);

// File names are UTF-8 on the command line and in messages.
std::filesystem::path PathOf(const std::string& utf8);
std::string Utf8Of(const std::filesystem::path& path);

// A text from the command line or a chain file in the code page of the library: UTF-8 is converted,
// anything else is taken as code page text already.
std::string ChainTextOf(std::string_view outside);

// Help in which the lines of commands, which begin with "  fxbox", have the quotation marks that
// this system's shell takes.
std::string ForShell(std::string help);

// The text as part of a message: in quotation marks, shortened, in UTF-8.
std::string Quoted(std::string_view codePageText);

}  // namespace program
