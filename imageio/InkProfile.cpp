#include "imageio/InkProfile.h"

#include <lcms2.h>

namespace imageio {
namespace {

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfileHandle = std::unique_ptr<void, ProfileCloser>;

unsigned FormatOf(const InkLayout& layout) {
  return COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4) | BYTES_SH(1) |
         EXTRA_SH(static_cast<unsigned>(layout.others)) | FLAVOR_SH(layout.isInverted ? 1U : 0U);
}

}  // namespace

void InkProfile::Closer::operator()(void* opened) const {
  cmsDeleteTransform(opened);
}

std::unique_ptr<InkProfile> InkProfile::Take(Metadata& metadata, const InkLayout& layout) {
  if (metadata.profile.empty()) return nullptr;
  const ProfileHandle inks(cmsOpenProfileFromMem(metadata.profile.data(),
                                                 static_cast<unsigned>(metadata.profile.size())));
  if (!inks || cmsGetColorSpace(inks.get()) != cmsSigCmykData) return nullptr;
  const ProfileHandle light(cmsCreate_sRGBProfile());
  if (!light) return nullptr;
  void* const opened = cmsCreateTransform(inks.get(), FormatOf(layout), light.get(), TYPE_BGR_8,
                                          INTENT_RELATIVE_COLORIMETRIC,
                                          cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE);
  if (!opened) return nullptr;
  metadata.profile.clear();
  return std::unique_ptr<InkProfile>(new InkProfile(opened));
}

void InkProfile::Convert(const BYTE* inks, BYTE* colour, int count) const {
  cmsDoTransform(transform.get(), inks, colour, static_cast<unsigned>(count));
}

}  // namespace imageio
