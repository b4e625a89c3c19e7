#include "filters/FilterClasses.h"

#include "base/Guid.h"
#include "filters/NullFilter.h"
#include "filters/TextKeepingFilter.h"
#include "filters/colour/AdoptColorFilter.h"
#include "filters/colour/BlackWhiteFilter.h"
#include "filters/colour/ColorFilter.h"
#include "filters/colour/DuoColorFilter.h"
#include "filters/colour/Exposure2Filter.h"
#include "filters/colour/ExposureFilter.h"
#include "filters/colour/FarbEqualizerFilter.h"
#include "filters/colour/GradCurvesFilter.h"
#include "filters/colour/HistoFilter.h"
#include "filters/colour/HsbFilter.h"
#include "filters/colour/HundKFilter.h"
#include "filters/colour/ImgBgFilter.h"
#include "filters/colour/InvertFilter.h"
#include "filters/colour/InvertMaskFilter.h"
#include "filters/colour/OptimizeFilter.h"
#include "filters/colour/SepiaFilter.h"
#include "filters/colour/TonwertFilter.h"
#include "filters/colour/TransFilter.h"
#include "filters/colour/WhiteBlackGreyFilter.h"
#include "filters/detail/BlurGaussFilter.h"
#include "filters/detail/BlurSelFilter.h"
#include "filters/detail/EmbossFilter.h"
#include "filters/detail/FindEdgesFilter.h"
#include "filters/detail/RedEyeFilter.h"
#include "filters/detail/ScharfFilter.h"
#include "filters/detail/StaubFilter.h"
#include "filters/detail/UnsharpMaskFilter.h"
#include "filters/detail/WeichFilter.h"
#include "filters/frames/PasspartoutFilter.h"
#include "filters/frames/RauchglasFilter.h"
#include "filters/frames/SchattenFilter.h"
#include "filters/geometry/CropFilter.h"
#include "filters/geometry/DrehFilter.h"
#include "filters/geometry/OffsetFilter.h"
#include "filters/geometry/PrintCropFilter.h"
#include "filters/geometry/PrintPadFilter.h"
#include "filters/geometry/PrintScaleFilter.h"
#include "filters/geometry/RotCropFilter.h"
#include "filters/geometry/Scale100Filter.h"
#include "filters/geometry/ScaleFilter.h"

