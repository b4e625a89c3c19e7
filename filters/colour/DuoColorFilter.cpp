#include "filters/colour/DuoColorFilter.h"

#include <new>

#include "base/Guid.h"

const FilterClass kDuoColorClass = {
    .sortKey = 32,
    .className = "CDuoColorFilter",
    .progId = "ZNFilter.DuoColor.1",
    .classId = base::Guid("{B75F3914-C313-43E9-98F7-FFFDB8306058}"),
    .order = 5000,
    .iconName = "icons4_bicolor",
    .nameKey = "IDS_DUOCOLOR_NAME",
    .helpKey = "HLP_DUOCOLORIZE",
    .defaultText =
        "ColorRed=000,ColorGreen=000,ColorBlue=000,Red2=255,Green2=255,Blue2=255,"
        "Intensity=100",
    .gloss = "Two-tone picture",
    .example = "Intensity=090,ColorRed=020,ColorBlue=090,Red2=255,Green2=240,Blue2=200",
    .make = MakeFilter<CDuoColorFilter>,
    .describe = CDuoColorFilter::Describe};

std::span<const ParameterRow<DuoColorParameters>> DuoColorParameters::Rows() {
  using P = DuoColorParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Intensity", "Intensity=%.3d", &P::intensity, {.gloss = "share of the two-tone picture"}},
      {"ColorRed", ", ColorRed=%.3d", &P::red, {.greatest = 255, .gloss = "red of the shadows"}},
      {"ColorGreen",
       ", ColorGreen=%.3d",
       &P::green,
       {.greatest = 255, .gloss = "green of the shadows"}},
      {"ColorBlue",
       ", ColorBlue=%.3d",
       &P::blue,
       {.greatest = 255, .gloss = "blue of the shadows"}},
      {"Red2", ", Red2=%.3d", &P::red2, {.greatest = 255, .gloss = "red of the highlights"}},
      {"Green2",
       ", Green2=%.3d",
       &P::green2,
       {.greatest = 255, .gloss = "green of the highlights"}},
      {"Blue2", ", Blue2=%.3d", &P::blue2, {.greatest = 255, .gloss = "blue of the highlights"}}};
  return kRows;
}

void CDuoColorFilter::Commit() {
  ParameterFilter::Commit();
  const kernels::DuoColours wanted =
      kernels::MakeDuoColours({active.blue, active.green, active.red},
                              {active.blue2, active.green2, active.red2}, active.intensity);
  if (table && wanted == colours) return;
  colours = wanted;
  if (!table) table.reset(new (std::nothrow) kernels::DrawnTable);
  if (table) table->Fill(colours);
}

void CDuoColorFilter::ReadText(const char* text) {
  ParameterFilter::ReadText(text);
  ReadVisibility(text);
}

// The mark of a hidden filter follows the text, and stands alone where the buffer is too small for
// it.
void CDuoColorFilter::PrintText(const DuoColorParameters& parameters, char* buffer, int size) {
  std::string text;
  if (size >= DuoColorParameters::kLeastBuffer) text = PrintParameters(parameters);
  text += VisibilityText();
  if (!text.empty()) CopyParameterText(text, 0, buffer, size);
}

void CDuoColorFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  if (table) {
    table->DuoColour(colour, width);
  } else {
    kernels::DuoColour(colour, width, colours);
  }
}
