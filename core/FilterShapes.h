// The three shapes of a filter, by how much of the picture it must see at once.
#pragma once

#include "base/Rows.h"
#include "core/PdibFilter.h"
#include "platform/component/Guard.h"

// A rectangle of a pull as a filter works on it: row i of the rectangle starts at Colour(i),
// Mask(i).
struct PullRectangle {
  int destX, destY, srcX, srcY, width, height;
  BYTE** colourRows;  // either array may be null when the caller does not want that plane
  BYTE** maskRows;

  BYTE* Colour(int i) const {
    return colourRows ? colourRows[destY + i] + base::ColourOffset(destX) : nullptr;
  }
  BYTE* Mask(int i) const { return maskRows ? maskRows[destY + i] + destX : nullptr; }
};

// Derive from RowFilter when a pixel's result depends on that pixel alone. The shape pulls the
// source with the same rectangle and changes the rows that come back, in place, from the last to
// the first, with an abort test before each; it allocates nothing and copies nothing.
class FXBOX_API RowFilter : public CPdibFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;
  HRESULT STDMETHODCALLTYPE ReadPixel(BYTE* pixel) override;

 protected:
  struct Policy {
    bool stopsWithSource = false;   // gives 1 at once when the source's result is above 0
    bool abortMarksChange = false;  // an abort sets `selfChanged`
    bool worksOnMask = false;       // needs the mask rows, not the colour rows
  };
  RowFilter(const FilterClass& row, Policy rules) : CPdibFilter(row), policy(rules) {}

  // Changes `width` pixels, at least one. The plane that the policy names is never null.
  virtual void ChangeRow(BYTE* colour, BYTE* mask, int width) = 0;

 private:
  const Policy policy;
};

// Derive from RectangleFilter when the result depends on the rectangle that is asked for:
// statistics of the request, neighbours within it. The shape pulls the source with the same
// rectangle, hands all of it to the class at once, and stops with the source.
class FXBOX_API RectangleFilter : public CPdibFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;

 protected:
  using CPdibFilter::CPdibFilter;

  // Changes the rectangle in place, testing `abort` once a row; false when it stopped. An abort
  // sets `selfChanged`.
  virtual bool ChangeRectangle(const PullRectangle& rectangle) = 0;
};

// Derive from WholePictureFilter when no row can be given before the whole picture was seen. On the
// first pull after a change the class fills the private picture that answers are copied from; all
// later pulls are copies. A request is cut to the picture.
class FXBOX_API WholePictureFilter : public CPdibFilter {
 public:
  HRESULT STDMETHODCALLTYPE ReadRows(int destX, int destY, int srcX, int srcY, int width,
                                     int height, BYTE** colourRows, BYTE** maskRows) final;

 protected:
  enum class Cache { OutputPicture, InputPicture };
  enum class ChangeFlags {
    ClearedAtEnd,   // stay set until a pull is complete; an abort sets `selfChanged`
    ClearedAtStart  // go when the pull begins; a failed rebuild sets `sourceChanged` and restores
                    // the rest
  };
  struct Policy {
    Cache cache = Cache::OutputPicture;
    ChangeFlags flags = ChangeFlags::ClearedAtEnd;
  };
  WholePictureFilter(const FilterClass& row, Policy rules) : CPdibFilter(row), policy(rules) {}

  // Fills the picture that answers come from, EnsurePictures included; false when it could not
  // (abort, failed source, no memory). Works with the sizes of `pulled` and `result`.
  virtual bool Rebuild() = 0;
  // Gives out a part of one row of the result. Either target may be null.
  virtual void CopyRow(const BYTE* colour, const BYTE* mask, BYTE* toColour, BYTE* toMask,
                       int width);

  // Copies of `input` and `output` from the start of the last rebuild: Prepare may change those in
  // the middle of a pull. The picture that holds the result may be larger than `result` says.
  PictureInfo pulled;
  PictureInfo result;

  // Clears `picture` and pulls the source's whole input into it with one call, its corner at (x,
  // y). False when the pull stopped.
  bool PullInput(MemoryPicture& picture, int x = 0, int y = 0);

 private:
  const MemoryPicture* Result() const {
    return policy.cache == Cache::OutputPicture ? outputPicture.get() : inputPicture.get();
  }
  bool BringUpToDate();
  bool CopyOut(PullRectangle rectangle);

  const Policy policy;
};

// Adds the parameters to a shape: `Parameters` is the struct that core/ParameterText.h describes.
// SetParameter touches pending alone; Commit is the only writer of active.
template <class Shape, class Parameters>
class ParameterFilter : public Shape {
 public:
  bool IsDirty() override { return ParametersDiffer(pending, active); }
  void Commit() override { active = pending; }

  HRESULT STDMETHODCALLTYPE SetParameter(const char* text, int) override {
    return platform::Guard([&] {
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

  virtual void ReadText(const char* text) { ReadParameters(text, pending); }
  virtual void PrintText(const Parameters& parameters, char* buffer, int size) {
    CopyParameterText(PrintParameters(parameters), Parameters::kLeastBuffer, buffer, size);
  }

  Parameters pending;
  Parameters active = Parameters::ActiveStart();

 private:
  HRESULT Print(const Parameters& parameters, char* buffer, int size) {
    return platform::Guard([&] {
      PrintText(parameters, buffer, size);
      return S_OK;
    });
  }
};
