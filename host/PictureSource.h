// The picture at the head of the chain: fills the rows that a pull brings, out of a file, a shared
// picture or the memory of a caller.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "core/AnimInterfaces.h"
#include "core/AnimRowLender.h"
#include "host/RowWindow.h"
#include "host/Sizes.h"
#include "imageio/ImageFile.h"
#include "picture/MemoryPicture.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"

namespace host {

// What the source tells downstream about its picture.
struct SourcePicture {
  Size size;
  Size target;                 // the same picture at full resolution
  std::optional<double> zoom;  // told only when somebody chose one
};

// A pull of the whole picture decodes straight into the caller's rows, without a copy here. Any
// other pull, and a second whole one, decodes once into a kept picture and is served from it. A
// request is cut to the picture; nothing outside is written. A kept picture is lent.
//
// Linking, Prepare and pulls are one thread's; SetAbort may come from any.
class FXBOX_API PictureSource final
    : public platform::ComObject<PictureSource, IAnimFilterDestCallsThis, IAnimRowLender> {
 public:
  // Fills rows of the picture's size; false when `progress` stopped it. May throw.
  using Decode = std::function<bool(const imageio::Rows& rows, const imageio::Progress& progress)>;

  // `report` hears how far a decode is, and may stop it.
  PictureSource(const SourcePicture& told, Decode decodeRows, imageio::Progress report = {});

  // A picture that is in memory already: pulls are served from it, without a copy of it here.
  PictureSource(const SourcePicture& told, std::shared_ptr<const MemoryPicture> rows);

  // From now on serves pulls that go from the top of the picture down, a band after the other, from
  // rows that are decoded meanwhile. What it cannot serve so ends it.
  void ServeFrom(std::unique_ptr<RowWindow> rows) { window = std::move(rows); }

  // Some filters pass rows on even when their source stopped, so who pulls asks here afterwards:
  // whether any pull was incomplete, and why in words for the user; no words when it was told to
  // stop.
  bool HasStopped() const { return stopped; }
  const std::string& Failure() const { return failure; }

  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) override;
  HRESULT STDMETHODCALLTYPE LendRows(int width, int height, const BYTE* const** colourRows,
                                     const BYTE* const** maskRows) override;
  // Kept rows stay: there is nothing to do.
  HRESULT STDMETHODCALLTYPE ReturnRows() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetAbort(bool newAbort) override;
  HRESULT STDMETHODCALLTYPE Prepare(bool* changed, int* consumerRevision,
                                    bool trackRevision) override;
  HRESULT STDMETHODCALLTYPE GetInfo(int* width, int* height, int* offsetX, int* offsetY,
                                    int* extentWidth, int* extentHeight) override;
  HRESULT STDMETHODCALLTYPE AttachDestination(IUnknown* newDestination) override;
  // The pixel stays the one that the caller brought.
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;
  HRESULT STDMETHODCALLTYPE SendToSource(std::intptr_t message) override;

 private:
  struct Request;

  bool TryServe(const Request& request);
  bool Serve(const Request& request);
  bool DecodeInto(const Request& request);
  bool Keep();
  // `colourOf` and `maskOf` give the start of the picture's row y.
  template <class ColourOf, class MaskOf>
  bool Copy(const Request& request, ColourOf colourOf, MaskOf maskOf) const;
  bool RunDecode(const imageio::Rows& rows);
  void TellDestination();

  const SourcePicture picture;
  const Decode decode;
  const imageio::Progress progress;
  std::unique_ptr<RowWindow> window;  // null where nothing streams
  std::shared_ptr<const MemoryPicture> kept;
  bool givenWhole = false;  // straight into a caller's rows, which are gone
  bool stopped = false;
  std::string failure;

  platform::ComPtr<IAnimFilterSrcCallsThis> destination;
  bool changed = true;  // until rows went out
  int revision = 0;
  std::atomic<bool> abort{false};
};

}  // namespace host
