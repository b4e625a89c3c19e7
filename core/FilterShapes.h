// The three shapes of a filter, by how much of the picture it must see at once.
#pragma once

#include <algorithm>
#include <vector>

#include "base/RowPieces.h"
#include "base/RowView.h"
#include "base/RowWriter.h"
#include "base/Rows.h"
#include "base/Workers.h"
#include "core/CroppedRows.h"
#include "core/PdibFilter.h"

// A rectangle of a pull as a filter works on it: row i of the rectangle starts at Colour(i),
// Mask(i).
struct PullRectangle {
  int destX, destY, srcX, srcY, width, height;
  BYTE** colourRows;  // either array may be null when the caller does not want that plane
  BYTE** maskRows;
  // What the caller's rows are to hold before they are changed, where they do not hold it yet: the
  // source's picture, all of which is asked for. Empty otherwise.
  base::RowView lent = {};

  BYTE* Colour(int i) const {
    return colourRows ? colourRows[destY + i] + base::ColourOffset(destX) : nullptr;
  }
  BYTE* Mask(int i) const { return maskRows ? maskRows[destY + i] + destX : nullptr; }
  // The colours of row i ahead of its change.
  const BYTE* GivenColour(int i) const { return lent.colour ? lent.colour[i] : Colour(i); }

  // The part of it that lies in a picture of this size; width and height are 0 where none does.
  FXBOX_API PullRectangle CutTo(int pictureWidth, int pictureHeight) const;

  // Calls change(colour, mask, i) for each row, with an abort test before each. A row that is lent
  // is copied just ahead. False when it stopped. Workers share the rows, so that `change` may run
  // for several at once; without them they come from the last to the first. A width below 1 has
  // rows, but nothing in them to change.
  template <class Change>
  bool ChangeRows(const std::atomic<bool>& abort, const Change& change) const {
    return base::ForEachBand(height, base::RowsPerBand(width), [&](int first, int end) {
      return ForBand(first, end, abort, [&](int i) {
        Fetch(i, first);
        change(Colour(i), Mask(i), i);
      });
    });
  }

  // The same for who changes each pixel by itself: calls change(colour, mask, pixels) for pieces of
  // the rows. The mask may be null where there are colours.
  template <class Change>
  bool ChangePixels(const std::atomic<bool>& abort, const Change& change) const {
    return base::ForEachBand(height, base::RowsPerBand(width), [&](int first, int end) {
      return ChangePixels(first, end, abort, change);
    });
  }
  // In the rows `first` to `end` - 1, on the calling thread, from the last to the first.
  template <class Change>
  bool ChangePixels(int first, int end, const std::atomic<bool>& abort,
                    const Change& change) const {
    return ForBand(first, end, abort, [&](int i) {
      base::ForPieces(Way(i), width, NextWay(i, first), [&](const base::RowWay& piece, int pixels) {
        CopyLent(piece, pixels);
        change(piece.toColour, piece.toMask, pixels);
      });
    });
  }

  // Copies all that is lent, for who changes nothing. False when it stopped.
  bool BringLent(const std::atomic<bool>& abort) const {
    return !lent.colour || ChangeRows(abort, [](BYTE*, BYTE*, int) {});
  }
  // Copies a row that is lent, both planes.
  FXBOX_API void CopyLent(int i, const base::RowWriter& writer) const;

  // Asks for all of a mask row: for a change that takes long for a row, or takes it from both ends.
  FXBOX_API void AnnounceMask(int i) const;

 private:
  template <class Work>
  bool ForBand(int first, int end, const std::atomic<bool>& abort, const Work& work) const {
    for (int i = end - 1; i >= first; --i) {
      if (abort) return false;
      if (width > 0) work(i);
    }
    return true;
  }
  // Masks that are neither copied nor changed are left out.
  FXBOX_API base::RowWay Way(int i) const;
  // Of the row that follows on row i in a band.
  base::RowWay NextWay(int i, int first) const { return i > first ? Way(i - 1) : base::RowWay{}; }
  // Has row i of a band in the caller's rows, and asks for the front of the one that follows.
  FXBOX_API void Fetch(int i, int first) const;
  static void CopyLent(const base::RowWay& piece, int pixels) {
    if (!piece.colour) return;
    base::CopyBytes(piece.toColour, piece.colour, base::ColourBytes(pixels));
    base::CopyBytes(piece.toMask, piece.mask, static_cast<std::size_t>(pixels));
  }
};

