#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Returns the text of the firmware label for the status of the version's read and the version
/// text, which may hold any bytes.
std::string versionLabel(std::int64_t readStatus, std::string_view version);
