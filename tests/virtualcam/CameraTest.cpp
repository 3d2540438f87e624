// The built-in camera by itself: what it answers to each request, what its automatic modes do, and
// what it remembers.

#include <gmock/gmock.h>

#include <cstdio>
#include <sstream>

#include "tests/support/CameraFixture.h"

namespace virtualcam {
namespace {

/// Sends the request of a line like "21 01 0200 0300 2 | 64 00", and returns it with what became of
/// it. What is read behind the bar is sent; the room for a reply is as long as the request says.
std::string sent(VirtualCamera& camera, const std::string& line) {
    IOUSBDevRequest request{};
    std::istringstream text(line.substr(0, line.find('|')));
    std::array<unsigned, 4> setup{};
    for (unsigned& part : setup)
        text >> std::hex >> part;
    text >> std::dec >> request.wLength;
    request.bmRequestType = static_cast<std::uint8_t>(setup[0]);
    request.bRequest = static_cast<std::uint8_t>(setup[1]);
    request.wValue = static_cast<std::uint16_t>(setup[2]);
    request.wIndex = static_cast<std::uint16_t>(setup[3]);
    std::vector<std::uint8_t> data;
    if (line.starts_with("2") && line.find('|') != std::string::npos) {
        std::istringstream bytes(line.substr(line.find('|') + 1));
        for (unsigned byte = 0; bytes >> std::hex >> byte;)
            data.push_back(static_cast<std::uint8_t>(byte));
    }
    data.resize(request.wLength);
    request.pData = data.data();
    const IOReturn result = camera.controlRequest(request);
    const RequestRecord record = camera.requests().back();
    EXPECT_EQ(record.result, result);
    return wireText(record);
}

/// Sends the requests of the lines one after the other: each must end as its line says, and the
/// camera must then give this reason for its last refusal.
void expectAnswers(VirtualCamera& camera, RequestError reason,
                   const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        EXPECT_EQ(sent(camera, line), line);
        std::array<char, 40> why{};
        std::snprintf(why.data(), why.size(), "a1 81 0200 0000 1 | %02x",
                      static_cast<unsigned>(reason));
        EXPECT_EQ(sent(camera, why.data()), why.data()) << "after " << line;
    }
}

TEST(RequestTest, EveryKindOfControlTakesItsOwnRequests) {
    const std::string zeros = " 00 00 00 00 00 00";
    VirtualCamera camera(studioCamera());
    expectAnswers(
        camera, RequestError::none,
        {"a1 81 0200 0300 2 | 07 00",  // a number with a sign: brightness
         "a1 82 0200 0300 2 | 01 ff", "a1 83 0200 0300 2 | ff 00", "a1 84 0200 0300 2 | 01 00",
         "a1 87 0200 0300 2 | 07 00", "a1 86 0200 0300 1 | 03", "a1 81 0200 0300 8 | 07 00",
         "a1 82 0300 0300 2 | 00 00",  // one without a sign: contrast
         "a1 87 0b00 0300 1 | 01",     // a switch: automatic white balance
         "a1 87 0500 0300 1 | 02",     // a choice: mains frequency
         "a1 84 0200 0100 1 | 09",     // bits: exposure mode
         "a1 87 0200 0100 1 | 08", "a1 85 0900 1000 2 | 18 00",  // a text: version
         "a1 81 0900 1000 24 | 56 39 2e 32 2e 34" + zeros + zeros + zeros, "a1 86 0900 1000 1 | 01",
         "a1 86 1700 1000 1 | 02",    // a trigger: restore
         "a1 86 0200 0000 1 | 01"});  // the reason itself
    expectAnswers(camera, RequestError::invalidRequest,
                  {"a1 82 0b00 0300 1 !", "a1 83 0b00 0300 1 !", "a1 84 0b00 0300 1 !",
                   "a1 84 0500 0300 1 !", "a1 82 0200 0100 1 !", "a1 83 0200 0100 1 !",
                   "a1 84 0900 1000 24 !", "a1 87 0900 1000 24 !", "21 01 0900 1000 1 | 31 !",
                   "a1 81 1700 1000 1 !", "a1 87 1700 1000 1 !",
                   "a1 85 0200 0300 2 !",  // only the vendor's lengths are not standard
                   "a1 80 0200 0300 2 !", "a1 88 0200 0300 2 !", "a1 87 0200 0000 1 !"});
}

TEST(RequestTest, WhatIsAddressedWronglyIsRefused) {
    VirtualCamera camera(studioCamera());
    expectAnswers(
        camera, RequestError::invalidRequest,
        {"a1 81 0201 0300 2 !", "a1 81 0200 0301 2 !",          // not interface 0
         "c1 81 0200 0300 2 !", "22 01 0200 0300 2 | 01 00 !",  // no class request to it
         "a1 01 0200 0300 2 !", "21 81 0200 0300 2 | 01 00 !",  // the other direction
         "a1 81 0200 0300 1 !", "a1 85 1900 1000 1 !",          // no room
         "21 01 0200 0300 1 | 01 !", "21 01 0200 0300 3 | 01 00 00 !", "21 01 0200 0300 0 !"});
    expectAnswers(camera, RequestError::invalidUnit, {"a1 81 0200 0200 2 !"});
    expectAnswers(camera, RequestError::invalidControl,
                  {"a1 81 0c00 0300 2 !", "a1 81 0100 0000 1 !", "a1 81 0200 0000 0 !"});
    camera.setFaults({.stalled = {{3, PU_BRIGHTNESS_CONTROL}},
                      .lengths = {{{16, XU_FLIP_H}, 9}, {{16, XU_FLIP_V}, 0}}});
    expectAnswers(camera, RequestError::unknown, {"a1 81 0200 0300 2 !"});
    expectAnswers(camera, RequestError::invalidRequest,
                  {"21 01 1900 1000 9 | 01 00 00 00 00 00 00 00 00 !", "21 01 1800 1000 0 !"});
    camera.powerOn();
    EXPECT_EQ(sent(camera, "a1 81 0200 0000 1"), "a1 81 0200 0000 1 | 00");
}

TEST(RequestTest, OnlyLegalValuesAreStored) {
    VirtualCamera camera(studioCamera());
    expectAnswers(
        camera, RequestError::none,
        {"21 01 0200 0300 2 | 01 ff", "a1 81 0200 0300 2 | 01 ff", "21 01 0300 0300 2 | ff 00",
         "21 01 0200 0100 1 | 01", "21 01 0d00 0100 8 | 10 0e 00 00 e0 e3 ff ff",
         "a1 81 0d00 0100 8 | 10 0e 00 00 e0 e3 ff ff", "21 01 0f00 1000 2 | f6 ff"});
    expectAnswers(camera, RequestError::outOfRange,
                  {"21 01 0200 0300 2 | 00 ff !", "21 01 0200 0300 2 | 00 01 !",
                   "21 01 0300 0300 2 | ff ff !",  // without a sign it is 65535
                   "21 01 0400 0100 4 | 00 00 00 00 !", "21 01 0400 0100 4 | ff ff ff ff !",
                   "21 01 0200 0100 1 | 09 !", "21 01 0200 0100 1 | 00 !",
                   "21 01 0200 0100 1 | 02 !",  // two modes, none, or one that it lacks
                   "21 01 0d00 0100 8 | 01 00 00 00 00 00 00 00 !",
                   "21 01 0d00 0100 8 | 00 00 00 00 01 00 00 00 !",  // between two steps
                   "21 01 0f00 1000 2 | fd 00 !", "21 01 1700 1000 1 | 00 !"});
    const PictureState state = camera.picture();
    EXPECT_EQ((std::tuple(state.brightness, state.contrast, state.pan, state.tilt, state.redGain)),
              (std::tuple(-255, 255, 3600, -7200, -10)));
    expectAnswers(camera, RequestError::none, {"21 01 1700 1000 1 | 01"});
    const PictureState restored{.whiteBalance = 6500, .style = 6};
    EXPECT_TRUE(camera.picture() == restored) << "all else as a camera without controls shows it";
}

TEST(RequestTest, TheLastRequestsAreRemembered) {
    VirtualCamera camera(studioCamera());
    sent(camera, "a1 81 0300 0300 2");
    for (int i = 0; i < 4095; ++i) {
        IOUSBDevRequest request{0x21, SET_CUR};
        camera.controlRequest(request);
    }
    EXPECT_EQ(wireText(camera.requests().front()), "a1 81 0300 0300 2 | 07 00");
    sent(camera, "a1 81 0200 0300 2");
    EXPECT_EQ(camera.requests().size(), 4096U);
    EXPECT_EQ(wireText(camera.requests().front()), "21 01 0000 0000 0 !");
}

TEST(AutomaticModeTest, MovesWhatItHoldsStepByStepAndThenWithTheScene) {
    VirtualCamera camera(studioCamera());
    const auto held = [&camera] {
        const PictureState state = camera.picture();
        return std::tuple(state.focus, state.exposureTime, state.whiteBalance);
    };
    expectAnswers(camera, RequestError::none,
                  {"a1 86 0600 0100 1 | 0f", "a1 86 0400 0100 1 | 0f", "a1 86 0a00 0300 1 | 0f"});
    expectAnswers(camera, RequestError::wrongState,
                  {"21 01 0600 0100 2 | 00 00 !", "21 01 0400 0100 4 | 01 00 00 00 !",
                   "21 01 0a00 0300 2 | 58 1b !"});
    expectAnswers(camera, RequestError::none,
                  {"21 01 0800 0100 1 | 00", "21 01 0200 0100 1 | 01", "21 01 0b00 0300 1 | 00",
                   "a1 86 0600 0100 1 | 0b", "21 01 0600 0100 2 | 00 00",
                   "21 01 0400 0100 4 | 01 00 00 00", "21 01 0a00 0300 2 | 58 1b"});
    camera.powerOn();
    camera.nextPicture();
    EXPECT_EQ(held(), std::tuple(0, 1, 7000)) << "it is the hand's";
    expectAnswers(camera, RequestError::none,
                  {"21 01 0800 0100 1 | 01", "21 01 0200 0100 1 | 08", "21 01 0b00 0300 1 | 01"});
    camera.nextPicture();
    EXPECT_EQ(held(), std::tuple(16, 7, 6960));
    for (const auto& [pictures, values] :
         {std::pair(58, std::tuple(172, 179, 5380)), {120, {148, 155, 5020}}}) {
        for (int picture = 0; picture < pictures; ++picture)
            camera.nextPicture();
        EXPECT_EQ(held(), values) << "a quarter of the scene's turn, and three";
    }
}

}  // namespace
}  // namespace virtualcam
