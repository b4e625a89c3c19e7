#include "desk/MessageWindow.h"

#include <algorithm>

namespace desk {

void MessageWindow::Open(void* owner) {
  toolkit::WindowSpec spec;
  spec.title = std::to_string(messages.size()) + (messages.size() == 1 ? " message" : " messages");
  spec.owner = owner;
  if (CreateModeless(spec)) Show();
}

void MessageWindow::Build() {
  const auto unit = [this](int units) { return System().Scaled(units); };
  const int pad = unit(12), width = unit(640), height = unit(320);
  auto& list = Make<CZNListBox>("Messages", messages);
  list.Place({pad, pad, width, height});
  auto& close = Make<CZNButton>("&Close", CZNButton::Kind::Default);
  const toolkit::Size size = close.Preferred("&Close");
  close.Place({pad + width - std::max(size.width, unit(90)), pad + height + pad,
               std::max(size.width, unit(90)), size.height});
  close.onPress = [this] { Hide(); };
  Native()->SetClientSize({width + 2 * pad, height + size.height + 3 * pad});
  close.Focus();
}

}  // namespace desk
