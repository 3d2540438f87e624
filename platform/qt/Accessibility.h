#pragma once

class QWidget;

namespace platform {

/// Lets assistive technology work the buttons that are made from now on as the user does.
void installAccessibility();

/// Tells assistive technology what the lists of `window` are called.
void nameLists(QWidget& window);

}  // namespace platform
