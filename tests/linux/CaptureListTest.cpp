#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFile>
#include <deque>

#include "platform/linux/LinuxCapture.h"
#include "platform/linux/NodeFeed.h"

namespace platform {
namespace {

using testing::ElementsAre;
using Change = NodeFeed::Change;
using Names = std::vector<std::string>;

NodeFacts camera(const std::string& port, const std::string& product) {
    const UsbFacts usb{port, 0x0ABC, 0x1234, product, 0};
    const std::string path = "/sys/devices/usb1/" + port;
    return {path, "video0", "/nonexistent/video0", true, 0, "usb:" + port, "Driver ", usb};
}

/// What a test says is attached and happens. Its descriptor, which the main loop watches, can
/// always be read.
struct FakeFeed : NodeFeed {
    FakeFeed() { file.open(QIODevice::ReadOnly); }
    int descriptor() const override { return file.handle(); }
    std::vector<NodeFacts> attached() override { return present; }
    std::optional<Event> next() override {
        if (events.empty())
            return std::nullopt;
        Event event = events.front();
        events.pop_front();
        return event;
    }

    QFile file{"/dev/null"};
    std::vector<NodeFacts> present{camera("1-1", "A")};
    std::deque<Event> events;
};

class CaptureList : public testing::Test, public CaptureListener {
  protected:
    void arrived(std::shared_ptr<CaptureDevice> device) override {
        announced.push_back("+" + device->localizedName());
        EXPECT_EQ(std::ranges::count(names(), device->localizedName()), 1);
    }

    void left(std::shared_ptr<CaptureDevice> device) override {
        announced.push_back("-" + device->localizedName());
        EXPECT_EQ(std::ranges::count(names(), device->localizedName()), 0);
    }

    Names names() {
        Names found;
        for (const auto& device : capture.devices())
            found.push_back(device->localizedName());
        return found;
    }

    /// Runs the main loop until the feed's events have been taken.
    Names afterEvents() {
        while (!feed->events.empty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return std::exchange(announced, {});
    }

    FakeFeed* feed = new FakeFeed;  // owned by `capture`
    LinuxCapture capture{std::unique_ptr<NodeFeed>(feed)};
    Names announced;

  private:
    int argc_ = 0;
    QCoreApplication application_{argc_, nullptr};
};

TEST_F(CaptureList, AnnouncesEachDeviceOnceAndOnlyWhatIsListed) {
    // Without a listener the list is up to date by itself.
    EXPECT_THAT(names(), ElementsAre("A"));
    feed->events.push_back({Change::arrived, camera("1-2", "B")});
    EXPECT_THAT(names(), ElementsAre("A", "B"));

    capture.setListener(this);
    feed->events.push_back({Change::arrived, camera("1-1", "A")});
    feed->events.push_back({Change::left, camera("1-9", "metadata")});
    feed->events.push_back({Change::arrived, camera("1-3", "C")});
    feed->events.push_back({Change::arrived, camera("1-3", "C")});
    // A node that has gone is known by its path alone.
    NodeFacts gone;
    gone.syspath = camera("1-1", "A").syspath;
    feed->events.push_back({Change::left, gone});
    EXPECT_THAT(names(), ElementsAre("A", "B"));  // what is still to be announced
    EXPECT_THAT(afterEvents(), ElementsAre("+C", "-A"));
    EXPECT_THAT(names(), ElementsAre("B", "C"));

    capture.setListener(nullptr);
    feed->events.push_back({Change::left, camera("1-2", "B")});
    EXPECT_THAT(names(), ElementsAre("C"));
    EXPECT_TRUE(announced.empty());
}

TEST_F(CaptureList, MakesUpForLostEvents) {
    feed->present = {camera("1-1", "A"), camera("1-2", "B"), camera("1-3", "C")};
    capture.setListener(this);
    feed->present = {camera("1-3", "C"), camera("1-2", "other"), camera("1-4", "D")};
    feed->events.push_back({Change::overflow, {}});
    // What was already in the queue is older than the new look: C has come back since.
    feed->events.push_back({Change::arrived, camera("1-4", "D")});
    feed->events.push_back({Change::left, camera("1-1", "A")});
    feed->events.push_back({Change::left, camera("1-3", "C")});
    EXPECT_THAT(afterEvents(), ElementsAre("-A", "-B", "+other", "+D"));
    EXPECT_THAT(names(), ElementsAre("C", "other", "D"));
}

TEST_F(CaptureList, SaysWhyADeviceCannotBeOpened) {
    feed->present.push_back(camera("1-2", "Microphone"));
    feed->present[1].hasVideo = false;
    std::string error;
    EXPECT_EQ(capture.devices()[0]->open(error), nullptr);
    EXPECT_EQ(error, "The camera at /nonexistent/video0 is gone.");
    EXPECT_FALSE(capture.devices()[1]->hasVideo());
    EXPECT_EQ(capture.devices()[1]->open(error), nullptr);
    EXPECT_EQ(error, "This device delivers no video.");
}

TEST(UsbLocations, PackTheBusAndThePortsAndTellWhatDoesNotFit) {
    const std::tuple<const char*, std::uint32_t, bool> rows[] = {
        {"usb1", 0x01000000, true},          {"1-2", 0x01200000, true},
        {"1-2.3.4", 0x01234000, true},       {"20-15.1", 0x14F10000, true},
        {"2-1.2.3.4.5.6", 0x02123456, true}, {"255-1", 0xFF100000, true},
        {"1-16.2", 0x01F20000, false},       {"1-1.2.3.4.5.6.7", 0x01123456, false}};
    for (const auto& [name, id, exact] : rows) {
        EXPECT_EQ(usbLocation(name).id, id) << name;
        EXPECT_EQ(usbLocation(name).exact, exact) << name;
    }
    for (const char* garbage : {"", "usb", "usbx", "usb1x", "1", "1-", "1-2.", "1-.2", "1-0", "a-b",
                                "1-2:1.0", "256-1", "-1-2", "1-99999999999", "99999999999-1"}) {
        EXPECT_EQ(usbLocation(garbage).id, 0U) << garbage;
        EXPECT_FALSE(usbLocation(garbage).exact) << garbage;
    }
}

TEST(Nodes, AreToldApartByIdentifierAndName) {
    const struct {
        std::function<void(NodeFacts&)> change;
        const char* identifierAndName;
    } rows[] = {
        {[](NodeFacts&) {}, "0x012300000abc1234 HD"},
        {[](NodeFacts& facts) { facts.index = 2; }, "0x0123000000020abc1234 HD (video0)"},
        {[](NodeFacts& facts) { facts.usb->function = 1; }, "0x0123000001000abc1234 HD (video0)"},
        {[](NodeFacts& facts) { facts.usb->sysname = "1-17"; }, "0x01f00000@1-17:0abc1234 HD"},
        {[](NodeFacts& facts) { facts.hasVideo = false; }, "usb:1-2.3:0:sound HD"},
        {[](NodeFacts& facts) { facts.usb->product = " \t"; }, "0x012300000abc1234 Driver"},
        {[](NodeFacts& facts) { facts.usb->product = facts.driverName = ""; },
         "0x012300000abc1234 video0"},
        {[](NodeFacts& facts) { facts.usb.reset(); }, "usb:1-2.3:0:video4linux Driver"},
    };
    for (const auto& row : rows) {
        NodeFacts facts = camera("1-2.3", "HD");
        row.change(facts);
        EXPECT_EQ(uniqueIdentifier(facts) + " " + displayName(facts), row.identifierAndName);
    }
}

}  // namespace
}  // namespace platform
