// Netpbm pictures: raw colour (P6), or PAM (P7), which holds alpha.
#include <string>
#include <vector>

#include "imageio/Encoder.h"

namespace imageio {
namespace {

bool WriteRows(Output& output, const std::string& head, const Picture& picture,
               const Progress& progress) {
  output.Write(head.data(), head.size());
  std::vector<BYTE> row(picture.RowBytes());
  for (int y = 0; y < picture.Height(); ++y) {
    picture.Interleave(y, true, row.data());
    output.Write(row.data(), row.size());
    if (!ReportStep(progress, y + 1, picture.Height())) return false;
  }
  return true;
}

}  // namespace

bool WritePnm(Output& output, const Picture& picture, const Progress& progress) {
  const Picture colours = picture.WithoutMask();
  const std::string head =
      "P6\n" + std::to_string(colours.Width()) + " " + std::to_string(colours.Height()) + "\n255\n";
  return WriteRows(output, head, colours, progress);
}

bool WritePam(Output& output, const Picture& picture, const Progress& progress) {
  const std::string head = "P7\nWIDTH " + std::to_string(picture.Width()) + "\nHEIGHT " +
                           std::to_string(picture.Height()) + "\nDEPTH " +
                           std::to_string(picture.Channels()) + "\nMAXVAL 255\nTUPLTYPE " +
                           (picture.HasAlpha() ? "RGB_ALPHA" : "RGB") + "\nENDHDR\n";
  return WriteRows(output, head, picture, progress);
}

}  // namespace imageio
