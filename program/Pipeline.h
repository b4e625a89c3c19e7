// A chain between the program's source and destination, as every host builds it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/AnimChain.h"
#include "picture/MemoryPicture.h"
#include "program/PictureDestination.h"
#include "program/PictureSource.h"

namespace program {

// A chain text in the library's code page with the markers that tell its items apart.
struct ChainText {
  std::string text;
  std::string open = "(";
  std::string close = ")";
};

// The library's creator of filters. A std::runtime_error when it cannot be had.
platform::ComPtr<IAnimFilterCreator> MakeCreator();

// A source for questions that need no rows; pulled, it leaves them as they are.
platform::ComPtr<PictureSource> MakeBlankSource(Size size, Size target,
                                                std::optional<double> zoom = {});

// The size of what a filter gives out, in the state in which its chain is.
Size SizeBehind(IUnknown* filter);

// Failures are std::runtime_errors in words for the user.
class Pipeline {
 public:
  Pipeline(IAnimFilterCreator& filterCreator, platform::ComPtr<PictureSource> pictureSource);
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Builds the chain anew, one filter an item, so that a class may stand twice in the text: the
  // chain's own reading of a text could take the filter of another item for it. An item whose
  // filter cannot be made is left out.
  void SetText(const ChainText& chainText);
  // The chain text that the chain hands out, with the given markers. `active` prints what the pulls
  // work with, which is settled by Settle.
  std::string Text(const ChainText& markers, bool active) const;

  // The filters of the chain, the one next to the source first.
  std::vector<platform::ComPtr<IAnimFilter>> Filters() const;

  // Prepares until two answers in a row agree, since a first walk forwards sizes by old values, and
  // gives the result's size.
  Size Settle();

  // Pulls a part of the result into a picture of that part's size, `bandRows` rows at a time from
  // the bottom up (0: all at once). False when it was stopped.
  bool Pull(const Rectangle& part, int bandRows, MemoryPicture& into,
            const imageio::Progress& progress = {});

  // Whom to tell SetAbort.
  IAnimFilterDestCallsThis& Tail() const;

 private:
  IAnimFilterCreator& creator;
  platform::ComPtr<PictureSource> source;
  platform::ComPtr<PictureDestination> destination;
  platform::ComPtr<IAnimFilterChain> chain;
};

}  // namespace program
