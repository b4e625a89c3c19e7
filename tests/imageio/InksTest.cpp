// Pictures of four inks with a profile, against the formulas of its colours and of sRGB.
#include <gtest/gtest.h>
#include <lcms2.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "tests/imageio/JpegMaker.h"

namespace {

using namespace test;

using Inks = std::array<double, 4>;  // cyan, magenta, yellow, black, each from 0 to 1

// Inks that darken and colour the paper each for itself, so that a table of their corners is exact.
cmsCIELab LabOf(const Inks& i) {
  return {100 - 22 * i[0] - 26 * i[1] - 8 * i[2] - 34 * i[3], -16 * i[0] + 34 * i[1] - 4 * i[2],
          -18 * i[0] - 4 * i[1] + 40 * i[2]};
}

Bytes InkProfile() {
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 2.1);
  cmsSetDeviceClass(profile, cmsSigOutputClass);
  cmsSetColorSpace(profile, cmsSigCmykData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsStage* corners = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
  const auto sample = [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
    const cmsCIELab lab =
        LabOf({in[0] / 65535.0, in[1] / 65535.0, in[2] / 65535.0, in[3] / 65535.0});
    cmsFloat2LabEncodedV2(out, &lab);
    return 1;
  };
  cmsStageSampleCLut16bit(corners, sample, nullptr, 0);
  cmsPipeline* table = cmsPipelineAlloc(nullptr, 4, 3);
  cmsPipelineInsertStage(table, cmsAT_BEGIN, corners);
  cmsWriteTag(profile, cmsSigAToB0Tag, table);
  cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
  cmsPipelineFree(table);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

// Red, green and blue of sRGB: from the white of print to that of screens by Bradford's matrix.
std::array<double, 3> Shown(const cmsCIELab& lab) {
  const auto unfold = [](double t) {
    return t > 6.0 / 29 ? t * t * t : 3 * 36.0 / 841 * (t - 4.0 / 29);
  };
  const double f = (lab.L + 16) / 116;
  const double x = 0.9642 * unfold(f + lab.a / 500), y = unfold(f);
  const double z = 0.8249 * unfold(f - lab.b / 200);
  const double light[] = {3.1338561 * x - 1.6168667 * y - 0.4906146 * z,
                          -0.9787684 * x + 1.9161415 * y + 0.0334540 * z,
                          0.0719453 * x - 0.2289914 * y + 1.4052427 * z};
  std::array<double, 3> shown;
  std::transform(std::begin(light), std::end(light), shown.begin(), [](double v) {
    v = std::clamp(v, 0.0, 1.0);
    return 255 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055);
  });
  return shown;
}

constexpr int kSide = 48;

// Every corner of the inks' range and much between, in squares of 8 x 8 that JPEG keeps.
Bytes InkBytes(int others) {
  Bytes bytes;
  for (int i = 0; i < kSide * kSide; ++i) {
    const int square = i % kSide / 8 + 6 * (i / kSide / 8);
    const int levels[] = {square % 3 * 127, square / 3 % 3 * 127, square / 9 % 2 * 255,
                          square / 18 * 120};
    for (const int level : levels) bytes.push_back(static_cast<std::uint8_t>(level));
    if (others > 0) bytes.push_back(static_cast<std::uint8_t>(i));
  }
  return bytes;
}

// The library says of such files that 255 is no ink.
Bytes JpegOf(Bytes inks, const Bytes& profile) {
  for (std::uint8_t& ink : inks) ink = static_cast<std::uint8_t>(255 - ink);
  return MakeJpeg(kSide, kSide, {JCS_CMYK, 4, 100, false, profile}, inks);
}

Bytes TiffOf(Bytes inks, int others, const Bytes& profile) {
  const TemporaryFile written;
  TIFF* tiff = TIFFOpen(written.path.string().c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kSide);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kSide);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4 + others);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
  if (others > 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
  TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
               profile.data());
  const std::size_t rowBytes = inks.size() / kSide;
  for (unsigned y = 0; y < kSide; ++y) TIFFWriteScanline(tiff, &inks[y * rowBytes], y, 0);
  TIFFClose(tiff);
  return ReadBytes(written.path);
}

void ExpectShown(const Bytes& file, int others, double tolerance) {
  ImageReader reader(file.data(), file.size());
  EXPECT_TRUE(reader.Info().metadata.profile.empty()) << "the rows are of sRGB";
  EXPECT_TRUE(reader.Info().notes.empty());
  TestPicture picture = TestPicture::Of(reader);
  const Bytes inks = InkBytes(others);
  for (int i = 0; i < kSide * kSide; ++i) {
    const std::uint8_t* const ink = &inks[static_cast<std::size_t>(i * (4 + others))];
    const auto expected =
        Shown(LabOf({ink[0] / 255.0, ink[1] / 255.0, ink[2] / 255.0, ink[3] / 255.0}));
    const BYTE* const pixel = picture.Pixel(i % kSide, i / kSide);
    for (std::size_t c = 0; c < 3; ++c)
      ASSERT_NEAR(pixel[2 - c], expected[c], tolerance) << "pixel " << i;
    ASSERT_EQ(picture.Mask(i % kSide, i / kSide), others > 0 ? 255 - ink[4] : 0);
  }
}

TEST(Inks, AreShownByTheirProfile) {
  const Bytes profile = InkProfile();
  ExpectShown(TiffOf(InkBytes(0), 0, profile), 0, 2);
  ExpectShown(TiffOf(InkBytes(1), 1, profile), 1, 2);
  ExpectShown(JpegOf(InkBytes(0), profile), 0, 4);
}

// Light through one ink after the other, as without a profile, and a word on it.
TEST(Inks, AreMultipliedWhereTheProfileIsOfNoUse) {
  const Bytes whole = InkProfile();
  const Bytes plain = JpegOf(InkBytes(0), {});
  for (const Bytes& profile : {Bytes(whole.begin(), whole.begin() + 200), Bytes(300, 7)}) {
    const Bytes file = JpegOf(InkBytes(0), profile);
    ImageReader reader(file.data(), file.size());
    EXPECT_EQ(reader.Info().notes.size(), 1u);
    EXPECT_EQ(TestPicture::Of(reader), TestPicture::OfBytes(plain));
  }
}

}  // namespace
