#pragma once

class QWidget;

namespace platform {

/// Lets assistive technology name and work every control of `window`.
void makeAccessible(QWidget& window);

}  // namespace platform
