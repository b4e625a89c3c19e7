// What the program says to its user, and how texts and file names come in and go out.
#pragma once

#include <stdexcept>
#include <string>

#include "program/Host.h"

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

// Help in which the lines of commands, which begin with "  fxbox", have the quotation marks that
// this system's shell takes.
std::string ForShell(std::string help);

}  // namespace program
