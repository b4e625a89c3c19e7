#include "desk/Views.h"

#include <algorithm>
#include <cmath>

#include "base/CodePage.h"
#include "desk/Words.h"

namespace desk {
namespace {

using toolkit::MouseAction;

constexpr std::size_t kMostSummary = 3;
constexpr int kSampleStep = 2;

std::string Trimmed(const std::string& text) {
  const auto from = text.find_first_not_of(" \t\r\n");
  const auto last = text.find_last_not_of(" \t\r\n");
  return from == std::string::npos ? "" : text.substr(from, last - from + 1);
}

// "050" is "50", "-0.500" is "-0.5"; what is no number stays.
std::string PlainNumber(const std::string& text) {
  if (text.empty() || text.find_first_not_of("+-.0123456789") != std::string::npos) return text;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", std::strtod(text.c_str(), nullptr));
  std::string plain = buffer;
  std::replace(plain.begin(), plain.end(), ',', '.');
  return plain;
}

}  // namespace

std::string ParameterSummary(const ChainItem& item) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  while (from <= item.parameters.size() && parts.size() < kMostSummary) {
    const std::size_t end = std::min(item.parameters.find(',', from), item.parameters.size());
    const std::string part = item.parameters.substr(from, end - from);
    const std::size_t equals = part.find('=');
    const std::string value =
        equals == std::string::npos ? "" : PlainNumber(part.substr(equals + 1));
    if (!value.empty() && value != "0" && value.size() < 16 && !part.starts_with("Version")) {
      parts.push_back(Trimmed(part.substr(0, equals)) + " " + value);
    }
    from = end + 1;
  }
  std::string summary;
  for (const std::string& part : parts) summary += (summary.empty() ? "" : ", ") + part;
  if (summary.empty()) return Words("DESK_NO_CHANGE");
  return base::ToUtf8(summary);
}

// --- HistogramView

HistogramView::HistogramView(CZNDialog& dialog)
    : CZNCanvas(dialog, Words("DESK_HISTOGRAM"), toolkit::CanvasRole::Figure) {}

void HistogramView::Show(const PicturePointer& picture) {
  counts = {};
  most = 0;
  for (int y = 0; picture && y < picture->Height(); y += kSampleStep) {
    const BYTE* const colour = picture->ColourRows()[y];
    const BYTE* const mask = picture->MaskRows()[y];
    for (int x = 0; x < picture->Width(); x += kSampleStep) {
      if (mask[x] == 255) continue;
      for (std::size_t i = 0; i < 3; ++i) ++counts[i][colour[3 * x + static_cast<int>(i)]];
    }
  }
  // The ends would make everything between them small.
  for (const auto& channel : counts) {
    most = std::max(most, *std::max_element(channel.begin() + 1, channel.end() - 1));
  }
  Redraw();
}

void HistogramView::HandlePaint(toolkit::Painter& painter) {
  const toolkit::Look look = CZNTheme::Colours();
  const auto [width, height] = painter.Area();
  painter.FillRect({0, 0, width, height}, look.field);
  const toolkit::Colour colours[] = {{70, 120, 230}, {60, 170, 80}, {220, 70, 70}};
  for (std::size_t i = 0; i < 3 && most > 0; ++i) {
    std::vector<toolkit::Spot> line;
    for (int value = 0; value < 256; ++value) {
      const double share =
          std::min(1.0, static_cast<double>(counts[i][static_cast<std::size_t>(value)]) / most);
      line.push_back({(value + 0.5) * width / 256, height - 2 - share * (height - 6)});
    }
    painter.DrawLines(line, CZNTheme::Mixed(colours[i], look.field, 0.1), 1.5);
  }
  painter.FillRect({0, height - 1, width, 1}, look.line);
}

// --- Splitter

Splitter::Splitter(CZNDialog& dialog)
    : CZNCanvas(dialog, Words("DESK_BORDER"), toolkit::CanvasRole::Border) {}

void Splitter::HandleMouse(const toolkit::MouseEvent& event) {
  const toolkit::Point inWindow{Where().x + event.place.x, Where().y + event.place.y};
  if (event.action == MouseAction::Press) pressedAt = inWindow;
  if (event.action == MouseAction::Release) pressedAt.reset();
  if (event.action != MouseAction::Move || !pressedAt || event.button != 1) return;
  const int dx = inWindow.x - pressedAt->x;
  pressedAt = inWindow;
  if (dx != 0 && onMove) onMove(dx);
}

void Splitter::HandlePaint(toolkit::Painter& painter) {
  const toolkit::Look look = CZNTheme::Colours();
  const auto [width, height] = painter.Area();
  painter.FillRect({0, 0, width, height}, look.window);
  painter.FillRect({width / 2, 0, 1, height}, look.line);
}

// --- StatusLine

StatusLine::StatusLine(CZNDialog& dialog)
    : CZNCanvas(dialog, Words("DESK_STATUS"), toolkit::CanvasRole::Status) {}

void StatusLine::Show(const std::string& newText, const std::string& newRight) {
  if (text == newText && right == newRight) return;
  text = newText;
  right = newRight;
  SetValueText(text + " " + right);
  Redraw();
}

void StatusLine::HandlePaint(toolkit::Painter& painter) {
  const toolkit::Look look = CZNTheme::Colours();
  const auto [width, height] = painter.Area();
  const int unit = Dialog()->System().Scaled(1);
  painter.FillRect({0, 0, width, height}, look.window);
  painter.FillRect({0, 0, width, 1}, look.line);
  const int side = 10 * unit, rightWidth = std::min(width / 2, 420 * unit);
  const int leftWidth = width - 2 * side - (right.empty() ? 0 : rightWidth + side);
  painter.WriteLine({side, 1, leftWidth, height - 1}, text, look.text);
  painter.WriteLine({width - side - rightWidth, 1, rightWidth, height - 1}, right,
                    CZNTheme::Mixed(look.text, look.window, 0.25), toolkit::TextAlign::Right);
}

}  // namespace desk
