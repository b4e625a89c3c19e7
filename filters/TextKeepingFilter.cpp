#include "filters/TextKeepingFilter.h"

#include "base/Guid.h"
#include "platform/component/Guard.h"

const FilterClass kColCorExClass = {
    .sortKey = 17,
    .className = "CColCorExFilter",
    .progId = "ZNFilter.Gamma.1",
    .classId = base::Guid("{F8B92EC5-6892-4BA6-9855-3627D3C293CB}"),
    .order = 5000,
    .iconName = "icons4_colorbalance",
    .nameKey = "IDS_CCEX_NAME",
    .helpKey = "HLP_CCEX",
    .defaultText =
        "S10=0,S20=0,S30=0,S40=0,S50=0,S11=0,S21=0,S31=0,S41=0,S51=0,S12=0,S22=0,S32=0,S42=0,"
        "S52=0,S13=0,S23=0,S33=0,S43=0,S53=0,S14=0,S24=0,S34=0,S44=0,S54=0,S15=0,S25=0,S35=0,"
        "S45=0,S55=0,S16=0,S26=0,S36=0,S46=0,S56=0",
    .gloss = "Colour balance",
    .state = ClassState::ListedOnly,
    .make = MakeFilter<CTextKeepingFilter>,
    .describe = CTextKeepingFilter::Describe};

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

const FilterClass kRgbMixerClass = {
    .sortKey = 33,
    .className = "CRgbMixerFilter",
    .progId = "ZNFilter.RgbMixer.1",
    .classId = base::Guid("{DFA0E118-8844-4D1C-BC19-8229C590D98D}"),
    .order = 5000,
    .iconName = "icons4_colormixer",
    .nameKey = "IDS_RGBMIXER_NAME",
    .helpKey = "HLP_RGBMIXER",
    .defaultText =
        "BOnK=1,BOnR=0,BOnG=0,BOnB=0,BBypass=0,BRgb0=0,BCon0=1,BRgb1=0,BCon1=0,BRgb2=0,"
        "BCon2=0,BRgb3=0,BCon3=0,kR=030,kG=059,kB=011,rR=100,rG=000,rB=000,gR=000,gG=100,"
        "gB=000,bR=000,bG=000,bB=100,kC=000,rC=000,gC=000,bC=000",
    .gloss = "Channel mixer",
    .state = ClassState::ListedOnly,
    .make = MakeFilter<CTextKeepingFilter>,
    .describe = CTextKeepingFilter::Describe};

const FilterClass kSoftFrameClass = {
    .sortKey = 37,
    .className = "CSoftFrameFilter",
    .progId = "ZNFilter.SoftFrame.1",
    .classId = base::Guid("{6AA3520F-2243-4DB3-9E0F-5A6142DD1633}"),
    .order = 5000,
    .iconName = "icons4_softframe",
    .nameKey = "IDS_SOFTFRAME_NAME",
    .helpKey = "HLP_SOFTFRAME",
    .defaultText = "SoftCorner=1,FrameWidth=0,Links=1,Oben=1,Rechts=1,Unten=1",
    .gloss = "Soft frame",
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

void CTextKeepingFilter::Commit() {
  active = pending;
  committed = true;
}

HRESULT CTextKeepingFilter::SetParameter(const char* text, int) {
  return platform::Guard([&] {
    if (text) pending = text;
    return S_OK;
  });
}

HRESULT CTextKeepingFilter::GetParameter(char* buffer, int size) {
  CopyParameterText(pending, 0, buffer, size);
  return S_OK;
}

HRESULT CTextKeepingFilter::GetActiveParameter(char* buffer, int size) {
  CopyParameterText(active, 0, buffer, size);
  return S_OK;
}
