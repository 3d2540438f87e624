#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFile>
#include <deque>

#include "platform/linux/LinuxCapture.h"
#include "platform/linux/NodeFeed.h"

namespace platform {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
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
        const Event event = events.front();
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
        EXPECT_THAT(names(), Contains(device->localizedName()));
    }

    void left(std::shared_ptr<CaptureDevice> device) override {
        announced.push_back("-" + device->localizedName());
        EXPECT_THAT(names(), Not(Contains(device->localizedName())));
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

TEST_F(CaptureList, AnnouncesEachDeviceOnceAndMakesUpForLostEvents) {
    // Without a listener the list is up to date by itself.
    EXPECT_THAT(names(), ElementsAre("A"));
    feed->events = {{Change::arrived, camera("1-2", "B")}};
    EXPECT_THAT(names(), ElementsAre("A", "B"));

    capture.setListener(this);
    NodeFacts gone;  // known by its path alone
    gone.syspath = camera("1-1", "A").syspath;
    feed->events = {{Change::arrived, camera("1-1", "A")},
                    {Change::left, camera("1-9", "metadata")},
                    {Change::arrived, camera("1-3", "C")},
                    {Change::arrived, camera("1-3", "C")},
                    {Change::left, gone}};
    EXPECT_THAT(names(), ElementsAre("A", "B"));  // what is still to be announced
    EXPECT_THAT(afterEvents(), ElementsAre("+C", "-A"));
    EXPECT_THAT(names(), ElementsAre("B", "C"));

    // What was in the queue behind a loss is older than the new look: C has come back since.
    feed->present = {camera("1-3", "C"), camera("1-2", "other"), camera("1-4", "D")};
    feed->events = {{Change::overflow, {}},
                    {Change::arrived, camera("1-1", "A")},
                    {Change::left, camera("1-3", "C")}};
    EXPECT_THAT(afterEvents(), ElementsAre("-B", "+other", "+D"));
    EXPECT_THAT(names(), ElementsAre("C", "other", "D"));

    std::string error;
    EXPECT_EQ(capture.devices()[0]->open(error), nullptr);
    EXPECT_EQ(error, "The camera at /nonexistent/video0 is gone.");
}

TEST(Nodes, AreToldApartByIdentifierAndName) {
    const struct {
        const char* place;
        int index, function;
        const char *product, *driver, *identifierAndName;
    } rows[] = {
        {"usb1", 0, 0, "HD", "Driver", "0x010000000abc1234 HD"},
        {"1-2.3.4", 2, 0, "HD", "Driver", "0x0123400000020abc1234 HD (video0)"},
        {"20-15.1", 0, 1, "HD", "Driver", "0x14f1000001000abc1234 HD (video0)"},
        {"255-1", 0, 0, " \t", "Driver ", "0xff1000000abc1234 Driver"},
        {"2-1.2.3.4.5.6", 0, 0, "", "", "0x021234560abc1234 video0"},
        // What has no room in the number is there as a whole.
        {"1-16.2", 0, 0, "HD", "", "0x01f20000@1-16.2:0abc1234 HD"},
        {"1-1.2.3.4.5.6.7", 0, 0, "HD", "", "0x01123456@1-1.2.3.4.5.6.7:0abc1234 HD"},
        {"256-1", 0, 0, "HD", "", "0x00000000@256-1:0abc1234 HD"},
        {"1-2.", 0, 0, "HD", "", "0x00000000@1-2.:0abc1234 HD"},
    };
    NodeFacts facts = camera("", "");
    for (const auto& row : rows) {
        facts.index = row.index;
        facts.driverName = row.driver;
        facts.usb = {row.place, 0x0ABC, 0x1234, row.product, row.function};
        EXPECT_EQ(uniqueIdentifier(facts) + " " + displayName(facts), row.identifierAndName);
    }
    facts.usb.reset();
    EXPECT_EQ(uniqueIdentifier(facts), "usb::0:video4linux");
    facts.hasVideo = false;
    EXPECT_EQ(uniqueIdentifier(facts), "usb::0:sound");
}

}  // namespace
}  // namespace platform
