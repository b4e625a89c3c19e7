#include "desk/PictureTools.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/FilterList.h"

namespace desk {
namespace {

constexpr int kMostClicks = 128;

std::string Item(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

struct EyeClick {
  double x, y, darkness, correction;
};

std::vector<EyeClick> ClicksOf(const std::string& parameters) {
  std::vector<EyeClick> clicks;
  const int count = static_cast<int>(NumberIn(parameters, "N", 0));
  for (int i = 1; i <= std::min(count, kMostClicks); ++i) {
    const std::string number = std::to_string(i);
    const auto value = [&](const char* key) { return NumberIn(parameters, key + number, 0); };
    clicks.push_back({value("X"), value("Y"), value("E"), value("F")});
  }
  return clicks;
}

std::string TextOfClicks(const std::vector<EyeClick>& clicks) {
  std::string text = "N=" + std::to_string(clicks.size());
  for (std::size_t i = 0; i < clicks.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    text +=
        ", X" + number + Item("=%.4f", clicks[i].x) + ", Y" + number + Item("=%.4f", clicks[i].y);
    text += ", E" + number + Item("=%.0f", clicks[i].darkness) + ", F" + number +
            Item("=%.0f", clicks[i].correction);
  }
  return text;
}

}  // namespace

PictureTool ToolOf(const std::string& progId) {
  if (progId == "ZNFilter.Crop.1") return PictureTool::Crop;
  return progId == "ZNFilter.RedEye.1" ? PictureTool::RedEye : PictureTool::None;
}

ChainItems ShownWith(const ChainItems& chain, int toolItem) {
  auto end = std::find_if(chain.begin(), chain.end(),
                          [&](const ChainItem& item) { return item.id == toolItem && item.isOn; });
  if (end == chain.end()) return chain;
  const PictureTool tool = ToolOf(end->progId);
  if (tool == PictureTool::None) return chain;
  if (tool == PictureTool::RedEye) ++end;
  return {chain.begin(), end};
}

double NumberIn(const std::string& parameters, const std::string& key, double otherwise) {
  for (std::size_t at = parameters.find(key + "="); at != std::string::npos;
       at = parameters.find(key + "=", at + 1)) {
    const bool begins = at == 0 || parameters[at - 1] == ',' || parameters[at - 1] == ' ';
    if (begins) return std::strtod(parameters.c_str() + at + key.size() + 1, nullptr);
  }
  return otherwise;
}

CropFrame CropOf(const std::string& parameters) {
  return {NumberIn(parameters, "LeftMargin", 0), NumberIn(parameters, "RightMargin", 1),
          NumberIn(parameters, "BottomMargin", 0), NumberIn(parameters, "TopMargin", 1)};
}

// The first of two values of a key counts.
std::string WithCrop(IAnimFilterCreator& creator, const ChainItem& item, const CropFrame& frame) {
  const std::string edges =
      Item("LeftMargin=%.4f", frame.left) + Item(",RightMargin=%.4f", frame.right) +
      Item(",BottomMargin=%.4f", frame.bottom) + Item(",TopMargin=%.4f", frame.top);
  return host::FilterTextBehind(creator, item.progId, edges + "," + item.parameters);
}

std::string WithClick(IAnimFilterCreator& creator, const ChainItem& item, double x, double y,
                      double reach) {
  std::vector<EyeClick> clicks = ClicksOf(item.parameters);
  const std::size_t gone = std::erase_if(
      clicks, [&](const EyeClick& click) { return std::hypot(click.x - x, click.y - y) <= reach; });
  if (gone == 0 && clicks.size() < kMostClicks) clicks.push_back({x, y, 0, 0});
  return host::FilterTextBehind(creator, item.progId, TextOfClicks(clicks));
}

}  // namespace desk
