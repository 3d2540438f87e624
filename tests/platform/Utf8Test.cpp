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

}  // namespace
