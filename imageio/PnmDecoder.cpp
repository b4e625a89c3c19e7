// Netpbm pictures: bitmaps, grey and colour maps, plain and raw (P1 to P6), and PAM (P7).
#include <array>
#include <charconv>
#include <string_view>

#include "base/Rows.h"
#include "imageio/Decoder.h"

namespace imageio {
namespace {

constexpr char kBadHead[] = "the head of the picture is damaged";
constexpr std::uint32_t kHighestLimit = 65535;

bool IsSpace(int byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

enum class Coding { PlainBits, PackedBits, PlainNumbers, Bytes, Words };

class PnmDecoder final : public Decoder {
 public:
  explicit PnmDecoder(Source& from) : source(&from) {
    Cursor cursor(*source, 1);
    const int kind = cursor.NeedByte() - '0';
    if (kind == 7) {
      ReadPamHead(cursor);
    } else {
      ReadPnmHead(cursor, kind);
    }
    head.hasMask = channels % 2 == 0;
    if (limit > 255) NoteBits(16);
    dataPosition = cursor.Position();
    for (std::uint32_t value = 0; value < table.size(); ++value) {
      table[value] = ScaleToByte(value, limit);
    }
  }

  bool Decode(RowSink& sink) override {
    Cursor cursor(*source, dataPosition);
    std::vector<BYTE> samples(RowSamples());
    for (int y = 0; y < head.size.height; ++y) {
      ReadRow(cursor, samples);
      StoreSamples(samples.data(), head.size.width, channels, channels, sink.Begin(y));
      if (!sink.End(y)) return false;
    }
    return true;
  }

 private:
  static int TextByte(Cursor& cursor);
  static int SkipSpace(Cursor& cursor);
  static std::uint32_t ReadNumber(Cursor& cursor);
  static std::string ReadLine(Cursor& cursor);
  void ReadPnmHead(Cursor& cursor, int kind);
  void ReadPamHead(Cursor& cursor);
  void SetLimit(std::uint32_t value);
  std::size_t RowSamples() const {
    return static_cast<std::size_t>(head.size.width) * static_cast<std::size_t>(channels);
  }
  void ReadRow(Cursor& cursor, std::vector<BYTE>& samples);
  void ReadPackedBits(Cursor& cursor, std::vector<BYTE>& samples);
  void ReadWords(Cursor& cursor, std::vector<BYTE>& samples);

  Source* source;
  Coding coding = Coding::Bytes;
  int channels = 1;
  std::uint32_t limit = 1;  // the sample that means full light
  std::uint64_t dataPosition = 0;
  std::array<BYTE, 256> table;  // samples of one byte, scaled
  std::vector<BYTE> raw;        // one row as stored
};

// The next byte, or -1 at the end. A comment counts as the line end behind it.
int PnmDecoder::TextByte(Cursor& cursor) {
  int byte = cursor.Byte();
  if (byte != '#') return byte;
  while (byte != '\n' && byte != '\r' && byte >= 0) byte = cursor.Byte();
  return byte;
}

int PnmDecoder::SkipSpace(Cursor& cursor) {
  int byte = TextByte(cursor);
  while (IsSpace(byte)) byte = TextByte(cursor);
  if (byte < 0) throw ImageError(kEndsEarly);
  return byte;
}

// A number and the one byte behind it. The end of the file also ends the last number.
std::uint32_t PnmDecoder::ReadNumber(Cursor& cursor) {
  constexpr std::uint32_t kEnough = 0x7FFFFFFF;
  int byte = SkipSpace(cursor);
  if (byte < '0' || byte > '9') throw ImageError("a number in the picture is damaged");
  std::uint64_t value = 0;
  for (; byte >= '0' && byte <= '9'; byte = TextByte(cursor)) {
    value = value * 10 + static_cast<std::uint64_t>(byte - '0');
    if (value > kEnough) throw ImageError("a number in the picture is too large");
  }
  return static_cast<std::uint32_t>(value);
}

void PnmDecoder::SetLimit(std::uint32_t value) {
  if (value < 1 || value > kHighestLimit) throw ImageError(kBadHead);
  limit = value;
}

void PnmDecoder::ReadPnmHead(Cursor& cursor, int kind) {
  const bool bits = kind == 1 || kind == 4;
  const std::uint32_t width = ReadNumber(cursor);
  SetSize(width, ReadNumber(cursor));
  if (!bits) SetLimit(ReadNumber(cursor));
  channels = kind == 3 || kind == 6 ? 3 : 1;
  if (kind <= 3) {
    coding = bits ? Coding::PlainBits : Coding::PlainNumbers;
  } else {
    coding = bits ? Coding::PackedBits : limit < 256 ? Coding::Bytes : Coding::Words;
  }
}

std::string PnmDecoder::ReadLine(Cursor& cursor) {
  constexpr std::size_t kLongest = 1000;
  std::string line;
  for (int byte = cursor.NeedByte(); byte != '\n'; byte = cursor.NeedByte()) {
    if (line.size() == kLongest) throw ImageError(kBadHead);
    line.push_back(static_cast<char>(byte));
  }
  while (!line.empty() && IsSpace(line.back())) line.pop_back();
  return line;
}

int ChannelsOfTuple(std::string_view type, std::uint32_t depth) {
  struct Tuple {
    std::string_view name;
    int channels;
  };
  constexpr Tuple kTuples[] = {
      {"BLACKANDWHITE", 1},       {"GRAYSCALE", 1},       {"RGB", 3},
      {"BLACKANDWHITE_ALPHA", 2}, {"GRAYSCALE_ALPHA", 2}, {"RGB_ALPHA", 4}};
  if (type.empty() && depth >= 1 && depth <= 4) return static_cast<int>(depth);
  for (const Tuple& tuple : kTuples) {
    if (tuple.name == type && static_cast<std::uint32_t>(tuple.channels) == depth) {
      return tuple.channels;
    }
  }
  throw ImageError("the kind of picture is not supported");
}

void PnmDecoder::ReadPamHead(Cursor& cursor) {
  std::uint32_t width = 0, height = 0, depth = 0, highest = 0;
  std::string type;
  ReadLine(cursor);
  for (std::string line = ReadLine(cursor); line != "ENDHDR"; line = ReadLine(cursor)) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t gap = std::min(line.find_first_of(" \t"), line.size());
    const std::size_t at = std::min(line.find_first_not_of(" \t", gap), line.size());
    const std::string_view key = std::string_view(line).substr(0, gap);
    const std::string_view text = std::string_view(line).substr(at);
    std::uint32_t* const number = key == "WIDTH"    ? &width
                                  : key == "HEIGHT" ? &height
                                  : key == "DEPTH"  ? &depth
                                  : key == "MAXVAL" ? &highest
                                                    : nullptr;
    if (key == "TUPLTYPE") {
      type.append(type.empty() ? "" : " ").append(text);
    } else if (number == nullptr ||
               std::from_chars(text.data(), text.data() + text.size(), *number).ec != std::errc()) {
      throw ImageError(kBadHead);
    }
  }
  SetSize(width, height);
  SetLimit(highest);
  channels = ChannelsOfTuple(type, depth);
  coding = limit < 256 ? Coding::Bytes : Coding::Words;
}

void PnmDecoder::ReadRow(Cursor& cursor, std::vector<BYTE>& samples) {
  switch (coding) {
    case Coding::PlainBits:
      for (BYTE& sample : samples) {
        const int digit = SkipSpace(cursor);
        if (digit != '0' && digit != '1') throw ImageError("a number in the picture is damaged");
        sample = digit == '1' ? 0 : 255;
      }
      break;
    case Coding::PackedBits:
      ReadPackedBits(cursor, samples);
      break;
    case Coding::PlainNumbers:
      for (BYTE& sample : samples) sample = ScaleToByte(ReadNumber(cursor), limit);
      break;
    case Coding::Bytes:
      cursor.NeedBytes(samples.data(), samples.size());
      for (BYTE& sample : samples) sample = table[sample];
      break;
    case Coding::Words:
      ReadWords(cursor, samples);
      break;
  }
}

void PnmDecoder::ReadPackedBits(Cursor& cursor, std::vector<BYTE>& samples) {
  raw.resize((samples.size() + 7) / 8);
  cursor.NeedBytes(raw.data(), raw.size());
  for (std::size_t x = 0; x < samples.size(); ++x) {
    samples[x] = (raw[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255;
  }
}

void PnmDecoder::ReadWords(Cursor& cursor, std::vector<BYTE>& samples) {
  raw.resize(samples.size() * 2);
  cursor.NeedBytes(raw.data(), raw.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = ScaleToByte(raw[2 * i] * 256u + raw[2 * i + 1], limit);
  }
}

}  // namespace

std::unique_ptr<Decoder> OpenPnm(Source& source) {
  return std::make_unique<PnmDecoder>(source);
}

}  // namespace imageio
