#pragma once

class QLabel;
class QWidget;

namespace platform {

/// Lets assistive technology work the buttons that are made from now on as the user does.
void installAccessibility();

/// Tells assistive technology what the lists of `window` are called.
void nameLists(QWidget& window);

/// Lets assistive technology say a text that has just changed, wherever its user is. Before Qt 6.8
/// it hears of the change all the same, and says it or not, as it sees fit.
void announce(QLabel& label);

}  // namespace platform
