#include <gmock/gmock.h>

#include <fstream>
#include <iomanip>

#include "platform/linux/LinuxCapture.h"
#include "platform/linux/NodeFeed.h"

namespace platform {
namespace {

using Change = NodeFeed::Change;

NodeFacts camera(const std::string& port, const std::string& product) {
    const UsbFacts usb{port, 0x0ABC, 0x1234, product, 0};
    return {"/sys/" + port, "video0", "/nonexistent/video0", true, 0, "usb:" + port, "", usb};
}

/// What a test says is attached and happens.
struct FakeFeed : NodeFeed {
    int descriptor() const override { return -1; }
    std::vector<NodeFacts> attached() override { return present; }
    std::optional<Event> next() override {
        return taken < events.size() ? std::optional(events[taken++]) : std::nullopt;
    }

    std::vector<NodeFacts> present{camera("1-1", "A")};
    std::vector<Event> events;
    std::size_t taken = 0;
};

TEST(CaptureList, FollowsEachNodeAndMakesUpForLostEvents) {
    auto* feed = new FakeFeed;
    LinuxCapture capture{std::unique_ptr<NodeFeed>(feed)};
    const auto namesAfter = [&](std::vector<NodeFeed::Event> events) {
        feed->events.insert(feed->events.end(), events.begin(), events.end());
        std::string names;
        for (const auto& device : capture.devices())
            names += device->localizedName() + " ";
        return names;
    };
    EXPECT_EQ(namesAfter({}), "A ");
    NodeFacts gone;  // known by its path alone
    gone.syspath = camera("1-1", "").syspath;
    EXPECT_EQ(namesAfter({{Change::arrived, camera("1-2", "B")},
                          {Change::arrived, camera("1-1", "A")},
                          {Change::left, camera("1-9", "metadata")},
                          {Change::arrived, camera("1-3", "C")},
                          {Change::left, gone}}),
              "B C ");
    // What was in the queue behind a loss is older than the new look: C has come back since.
    feed->present = {camera("1-3", "C"), camera("1-2", "other"), camera("1-4", "D")};
    EXPECT_EQ(namesAfter({{Change::overflow, {}},
                          {Change::arrived, camera("1-1", "A")},
                          {Change::left, camera("1-3", "C")}}),
              "C other D ");
    std::string error;
    EXPECT_EQ(capture.devices()[0]->open(error), nullptr);
    EXPECT_EQ(error, "The camera at /nonexistent/video0 is gone.");
}

/// Each line of nodes.txt is a place on the bus, the numbers of the node and of its function, the
/// product's name and the driver's, and what is made of it all.
TEST(Nodes, AreToldApartByIdentifierAndName) {
    std::ifstream rows(QUELVO_LINUX_TESTS "/nodes.txt");
    NodeFacts facts = camera("1-1", "");
    std::string expected;
    while (rows >> facts.usb->sysname >> facts.index >> facts.usb->function >>
           std::quoted(facts.usb->product) >> std::quoted(facts.driverName) >>
           std::quoted(expected))
        EXPECT_EQ(uniqueIdentifier(facts) + " " + displayName(facts), expected);
    EXPECT_FALSE(expected.empty());
    facts.usb.reset();
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:video4linux");
    facts.hasVideo = false;
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:sound");
}

}  // namespace
}  // namespace platform
