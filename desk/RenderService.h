// The thread that renders what the window shows: a rough preview first, then the screen's
// resolution, then what would be exported.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "core/AnimInterfaces.h"
#include "desk/ChainDocument.h"
#include "desk/LoadedPicture.h"
#include "host/Pipeline.h"

namespace desk {

enum class RenderStage { Preview, Screen, Full };
inline constexpr int kStageCount = 3;

// What is to be shown.
struct RenderRequest {
  std::shared_ptr<LoadedPicture> picture;
  ChainItems chain;
  host::Size box;         // of the screen that the whole picture fits into
  bool wantsFull = true;  // whether to go on to the full resolution
};

struct RenderResult {
  std::uint64_t request = 0;  // its number
  RenderStage stage = RenderStage::Preview;
  PicturePointer before;  // what the chain was given
  PicturePointer after;   // of the stage's own size
  PicturePointer shown;   // `after` where it fits the box, else reduced to it
  host::Size fullSize;    // of the finished picture, as far as this stage knows it
  double milliseconds = 0;
  std::string error;  // in words for the person; then there are no pictures
};

struct PixelPair {
  std::array<BYTE, 4> before = {};  // blue, green, red, mask
  std::array<BYTE, 4> after = {};
};

// All operations return at once, on any thread. `deliver` is called on the service's thread, once a
// stage that was not overtaken by another request.
class RenderService {
 public:
  using Deliver = std::function<void(const RenderResult&)>;

  RenderService(IAnimFilterCreator& filterCreator, Deliver deliverTo);
  ~RenderService();
  RenderService(const RenderService&) = delete;
  RenderService& operator=(const RenderService&) = delete;

  // Stops what runs and begins anew; gives the request's number, which counts up.
  std::uint64_t Submit(RenderRequest request);
  // Stops what runs; nothing is delivered until the next Submit.
  void Cancel();
  // Whether nothing is left to do.
  bool IsIdle() const;

  // Takes a pixel through the chain as it was last prepared; nothing while that is not so.
  std::optional<std::array<BYTE, 4>> ReadPixel(const std::array<BYTE, 4>& before);
  // The live filter that stands for an item of the request that was rendered last; null when there
  // is none.
  platform::ComPtr<IAnimFilter> FilterOf(int item);

 private:
  struct Stage;

  void Work();
  void Render(const RenderRequest& request, std::uint64_t number);
  bool RunStage(RenderStage stage, const RenderRequest& request, std::uint64_t number);
  // Gives the size of the result.
  host::Size Prepare(Stage& stage, const RenderRequest& request, const PicturePointer& before);
  bool Pull(Stage& stage, host::Size size, std::uint64_t number, RenderResult& result);
  // Both under the lock.
  void StopPull();
  Stage* StandingStill() const;
  bool IsOvertaken(std::uint64_t number) const { return newest != number; }
  imageio::Progress Watch(std::uint64_t number) const;

  IAnimFilterCreator& creator;
  const Deliver deliver;
  std::array<std::unique_ptr<Stage>, kStageCount> stages;
  double screenMilliseconds = 0;  // what the last screen took

  mutable std::mutex lock;
  std::condition_variable wake;
  std::optional<RenderRequest> waiting;
  std::atomic<std::uint64_t> newest{0};
  bool isWorking = false;
  bool isEnding = false;
  Stage* pulled = nullptr;   // whose chain is being pulled, and stands still
  Stage* settled = nullptr;  // whose chain answers questions; as long as it stands still

  std::thread thread;
};

}  // namespace desk
