// What all back ends share: texts, layers, notifications and the way to a USB interface.

#include <gmock/gmock.h>

#include <QString>
#include <cerrno>

#include "platform/AVCaptureSession.h"
#include "platform/CALayer.h"
#include "platform/IOKit.h"
#include "platform/NSNotificationCenter.h"
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

TEST(Utf8Test, CutsBetweenCharactersAndOnlyWhatIsTooLong) {
    const std::string text = "a\u00e9b";
    EXPECT_EQ(platform::utf8Prefix(text, 4), text);
    EXPECT_EQ(platform::utf8Prefix(text, 3), "a\u00e9");
    EXPECT_EQ(platform::utf8Prefix(text, 2), "a");
    EXPECT_EQ(platform::utf8Prefix("\u00e9", 1), "");
    EXPECT_EQ(platform::utf8Suffix(text, 4), text);
    EXPECT_EQ(platform::utf8Suffix(text, 3), "\u00e9b");
    EXPECT_EQ(platform::utf8Suffix(text, 2), "b");
    EXPECT_EQ(platform::utf8Suffix("\u00e9", 1), "");
}

TEST(SessionTest, RunsItsOneInputOnceAndEndsItWithItself) {
    std::string calls;
    struct Source : platform::VideoSource {
        explicit Source(std::string& said) : calls(said) {}
        void start(const platform::VideoLimits& limits, platform::VideoSink& /*sink*/) override {
            calls += "start " + std::to_string(limits.width) + 'x' + std::to_string(limits.height);
        }
        void stop() override { calls += " stop "; }
        std::string& calls;
    };
    {
        AVCaptureSession session;
        session.startRunning();
        for (int input = 0; input < 2; ++input) {
            session.addInput(
                std::make_unique<AVCaptureDeviceInput>(std::make_unique<Source>(calls)));
            session.startRunning();
            session.startRunning();
        }
    }
    EXPECT_EQ(calls, "start 640x480 stop start 640x480 stop ");
}

TEST(LayerTest, TellsItsViewOfEachChangeAndMayOutliveItsSuperlayer) {
    auto base = CALayer::layer();
    const auto sublayer = CALayer::layer();
    std::vector<const CALayer*> changed;
    base->setDisplayHandler([&](const CALayer& layer) { changed.push_back(&layer); });
    base->addSublayer(sublayer);
    base->setBackgroundColor({});
    sublayer->setFrame({1, 2, 30, 40});
    sublayer->setAutoresizingMask(kCALayerHeightSizable);
    base->setFrame({0, 0, 10, 5});
    EXPECT_THAT(changed,
                ElementsAre(base.get(), base.get(), sublayer.get(), sublayer.get(), base.get()));
    EXPECT_EQ(sublayer->frame().width, 30);
    EXPECT_EQ(sublayer->frame().height, 45);
    base.reset();
    sublayer->setNeedsDisplay();
    EXPECT_EQ(changed.size(), 5U);
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

/// The way from the bus to an interface of a camera, each step of which may be taken wrongly.
class UsbTest : public testing::Test {
  protected:
    IOMatchingDictionary matching = IOServiceMatching("IOUSBDevice");
    CameraFixture fixture;

    bool isFound() const { return IOServiceGetMatchingService({}, matching) != nullptr; }

    /// Asks a plug-in of the type for the wanted interface; returns the last status.
    template <class Interface>
    static IOReturn query(const io_service_t& service, const CFUUIDBytes& type,
                          const CFUUIDBytes& wanted, std::unique_ptr<Interface>& interface) {
        std::unique_ptr<IOCFPlugInInterface> plugIn;
        std::int32_t score = 0;
        const IOReturn status =
            IOCreatePlugInInterfaceForService(service, type, kIOCFPlugInInterfaceID, plugIn, score);
        return plugIn ? plugIn->QueryInterface(wanted, interface) : status;
    }
};

TEST_F(UsbTest, ADeviceIsFoundByItsClassAndTheNumbersSetLast) {
    EXPECT_TRUE(isFound());
    CFDictionarySetValue(matching, "idVendor", {1});
    EXPECT_FALSE(isFound());
    CFDictionarySetValue(matching, "idVendor", {fixture.camera().model().vendorID});
    EXPECT_TRUE(isFound());
    CFDictionarySetValue(matching, "bcdDevice", {0});
    EXPECT_FALSE(isFound()) << "a property that no device has";
    matching = IOServiceMatching("IOUSBInterface");
    EXPECT_FALSE(isFound());
    matching = IOServiceMatching("IOUSBDevice");
    platform::installBackends({});
    EXPECT_FALSE(isFound());
}

TEST_F(UsbTest, OnlyTheRightTypesLeadToAnInterface) {
    const auto service = IOServiceGetMatchingService({}, matching);
    std::unique_ptr<IOUSBDeviceStruct942> device;
    std::unique_ptr<IOUSBInterfaceStruct190> interface;
    std::unique_ptr<IOCFPlugInInterface> plugIn;
    std::int32_t score = 1;
    const auto& ofDevice = kIOUSBDeviceUserClientTypeID;
    const auto& ofInterface = kIOUSBInterfaceUserClientTypeID;
    EXPECT_EQ(query(nullptr, ofDevice, kIOUSBDeviceInterfaceID, device), ENODEV);
    EXPECT_EQ(IOCreatePlugInInterfaceForService(service, ofDevice, ofDevice, plugIn, score),
              ENOTSUP);
    EXPECT_EQ(score, 0);
    EXPECT_EQ(query(service, ofInterface, kIOUSBDeviceInterfaceID, device), ENOTSUP);
    EXPECT_EQ(query(service, ofDevice, kIOUSBInterfaceInterfaceID, device), ENOTSUP);
    EXPECT_EQ(query(service, ofInterface, kIOUSBInterfaceInterfaceID, interface), ENOTSUP);
    EXPECT_EQ(query(service, ofDevice, kIOUSBDeviceInterfaceID, device), 0);

    const auto count = [&](IOUSBFindInterfaceRequest request) {
        io_iterator_t found;
        EXPECT_EQ(device->CreateInterfaceIterator(request, found), 0);
        int number = 0;
        while (IOIteratorNext(found))
            ++number;
        return number;
    };
    EXPECT_EQ(count({}), 2);
    EXPECT_EQ(count({.bInterfaceClass = 14, .bInterfaceSubClass = 2}), 1);
    EXPECT_EQ(count({.bInterfaceClass = 1}), 0);
    EXPECT_EQ(count({.bInterfaceProtocol = 1}), 0);
    EXPECT_EQ(count({.bAlternateSetting = 1}), 0);

    io_iterator_t interfaces;
    device->CreateInterfaceIterator({}, interfaces);
    const auto first = IOIteratorNext(interfaces);
    EXPECT_EQ(query(first, ofDevice, kIOUSBInterfaceInterfaceID, interface), ENOTSUP);
    EXPECT_EQ(query(first, ofInterface, kIOUSBDeviceInterfaceID, interface), ENOTSUP);
    ASSERT_EQ(query(first, ofInterface, kIOUSBInterfaceInterfaceID, interface), 0);
    IOUSBDevRequest request;
    EXPECT_EQ(interface->ControlRequest(1, request), EINVAL) << "not the control pipe";
}

}  // namespace
