#include "filters/frames/SchattenFilter.h"

#include <algorithm>
#include <utility>

#include "base/Arithmetic.h"
#include "base/Guid.h"
#include "core/ParameterReaders.h"
#include "filters/frames/FrameKernels.h"
#include "filters/frames/MatKernels.h"

namespace {

using P = SchattenParameters;

std::int32_t Scaled(std::int32_t value, double scale) {
  return base::TruncateToInt32(value * scale);
}

// What Commit makes of the text's numbers at a preview scale.
P Scaled(P parameters, double scale) {
  const auto limited = [scale](std::int32_t value) {
    return std::max(0, std::min(base::TruncateToInt32(255 * scale), Scaled(value, scale)));
  };
  parameters.shadowBlur = Scaled(parameters.shadowBlur, scale);
  parameters.size = limited(parameters.size);
  parameters.shadowDistance = limited(parameters.shadowDistance);
  return parameters;
}

// A blur that is wider than the picture, or than what size and distance can be, shows nothing more.
std::int32_t ShownBlur(std::int32_t blur, const PictureInfo& picture) {
  constexpr std::int32_t kWidest = 255;
  const std::int64_t widest =
      std::max<std::int64_t>(kWidest, std::int64_t{5} * std::max(picture.width, picture.height));
  return static_cast<std::int32_t>(std::min<std::int64_t>(blur, widest));
}

kernels::ShadowLayout LayOut(const P& p, const PictureInfo& picture) {
  return kernels::LayOutShadow({p.lightDirection, p.innerOn, p.lightIntensity, p.shadowDensity,
                                ShownBlur(p.shadowBlur, picture), p.size, p.shadowDistance});
}

int WithMargins(int size, int low, int high) {
  return base::LimitToInt32(std::int64_t{size} + low + high);
}

}  // namespace

const FilterClass kSchattenClass = {
    .sortKey = 29,
    .className = "CSchattenFilter",
    .progId = "ZNFilter.Shadow.1",
    .classId = base::Guid("{55B419CE-31CA-4556-BA8B-A538FA37BEAF}"),
    .order = 9500,
    .iconName = "icons4_light_fx",
    .nameKey = "IDS_SCHATTEN_NAME",
    .helpKey = "HLP_SCHATTEN",
    .defaultText =
        "LightDirection=1350,LightIntensity=0,InnerOn=0,ShadowDensity=0,ShadowBlur=20,Size=0,"
        "ShadowDistance=3,ShadowRed=0,ShadowGreen=0,ShadowBlue=0",
    .gloss = "Shadow and light",
    .example = "LightIntensity=040,ShadowDensity=080,ShadowBlur=030,ShadowDistance=008",
    .make = MakeFilter<CSchattenFilter>,
    .describe = CSchattenFilter::Describe};

std::span<const ParameterRow<P>> SchattenParameters::Rows() {
  static constexpr ParameterRow<P> kRows[] = {
      {"LightDirection",
       "LightDirection=%.4d",
       &P::lightDirection,
       {.greatest = 3600, .gloss = "of light and shadow, tenths of a degree"}},
      {"InnerOn", ", InnerOn=%.1d", &P::innerOn, {.gloss = "1: the shadow falls inside"}},
      {"LightIntensity",
       ", LightIntensity=%.3d",
       &P::lightIntensity,
       {.gloss = "strength of the relief"}},
      {"ShadowDensity",
       ", ShadowDensity=%.3d",
       &P::shadowDensity,
       {.gloss = "strength of the shadow"}},
      {"ShadowBlur", ", ShadowBlur=%.3d", &P::shadowBlur, {.gloss = "softness of the shadow"}},
      {"Size", ", Size=%.3d", &P::size, {.greatest = 255, .gloss = "spreads the shape, pixels"}},
      {"ShadowDistance",
       ", ShadowDistance=%.3d",
       &P::shadowDistance,
       {.greatest = 255, .gloss = "of the shadow, pixels"}},
      {"ShadowRed", ", ShadowRed=%.3d", &P::shadowRed, {.greatest = 255, .gloss = "red of it"}},
      {"ShadowGreen",
       ", ShadowGreen=%.3d",
       &P::shadowGreen,
       {.greatest = 255, .gloss = "green of it"}},
      {"ShadowBlue",
       ", ShadowBlue=%.3d",
       &P::shadowBlue,
       {.greatest = 255, .gloss = "blue of it"}}};
  return kRows;
}

