#pragma once

#include <optional>
#include <string>

/// Bits that describe an alert or the user's answer to it.
using CFOptionFlags = unsigned long;

/// The one kind of alert: a remark or a question, with the sign for that.
inline constexpr CFOptionFlags kCFUserNotificationNoteAlertLevel = 1;

/// The user's answers to an alert.
inline constexpr CFOptionFlags kCFUserNotificationDefaultResponse = 0;
inline constexpr CFOptionFlags kCFUserNotificationAlternateResponse = 1;
inline constexpr CFOptionFlags kCFUserNotificationCancelResponse = 3;

/// Shows a modal box titled `header` with `message` as plain text, and blocks until the user has
/// answered. Return presses the default button; Escape, or closing the box, presses the alternate
/// one, or the default one when it is alone. A box that goes away unanswered, with the application,
/// counts as "cancel". Returns 0 and sets `responseFlags`. A box that can't be shown returns
/// non-zero and leaves `responseFlags` alone: without a window, with a time limit (`timeout` is 0
/// seconds for none), or of another kind (`flags`). Main thread. Implemented by the toolkit's back
/// end.
int CFUserNotificationDisplayAlert(double timeout, CFOptionFlags flags, const std::string& header,
                                   const std::string& message,
                                   const std::string& defaultButtonTitle,
                                   const std::optional<std::string>& alternateButtonTitle,
                                   CFOptionFlags& responseFlags);
