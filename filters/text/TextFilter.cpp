#include "filters/text/TextFilter.h"

#include "base/Guid.h"

const FilterClass kTextClass = {.sortKey = 38,
                                .className = "CTextFilter",
                                .progId = "ZNFilter.Text.1",
                                .classId = base::Guid("{37889D35-DC91-4EC1-BB50-D7785EBADDF7}"),
                                .order = 6000,
                                .iconName = "icons4_text",
                                .nameKey = "IDS_TEXT_NAME",
                                .helpKey = "HLP_TEXT",
                                .gloss = "Text in the picture",
                                .example = "Size=180,PosY=180,Outline=040,Text=Sunrise",
                                .make = MakeFilter<CTextFilter>,
                                .describe = CTextFilter::Describe};

std::span<const ParameterRow<TextParameters>> TextParameters::Rows() {
  static const std::vector<ParameterRow<TextParameters>> rows =
      LetteringRows<TextParameters>(false);
  return rows;
}

TextParameters TextParameters::ActiveStart() {
  TextParameters start;
  start.size = 0;
  return start;
}
