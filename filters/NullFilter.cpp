#include "filters/NullFilter.h"

#include "base/Guid.h"
#include "platform/component/Guard.h"

const FilterClass kNullClass = {.sortKey = 49,
                                .className = "CNullFilter",
                                .progId = "ZNFilter.Zero.1",
                                .classId = base::Guid("{1666851B-A497-4186-80CC-CFDAEA5EA29F}"),
                                .order = 5000,
                                .gloss = "Nothing: passes the picture through",
                                .make = MakeFilter<CNullFilter>,
                                .describe = CNullFilter::Describe};

HRESULT CNullFilter::SetParameter(const char*, int) {
  return S_OK;
}

HRESULT CNullFilter::GetParameter(char* buffer, int size) {
  return platform::Guard([&] {
    CopyParameterText("Generic Filter Parameter", 31, buffer, size);
    return S_OK;
  });
}

HRESULT CNullFilter::GetActiveParameter(char* buffer, int size) {
  return GetParameter(buffer, size);
}