// What a shape does when its source's pull answers something else than 0.
enum class SourceResult {
  Ignored,
  StopsAboveZero,   // the pull ends with 1; an error of the source is passed over
  StopsUnlessZero,  // the pull ends with 1
  EndsUnlessZero,   // the pull ends with that answer
};

// Where filters that change rows in place have them from.
class FXBOX_API InPlaceFilter : public CPdibFilter {
 protected:
  using CPdibFilter::CPdibFilter;

  // Has a host lend its picture for `rows.lent`, where the rows are to hold all of it: workers copy
  // it more quickly than the host. A filter computes straight into the rows and is not asked to
  // lend. False where the rows have to be pulled.
  bool BorrowWhole(PullRectangle& rows);
  // Has the source lend or fill the rows. Gives 0, or the answer that ends the pull.
  HRESULT Fill(PullRectangle& rows, SourceResult rule);

 private:
  bool IsWhole(const PullRectangle& rows) const;
};

// Derive from RowFilter when a pixel's result depends on that pixel alone. The shape pulls the
// source with the same rectangle and changes the rows that come back, in place, from the last to
// the first, with an abort test before each; it allocates nothing. The host's workers share the
// rows.
class FXBOX_API RowFilter : public InPlaceFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;

 protected:
  struct Policy {
    SourceResult sourceResult = SourceResult::Ignored;
    bool abortMarksChange = false;  // an abort sets `selfChanged`
    bool passesPixels = false;      // a single pixel is left as the source gives it
  };
  RowFilter(const FilterClass& row, Policy rules) : InPlaceFilter(row), policy(rules) {}

  // Changes `width` pixels of a row, at least one, while the pull holds the state: a Commit comes
  // between two rows, never within one. Runs on several threads at once, with a row for each, and
  // must not take the state itself. The plane that the class works on is never null; the other one
  // may be.
  virtual void ChangeRow(BYTE* colour, BYTE* mask, int width) = 0;
  // Whether it works on the mask rows, not on the colour rows.
  virtual bool WorksOnMask() const { return false; }

  std::optional<RowReach> Reach() final { return RowReach(); }

 private:
  bool ChangeAll(const PullRectangle& rows);

  const Policy policy;
};

// Derive from RectangleFilter when the result depends on the rectangle that is asked for:
// statistics of the request, neighbours within it. The shape pulls the source with the same
// rectangle and hands all of it to the class at once.
class FXBOX_API RectangleFilter : public InPlaceFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;

 protected:
  struct Policy {
    SourceResult sourceResult = SourceResult::StopsAboveZero;
    bool abortMarksChange = true;  // an abort sets `selfChanged`
    // The class may find rows that are lent, and not in the caller's yet: it goes over all of them
    // with ChangeRows, ChangePixels or BringLent.
    bool takesLent = false;
  };
  explicit RectangleFilter(const FilterClass& row) : RectangleFilter(row, {}) {}
  RectangleFilter(const FilterClass& row, Policy rules) : InPlaceFilter(row), policy(rules) {}

  // Changes the rectangle in place, testing `abort` once a row; false when it stopped. Works with
  // copies of the parameters (`Active`, `Pending`), as they may change meanwhile.
  virtual bool ChangeRectangle(const PullRectangle& rectangle) = 0;
  // Whether the class is lent mask rows when the caller has colour rows alone.
  virtual bool NeedsMask() const { return false; }

 private:
  bool TakeLent(PullRectangle& rows);

  const Policy policy;
};

