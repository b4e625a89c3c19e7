// One picture through one chain text: all that most hosts want of the library.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <vector>

#include "host/Pipeline.h"

namespace host {

// Stops pulls from other threads, those under way and later ones. Any thread may call.
class FXBOX_API Stopper {
 public:
  Stopper() = default;
  Stopper(const Stopper&) = delete;
  Stopper& operator=(const Stopper&) = delete;

  void Stop();
  bool IsStopped() const;

 private:
  friend class StoppablePull;

  mutable std::mutex lock;
  std::vector<IAnimFilterDestCallsThis*> pulled;
  bool stopped = false;
};

// Whom a stopper tells while this lives. The chain's links must not change meanwhile.
class FXBOX_API StoppablePull {
 public:
  // A null stopper stops nothing.
  StoppablePull(Stopper* stopper, IAnimFilterDestCallsThis& tail);
  ~StoppablePull();
  StoppablePull(const StoppablePull&) = delete;
  StoppablePull& operator=(const StoppablePull&) = delete;

 private:
  Stopper* const stopper;
  IAnimFilterDestCallsThis& tail;
};

// A result, or a picture on the way to it, that has more pixels than allowed.
class FXBOX_API TooLarge : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline constexpr std::int64_t kMostPixels = 500'000'000;

struct RenderRequest {
  ChainText chain;
  SourcePicture picture;
  PictureSource::Decode fill;  // gives the rows of the picture
  // Of the result, to which it is cut; its y counts downwards from the top row.
  std::optional<Rectangle> part;
  std::int64_t mostPixels = kMostPixels;
  imageio::Progress progress;  // of the picture that is read; on the calling thread
  Stopper* stopper = nullptr;
};

// The chain in the state in which a pull finds it: its result's size, checked against the limit
// together with the pictures on the way, for most filters take memory for what they give out.
FXBOX_API Size SettleWithin(Pipeline& pipeline, std::int64_t mostPixels);

// A result in memory of its own: the top row first, no gaps between rows.
class FXBOX_API RenderedPicture {
 public:
  explicit RenderedPicture(Size pictureSize);

  // As the pipeline has them: row 0 is the bottom row.
  BYTE** ColourRows() { return colourRows.data(); }
  BYTE** MaskRows() { return maskRows.data(); }
  imageio::Rows Rows() { return {ColourRows(), MaskRows()}; }

  const Size size;
  std::vector<BYTE> colour;  // blue, green, red
  std::vector<BYTE> mask;    // 0 is opaque

 private:
  std::vector<BYTE*> colourRows;
  std::vector<BYTE*> maskRows;
};

// The wanted part of the result; null when it was stopped. Items of the chain that the creator does
// not know are left out: CheckChainText finds them. Failures are std::runtime_errors in words for
// the user, std::bad_alloc, and std::invalid_argument for a part outside the result.
FXBOX_API std::unique_ptr<RenderedPicture> Render(IAnimFilterCreator& creator,
                                                  const RenderRequest& request);

// 3 or 4: as `wanted` says; where that is 0, 4 for a picture that had 4 and for a result through
// which something shines.
FXBOX_API int ChannelsOf(RenderedPicture& result, int channelsOfPicture, int wanted);

}  // namespace host
