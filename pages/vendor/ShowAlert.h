#pragma once

/// Asks the user in a modal box with an "OK" button, and a "Cancel" button when `withCancel` is 1.
/// `title` and `message` are UTF-8. Blocks until the user answers. Returns 1 for "OK", 0 for
/// "Cancel" or when the box can't be shown.
int ShowAlert(const char* title, const char* message, int withCancel);