// Derive from WholePictureFilter when no row can be given before the whole picture was seen. On the
// first pull after a change the class reads the source's picture, which is lent by a source that
// can and copied to a picture of our own otherwise, and prepares what answers come from; later
// pulls are answered from that. A request is cut to the picture.
class FXBOX_API WholePictureFilter : public CPdibFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;

 protected:
  // What answers are made of: rows of the result, which are finished (FinishRow) and copied, or the
  // rows of the source's picture, which the class changes on their way out (ChangePiece).
  enum class Cache { OutputPicture, InputPicture };
  enum class ChangeFlags {
    ClearedAtEnd,   // stay set until a pull is complete; a failed rebuild sets `selfChanged`
    ClearedAtStart  // go when the pull begins; a failed rebuild sets `sourceChanged` and restores
                    // the rest
  };
  struct Policy {
    Cache cache = Cache::OutputPicture;
    ChangeFlags flags = ChangeFlags::ClearedAtEnd;
    bool abortMarksChange = false;  // an abort while rows are given out sets `selfChanged`
    // A failed rebuild gives out what there is, and the pull counts as stopped all the same.
    bool givesOutFailures = false;
    // Whatever the source answers, the class goes on with what came.
    bool takesWhatComes = false;
  };
  WholePictureFilter(const FilterClass& row, Policy rules) : CPdibFilter(row), policy(rules) {}

  // While this holds, which is asked with the state held, rows go from the source to the caller as
  // they are, and no picture is kept.
  virtual bool PassesThrough() { return false; }
  // For a class whose answer to a request depends on the request, an override gives nothing.
  std::optional<RowReach> Reach() override { return RowReach{0, !PassesNow()}; }
  // Whether the source's answer counts as 0 while rows pass through.
  virtual bool PassesFailuresOver() const { return false; }
  // Whether an abort before rows are given out ends the pull with 0.
  virtual bool AbortAnswersDone() const { return false; }
  // For a class that keeps more than the two pictures.
  virtual void DropPictures();
  // Copies what Rebuild works with, at the moment of `pulled` and `result` and with the state held.
  virtual void TakeParameters() {}
  // Prepares what answers come from, TakeInput and EnsurePictures included; false when it could not
  // (abort, failed source, no memory). Works with the sizes of `pulled` and `result`, and with
  // copies of the parameters.
  virtual bool Rebuild() = 0;
  // A Rebuild that sets this leaves the rows of the result open: they are computed straight into
  // the rows of a caller who asks for all of them, and into the picture that answers from then on
  // as soon as somebody asks for a part.
  bool isOpen = false;
  // Computes all rows of the result; false when it could not.
  virtual bool ComputeRows(const base::WritableRows& /*to*/) { return false; }
  // Ends that. Unless a class knows a way with less memory, the rows are computed into
  // `outputPicture`, and `inputPicture` goes. False when it could not.
  virtual bool Close();
  // Before the rows of each pull are given out, with the request as it came, not cut.
  virtual void PrepareCopy(const PullRectangle&) {}
  // Finishes a row of the result, once, before anything of it is given out: for what need not be
  // done for rows that nobody asks for. Like ChangePiece it runs on several threads at once, with a
  // row for each.
  virtual void FinishRow(int /*row*/) {}
  // Writes a piece of a row of the result, of at most base::kPiecePixels, from the source's
  // picture. Either target may be null. For a class with an input picture.
  virtual void ChangePiece(const base::RowWay& /*piece*/, int /*pixels*/) {}

  // Copies of `input` and `output` from the start of the last rebuild: Prepare may change those in
  // the middle of a pull. The picture that holds the result may be larger than `result` says.
  PictureInfo pulled;
  PictureInfo result;
  int frame = 0;  // pixels around the result in the picture that holds it

  // Has the source's picture in `given`: what the source lends for the pull, or else
  // `inputPicture`, cleared and filled. False when the source did not deliver all; of a class that
  // takes what comes, when an abort left the picture uncleared. For Rebuild; a later pull that
  // needs what was lent to a former one finds it taken again.
  virtual bool TakeInput() { return TakeInputOfSize(pulled.width, pulled.height); }
  // With room for a picture of this size, where that is another one than the source's.
  bool TakeInputOfSize(int width, int height);
  // For who has read it and needs it no more.
  void DropInput();
  // To be read, for Rebuild and ComputeRows. It has the size that was taken, also where
  // our own picture is larger.
  base::RowView given;
  bool isGivenWhole = false;  // whether the source delivered all of it
  // Whether `given` belongs to the source, and lasts for the pull alone.
  bool IsLent() const { return givenIsLent; }

  // Has the source lend its picture for `given`. False when it does not.
  bool BorrowInput();
  // The same where all rows can be computed from it as they are asked for: `isOpen` then.
  bool OpenLent();
  // A part of the source's picture in the result: `width` pixels of `height` rows from (sourceX,
  // sourceY) on lie at (x, y), all of them in both. A width or height below 1 is no part.
  struct Placed {
    int x, y, sourceX, sourceY, width, height;
  };
  // Pulls it into `outputPicture`, which gets the result's size and is cleared before. What the
  // source answers does not count. False without memory, or when an abort stopped the clearing.
  bool PullPart(const Placed& part);
  // Fills row y of the result from `given`, with nothing around the part. Colours may be null.
  void PlaceGiven(const Placed& part, int y, BYTE* colour, BYTE* mask,
                  const base::RowWriter& writer) const;
  // Clears `picture`, then pulls the source's whole input into it with one call, its corner at (x,
  // y). Answers as TakeInput does.
  bool PullInput(MemoryPicture& picture, int x = 0, int y = 0);
  // The same without clearing. Gives the source's answer.
  HRESULT PullInto(MemoryPicture& picture, int x, int y);
  // Colour 0 and mask 255, with abort tests; false when one stopped it.
  bool Clear(MemoryPicture& picture);
  // Calls work(y) for the rows `first` to first + count - 1, shared by the workers, with an abort
  // test before each, from the last to the first. False when it stopped.
  template <class Work>
  bool ForRows(int first, int count, const Work& work) const {
    return base::ForEachBand(count, base::RowsPerBand(result.width), [&](int begin, int end) {
      for (int i = end - 1; i >= begin; --i) {
        if (abort) return false;
        work(first + i);
      }
      return true;
    });
  }

 private:
  std::optional<base::RowView> Lend(int width, int height) final;
  bool HoldsAnswer() const;
  base::RowView Answer() const;
  bool PassesNow();
  bool TakeState();
  HRESULT PassOn(const PullRectangle& rectangle);
  bool BringUpToDate();
  bool RebuildAll();
  bool RetakeInput();
  bool CloseAll();
  bool HoldsResult() const;
  bool GiveOut(const PullRectangle& rectangle);
  bool IsAll(const PullRectangle& rectangle) const;
  bool CopyOut(const PullRectangle& cut);
  base::RowWay WayOut(const PullRectangle& cut, int i) const;
  void CopyRow(const PullRectangle& cut, int i, bool hasNext, const base::RowWriter& writer);
  void FinishRows(int first, int end);

  const Policy policy;
  bool givenIsLent = false;
  CroppedRows lentRows;          // without the frame
  bool hasFailedToLend = false;  // the pull that comes instead has failed already
  std::vector<char> finished;    // by row; no bits, as threads finish rows beside each other
};

