#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFile>
#include <fstream>
#include <iomanip>

#include "platform/linux/devices/KeptNode.h"
#include "platform/linux/devices/LinuxCapture.h"
#include "platform/linux/devices/NodeFeed.h"

namespace platform {
namespace {

using Change = NodeFeed::Change;

NodeFacts camera(const std::string& port, const std::string& product) {
    const UsbFacts usb{port, 0x0ABC, 0x1234, product, 0};
    return {"/sys/" + port, "video0", "/nonexistent/video0", true, 0, "usb:" + port, "", usb};
}

/// What a test says is attached and happens. Its descriptor can always be read.
struct FakeFeed : NodeFeed {
    FakeFeed() { file.open(QIODevice::ReadOnly); }
    int descriptor() const override { return file.handle(); }
    std::vector<NodeFacts> attached() override { return present; }
    std::optional<Event> next() override {
        return taken < events.size() ? std::optional(events[taken++]) : std::nullopt;
    }

    QFile file{"/dev/null"};
    std::vector<NodeFacts> present{camera("1-1", "A")};
    std::vector<Event> events;
    std::size_t taken = 0;
};

struct Listener : CaptureListener {
    void arrived(std::shared_ptr<CaptureDevice> device) override { hear("+", *device); }
    void left(std::shared_ptr<CaptureDevice> device) override { hear("-", *device); }
    std::function<void(std::string, const CaptureDevice&)> hear;
};

TEST(CaptureList, FollowsEachNodeAndMakesUpForLostEvents) {
    auto* feed = new FakeFeed;
    KeptNode node;
    LinuxCapture capture(node, std::unique_ptr<NodeFeed>(feed));
    const auto namesAfter = [&](std::vector<NodeFeed::Event> events) {
        feed->events.insert(feed->events.end(), events.begin(), events.end());
        std::string names;
        for (const auto& device : capture.devices())
            names += device->localizedName() + " ";
        return names;
    };
    EXPECT_EQ(namesAfter({}), "A ");
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    std::string heard;
    Listener listener;
    listener.hear = [&](const std::string& sign, const CaptureDevice& device) {
        heard += sign + device.localizedName() + ": " + namesAfter({});
    };
    capture.setListener(&listener);
    NodeFacts gone;  // known by its path alone
    gone.syspath = camera("1-1", "").syspath;
    EXPECT_EQ(namesAfter({{Change::arrived, camera("1-2", "B")},
                          {Change::arrived, camera("1-1", "A")},
                          {Change::left, camera("1-9", "metadata")},
                          {Change::arrived, camera("1-3", "C")},
                          {Change::left, gone}}),
              "A ");  // until they are announced
    while (feed->taken < feed->events.size())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(heard, "+B: A B +C: A B C -A: B C ");
    capture.setListener(nullptr);
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
    int count = 0;
    while (rows >> facts.usb->sysname >> facts.index >> facts.usb->function >>
               std::quoted(facts.usb->product) >> std::quoted(facts.driverName) >>
               std::quoted(expected) &&
           ++count)
        EXPECT_EQ(uniqueIdentifier(facts) + " " + displayName(facts), expected);
    EXPECT_EQ(count, 15) << "the line after " << expected;
    facts.usb.reset();
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:video4linux");
    facts.hasVideo = false;
    EXPECT_EQ(uniqueIdentifier(facts), "usb:1-1:0:sound");
}

}  // namespace
}  // namespace platform
