#include "filters/FilterClasses.h"

#include "filters/NullFilter.h"
#include "filters/colour/AdoptColorFilter.h"
#include "filters/colour/BlackWhiteFilter.h"
#include "filters/colour/ColCorExFilter.h"
#include "filters/colour/ColorFilter.h"
#include "filters/colour/DuoColorFilter.h"
#include "filters/colour/FarbEqualizerFilter.h"
#include "filters/colour/HsbFilter.h"
#include "filters/colour/ImgBgFilter.h"
#include "filters/colour/InvertFilter.h"
#include "filters/colour/InvertMaskFilter.h"
#include "filters/colour/RgbMixerFilter.h"
#include "filters/colour/SepiaFilter.h"
#include "filters/colour/TransFilter.h"
#include "filters/colour/tone/Exposure2Filter.h"
#include "filters/colour/tone/ExposureFilter.h"
#include "filters/colour/tone/GradCurvesFilter.h"
#include "filters/colour/tone/HistoFilter.h"
#include "filters/colour/tone/HundKFilter.h"
#include "filters/colour/tone/OptimizeFilter.h"
#include "filters/colour/tone/TonwertFilter.h"
#include "filters/colour/tone/WhiteBlackGreyFilter.h"
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
#include "filters/frames/SoftFrameFilter.h"
#include "filters/geometry/PrintScaleFilter.h"
#include "filters/geometry/RotCropFilter.h"
#include "filters/geometry/rotation/DrehFilter.h"
#include "filters/geometry/rotation/OffsetFilter.h"
#include "filters/geometry/size/CropFilter.h"
#include "filters/geometry/size/PrintCropFilter.h"
#include "filters/geometry/size/PrintPadFilter.h"
#include "filters/geometry/size/Scale100Filter.h"
#include "filters/geometry/size/ScaleFilter.h"
#include "filters/text/TextFilter.h"
#include "filters/text/WaterSignFilter.h"

FilterClassTable FilterClasses() {
  static const FilterClass classes[] = {
      kRotCropClass,     kPrintCropClass, kPrintScaleClass, kPrintPadClass,    kDrehClass,
      kCropClass,        kScaleClass,     kScale100Class,   kTonwertClass,     kWhiteBlackGreyClass,
      kGradCurvesClass,  kHundKClass,     kOptimizeClass,   kHsbClass,         kFarbEqualizerClass,
      kColCorExClass,    kExposureClass,  kHistoClass,      kColorClass,       kStaubClass,
      kUnsharpMaskClass, kScharfClass,    kWeichClass,      kBlurGaussClass,   kBlurSelClass,
      kSchattenClass,    kWaterSignClass, kAdoptColorClass, kDuoColorClass,    kRgbMixerClass,
      kBlackWhiteClass,  kRedEyeClass,    kSepiaClass,      kPasspartoutClass, kSoftFrameClass,
      kTextClass,        kInvertClass,    kTransClass,      kOffsetClass,      kImgBgClass,
      kInvertMaskClass,  kRauchglasClass, kExposure2Class,  kFindEdgesClass,   kEmbossClass,
      kNullClass,
  };
  return classes;
}
