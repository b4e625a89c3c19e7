#include "filters/detail/ScharfFilter.h"

#include "base/Guid.h"

const FilterClass kScharfClass = {.sortKey = 24,
                                  .className = "CScharfFilter",
                                  .progId = "ZNFilter.Sharpen.1",
                                  .classId = base::Guid("{47AFB272-52EB-4B71-BB7E-5A3A8DAAFF81}"),
                                  .order = 5000,
                                  .iconName = "icons4_scharfz",
                                  .nameKey = "IDS_SCHARF_NAME",
                                  .helpKey = "HLP_SCHARF",
                                  .defaultText = "Sharpness=000,ExtraParam=|SHARP|",
                                  .gloss = "Sharpen",
                                  .make = MakeFilter<CScharfFilter>,
                                  .describe = CScharfFilter::Describe};

std::span<const ParameterRow<ScharfParameters>> ScharfParameters::Rows() {
  static constexpr ParameterRow<ScharfParameters> kRows[] = {
      {"Sharpness",
       "Sharpness=%.3d,ExtraParam=|SHARP|",
       &ScharfParameters::strength,
       {.gloss = "strength; with Version=2 it shrinks with the zoom",
        .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
