#include "toolkit/ZNMessage.h"

#include <algorithm>
#include <sstream>

#include "toolkit/ZNDialog.h"

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 8;

// Lines of text, an edit where one is wanted, and buttons; the modal result is the button from 1.
class Question final : public CZNDialog {
 public:
  Question(const std::string& text, const std::vector<std::string>& buttonTexts,
           const std::string* editStart)
      : captions(buttonTexts), start(editStart) {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
  }

  std::string Text() const { return edit ? edit->Text() : std::string(); }

 private:
  void Build() override {
    margin = System().Scaled(kMargin);
    gap = System().Scaled(kGap);
    width = start ? System().Scaled(260) : 0;
    y = margin;
    for (const std::string& line : lines) AddLine(line);
    if (start) AddEdit();
    AddButtons();
    Native()->SetClientSize({width + 2 * margin, y + margin});
  }

  void AddLine(const std::string& line) {
    auto& shown = Make<CZNStatic>(line);
    const toolkit::Size size = shown.Preferred(line);
    shown.Place({margin, y, size.width, size.height});
    width = std::max(width, size.width);
    y += size.height;
  }

  void AddEdit() {
    edit = &Make<CZNEdit>(lines.empty() ? std::string() : lines.front());
    edit->SetEditText(*start);
    const int height = edit->Preferred(*start).height;
    edit->Place({margin, y, width, height});
    edit->onEnter = [this] { EndModal(1); };
    y += height;
  }

  void AddButtons() {
    int x = margin;
    int height = 0;
    y += gap;
    for (std::size_t i = 0; i < captions.size(); ++i) {
      const auto kind = i == 0 ? CZNButton::Kind::Default : CZNButton::Kind::Push;
      auto& button = Make<CZNButton>(captions[i], kind);
      button.onPress = [this, result = static_cast<int>(i) + 1] { EndModal(result); };
      const toolkit::Size size = button.Preferred(captions[i]);
      button.Place({x, y, size.width, size.height});
      x += size.width + gap;
      height = std::max(height, size.height);
    }
    width = std::max(width, x - gap - margin);
    y += height;
  }

  std::vector<std::string> lines;
  std::vector<std::string> captions;
  const std::string* start;
  CZNEdit* edit = nullptr;
  int margin = 0, gap = 0, width = 0, y = 0;
};

}  // namespace

int ZNAskButton(const std::string& title, const std::string& text,
                const std::vector<std::string>& buttons, void* owner) {
  const int last = static_cast<int>(buttons.size()) - 1;
  Question question(text, buttons, nullptr);
  if (!question.CreateModeless({.title = title, .owner = owner})) return last;
  const int result = question.RunModal();
  return result ? result - 1 : last;
}

std::optional<std::string> ZNAskText(const std::string& title, const std::string& caption,
                                     const std::string& start, const std::string& ok,
                                     const std::string& cancel, void* owner) {
  Question question(caption, {ok, cancel}, &start);
  if (!question.CreateModeless({.title = title, .owner = owner}) || question.RunModal() != 1)
    return std::nullopt;
  return question.Text();
}
