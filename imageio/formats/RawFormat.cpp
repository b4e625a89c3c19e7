// Camera raw pictures through LibRaw, as a module: read alone, developed to sRGB with the camera's
// white balance, and turned upright by the library.
#include <libraw/libraw.h>

#include <cstring>

#include "imageio/formats/FormatGlue.h"

namespace imageio::formats {
namespace {

void Check(int status) {
  if (status == LIBRAW_SUCCESS) return;
  if (status == LIBRAW_UNSUFFICIENT_MEMORY) throw std::bad_alloc();
  if (status == LIBRAW_IO_ERROR) Fail("the file ends in the middle of the picture");
  Fail(std::string("the raw picture cannot be read: ") + libraw_strerror(status));
}

// The library goes on behind the end of a file, with a line on standard error if nobody listens.
// The place is below 0 where it is the end that was met.
void NoteEnd(void* hasEnded, const char* /*file*/, const int place) {
  if (place < 0) *static_cast<bool*>(hasEnded) = true;
}

class RawFile {
 public:
  RawFile(const std::uint8_t* bytes, std::size_t count) : file{bytes, count} {
    bool hasEnded = false;
    const Raw raw = Open(hasEnded);
    Check(libraw_adjust_sizes_info_only(raw.get()));
    width = raw->sizes.iwidth;
    height = raw->sizes.iheight;
    if (raw->idata.xmpdata && raw->idata.xmplen > 0) {
      xmp.assign(raw->idata.xmpdata, raw->idata.xmpdata + raw->idata.xmplen);
    }
    // Some versions of the library count the zero that they put behind the packet.
    while (!xmp.empty() && xmp.back() == 0) xmp.pop_back();
  }

  FormatHead Head() const {
    FormatHead head;
    head.width = width;
    head.height = height;
    head.orientation = 1;
    head.bits = 16;  // whatever the sensor has, it is more than 8
    head.xmp = BlockOf(xmp);
    return head;
  }

  bool Decode(const TakeRow& take) const {
    bool hasEnded = false;
    const Raw raw = Open(hasEnded);
    raw->params.output_bps = 8;
    raw->params.output_color = 1;  // sRGB
    raw->params.use_camera_wb = 1;
    Check(libraw_unpack(raw.get()));
    if (hasEnded) Check(LIBRAW_IO_ERROR);
    Check(libraw_dcraw_process(raw.get()));
    int status = LIBRAW_SUCCESS;
    const std::unique_ptr<libraw_processed_image_t, decltype(&libraw_dcraw_clear_mem)> image(
        libraw_dcraw_make_mem_image(raw.get(), &status), &libraw_dcraw_clear_mem);
    Check(status);
    if (!image) throw std::bad_alloc();
    if (image->width != width || image->height != height || image->bits != 8) {
      Fail("the raw picture is damaged");
    }
    if (image->colors == 3) {
      return GiveRows(image->data, height, static_cast<std::size_t>(width) * 3, take);
    }
    return GiveGreys(*image, take);
  }

 private:
  using Raw = std::unique_ptr<libraw_data_t, decltype(&libraw_close)>;

  // `hasEnded` lives as long as the result.
  Raw Open(bool& hasEnded) const {
    Raw raw(libraw_init(0), &libraw_close);
    if (!raw) throw std::bad_alloc();
    libraw_set_dataerror_handler(raw.get(), NoteEnd, &hasEnded);
    Check(libraw_open_buffer(raw.get(), const_cast<std::uint8_t*>(file.bytes), file.count));
    return raw;
  }

  bool GiveGreys(const libraw_processed_image_t& image, const TakeRow& take) const {
    if (image.colors != 1) Fail("the raw picture is of a kind that cannot be read");
    Bytes row(static_cast<std::size_t>(width) * 3);
    const std::uint8_t* grey = image.data;
    for (int y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < row.size(); ++x) row[x] = grey[x / 3];
      grey += width;
      if (!take(y, row.data())) return false;
    }
    return true;
  }

  const FormatBlock file;
  int width = 0;
  int height = 0;
  Bytes xmp;
};

FormatFunctions Functions() {
  return Reading<RawFile>();
}

}  // namespace
}  // namespace imageio::formats

FXBOX_PICTURE_FORMAT(imageio::formats::Functions())
