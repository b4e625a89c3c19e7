// The keys of the texts in PNG files that are known here.
#pragma once

namespace imageio {

inline constexpr char kXmpKey[] = "XML:com.adobe.xmp";
inline constexpr char kIptcKey[] = "Raw profile type iptc";

}  // namespace imageio