namespace {

using base::Guid;

// What a class does, as far as it is built.
struct Work {
  ClassState state;
  CPdibFilter* (*make)(const FilterClass& row);
  std::vector<ParameterDescription> (*describe)();
};

template <class Filter>
constexpr Work Working(ClassState state) {
  return {state, [](const FilterClass& row) -> CPdibFilter* { return new Filter(row); },
          &Filter::Describe};
}

template <class Filter>
constexpr Work kBuilt = Working<Filter>(ClassState::Built);
constexpr Work kNotBuilt = Working<CTextKeepingFilter>(ClassState::NotBuilt);
constexpr Work kListedOnly = Working<CTextKeepingFilter>(ClassState::ListedOnly);

constexpr FilterClass Row(int sortKey, const char* className, const char* progId,
                          const CLSID& classId, int order, const char* iconName,
                          const char* nameKey, const char* helpKey, const char* defaultText,
                          const char* gloss, const Work& work) {
  return {sortKey, className,   progId, classId,    order,     iconName,     nameKey,
          helpKey, defaultText, gloss,  work.state, work.make, work.describe};
}

// Sort key, class, ProgID, class id, order, icon, name key, help key, default text, gloss, work.
constexpr FilterClass kClasses[] = {
    Row(0, "CRotCropFilter", "ZNFilter.RotCrop.1", Guid("{4D2DE5D2-BA86-471B-9230-BAD74EE58516}"),
        200, "icons4_bildlage", "IDS_ROTCROP_NAME", nullptr, nullptr, "Turn, move and crop in one",
        kBuilt<CRotCropFilter>),
    Row(1, "CPrintCropFilter", "ZNFilter.PrintCrop.1",
        Guid("{DC7296D3-71B2-4DFC-988A-F017ECFDE573}"), 9500, "icons4_crop", "PrintCrop", nullptr,
        nullptr, "Crop for printing", kBuilt<CPrintCropFilter>),
    Row(2, "CPrintScaleFilter", "ZNFilter.PrintScale.1",
        Guid("{B1BA1C46-7AA4-4459-9281-3BB34E281802}"), 9500, "icons_scale", "PrintScale", nullptr,
        nullptr, "Scale and turn for printing", kBuilt<CPrintScaleFilter>),
    Row(3, "CPrintPadFilter", "ZNFilter.PrintPad.1", Guid("{CE586604-A175-44F7-8DAC-4B3108110081}"),
        5000, "icons_passpartout", "PrintPad", nullptr, nullptr, "Pad to a paper ratio",
        kBuilt<CPrintPadFilter>),
    Row(4, "CDrehFilter", "ZNFilter.Rotate.1", Guid("{2D385093-52B2-4199-B632-15D9C4739D6F}"), 5000,
        "icons4_rotate", "IDS_DREH_NAME", "HLP_DREH", "Angle=0.000,MirrorOn=0", "Rotate and mirror",
        kBuilt<CDrehFilter>),
    Row(5, "CCropFilter", "ZNFilter.Crop.1", Guid("{2D7EC5FC-A8A1-4466-814D-90A4702A3D8C}"), 200,
        "icons4_crop", "IDS_CROP_NAME", nullptr, nullptr, "Crop", kBuilt<CCropFilter>),
    Row(6, "CScaleFilter", "ZNFilter.Scale.1", Guid("{500A3A0A-7073-4CB4-8493-D3603D40B9A5}"), 500,
        "icons4_scale", "IDS_SCALE_NAME", "HLP_SCALE",
        "MaximumHorizontalSize=100,MaximumVerticalSize=100,KeepProportions=1,AllowEnlarge=0",
        "Scale to a size in pixels", kBuilt<CScaleFilter>),
    Row(7, "CScale100Filter", "ZNFilter.Scale100.1", Guid("{CCB64654-0C51-480B-918B-039417391CD2}"),
        700, "icons4_percentscale", "IDS_SCALE100_NAME", "HLP_SCALE100",
        "HorizontalProz=100,VerticalProz=100,KeepProportions=1,AllowEnlarge=1", "Scale by percent",
        kBuilt<CScale100Filter>),
    Row(9, "CTonwertFilter", "ZNFilter.Tonwert.1", Guid("{7FCD96EE-1506-486C-8393-4EC517F6919C}"),
        5000, "icons4_tonwert", "IDS_TONWERT_NAME", "HLP_TONWERT",
        "AutoTone=0,AutoContrast=1,AutoContrastRGB=0,Hi=0,Med=0,Lo=0,Addhi=0,Addmed=0,Addlo=0",
        "Automatic tone and contrast", kBuilt<CTonwertFilter>),
    Row(10, "CWhiteBlackGreyFilter", "ZNFilter.WhiteBlackGrey.1",
        Guid("{FFBA87D3-8E37-47C2-9604-B65930999C86}"), 5000, "icons4_whitebalance",
        "IDS_WHITEBLACKGREY_NAME", "HLP_WHITEBLACKGREY",
        "RedG=255, GreenG=255, BlueG=255, Mode=%d, Opacity=100, FilterOn=1",
        "White, black and grey point", kBuilt<CWhiteBlackGreyFilter>),
    Row(11, "CGradCurvesFilter", "ZNFilter.GradCurves.1",
        Guid("{41DF3ABB-BC01-484D-B1E2-67F311B0BF9B}"), 5000, "icons4_gradat",
        "IDS_GRADCURVES_NAME", "HLP_GRADATION",
        "nL=02, nR=02, nG=02, nB=02, "
        "xL1=000, xL2=255, xL3=255, xL4=255, xL5=255, xL6=255, xL7=255, "
        "xL8=255, xL9=255, xL10=255, xL11=255, xL12=255, "
        "xR1=000, xR2=255, xR3=255, xR4=255, xR5=255, xR6=255, xR7=255, "
        "xR8=255, xR9=255, xR10=255, xR11=255, xR12=255, "
        "xG1=000, xG2=255, xG3=255, xG4=255, xG5=255, xG6=255, xG7=255, "
        "xG8=255, xG9=255, xG10=255, xG11=255, xG12=255, "
        "xB1=000, xB2=255, xB3=255, xB4=255, xB5=255, xB6=255, xB7=255, "
        "xB8=255, xB9=255, xB10=255, xB11=255, xB12=255, "
        "yL1=000, yL2=255, yL3=255, yL4=255, yL5=255, yL6=255, yL7=255, "
        "yL8=255, yL9=255, yL10=255, yL11=255, yL12=255, "
        "yR1=000, yR2=255, yR3=255, yR4=255, yR5=255, yR6=255, yR7=255, "
        "yR8=255, yR9=255, yR10=255, yR11=255, yR12=255, "
        "yG1=000, yG2=255, yG3=255, yG4=255, yG5=255, yG6=255, yG7=255, "
        "yG8=255, yG9=255, yG10=255, yG11=255, yG12=255, "
        "yB1=000, yB2=255, yB3=255, yB4=255, yB5=255, yB6=255, yB7=255, "
        "yB8=255, yB9=255, yB10=255, yB11=255, yB12=255",
        "Gradation curves", kBuilt<CGradCurvesFilter>),
    Row(12, "CHundKFilter", "ZNFilter.BrightnessContrast.1",
        Guid("{02027032-7091-40D9-9E91-6596CA1AF458}"), 5000, "icons4_hkuk", "IDS_HUNDK_NAME",
        "HLP_IMAGE_ENHANCEMENT", "Brightness=000,Contrast=000,Saturation=000",
        "Brightness, contrast, saturation", kBuilt<CHundKFilter>),
    Row(13, "COptimizeFilter", "ZNFilter.Optimize.1",
        Guid("{D2D04434-66E5-4985-9F63-DF72AA0890FD}"), 5000, "icons4_exposure", "IDS_OPT_NAME",
        "HLP_OPT", "Slider1=000,Slider2=000,Slider3=000,Slider4=000", "Optimise light and colour",
        kBuilt<COptimizeFilter>),
    Row(15, "CHsbFilter", "ZNFilter.HSB.1", Guid("{3DA0FB0A-DE04-4D5E-9481-238D9204C31F}"), 5000,
        "icons4_hsb", "IDS_HSB_NAME", "HLP_HSB",
        "Hue=0,Sat=0,Bright=0,HueR=0,SatR=0,BrightR=0,HueY=0,SatY=0,BrightY=0,HueG=0,SatG=0,"
        "BrightG=0,HueC=0,SatC=0,BrightC=0,HueB=0,SatB=0,BrightB=0,HueM=0,SatM=0,BrightM=0",
        "Hue, saturation, brightness", kBuilt<CHsbFilter>),
    Row(16, "CFarbEqualizerFilter", "ZNFilter.ColorTuning.1",
        Guid("{BB74284D-315E-41D8-9876-315240B8F996}"), 5000, "icons4_colorequalizer",
        "IDS_FARBEQUALIZER_NAME", "HLP_FARBEQUALIZER",
        "SatR=000,SatY=000,SatG=000,SatC=000,SatB=000,SatM=000", "Colour equaliser by hue",
        kBuilt<CFarbEqualizerFilter>),
    Row(17, "CColCorExFilter", "ZNFilter.Gamma.1", Guid("{F8B92EC5-6892-4BA6-9855-3627D3C293CB}"),
        5000, "icons4_colorbalance", "IDS_CCEX_NAME", "HLP_CCEX",
        "S10=0,S20=0,S30=0,S40=0,S50=0,S11=0,S21=0,S31=0,S41=0,S51=0,S12=0,S22=0,S32=0,S42=0,"
        "S52=0,S13=0,S23=0,S33=0,S43=0,S53=0,S14=0,S24=0,S34=0,S44=0,S54=0,S15=0,S25=0,S35=0,"
        "S45=0,S55=0,S16=0,S26=0,S36=0,S46=0,S56=0",
        "Colour balance", kListedOnly),
    Row(19, "CExposureFilter", "ZNFilter.Exposure.1",
        Guid("{FCE043D5-90A3-4619-9B54-6A6AE99B1E25}"), 5000, "icons_exposure", "IDS_EXPOSURE_NAME",
        "HLP_EXPOSURECORRECTION", "Red=000,Green=000,Blue=000", "Exposure",
        kBuilt<CExposureFilter>),
    Row(20, "CHistoFilter", "ZNFilter.Histo.1", Guid("{AF08445B-1C44-4B8E-832C-CB447B6AF7A2}"),
        5000, "icons4_tonaladj", "IDS_HISTO_NAME", "HLP_HISTO", "Intensity=000",
        "Equalise the histogram", kBuilt<CHistoFilter>),
    Row(21, "CColorFilter", "ZNFilter.RGBColor.1", Guid("{BF89F2E9-4021-4D80-ADED-8B6828BE4EDD}"),
        5000, "icons4_color", "IDS_COLOR_NAME", "HLP_COLOR", "Red=000,Green=000,Blue=000",
        "More or less red, green, blue", kBuilt<CColorFilter>),
    Row(22, "CStaubFilter", "ZNFilter.Staub.1", Guid("{DB76702F-FA2B-44DF-B13C-15E488DBF492}"),
        5000, "icons4_staub", "IDS_STAUB_NAME", "HLP_STAUB", "MaxRgnSize=005,GrayTolerance=045",
        "Remove dust", kBuilt<CStaubFilter>),
    Row(23, "CUnsharpMaskFilter", "ZNFilter.UnsharpMask.1",
        Guid("{66A01ADC-9547-4B85-92A8-22756D1E14DC}"), 5000, "icons4_unscharfmaskieren",
        "IDS_UNSHARPMASK_NAME", "HLP_UNSHARPMASK",
        "Percent=120,Radius=2.7,Threshold=0,LuminanceOnly=1,On=1", "Unsharp mask",
        kBuilt<CUnsharpMaskFilter>),
    Row(24, "CScharfFilter", "ZNFilter.Sharpen.1", Guid("{47AFB272-52EB-4B71-BB7E-5A3A8DAAFF81}"),
        5000, "icons4_scharfz", "IDS_SCHARF_NAME", "HLP_SCHARF", "Sharpness=000,ExtraParam=|SHARP|",
        "Sharpen", kBuilt<CScharfFilter>),
    Row(25, "CWeichFilter", "ZNFilter.Blur.1", Guid("{B60C3E69-2546-4B64-B598-D4F8E41DEB51}"), 5000,
        "icons4_weichz", "IDS_WEICH_NAME", "HLP_WEICH", "Blurness=000", "Soften",
        kBuilt<CWeichFilter>),
    Row(26, "CBlurGaussFilter", "ZNFilter.BlurGauss.1",
        Guid("{54E70E91-1B05-4ABA-9B96-56750B77D806}"), 5000, "icons4_gweichz",
        "IDS_BLURGAUSS_NAME", "HLP_BLURGAUSS", "Percent=100,Radius=2.7", "Gaussian blur",
        kBuilt<CBlurGaussFilter>),
    Row(27, "CBlurSelFilter", "ZNFilter.BlurSel.1", Guid("{BB46594D-32AF-41F6-95BF-1D41A89F8550}"),
        5000, "icons4_selweichz", "IDS_BLURSEL_NAME", "HLP_BLURSEL",
        "Percent=100,Threshold=1.0,Radius=2.7", "Selective blur", kBuilt<CBlurSelFilter>),
    Row(29, "CSchattenFilter", "ZNFilter.Shadow.1", Guid("{55B419CE-31CA-4556-BA8B-A538FA37BEAF}"),
        9500, "icons4_light_fx", "IDS_SCHATTEN_NAME", "HLP_SCHATTEN",
        "LightDirection=1350,LightIntensity=0,InnerOn=0,ShadowDensity=0,ShadowBlur=20,Size=0,"
        "ShadowDistance=3,ShadowRed=0,ShadowGreen=0,ShadowBlue=0",
        "Shadow and light", kBuilt<CSchattenFilter>),
    Row(30, "WaterSignFilter", "ZNFilter.WaterSign.1",
        Guid("{427CDE7C-6790-4E33-B986-86B8B664814D}"), 5000, nullptr, nullptr, nullptr, nullptr,
        "Watermark", kListedOnly),
    Row(31, "CAdoptColorFilter", "ZNFilter.AdoptColor.1",
        Guid("{C00536EA-BAF9-45B4-A5A8-C2A49AF92AF5}"), 5000, "icons4_adoptcolor",
        "IDS_ADOPTCOLOR_NAME", "HLP_COLORIZE",
        "ColorRed=000,ColorGreen=000,ColorBlue=000,Intensity=100", "Adopt a colour",
        kBuilt<CAdoptColorFilter>),
    Row(32, "CDuoColorFilter", "ZNFilter.DuoColor.1",
        Guid("{B75F3914-C313-43E9-98F7-FFFDB8306058}"), 5000, "icons4_bicolor", "IDS_DUOCOLOR_NAME",
        "HLP_DUOCOLORIZE",
        "ColorRed=000,ColorGreen=000,ColorBlue=000,Red2=255,Green2=255,Blue2=255,"
        "Intensity=100",
        "Two-tone picture", kBuilt<CDuoColorFilter>),
    Row(33, "CRgbMixerFilter", "ZNFilter.RgbMixer.1",
        Guid("{DFA0E118-8844-4D1C-BC19-8229C590D98D}"), 5000, "icons4_colormixer",
        "IDS_RGBMIXER_NAME", "HLP_RGBMIXER",
        "BOnK=1,BOnR=0,BOnG=0,BOnB=0,BBypass=0,BRgb0=0,BCon0=1,BRgb1=0,BCon1=0,BRgb2=0,"
        "BCon2=0,BRgb3=0,BCon3=0,kR=030,kG=059,kB=011,rR=100,rG=000,rB=000,gR=000,gG=100,"
        "gB=000,bR=000,bG=000,bB=100,kC=000,rC=000,gC=000,bC=000",
        "Channel mixer", kListedOnly),
    Row(34, "CBlackWhiteFilter", "ZNFilter.BlackWhiteness.1",
        Guid("{9332F88D-3CA7-44A8-A08E-0519506B144E}"), 5000, "icons4_blackwhite",
        "IDS_BLACKWHITE_NAME", "HLP_BLACKWHITE", "BlackWhiteNess=100", "Black and white",
        kBuilt<CBlackWhiteFilter>),
    Row(34, "CRedEyeFilter", "ZNFilter.RedEye.1", Guid("{AF0C7F9D-15D2-4DF4-A5EB-F491CE0177B0}"),
        5000, nullptr, nullptr, nullptr, nullptr, "Remove red eyes", kBuilt<CRedEyeFilter>),
    Row(35, "CSepiaFilter", "ZNFilter.Sepia.1", Guid("{0FE71124-90E5-4CE7-BFD0-857F0E22ABC8}"),
        5000, "icons4_sepia", "IDS_SEPIA_NAME", "HLP_SEPIA", "Sepia=000", "Sepia tone",
        kBuilt<CSepiaFilter>),
    Row(36, "CPasspartoutFilter", "ZNFilter.Passpartout.1",
        Guid("{7531CA1E-E540-4164-AC45-CB7321AECA1B}"), 5000, "icons4_passpartout", "IDS_PASS_NAME",
        "HLP_PASSPARTOUT",
        "BordersizeOn=1,Borderhori=001,Borderverti=001,TotalHori=150,TotalVerti=150,"
        "Radius=005,Red=000,Green=000,Blue=105,Transparency=000,Poscorhori=000,"
        "Poscorverti=000",
        "Passepartout frame", kBuilt<CPasspartoutFilter>),
    Row(37, "CSoftFrameFilter", "ZNFilter.SoftFrame.1",
        Guid("{6AA3520F-2243-4DB3-9E0F-5A6142DD1633}"), 5000, "icons4_softframe",
        "IDS_SOFTFRAME_NAME", "HLP_SOFTFRAME",
        "SoftCorner=1,FrameWidth=0,Links=1,Oben=1,Rechts=1,Unten=1", "Soft frame", kListedOnly),
    Row(38, "CTextFilter", "ZNFilter.Text.1", Guid("{37889D35-DC91-4EC1-BB50-D7785EBADDF7}"), 6000,
        "icons4_text", "IDS_TEXT_NAME", "HLP_TEXT", nullptr, "Text in the picture", kListedOnly),
    Row(39, "CInvertFilter", "ZNFilter.Invert.1", Guid("{A0F819E8-8CD3-48AC-9F2A-49279D0797C4}"),
        5000, "icons4_invert", "IDS_INVERT_NAME", "HLP_INVERT", "Inversity=000", "Negative",
        kBuilt<CInvertFilter>),
    Row(40, "CTransFilter", "ZNFilter.Transparency.1",
        Guid("{60F68F21-1F45-4E4B-9B26-7D3AF93256DD}"), 5000, "icons4_transpar", "IDS_TRANS_NAME",
        "HLP_TRANS", "Transparency=000", "Transparency", kBuilt<CTransFilter>),
    Row(41, "COffsetFilter", "ZNFilter.Offset.1", Guid("{0943494A-2096-448F-B6A6-C471DF51BC16}"),
        5000, "icons4_shift", "IDS_OFFSET_NAME", "HLP_OFFSET", "OffsetX=000,OffsetY=000",
        "Move the picture", kBuilt<COffsetFilter>),
    Row(42, "CImgBgFilter", "ZNFilter.ImgBg.1", Guid("{704D1FB5-8883-4CB4-8422-281EA17DC77B}"),
        5000, "icons4_colorfiller", "IDS_IMGBG_NAME", "HLP_IMGBG",
        "Red=180,Green=180,Blue=180,Transparency=000", "Background colour", kBuilt<CImgBgFilter>),
    Row(43, "CInvertMaskFilter", "ZNFilter.InvertMask.1",
        Guid("{C4752771-A6F5-4D43-B16E-FE0C45AF91CB}"), 5000, "icons4_invmask",
        "IDS_INVERTMASK_NAME", "HLP_INVERTMASK", "Red=255,Green=255,Blue=255,Transparency=000",
        "Invert the mask", kBuilt<CInvertMaskFilter>),
    Row(44, "CRauchglasFilter", "ZNFilter.Rauchglas.1",
        Guid("{CFA47EFF-D897-45C0-8ECA-0B2EB602082C}"), 5000, "icons4_smokedglass",
        "IDS_SMOKY_NAME", "HLP_SMOKEDGLASS",
        "BordersizeOn=1,Borderhori=75,Borderverti=75,TotalHori=150,TotalVerti=150,Radius=5,"
        "Red=180,Green=180,Blue=180,Transparency=000,Poscorhori=000,Poscorverti=000",
        "Smoked glass", kBuilt<CRauchglasFilter>),
    Row(45, "CExposure2Filter", "ZNFilter.Exposure2.1",
        Guid("{1F62A67C-EED3-4D97-9256-6CEF6DD7E210}"), 5000, "icons_filter1", "IDS_EXPOSURE2_NAME",
        "HLP_EXPOSURE2", "Red=000,Green=000,Blue=000", "Exposure by channel",
        kBuilt<CExposure2Filter>),
    Row(46, "CFindEdgesFilter", "ZNFilter.FindEdges.1",
        Guid("{37D87393-3865-4937-977E-A54124B169B0}"), 5000, "icons4_konturenfinden",
        "IDS_FINDEDGES_NAME", "HLP_FINDEDGES", "EdgeEnhance=000", "Find edges",
        kBuilt<CFindEdgesFilter>),
    Row(47, "CEmbossFilter", "ZNFilter.Emboss.1", Guid("{8B8D5D24-B2DE-4640-8A32-638F7D0AA476}"),
        5000, "icons4_emboss", "IDS_EMBOSS_NAME", "HLP_EMBOSS", "EmbossStrength=000", "Emboss",
        kBuilt<CEmbossFilter>),
    Row(49, "CNullFilter", "ZNFilter.Zero.1", Guid("{1666851B-A497-4186-80CC-CFDAEA5EA29F}"), 5000,
        nullptr, nullptr, nullptr, nullptr, "Nothing: passes the picture through",
        kBuilt<CNullFilter>),
};

}  // namespace

FilterClassTable FilterClasses() {
  return kClasses;
}
