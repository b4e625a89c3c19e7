#include "filters/detail/EmbossFilter.h"

#include "base/Guid.h"

const FilterClass kEmbossClass = {.sortKey = 47,
                                  .className = "CEmbossFilter",
                                  .progId = "ZNFilter.Emboss.1",
                                  .classId = base::Guid("{8B8D5D24-B2DE-4640-8A32-638F7D0AA476}"),
                                  .order = 5000,
                                  .iconName = "icons4_emboss",
                                  .nameKey = "IDS_EMBOSS_NAME",
                                  .helpKey = "HLP_EMBOSS",
                                  .defaultText = "EmbossStrength=000",
                                  .gloss = "Emboss",
                                  .make = MakeFilter<CEmbossFilter>,
                                  .describe = CEmbossFilter::Describe};

std::span<const ParameterRow<EmbossParameters>> EmbossParameters::Rows() {
  static constexpr ParameterRow<EmbossParameters> kRows[] = {
      {"EmbossStrength",
       "EmbossStrength=%.3d",
       &EmbossParameters::strength,
       {.gloss = "share of the relief in the result", .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
