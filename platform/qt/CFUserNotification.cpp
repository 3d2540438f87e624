#include "platform/CFUserNotification.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include "platform/qt/WidgetPeer.h"

namespace {

/// Returns the window that the user works with, or null when none is shown.
QWidget* shownWindow() {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr)
        return nullptr;
    if (QWidget* active = QApplication::activeWindow())
        return active;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible())
            return window;
    return nullptr;
}

}  // namespace

int CFUserNotificationDisplayAlert(double timeout, CFOptionFlags flags, const std::string& header,
                                   const std::string& message,
                                   const std::string& defaultButtonTitle,
                                   const std::optional<std::string>& alternateButtonTitle,
                                   CFOptionFlags& responseFlags) {
    QWidget* const window = shownWindow();
    if (window == nullptr || timeout != 0 || flags != kCFUserNotificationNoteAlertLevel)
        return 1;
    QMessageBox box(window);
    box.setIcon(QMessageBox::Information);
    box.setWindowTitle(platform::fromUtf8(header));
    box.setTextFormat(Qt::PlainText);
    box.setText(platform::fromUtf8(message));
    QPushButton* const usual =
        box.addButton(platform::fromUtf8(defaultButtonTitle), QMessageBox::AcceptRole);
    QPushButton* alternate = nullptr;
    if (alternateButtonTitle)
        alternate =
            box.addButton(platform::fromUtf8(*alternateButtonTitle), QMessageBox::RejectRole);
    box.setDefaultButton(usual);
    box.setEscapeButton(alternate != nullptr ? alternate : usual);
    box.exec();
    if (box.clickedButton() == nullptr)
        responseFlags = kCFUserNotificationCancelResponse;
    else if (box.clickedButton() == alternate)
        responseFlags = kCFUserNotificationAlternateResponse;
    else
        responseFlags = kCFUserNotificationDefaultResponse;
    return 0;
}
