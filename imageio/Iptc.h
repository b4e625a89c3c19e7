// IPTC records and the wrappings that picture files put around them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace imageio {

using IptcRecords = std::vector<std::uint8_t>;

// The name ahead of such data in a JPEG marker, with its end.
inline constexpr char kPhotoshopName[] = "Photoshop 3.0";

// The records in a run of image resources ("8BIM..."); empty where there are none.
IptcRecords IptcOfResources(const std::vector<std::uint8_t>& resources);
// A run of one resource.
std::vector<std::uint8_t> ResourcesOfIptc(const IptcRecords& records);

// The text form that PNG files hold: a name, a length and hexadecimal digits.
IptcRecords IptcOfText(std::string_view text);
std::string TextOfIptc(const IptcRecords& records);

}  // namespace imageio
