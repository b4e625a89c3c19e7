// A chain between source and destination: from a chain text to rows.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/AnimChain.h"
#include "host/PictureDestination.h"
#include "host/PictureSource.h"
#include "picture/MemoryPicture.h"

namespace host {

// A chain text in the library's code page with the markers that tell its items apart.
struct ChainText {
  std::string text;
  std::string open = "(";
  std::string close = ")";
};

// The library's creator of filters. A std::runtime_error when it cannot be had.
FXBOX_API platform::ComPtr<IAnimFilterCreator> MakeCreator();

// A source for questions that need no rows; pulled, it leaves them as they are.
FXBOX_API platform::ComPtr<PictureSource> MakeBlankSource(Size size, Size target,
                                                          std::optional<double> zoom = {});

// The size of what a filter gives out, in the state in which its chain is.
FXBOX_API Size SizeBehind(IUnknown* filter);

// One thread at a time; Tail().SetAbort may come from any. The creator has to live longer. Failures
// are std::runtime_errors in words for the user.
class FXBOX_API Pipeline {
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

  // Pulls a rectangle of the result: its row i goes to `colour[destY + i]` and `mask[destY + i]`.
  // False when it was stopped.
  bool PullRows(const Rectangle& part, int destY, BYTE** colour, BYTE** mask);

  // How far the rows of the result reach through all filters, as Settle has left them: a pull in
  // bands gives the same bytes as one pull when each band has so many rows more above and below.
  // Nothing where the chain has to be pulled in one piece.
  struct RowReach {
    int rows = 0;
    bool readsAll = false;  // the whole source is asked for at once, whatever is pulled
  };
  std::optional<RowReach> Reach() const;

  // Whom to tell SetAbort.
  IAnimFilterDestCallsThis& Tail() const;

 private:
  IAnimFilterCreator& creator;
  platform::ComPtr<PictureSource> source;
  platform::ComPtr<PictureDestination> destination;
  platform::ComPtr<IAnimFilterChain> chain;
};

}  // namespace host
