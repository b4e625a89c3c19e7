// Picture formats whose libraries lie in modules, which are loaded with the first picture of each.
#pragma once

#include "imageio/Decoder.h"
#include "imageio/Encoder.h"

namespace imageio {

bool IsModuleFormat(Format format);

// Both throw an ImageError that names the format, and the module where it cannot be loaded.
std::unique_ptr<Decoder> OpenModuleFormat(Source& source, Format format);
bool WriteModuleFormat(Output& output, Format format, const Picture& picture,
                       const WriteOptions& options, const Progress& progress);

// Whether a TIFF file holds a camera's raw picture, of which its own directory has a small preview.
bool IsRawTiff(Source& file);

}  // namespace imageio
