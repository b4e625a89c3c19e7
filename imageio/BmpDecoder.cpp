// BMP pictures: all uncompressed depths, bit fields and run lengths, with headers old and new.
#include <algorithm>

#include "base/Rows.h"
#include "imageio/BmpLayout.h"
#include "imageio/Decoder.h"

namespace imageio {
namespace {

class BmpDecoder final : public Decoder {
 public:
  explicit BmpDecoder(Source& from)
      : source(&from), cursor(from), rowsAt(ReadFileHead(cursor)), layout(cursor) {
    SetSize(layout.width, layout.height);
    head.hasMask = !layout.alpha.Empty();
    head.metadata.resolution = {PixelsAnInch(layout.aMetreX), PixelsAnInch(layout.aMetreY)};
    dataPosition = std::max<std::uint64_t>(rowsAt, cursor.Position());
  }

  bool BeginsAtTop() const override { return layout.topDown; }
  bool Decode(RowSink& sink) override {
    return layout.HasRuns() ? DecodeRuns(sink) : DecodeRows(sink);
  }

 private:
  static std::uint32_t ReadFileHead(Cursor& cursor) {
    BYTE bytes[kBmpFileHeadBytes];
    cursor.NeedBytes(bytes, sizeof bytes);
    return BmpRowsAt(bytes);
  }
  bool DecodeRuns(RowSink& sink);
  bool DecodeRows(RowSink& sink);

  Source* source;
  Cursor cursor;
  std::uint32_t rowsAt;
  BmpLayout layout;
  std::uint64_t dataPosition = 0;
};

bool BmpDecoder::DecodeRuns(RowSink& sink) {
  BmpRuns runs(*source, dataPosition, layout);
  std::vector<BYTE> indexes(static_cast<std::size_t>(head.size.width));
  for (int stored = 0; stored < head.size.height; ++stored) {
    const int y = static_cast<int>(layout.RowOf(stored));
    runs.ReadRow(indexes);
    BYTE* colour = sink.Begin(y).colour;
    for (const BYTE index : indexes) {
      layout.StoreIndex(index, colour);
      colour += base::kBytesPerPixel;
    }
    if (!sink.End(y)) return false;
  }
  return true;
}

bool BmpDecoder::DecodeRows(RowSink& sink) {
  Cursor rows(*source, dataPosition);
  std::vector<BYTE> packed(static_cast<std::size_t>(layout.UsedRowBytes()));
  const auto padding = static_cast<std::uint64_t>(layout.RowBytes()) - packed.size();
  for (int stored = 0; stored < head.size.height; ++stored) {
    const int y = static_cast<int>(layout.RowOf(stored));
    rows.NeedBytes(packed.data(), packed.size());
    rows.Skip(padding);
    layout.StorePixels(packed.data(), sink.Begin(y));
    if (!sink.End(y)) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<Decoder> OpenBmp(Source& source) {
  return std::make_unique<BmpDecoder>(source);
}

}  // namespace imageio
