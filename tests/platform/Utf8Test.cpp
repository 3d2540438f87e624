// What may stand in a text that a device gives.

#include <gtest/gtest.h>

#include <QString>

#include "platform/Utf8.h"

namespace {

TEST(Utf8Test, IsValidWhereAnotherDecoderSaysSo) {
    for (unsigned pair = 0; pair < 0x10000; ++pair) {
        const char bytes[] = {static_cast<char>(pair >> 8U), static_cast<char>(pair), '\x80',
                              '\xBF'};
        for (std::size_t length = 1; length <= sizeof bytes; ++length) {
            const std::string text(bytes, length);
            ASSERT_EQ(platform::validUtf8(text) == text, QUtf8StringView(text).isValidUtf8())
                << testing::PrintToString(text);
        }
    }
    EXPECT_EQ(platform::validUtf8("a\xF0\x9F\xFF"), "a\uFFFD\uFFFD\uFFFD");
}

TEST(Utf8Test, PrintsAllButControlsLineBreaksAndMarksOfDirection) {
    constexpr std::pair<char32_t, char32_t> cleared[] = {{0, 0x1F},        {0x7F, 0x9F},
                                                         {0x61C, 0x61C},   {0x200E, 0x200F},
                                                         {0x2028, 0x202E}, {0x2066, 0x2069}};
    for (char32_t character = 0; character < 0xD800; ++character) {
        const std::string text = QString::fromUcs4(&character, 1).toStdString();
        const bool goes = std::ranges::any_of(cleared, [&](const auto& range) {
            return character >= range.first && character <= range.second;
        });
        ASSERT_EQ(platform::printableUtf8(text), goes ? " " : text) << std::hex << +character;
    }
}

}  // namespace