// Two keys of old texts overrule the new ones, wherever they stand.
void CSchattenFilter::ReadText(const char* text) {
  ParameterFilter::ReadText(text);
  std::int32_t on = 0;
  bool ignored = false;
  if (ReadParamInt(text, "LightOn", on, ignored) && on == 0) pending.lightIntensity = 0;
  if (ReadParamInt(text, "ShadowOn", on, ignored)) pending.shadowDensity = on != 0 ? 100 : 0;
}

// Against the limited values: a number beyond the limits is not a change for ever.
bool CSchattenFilter::IsDirty() {
  const auto held = HoldState();
  return ParametersDiffer(Scaled(pending, zoom), active);
}

void CSchattenFilter::Commit() {
  const auto held = HoldState();
  active = Scaled(pending, zoom);
  const kernels::ShadowLayout margins = LayOut(active, input);
  output.width = WithMargins(input.width, margins.left, margins.right);
  output.height = WithMargins(input.height, margins.top, margins.bottom);
  output.offsetX = base::LimitToInt32(std::int64_t{input.offsetX} + margins.left);
  output.offsetY = base::LimitToInt32(std::int64_t{input.offsetY} + margins.top);
}

void CSchattenFilter::TakeParameters() {
  drawn = active;
  layout = LayOut(drawn, pulled);
}

void CSchattenFilter::DropPictures() {
  ParameterFilter::DropPictures();
  outerShadow.reset();
}

// The result ends up in the output picture, and the input picture serves to make shadows.
bool CSchattenFilter::Rebuild() {
  const bool isOuterAlone = drawn.lightIntensity == 0 && drawn.shadowDensity != 0 && !drawn.innerOn;
  if (isOuterAlone && OpenLent()) return KeepOuterShadow();
  outerShadow.reset();
  if (!EnsurePictures(result.width, result.height, result.width, result.height)) return false;
  BorrowInput();
  if (!Pull(*outputPicture, layout.left, layout.top, Wanted::Picture)) return false;
  if (drawn.lightIntensity != 0 && !AddRelief()) return false;
  if (drawn.shadowDensity == 0) return true;
  if (!drawn.innerOn) return CastOuterShadow();
  return CastInnerShadow() && (drawn.size == 0 || AddOuterGlow());
}

bool CSchattenFilter::Pull(MemoryPicture& picture, int x, int y, Wanted wanted) {
  if (IsLent()) return CopyGiven(picture, x, y, wanted);
  const bool isClear = Clear(picture);
  return PullInto(picture, x, y) == S_OK && isClear && !abort;
}

// Puts the picture into one that is empty around it.
bool CSchattenFilter::CopyGiven(MemoryPicture& picture, int x, int y, Wanted wanted) {
  const Placed whole{x, y, 0, 0, pulled.width, pulled.height};
  return ForRows(0, result.height, [&](int row) {
    const base::RowWriter writer(result.width, result.height);
    PlaceGiven(whole, row, wanted == Wanted::Mask ? nullptr : picture.ColourRows()[row],
               picture.MaskRows()[row], writer);
  });
}

kernels::MaskPlane CSchattenFilter::MaskOf(const MemoryPicture& shadow) const {
  return {shadow.MaskRows(), result.width, result.height};
}

bool CSchattenFilter::AddRelief() {
  // Each costs a walk over the picture: a light far beyond 100 percent gets no more of them.
  constexpr int kMostPasses = 1000;
  const int passes = std::min(std::max(drawn.lightIntensity, 50) - 50 + 15, kMostPasses);
  if (!Pull(*inputPicture, layout.left, layout.top, Wanted::Mask) ||
      !kernels::SmoothMask(MaskOf(*inputPicture), passes, abort) ||
      !kernels::EmbossMask(MaskOf(*inputPicture), layout.relief, abort)) {
    return false;
  }
  return ForRows(layout.top, pulled.height, [&](int y) {
    kernels::Choose<kernels::FrameKernels>().addRelief(
        outputPicture->ColourRows()[y] + base::ColourOffset(layout.left),
        inputPicture->MaskRows()[y] + layout.left, pulled.width, drawn.innerOn);
  });
}

