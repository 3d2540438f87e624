#pragma once

#include <QString>
#include <string_view>

namespace platform {

/// Returns where the application's resources hold the image called `name`.
QString imagePath(std::string_view name);

}  // namespace platform
