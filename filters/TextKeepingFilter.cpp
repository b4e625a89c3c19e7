#include "filters/TextKeepingFilter.h"

#include "base/Guid.h"
#include "platform/component/Guard.h"

const FilterClass kWaterSignClass = {
    .sortKey = 30,
    .className = "WaterSignFilter",
    .progId = "ZNFilter.WaterSign.1",
    .classId = base::Guid("{427CDE7C-6790-4E33-B986-86B8B664814D}"),
    .order = 5000,
    .gloss = "Watermark",
    .state = ClassState::ListedOnly,
    .make = MakeFilter<CTextKeepingFilter>,
    .describe = CTextKeepingFilter::Describe};

const FilterClass kTextClass = {.sortKey = 38,
                                .className = "CTextFilter",
                                .progId = "ZNFilter.Text.1",
                                .classId = base::Guid("{37889D35-DC91-4EC1-BB50-D7785EBADDF7}"),
                                .order = 6000,
                                .iconName = "icons4_text",
                                .nameKey = "IDS_TEXT_NAME",
                                .helpKey = "HLP_TEXT",
                                .gloss = "Text in the picture",
                                .state = ClassState::ListedOnly,
                                .make = MakeFilter<CTextKeepingFilter>,
                                .describe = CTextKeepingFilter::Describe};

bool CTextKeepingFilter::IsDirty() {
  const auto held = HoldState();
  return !committed || pending != active;
}

void CTextKeepingFilter::Commit() {
  const auto held = HoldState();
  active = pending;
  committed = true;
}

HRESULT CTextKeepingFilter::SetParameter(const char* text, int) {
  return platform::Guard([&] {
    const auto held = HoldState();
    if (text) pending = text;
    return S_OK;
  });
}

HRESULT CTextKeepingFilter::GetParameter(char* buffer, int size) {
  const auto held = HoldState();
  CopyParameterText(pending, 0, buffer, size);
  return S_OK;
}

HRESULT CTextKeepingFilter::GetActiveParameter(char* buffer, int size) {
  const auto held = HoldState();
  CopyParameterText(active, 0, buffer, size);
  return S_OK;
}
