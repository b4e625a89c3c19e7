// What the filters with a 3 x 3 convolution share: the pull, and the versions of their texts.
#pragma once

#include <atomic>
#include <string>

#include "core/FilterShapes.h"
#include "core/ParameterReaders.h"
#include "filters/pixels/Convolution.h"

// The whole picture is convolved into the rows of a caller who asks for all of them. As soon as
// somebody asks for a part it is convolved once, a copy of our own in place. What lies outside the
// picture or is masked out counts as if it had the colour of the pixel beside it.
class ConvolutionFilter : public WholePictureFilter {
 protected:
  ConvolutionFilter(const FilterClass& row, const kernels::KernelTable& full)
      : WholePictureFilter(row, {.takesWhatComes = true}), table(full) {}

  // In percent of the full kernel. Called with the state held.
  virtual double Strength() const = 0;

 private:
  void TakeParameters() override { usedStrength = Strength(); }
  bool TakeInput() override;
  bool Rebuild() override;
  bool ComputeRows(const base::WritableRows& to) override;
  bool Close() override;
  base::WritableRows Framed() const {
    return outputPicture->Rows(result.width + 2, result.height + 2);
  }
  kernels::PictureArea Inner() const { return {frame, frame, result.width, result.height}; }

  const kernels::KernelTable& table;
  double usedStrength = 0;  // of the picture in the cache
};

// Adds the key `Version`: in version 2 the strength is that of the full picture and shrinks with
// the square of the zoom. A text without the key is of version 1; dialogs write version 3, which
// looks at no zoom either. The version takes effect at once, without Commit, and is no change.
template <class Parameters>
class VersionedConvolutionFilter : public ParameterFilter<ConvolutionFilter, Parameters> {
 public:
  // From version 2 on, what is pending.
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override {
    return version >= 2 ? Base::GetParameter(buffer, size) : Base::GetActiveParameter(buffer, size);
  }

 protected:
  using Base = ParameterFilter<ConvolutionFilter, Parameters>;
  using Base::Base;

 private:
  void ReadText(const char* text) override {
    Base::ReadText(text);
    version = static_cast<std::uint8_t>(ParamLong(text, 1, "Version="));
  }
  void PrintText(const Parameters& parameters, char* buffer, int size) override {
    std::string text = PrintParameters(parameters);
    if (version >= 2) text.append(",Version=").append(std::to_string(version));
    CopyParameterText(text, Parameters::kLeastBuffer, buffer, size);
  }
  double Strength() const override {
    const double strength = this->active.strength;
    return version == 2 ? strength * this->zoom * this->zoom : strength;
  }

  std::atomic<std::uint8_t> version{1};
};
