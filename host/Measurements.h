// What the filters of a chain measure: taken on one size of a picture, repeated on another.
//
// Some filters measure the whole picture that they are given, and a preview of it gives other
// numbers. They print them on demand, in a text that makes another filter use them.
#pragma once

#include <string>
#include <vector>

#include "host/Pipeline.h"

namespace host {

// For each filter of a chain the text that repeats its measurement; empty for one that has none.
using Measurements = std::vector<std::string>;

// Whether a class prints what it measured, and the text of a new filter that does; else empty.
FXBOX_API std::string MeasuringText(IAnimFilterCreator& creator, const std::string& progId);

// Tells the filters that measure to print it. False when the chain has no such filter.
FXBOX_API bool StartMeasuring(const Pipeline& pipeline, IAnimFilterCreator& creator);
// What they measured in a pull of the whole result.
FXBOX_API Measurements TakeMeasurements(const Pipeline& pipeline);
// Gives it to the filters of the same chain on another picture, ahead of Settle.
FXBOX_API void RepeatMeasurements(const Pipeline& pipeline, const Measurements& measurements);

}  // namespace host