// Adds the parameters to a shape: `Parameters` is the struct that core/ParameterText.h describes.
// SetParameter touches pending alone, from any thread; Commit is the only writer of active. What
// does not hold the state works with copies: `Active()`, `Pending()`.
template <class Shape, class Parameters>
class ParameterFilter : public Shape {
 public:
  bool IsDirty() override {
    const auto held = this->HoldState();
    return ParametersDiffer(pending, committed);
  }
  void Commit() override { CommitParameters(); }

  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int) override {
    return platform::Guard([&] {
      const auto held = this->HoldState();
      if (text) ReadText(text);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override {
    return Print(pending, buffer, size);
  }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override {
    return Print(active, buffer, size);
  }

  static std::vector<ParameterDescription> Describe() { return DescribeParameters<Parameters>(); }

 protected:
  using Shape::Shape;

  // Both with the state held.
  virtual void ReadText(const char* text) { ReadParameters(text, pending); }
  virtual void PrintText(const Parameters& parameters, char* buffer, int size) {
    CopyParameterText(PrintParameters(parameters), Parameters::kLeastBuffer, buffer, size);
  }

  // For a pull that works by pending parameters: all of one moment.
  Parameters Pending() const {
    const auto held = this->HoldState();
    return pending;
  }

  Parameters Active() const {
    const auto held = this->HoldState();
    return active;
  }

  // Makes the pending parameters active and gives them. A Commit that changes the active ones after
  // that makes nothing dirty: what was committed is remembered.
  Parameters CommitParameters() {
    const auto held = this->HoldState();
    return active = committed = pending;
  }

  // For a Commit that changes what is pending, too. Gives the result.
  template <class Change>
  Parameters ChangePending(Change change) {
    const auto held = this->HoldState();
    change(pending);
    return pending;
  }

  Parameters pending;
  Parameters active = Parameters::ActiveStart();

 private:
  HRESULT Print(const Parameters& parameters, char* buffer, int size) {
    return platform::Guard([&] {
      const auto held = this->HoldState();
      PrintText(parameters, buffer, size);
      return S_OK;
    });
  }

  Parameters committed = active;  // what was pending at the last Commit
};
