#include "pages/vendor/ShowAlert.h"

#include <optional>
#include <string>

#include "platform/CFUserNotification.h"

int ShowAlert(const char* title, const char* message, int withCancel) {
    std::optional<std::string> cancel;
    if (withCancel == 1)
        cancel = "Cancel";
    CFOptionFlags response = kCFUserNotificationCancelResponse;
    const int status = CFUserNotificationDisplayAlert(0, kCFUserNotificationNoteAlertLevel, title,
                                                      message, "OK", cancel, response);
    return status == 0 && response == kCFUserNotificationDefaultResponse ? 1 : 0;
}
