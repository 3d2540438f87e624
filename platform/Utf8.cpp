#include "platform/Utf8.h"

namespace platform {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Returns the length in bytes of the valid sequence at the start of `bytes`, or 0.
/// Overlong forms, surrogates and code points above U+10FFFF are not valid (RFC 3629).
std::size_t sequenceLength(std::string_view bytes) {
    const auto first = static_cast<unsigned char>(bytes.front());
    if (first < 0x80U)
        return 1;
    const std::size_t length = first >= 0xF0U ? 4 : first >= 0xE0U ? 3 : 2;
    if (first < 0xC2U || first > 0xF4U || bytes.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (!isContinuation(bytes[i]))
            return 0;
    const auto second = static_cast<unsigned char>(bytes[1]);
    const bool overlong = (first == 0xE0U && second < 0xA0U) || (first == 0xF0U && second < 0x90U);
    const bool surrogate = first == 0xEDU && second >= 0xA0U;
    const bool tooLarge = first == 0xF4U && second >= 0x90U;
    return overlong || surrogate || tooLarge ? 0 : length;
}

bool isControl(std::string_view sequence) {
    const auto first = static_cast<unsigned char>(sequence[0]);
    const bool c1 = first == 0xC2U && static_cast<unsigned char>(sequence[1]) < 0xA0U;
    return first < 0x20U || first == 0x7FU || c1;
}

/// Whether the character breaks a line, or turns the direction of what stands beside it: U+061C,
/// U+200E and U+200F, U+2028 to U+202E, and U+2066 to U+2069.
bool scrambles(std::string_view sequence) {
    if (sequence == "\xD8\x9C")
        return true;
    const auto last = static_cast<unsigned char>(sequence.back());
    if (sequence.starts_with("\xE2\x80"))
        return last == 0x8EU || last == 0x8FU || (last >= 0xA8U && last <= 0xAEU);
    return sequence.starts_with("\xE2\x81") && last >= 0xA6U && last <= 0xA9U;
}

template <class Append>
std::string transform(std::string_view bytes, Append append) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = sequenceLength(bytes);
        append(text, bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

}  // namespace

std::string validUtf8(std::string_view bytes) {
    return transform(bytes, [](std::string& text, std::string_view sequence) {
        text += sequence.empty() ? replacementCharacter : sequence;
    });
}

std::string printableUtf8(std::string_view bytes) {
    return transform(bytes, [](std::string& text, std::string_view sequence) {
        if (sequence.empty())
            text += replacementCharacter;
        else
            text += isControl(sequence) || scrambles(sequence) ? std::string_view(" ") : sequence;
    });
}

std::string_view utf8Prefix(std::string_view text, std::size_t maximum) {
    if (text.size() <= maximum)
        return text;
    while (maximum > 0 && isContinuation(text[maximum]))
        --maximum;
    return text.substr(0, maximum);
}

std::string_view utf8Suffix(std::string_view text, std::size_t maximum) {
    if (text.size() <= maximum)
        return text;
    std::size_t start = text.size() - maximum;
    while (start < text.size() && isContinuation(text[start]))
        ++start;
    return text.substr(start);
}

}  // namespace platform
