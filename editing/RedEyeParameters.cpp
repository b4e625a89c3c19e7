#include "editing/RedEyeParameters.h"

namespace {

using editing::RedEyeClick;

constexpr ParameterDescription Forced(double least, double greatest, const char* gloss) {
  return {.least = least,
          .greatest = greatest,
          .gloss = gloss,
          .range = ParameterRange::Forced,
          .isNumbered = true};
}

// Of the first click.
constexpr ParameterRow<RedEyeClick> kClickRows[] = {
    {"X1", ", X1=%.4lf", &RedEyeClick::x,
     Forced(0, 1, "click 1, as a fraction of the width; X2 and so on likewise")},
    {"Y1", ", Y1=%.4lf", &RedEyeClick::y,
     Forced(0, 1, "the same of the height, from the bottom up")},
    {"E1", ", E1=%d", &RedEyeClick::darkness, Forced(-50, 50, "less or more darkness in that eye")},
    {"F1", ", F1=%d", &RedEyeClick::correction,
     Forced(-50, 50, "more or fewer pixels that belong to that eye")}};

// The rows of a click, with its number, from 1.
template <class Work>
void ForRows(int number, RedEyeClick& click, Work work) {
  const auto numbered = [number](std::string text) {
    return text.replace(text.find('1'), 1, std::to_string(number));
  };
  for (const auto& first : kClickRows) {
    const std::string key = numbered(first.key);
    const std::string printed = numbered(first.printed);
    ParameterDescription row = first;
    row.key = key.c_str();
    row.printed = printed.c_str();
    work(row, first.In(click));
  }
}

template <class Parameters, class Work>
void ForClicks(Parameters& parameters, Work work) {
  for (int i = 0; i < parameters.count; ++i) {
    work(i + 1, parameters.clicks[static_cast<std::size_t>(i)]);
  }
}

void Turn(RedEyeClick& click, int quarterTurns) {
  for (int i = 0; i < (quarterTurns & 3); ++i) {
    const double x = click.x;
    click.x = 1 - click.y;
    click.y = x;
  }
}

}  // namespace

std::span<const ParameterRow<RedEyeParameters>> RedEyeParameters::Rows() {
  static constexpr ParameterRow<RedEyeParameters> kRows[] = {
      {"N",
       "N=%d",
       &RedEyeParameters::count,
       {.greatest = kMostClicks, .gloss = "number of clicks", .range = ParameterRange::Forced}}};
  return kRows;
}

std::vector<ParameterDescription> DescribeClicks() {
  auto rows = DescribeParameters<RedEyeParameters>();
  rows.insert(rows.end(), std::begin(kClickRows), std::end(kClickRows));
  return rows;
}

RedEyeParameters ReadClicks(const char* text) {
  auto clicks = ReadRecord<RedEyeParameters>(text);
  std::string repaired = text;
  ForClicks(clicks, [&repaired](int number, RedEyeClick& click) {
    ForRows(number, click, [&repaired](const ParameterDescription& row, ParameterField field) {
      ReadRecordField(repaired.data(), row, field);
    });
  });
  return clicks;
}

std::string PrintClicks(const RedEyeParameters& parameters, int quarterTurns) {
  std::string text = PrintParameters(parameters);
  ForClicks(parameters, [&text, quarterTurns](int number, RedEyeClick click) {
    Turn(click, quarterTurns);
    ForRows(number, click, [&text](const ParameterDescription& row, ParameterField field) {
      std::visit([&](auto* value) { PrintParameterField(text, row, value); }, field);
    });
  });
  return text;
}
