// Windows in a build without X: no display is ever present, so windows are not made and no
// window is active. Everything else behaves as it does on a machine without a display.
#include "ActiveWindow.h"
#include "X11Window.h"

namespace carbon {

std::unique_ptr<X11Window> X11Window::Create(const Rect&, Style, Outcome& outOutcome)
{
    outOutcome = Outcome::NoDisplay;
    return nullptr;
}

// Never reached: Create makes no window here.
X11Window::~X11Window() = default;
void X11Window::Map() {}
void X11Window::Unmap() {}

std::optional<pid_t> ActiveWindowOwner() { return std::nullopt; }

}  // namespace carbon
