#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// Returns `bytes` as valid UTF-8: each byte that starts no valid sequence becomes U+FFFD.
std::string validUtf8(std::string_view bytes);

/// Returns `bytes` as valid UTF-8 on one line: control characters become spaces as well, and so do
/// line breaks of all kinds and marks that change the direction of the text around them.
std::string printableUtf8(std::string_view bytes);

/// Returns the longest start of the valid UTF-8 `text` that has at most `maximum` bytes and ends
/// between two characters.
std::string_view utf8Prefix(std::string_view text, std::size_t maximum);

/// Returns the longest end of the valid UTF-8 `text` that has at most `maximum` bytes and starts
/// between two characters.
std::string_view utf8Suffix(std::string_view text, std::size_t maximum);

}  // namespace platform
