// What all back ends share: texts, notifications and the way to a USB interface.

#include <gmock/gmock.h>

#include <QString>
#include <cerrno>

#include "platform/IOKit.h"
#include "platform/NSNotificationCenter.h"
#include "platform/UVC.h"
#include "platform/Utf8.h"
#include "platform/backend/Backends.h"
#include "platform/backend/CaptureBackend.h"
#include "tests/support/CameraFixture.h"

namespace {

using testing::ElementsAre;

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

struct Observer : NSObject {
    void hear(const NSNotification& notification) { heard.emplace_back(notification.name); }
    std::vector<std::string> heard;
};

TEST(NotificationTest, DevicesAreAnnouncedAsLongAsSomebodyListens) {
    struct : platform::CaptureBackend {
        std::vector<std::shared_ptr<platform::CaptureDevice>> devices() override { return {}; }
        void setListener(platform::CaptureListener* chosen) override { listener = chosen; }
        platform::CaptureListener* listener = nullptr;
    } capture;
    platform::installBackends({nullptr, &capture, nullptr});
    auto& center = NSNotificationCenter::defaultCenter();
    for (int round = 0; round < 2; ++round) {
        Observer stays;
        {
            Observer goes;
            center.addObserver(goes, &Observer::hear, "left", nullptr);
            center.addObserver(stays, &Observer::hear, "arrived", nullptr);
        }
        ASSERT_NE(capture.listener, nullptr);
        center.postNotification({"left", {}});
        center.postNotification({"arrived", {}});
        EXPECT_THAT(stays.heard, ElementsAre("arrived"));
    }
    EXPECT_EQ(capture.listener, nullptr);
    platform::installBackends({});
}

TEST(UsbTest, DevicesAreFoundByTheirNumbersAndInterfacesByTheirDescriptors) {
    const CameraFixture fixture;
    IOMatchingDictionary matching = IOServiceMatching("IOUSBDevice");
    const auto find = [&] { return IOServiceGetMatchingService({}, matching); };
    for (const auto& [key, number, isFound] :
         {std::tuple{"idVendor", 1, false}, {"idVendor", 0xe7a1, true}, {"bcdDevice", 0, false}}) {
        CFDictionarySetValue(matching, key, {number});
        EXPECT_EQ(find() != nullptr, isFound) << key << number;
    }
    matching = IOServiceMatching("IOUSBInterface");
    EXPECT_EQ(find(), nullptr);
    matching = IOServiceMatching("IOUSBDevice");
    std::unique_ptr<IOUSBDeviceStruct942> device;
    std::unique_ptr<IOUSBInterfaceStruct190> interface;
    const auto& ofDevice = kIOUSBDeviceUserClientTypeID;
    const IOCFPlugInInterface plugIn(find(), ofDevice);
    EXPECT_EQ(plugIn.QueryInterface(ofDevice, device), ENOTSUP) << "names no interface";
    EXPECT_EQ(plugIn.QueryInterface(kIOUSBInterfaceInterfaceID, interface), ENOTSUP);
    ASSERT_EQ(plugIn.QueryInterface(kIOUSBDeviceInterfaceID, device), 0);
    for (const auto& [request, count] : {std::pair{IOUSBFindInterfaceRequest{}, 2},
                                         {{CC_VIDEO, SC_VIDEOSTREAMING}, 1},
                                         {{.bInterfaceClass = 1}, 0},
                                         {{.bInterfaceProtocol = 1}, 0},
                                         {{.bAlternateSetting = 1}, 0}}) {
        io_iterator_t found;
        EXPECT_EQ(device->CreateInterfaceIterator(request, found), 0);
        int number = 0;
        while (IOIteratorNext(found))
            ++number;
        EXPECT_EQ(number, count);
    }
}

}  // namespace
