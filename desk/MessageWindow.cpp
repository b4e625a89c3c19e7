#include "desk/MessageWindow.h"

#include <algorithm>

#include "desk/Words.h"

namespace desk {

void MessageWindow::Open(void* owner) {
  toolkit::WindowSpec spec;
  spec.title = messages.size() == 1 ? Words("DESK_MESSAGES_ONE")
                                    : Words("DESK_MESSAGES_MANY", std::to_string(messages.size()));
  spec.owner = owner;
  if (CreateModeless(spec)) Show();
}

void MessageWindow::Build() {
  const auto unit = [this](int units) { return System().Scaled(units); };
  const int pad = unit(12), width = unit(640), height = unit(320);
  auto& list = Make<CZNListBox>(Words("DESK_MESSAGES"), messages);
  list.Place({pad, pad, width, height});
  auto& close = Make<CZNButton>(Words("DESK_CLOSE"), CZNButton::Kind::Default);
  const toolkit::Size size = close.Preferred(Words("DESK_CLOSE"));
  close.Place({pad + width - std::max(size.width, unit(90)), pad + height + pad,
               std::max(size.width, unit(90)), size.height});
  close.onPress = [this] { Hide(); };
  Native()->SetClientSize({width + 2 * pad, height + size.height + 3 * pad});
  close.Focus();
}

}  // namespace desk
