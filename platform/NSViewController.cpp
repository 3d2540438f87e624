#include "platform/NSViewController.h"

void NSViewController::setTitle(std::string_view title) {
    title_ = title;
    if (titleHandler_)
        titleHandler_(title_);
}

void NSViewController::setTitleHandler(std::function<void(const std::string&)> handler) {
    titleHandler_ = std::move(handler);
}
