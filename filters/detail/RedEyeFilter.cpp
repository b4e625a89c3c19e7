#include "filters/detail/RedEyeFilter.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/Rows.h"

namespace {

using kernels::RedEyeClick;

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

std::string TextOf(const RedEyeParameters& parameters) {
  std::string text = PrintParameters(parameters);
  ForClicks(parameters, [&text](int number, RedEyeClick click) {
    ForRows(number, click, [&text](const ParameterDescription& row, ParameterField field) {
      std::visit([&](auto* value) { PrintParameterField(text, row, value); }, field);
    });
  });
  return text;
}

HRESULT Give(const RedEyeParameters& parameters, char* buffer, int size) {
  return platform::Guard([&]() -> HRESULT {
    if (size < RedEyeParameters::kLeastBuffer) return S_OK;
    std::string text = TextOf(parameters);
    const auto room = static_cast<std::size_t>(size) - 1;
    const bool isWhole = text.size() <= room;
    if (!isWhole) text.resize(room);
    CopyParameterText(text, 0, buffer, size);
    return isWhole ? S_OK : E_FAIL;
  });
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

std::vector<ParameterDescription> CRedEyeFilter::Describe() {
  auto rows = DescribeParameters<RedEyeParameters>();
  rows.insert(rows.end(), std::begin(kClickRows), std::end(kClickRows));
  return rows;
}

HRESULT CRedEyeFilter::GetParameter(char* buffer, int size) {
  return Give(Pending(), buffer, size);
}

HRESULT CRedEyeFilter::GetActiveParameter(char* buffer, int size) {
  return Give(active, buffer, size);
}

void CRedEyeFilter::ReadText(const char* text) {
  pending = ReadRecord<RedEyeParameters>(text);
  std::string repaired = text;
  ForClicks(pending, [&repaired](int number, RedEyeClick& click) {
    ForRows(number, click, [&repaired](const ParameterDescription& row, ParameterField field) {
      ReadRecordField(repaired.data(), row, field);
    });
  });
}

// The caller's rows hold what the source gave for the request, and the mask stays so. The eyes are
// removed from a picture of our own: whatever part is asked for, a click means the same place.
bool CRedEyeFilter::ChangeRectangle(const PullRectangle& rectangle) {
  const int width = output.width;
  const int height = output.height;
  if (width < 1 || height < 1 || !EnsurePictures(width, height, 0, 0)) return false;
  BYTE** const rows = inputPicture->ColourRows();
  inputPicture->Clear();
  source->ReadRows(0, 0, 0, 0, width, height, rows, inputPicture->MaskRows());
  for (int i = 0; i < active.count; ++i) {
    if (abort) return false;
    kernels::RemoveRedEye({rows, nullptr, 0, 0, width, height}, zoom,
                          active.clicks[static_cast<std::size_t>(i)], abort);
  }
  const PullRectangle cut = rectangle.CutTo(width, height);
  for (int i = cut.height - 1; i >= 0; --i) {
    if (abort) return false;
    BYTE* const colour = cut.Colour(i);
    if (!colour || cut.width < 1) continue;
    std::memcpy(colour, rows[cut.srcY + i] + base::ColourOffset(cut.srcX),
                base::ColourBytes(cut.width));
  }
  return true;
}
