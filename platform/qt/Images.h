#pragma once

#include <QIcon>
#include <string_view>

namespace platform {

/// Returns the application's image called `name`, with the rendering for screens of twice the
/// density; a null icon when there is no such image.
QIcon loadImage(std::string_view name);

}  // namespace platform
