// FxboxRender: translation between programs in C and Render.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "component/fxbox.h"
#include "host/ChainCheck.h"
#include "host/ComponentRuntime.h"
#include "host/PackedPixels.h"
#include "host/Render.h"
#include "host/Texts.h"

struct FxboxStopper {
  host::Stopper stopper;
};

namespace host {
namespace {

class BadArgument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A result as it is handed out, with what holds its pixels.
struct OwnedImage {
  FxboxImage image{};  // first: what the host has is this pointer
  std::unique_ptr<RenderedPicture> picture;
  std::vector<BYTE> pixels;
};

// --- what comes in

PackedRows<const BYTE> PictureOf(const FxboxImage* input) {
  if (!input || !input->pixels) throw BadArgument("there is no picture");
  if (input->channels != 3 && input->channels != 4) {
    throw BadArgument("a picture has 3 or 4 channels, not " + std::to_string(input->channels));
  }
  if (input->width < 1 || input->height < 1) throw BadArgument("the picture has no pixels");
  const std::ptrdiff_t least = std::ptrdiff_t{input->width} * input->channels;
  const std::ptrdiff_t step = input->rowStep == 0 ? least : input->rowStep;
  if (std::abs(step) < least) throw BadArgument("rowStep is less than a row of the picture");
  return {input->pixels, step, {input->width, input->height}, input->channels};
}

// Of whatever size the caller knows; what he does not know is 0.
FxboxRenderOptions OptionsOf(const FxboxRenderOptions* given) {
  FxboxRenderOptions options{};
  if (!given) return options;
  if (given->size < sizeof given->size) throw BadArgument("size is missing in the options");
  std::memcpy(&options, given, std::min(given->size, sizeof options));
  const bool isWrong = options.channels != 0 && options.channels != 3 && options.channels != 4;
  if (isWrong) throw BadArgument("a result has 3 or 4 channels");
  return options;
}

SourcePicture ToldOf(Size size, const FxboxRenderOptions& options) {
  SourcePicture told{size, size, {}};
  if (options.fullWidth > 0 && options.fullHeight > 0) {
    told.target = {options.fullWidth, options.fullHeight};
  }
  if (options.zoom < 0) throw BadArgument("the zoom is negative");
  if (options.zoom > 0) told.zoom = options.zoom;
  return told;
}

RenderRequest RequestFor(const PackedRows<const BYTE>& picture, const FxboxRenderOptions& options) {
  RenderRequest request;
  request.picture = ToldOf(picture.size, options);
  request.fill = [picture](const imageio::Rows& rows, const imageio::Progress& progress) {
    return Unpack(picture, rows, progress);
  };
  if (options.width > 0 || options.height > 0) {
    request.part = Rectangle{options.left, options.top, options.width, options.height};
  }
  if (options.mostPixels > 0) request.mostPixels = options.mostPixels;
  if (options.stopper) request.stopper = &options.stopper->stopper;
  if (options.progress) {
    request.progress = [options](double share) {
      return options.progress(options.context, share) != 0;
    };
  }
  return request;
}

ChainText CheckedChain(const char* text, bool lenient, IAnimFilterCreator& creator) {
  if (!text) throw BadArgument("there is no chain text");
  ChainText chain{ChainTextOf(text)};
  if (!lenient) chain.text = CheckChainText(chain, ListFilters(creator), creator);
  return chain;
}

// --- what goes out

// Without alpha the pixels of the picture serve as they are.
void GiveColour(OwnedImage& owned) {
  RenderedPicture& picture = *owned.picture;
  const auto [width, height] = picture.size;
  for (int y = 0; y < height; ++y) SwapRedAndBlue(picture.ColourRows()[y], width);
  picture.mask = {};
  owned.image = {picture.colour.data(), std::ptrdiff_t{3} * width, width, height, 3};
}

void GivePixels(OwnedImage& owned) {
  RenderedPicture& picture = *owned.picture;
  const Size size = picture.size;
  const std::ptrdiff_t step = std::ptrdiff_t{4} * size.width;
  owned.pixels.resize(static_cast<std::size_t>(step) * static_cast<std::size_t>(size.height));
  Pack(picture.Rows(), {owned.pixels.data(), step, size, 4});
  owned.image = {owned.pixels.data(), step, size.width, size.height, 4};
  owned.picture.reset();
}

FxboxImage* ResultOf(std::unique_ptr<RenderedPicture> picture, int channels) {
  auto owned = std::make_unique<OwnedImage>();
  owned->picture = std::move(picture);
  if (channels == 3) {
    GiveColour(*owned);
  } else {
    GivePixels(*owned);
  }
  return &owned.release()->image;
}

// Null when it was stopped.
FxboxImage* Run(const FxboxImage* input, const char* chain, const FxboxRenderOptions* given) {
  const PackedRows<const BYTE> picture = PictureOf(input);
  const FxboxRenderOptions options = OptionsOf(given);
  RenderRequest request = RequestFor(picture, options);
  const ComponentRuntime runtime;
  const platform::ComPtr<IAnimFilterCreator> creator = MakeCreator();
  request.chain = CheckedChain(chain, options.lenient != 0, *creator.Get());
  auto result = Render(*creator.Get(), request);
  if (!result) return nullptr;
  const int channels = ChannelsOf(*result, picture.channels, options.channels);
  return ResultOf(std::move(result), channels);
}

// --- failures

// Cut between characters where it does not fit.
template <std::size_t Size>
void CopyText(char (&to)[Size], const char* text) {
  std::size_t length = std::min(std::strlen(text), Size - 1);
  const auto isContinued = [text](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
  if (text[length]) {
    while (length > 0 && isContinued(length)) --length;
  }
  std::memcpy(to, text, length);
  to[length] = 0;
}

std::int32_t Report(FxboxError* error, std::int32_t status, const char* message,
                    const ChainPlace& place = {}) {
  if (!error) return status;
  *error = {status, place.item, place.line, place.character, {}, {}};
  CopyText(error->filter, place.filter.c_str());
  CopyText(error->message, message);
  return status;
}

constexpr char kNoMemory[] = "there is not enough memory for the picture";

}  // namespace
}  // namespace host

std::int32_t FXBOX_STDCALL FxboxRender(const FxboxImage* input, const char* chain,
                                       const FxboxRenderOptions* options, FxboxImage** result,
                                       FxboxError* error) try {
  if (!result) return host::Report(error, FXBOX_BAD_ARGUMENT, "there is no place for the result");
  *result = nullptr;
  *result = host::Run(input, chain, options);
  return *result ? host::Report(error, FXBOX_OK, "")
                 : host::Report(error, FXBOX_STOPPED, "the work was stopped");
} catch (const host::ChainError& failure) {
  return host::Report(error, FXBOX_BAD_CHAIN, failure.what(), failure.Place());
} catch (const host::BadArgument& failure) {
  return host::Report(error, FXBOX_BAD_ARGUMENT, failure.what());
} catch (const std::invalid_argument& failure) {
  return host::Report(error, FXBOX_BAD_ARGUMENT, failure.what());
} catch (const std::bad_alloc&) {
  return host::Report(error, FXBOX_NO_MEMORY, host::kNoMemory);
} catch (const std::exception& failure) {
  return host::Report(error, FXBOX_FAILED, failure.what());
} catch (...) {
  return host::Report(error, FXBOX_FAILED, "an unknown failure");
}

void FXBOX_STDCALL FxboxFreeImage(FxboxImage* image) {
  delete reinterpret_cast<host::OwnedImage*>(image);
}

FxboxStopper* FXBOX_STDCALL FxboxNewStopper() {
  return new (std::nothrow) FxboxStopper;
}

void FXBOX_STDCALL FxboxStop(FxboxStopper* stopper) {
  if (stopper) stopper->stopper.Stop();
}

void FXBOX_STDCALL FxboxFreeStopper(FxboxStopper* stopper) {
  delete stopper;
}
