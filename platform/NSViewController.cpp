#include "platform/NSViewController.h"

void NSViewController::setTitle(std::string_view title) {
    if (titleHandler_)
        titleHandler_(title);
}

void NSViewController::setTitleHandler(std::function<void(std::string_view)> handler) {
    titleHandler_ = std::move(handler);
}