bool CSchattenFilter::SpreadShadow(const MemoryPicture& shadow, bool grows) {
  const kernels::MaskPlane mask = MaskOf(shadow);
  return (!grows || kernels::GrowShape(mask, drawn.size, abort)) &&
         kernels::BlurMask(mask, layout.blurPasses, abort) &&
         kernels::FractionBlur(mask, layout.blurFifths, abort);
}

bool CSchattenFilter::MakeOuterShadow(MemoryPicture& shadow) {
  return Pull(shadow, layout.left + layout.offsetX, layout.top + layout.offsetY, Wanted::Mask) &&
         SpreadShadow(shadow, true);
}

bool CSchattenFilter::CastOuterShadow() {
  return MakeOuterShadow(*inputPicture) && LayOverShadow(100);
}

bool CSchattenFilter::KeepOuterShadow() {
  if (!outerShadow || outerShadow->Width() != result.width ||
      outerShadow->Height() != result.height) {
    outerShadow = std::make_unique<MemoryPicture>("shadow", result.width, result.height);
  }
  return outerShadow->IsValid() && MakeOuterShadow(*outerShadow);
}

bool CSchattenFilter::ComputeRows(const base::WritableRows& to) {
  const kernels::ByteTable table = kernels::BuildAttenuationTable(drawn.shadowDensity, 100);
  return ForRows(0, result.height, [&](int y) {
    PaintShadow(to.colour[y], to.mask[y], outerShadow->MaskRows()[y], result.width, table);
    const int row = y - layout.top;
    if (row < 0 || row >= pulled.height) return;
    kernels::Choose<kernels::FrameKernels>().compose(to.colour[y] + base::ColourOffset(layout.left),
                                                     to.mask[y] + layout.left, given.colour[row],
                                                     given.mask[row], pulled.width);
  });
}

// A row of it, in its colour. The masks may be the same.
void CSchattenFilter::PaintShadow(BYTE* colour, BYTE* mask, const BYTE* shadow, int width,
                                  const kernels::ByteTable& table) const {
  kernels::FillColour(colour, width, {drawn.shadowBlue, drawn.shadowGreen, drawn.shadowRed});
  kernels::Choose<kernels::ByteTableKernels>().mapBytes(mask, shadow,
                                                        static_cast<std::size_t>(width), table);
}

// Behind a picture with an inner shadow, fainter than that.
bool CSchattenFilter::AddOuterGlow() {
  const std::int64_t fainter = std::int64_t{drawn.shadowDensity} * 85 / 100;
  return Pull(*inputPicture, layout.left, layout.top, Wanted::Mask) &&
         SpreadShadow(*inputPicture, true) && LayOverShadow(static_cast<int>(fainter));
}

// Lays what is in the output picture over the shadow in the input picture.
bool CSchattenFilter::LayOverShadow(int attenuation) {
  const kernels::ByteTable table = kernels::BuildAttenuationTable(drawn.shadowDensity, attenuation);
  const bool complete = ForRows(0, result.height, [&](int y) {
    BYTE* const colour = inputPicture->ColourRows()[y];
    BYTE* const mask = inputPicture->MaskRows()[y];
    PaintShadow(colour, mask, mask, result.width, table);
    kernels::Choose<kernels::FrameKernels>().compose(colour, mask, outputPicture->ColourRows()[y],
                                                     outputPicture->MaskRows()[y], result.width);
  });
  std::swap(inputPicture, outputPicture);
  return complete;
}

// What is left of the shape around the moved picture, where the picture is.
bool CSchattenFilter::CastInnerShadow() {
  if (!Pull(*inputPicture, layout.left + layout.offsetX, layout.top + layout.offsetY,
            Wanted::Mask) ||
      !SpreadShadow(*inputPicture, false)) {
    return false;
  }
  const kernels::ByteTable table = kernels::BuildAttenuationTable(drawn.shadowDensity, 100);
  return ForRows(layout.top, pulled.height, [&](int y) {
    BYTE* const colour = inputPicture->ColourRows()[y] + base::ColourOffset(layout.left);
    BYTE* const mask = inputPicture->MaskRows()[y] + layout.left;
    BYTE* const toMask = outputPicture->MaskRows()[y] + layout.left;
    kernels::KeepInside(mask, toMask, pulled.width);
    PaintShadow(colour, mask, mask, pulled.width, table);
    kernels::Choose<kernels::FrameKernels>().compose(
        outputPicture->ColourRows()[y] + base::ColourOffset(layout.left), toMask, colour, mask,
        pulled.width);
  });
}
