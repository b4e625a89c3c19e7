#include "program/Arguments.h"

#include <charconv>
#include <string_view>
#include <vector>

#include "program/Messages.h"

namespace program {
namespace {

// The whole numbers between the separators; empty when something else stands there.
std::vector<int> SplitNumbers(std::string_view text, char separator) {
  std::vector<int> numbers;
  const char* at = text.data();
  const char* const end = at + text.size();
  for (;;) {
    int number = 0;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc()) return {};
    numbers.push_back(number);
    if (next == end) return numbers;
    if (*next != separator) return {};
    at = next + 1;
  }
}

}  // namespace

Size ParseSize(const std::string& text, const std::string& option) {
  const std::vector<int> sides = SplitNumbers(text, 'x');
  if (sides.size() != 2 || sides[0] < 1 || sides[1] < 1) {
    throw UsageError(option + ": " + Quoted(text) + " is no size such as 640x480");
  }
  return {sides[0], sides[1]};
}

Size ParseBox(const std::string& text, const std::string& option) {
  const std::vector<int> side = SplitNumbers(text, 'x');
  if (side.size() == 1 && side[0] >= 1) return {side[0], side[0]};
  return ParseSize(text, option);
}

Rectangle ParseRectangle(const std::string& text, const std::string& option) {
  const std::vector<int> numbers = SplitNumbers(text, ',');
  if (numbers.size() != 4) {
    throw UsageError(option + ": " + Quoted(text) + " is no rectangle such as 0,0,640,480");
  }
  if (numbers[2] < 1 || numbers[3] < 1) {
    throw UsageError(option + ": the rectangle " + Quoted(text) + " is empty");
  }
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace program
