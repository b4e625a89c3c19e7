// Shadow and light: a drop shadow or inner shadow, and a relief light on the edges of the mask.
#pragma once

#include <memory>
#include <span>

#include "base/ByteTable.h"
#include "core/FilterShapes.h"
#include "filters/frames/MaskFilters.h"
#include "filters/frames/ShadowLayout.h"

// Blur, size and distance are pixels: of the unscaled picture when pending, of the picture at hand
// when active.
struct SchattenParameters {
  std::int32_t lightDirection = 1350;  // tenths of a degree
  bool innerOn = false;                // the shadow falls inside the picture
  std::int32_t lightIntensity = 0;     // percent
  std::int32_t shadowDensity = 0;      // percent
  std::int32_t shadowBlur = 20;
  std::int32_t size = 0;  // spreads the shape
  std::int32_t shadowDistance = 3;
  std::uint8_t shadowRed = 0, shadowGreen = 0, shadowBlue = 0;

  static SchattenParameters ActiveStart() { return {0, true, 20, 100, 0, 5, 0, 255, 255, 255}; }
  static constexpr int kLeastBuffer = 201;
  static std::span<const ParameterRow<SchattenParameters>> Rows();
};

extern const FilterClass kSchattenClass;

// Each computing pull reads the source two to four times: for the picture, and for the mask that
// relief, shadow and glow are made of. Of rows that are lent it takes the mask alone then.
class CSchattenFilter final : public ParameterFilter<WholePictureFilter, SchattenParameters> {
 public:
  explicit CSchattenFilter(const FilterClass& row)
      : ParameterFilter(row, {Cache::OutputPicture, ChangeFlags::ClearedAtEnd, true}) {}

  bool IsDirty() override;
  void Commit() override;

 private:
  void ReadText(const char* text) override;
  void TakeParameters() override;
  void DropPictures() override;
  bool Rebuild() override;
  bool ComputeRows(const base::WritableRows& to) override;
  enum class Wanted { Picture, Mask };
  bool Pull(MemoryPicture& picture, int x, int y, Wanted wanted);
  bool CopyGiven(MemoryPicture& picture, int x, int y, Wanted wanted);
  bool AddRelief();
  bool MakeOuterShadow(MemoryPicture& shadow);
  bool CastOuterShadow();
  bool KeepOuterShadow();
  void PaintShadow(BYTE* colour, BYTE* mask, const BYTE* shadow, int width,
                   const base::ByteTable& table) const;
  bool CastInnerShadow();
  bool AddOuterGlow();
  bool SpreadShadow(const MemoryPicture& shadow, bool grows);
  bool LayOverShadow(int attenuation);
  kernels::MaskPlane MaskOf(const MemoryPicture& shadow) const;

  // Of the picture in the cache: Commit may come in the middle of a pull.
  SchattenParameters drawn;
  kernels::ShadowLayout layout;
  // Its mask, where rows are open: an outer shadow alone, over which the source's rows are laid.
  std::unique_ptr<MemoryPicture> outerShadow;
};
