#include "filters/text/WaterSignFilter.h"

#include "base/Guid.h"

const FilterClass kWaterSignClass = {
    .sortKey = 30,
    .className = "WaterSignFilter",
    .progId = "ZNFilter.WaterSign.1",
    .classId = base::Guid("{427CDE7C-6790-4E33-B986-86B8B664814D}"),
    .order = 5000,
    .gloss = "Watermark",
    .example = "Tile=1,Size=080,Angle=300,Text=Sample",
    .make = MakeFilter<WaterSignFilter>,
    .describe = WaterSignFilter::Describe};

std::span<const ParameterRow<WaterSignParameters>> WaterSignParameters::Rows() {
  static const std::vector<ParameterRow<WaterSignParameters>> rows =
      LetteringRows<WaterSignParameters>(true);
  return rows;
}

WaterSignParameters WaterSignParameters::ActiveStart() {
  WaterSignParameters start;
  start.size = 0;
  return start;
}
