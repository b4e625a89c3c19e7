// fxbox picture: pictures as serialised streams.
#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>

#include "base/KvInterfaces.h"
#include "picture/MemoryPicture.h"
#include "platform/Services.h"
#include "program/Commands.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "program/StandardStreams.h"
#include "program/WholePicture.h"

namespace program {
namespace {

struct PackOptions {
  std::string input;
  std::string output;
  std::optional<std::string> values;
};

struct UnpackOptions {
  std::string input;
  std::string output;
  bool quiet = false;
};

constexpr char kExamples[] = R"(Examples:
  fxbox picture pack photo.jpg -o photo.stream --values 1,2,3,4
  fxbox picture unpack photo.stream -o photo.png
A stream holds the pixels, the mask where the picture has one, and four numbers of the host's.)";

class FileWriter final : public IKvWrite {
 public:
  explicit FileWriter(const std::filesystem::path& file) : stream(file, std::ios::binary) {}
  unsigned Write(const void* buffer, unsigned count) override {
    stream.write(static_cast<const char*>(buffer), static_cast<std::streamsize>(count));
    return stream ? count : 0;
  }
  bool Close() {
    stream.close();
    return !stream.fail();
  }

 private:
  std::ofstream stream;
};

class StreamReader final : public IKvRead {
 public:
  explicit StreamReader(std::istream& from) : stream(from) {}
  unsigned Read(void* buffer, unsigned count) override {
    stream.read(static_cast<char*>(buffer), static_cast<std::streamsize>(count));
    return static_cast<unsigned>(stream.gcount());
  }

 private:
  std::istream& stream;
};

class BytesReader final : public IKvRead {
 public:
  explicit BytesReader(const Bytes& from) : bytes(from) {}
  unsigned Read(void* buffer, unsigned count) override {
    const std::size_t given = std::min<std::size_t>(count, bytes.size() - position);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), given,
                static_cast<std::uint8_t*>(buffer));
    position += given;
    return static_cast<unsigned>(given);
  }

 private:
  const Bytes& bytes;
  std::size_t position = 0;
};

// "A,B,C,D"
std::array<int, 4> ParseValues(const std::string& text) {
  std::array<int, 4> values = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto [behind, error] = std::from_chars(at, end, values[i]);
    const bool ends = i + 1 == values.size() ? behind == end : behind != end && *behind == ',';
    if (error != std::errc() || !ends) {
      throw UsageError("--values: " + Quoted(text) + " is not four numbers A,B,C,D");
    }
    at = behind + 1;
  }
  return values;
}

// The file appears whole or not at all. False when `write` was stopped.
bool WriteFile(const std::string& output, const platform::Files::WriteFile& write) {
  std::optional<std::string> failure;
  try {
    failure = output == kStandard
                  ? WriteStandardOutput(write)
                  : platform::CurrentServices().files->Replace(PathOf(output), write);
  } catch (const imageio::ImageError& error) {
    failure = error.what();
  }
  const std::string name = output == kStandard ? "standard output" : output;
  if (failure && !failure->empty()) throw FileError(name, *failure);
  return !failure;
}

std::unique_ptr<MemoryPicture> WithValues(std::unique_ptr<MemoryPicture> picture,
                                          const std::array<int, 4>& values) {
  auto valued = std::make_unique<MemoryPicture>("", picture->Image(), picture->Mask(), values[2],
                                                values[3], values[0], values[1]);
  if (!valued->IsValid()) throw std::bad_alloc();
  return valued;
}

int Pack(const PackOptions& options) {
  std::optional<std::array<int, 4>> values;
  if (options.values) values = ParseValues(*options.values);
  CatchInterrupts();
  auto picture = ReadWhole(options.input);
  if (picture && values) picture = WithValues(std::move(picture), *values);
  const bool written =
      picture && WriteFile(options.output, [&](const std::filesystem::path& temporary) {
        FileWriter file(temporary);
        if (!picture->Serialize(&file)) throw std::bad_alloc();
        if (!file.Close()) throw imageio::ImageError("the file cannot be written");
        return !IsInterrupted();
      });
  return written ? kDone : kInterrupted;
}

std::unique_ptr<MemoryPicture> ReadStream(const std::string& input) {
  if (input == kStandard) {
    const Bytes bytes = ReadStandardInput();
    BytesReader reader(bytes);
    return std::make_unique<MemoryPicture>(&reader);
  }
  std::ifstream file(PathOf(input), std::ios::binary);
  if (!file) throw FileError(input, "the file cannot be opened");
  StreamReader reader(file);
  return std::make_unique<MemoryPicture>(&reader);
}

imageio::Format FormatOf(const std::string& output) {
  if (output == kStandard) return imageio::Format::Pam;
  const imageio::Format format = imageio::FormatOfName(PathOf(output));
  if (format != imageio::Format::Unknown) return format;
  throw UsageError(output + ": the name says no kind of picture that can be written: .png, .pam");
}

void Tell(const std::string& output, const MemoryPicture& picture) {
  std::cout << output << "  " << picture.Width() << 'x' << picture.Height() << "  values "
            << picture.Value(1);
  for (int i = 2; i <= 4; ++i) std::cout << ',' << picture.Value(i);
  std::cout << '\n';
}

int Unpack(const UnpackOptions& options) {
  const imageio::Format format = FormatOf(options.output);
  CatchInterrupts();
  const std::string name = options.input == kStandard ? "standard input" : options.input;
  const auto picture = ReadStream(options.input);
  if (!picture->Block()) throw FileError(name, "is no serialised picture, or is damaged");
  const imageio::Rows rows = RowsOf(*picture, name);
  const bool written = WriteFile(options.output, [&](const std::filesystem::path& temporary) {
    return imageio::WriteImage(temporary, format, picture->Width(), picture->Height(), rows, {},
                               [](double) { return !IsInterrupted(); });
  });
  if (!written) return kInterrupted;
  if (!options.quiet && options.output != kStandard) Tell(options.output, *picture);
  return kDone;
}

void AddPack(const Command& picture) {
  const auto options = std::make_shared<PackOptions>();
  const Command command = picture.Add("pack", "Write a picture file as a serialised stream");
  command.Take("FILE", options->input, "Picture file").Required();
  command.Take("-o,--output OUT", options->output, "Stream to write").Required();
  command.Take("--values A,B,C,D", options->values,
               "The four numbers of the host's (default: 0,0 and twice the width)");
  command.Runs([options] { return Pack(*options); });
}

void AddUnpack(const Command& picture) {
  const auto options = std::make_shared<UnpackOptions>();
  const Command command = picture.Add("unpack", "Write a serialised stream as a picture file");
  command.Take("IN", options->input, "Stream to read").Required();
  command
      .Take("-o,--output OUT", options->output,
            "Picture to write; PNG and PAM hold it exactly. - is a PAM")
      .Required();
  command.Flag("--quiet", options->quiet, "Print nothing but errors");
  command.Runs([options] { return Unpack(*options); });
}

}  // namespace

void AddPictureCommand(const Command& program) {
  const Command picture = program.Add("picture", "Turn pictures into serialised streams and back");
  AddPack(picture);
  AddUnpack(picture);
  picture.Footer(kExamples);
}

}  // namespace program
