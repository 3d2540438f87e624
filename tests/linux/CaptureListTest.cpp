#include <gmock/gmock.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <deque>

#include "platform/linux/LinuxCapture.h"
#include "platform/linux/NodeFeed.h"

namespace platform {
namespace {

using testing::ElementsAre;
using Change = NodeFeed::Change;
using Names = std::vector<std::string>;

NodeFacts camera(const std::string& port, const std::string& product) {
    NodeFacts facts;
    facts.syspath = "/sys/devices/usb1/" + port;
    facts.sysname = "video0";
    facts.devnode = "/nonexistent/video0";
    facts.hasVideo = true;
    facts.usb = UsbFacts{port, 0x1111, 0x2222, product, 0};
    return facts;
}

/// What a script says is attached, and the events that it puts in the queue.
class ScriptedFeed : public NodeFeed {
  public:
    ScriptedFeed() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ScriptedFeed(const ScriptedFeed&) = delete;
    ScriptedFeed& operator=(const ScriptedFeed&) = delete;
    ~ScriptedFeed() override { ::close(descriptor_); }

    void put(Change change, const NodeFacts& facts = {}) {
        events.push_back({change, facts});
        ASSERT_EQ(eventfd_write(descriptor_, 1), 0);
    }

    int descriptor() const override { return descriptor_; }

    std::optional<Event> next() override {
        if (events.empty()) {
            eventfd_t count = 0;
            eventfd_read(descriptor_, &count);
            return std::nullopt;
        }
        Event event = events.front();
        events.pop_front();
        return event;
    }

    std::vector<NodeFacts> attached() override { return present; }

    std::vector<NodeFacts> present;
    std::deque<Event> events;

  private:
    int descriptor_;
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
    void takeEvents() {
        const QDeadlineTimer deadline(10000);
        while (!feed->events.empty() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        EXPECT_TRUE(feed->events.empty());
    }

    ScriptedFeed* feed = new ScriptedFeed;  // owned by `capture`
    LinuxCapture capture{std::unique_ptr<NodeFeed>(feed)};
    Names announced;

  private:
    int argc_ = 0;
    QCoreApplication application_{argc_, nullptr};
};

TEST_F(CaptureList, FollowsTheEvents) {
    feed->present = {camera("1-1", "A")};
    capture.setListener(this);
    EXPECT_THAT(names(), ElementsAre("A"));

    feed->put(Change::arrived, camera("1-2", "B"));
    // Still to be announced, so not in the list yet.
    EXPECT_THAT(names(), ElementsAre("A"));
    takeEvents();
    EXPECT_THAT(names(), ElementsAre("A", "B"));

    // A node that has gone is known by its path alone.
    NodeFacts gone;
    gone.syspath = camera("1-1", "A").syspath;
    feed->put(Change::left, gone);
    takeEvents();
    EXPECT_THAT(names(), ElementsAre("B"));
    EXPECT_THAT(announced, ElementsAre("+B", "-A"));
    EXPECT_EQ(capture.devices().front()->uniqueID(), "0x0120000011112222");
}

TEST_F(CaptureList, AnnouncesEachDeviceOnceAndOnlyWhatIsListed) {
    feed->present = {camera("1-1", "A")};
    EXPECT_THAT(names(), ElementsAre("A"));
    feed->put(Change::arrived, camera("1-1", "A"));
    feed->put(Change::left, camera("1-9", "metadata"));
    feed->put(Change::arrived, camera("1-2", "B"));
    feed->put(Change::arrived, camera("1-2", "B"));
    capture.setListener(this);
    takeEvents();
    EXPECT_THAT(announced, ElementsAre("+B"));
    EXPECT_THAT(names(), ElementsAre("A", "B"));
}

TEST_F(CaptureList, IsUpToDateWithoutAListener) {
    feed->present = {camera("1-1", "A")};
    EXPECT_THAT(names(), ElementsAre("A"));
    feed->put(Change::arrived, camera("1-2", "B"));
    EXPECT_THAT(names(), ElementsAre("A", "B"));
    capture.setListener(this);
    capture.setListener(nullptr);
    feed->put(Change::left, camera("1-1", "A"));
    EXPECT_THAT(names(), ElementsAre("B"));
    EXPECT_TRUE(announced.empty());
}

TEST_F(CaptureList, MakesUpForLostEvents) {
    feed->present = {camera("1-1", "A"), camera("1-2", "B"), camera("1-3", "C")};
    capture.setListener(this);
    feed->present = {camera("1-3", "C"), camera("1-2", "other"), camera("1-4", "D")};
    feed->put(Change::overflow);
    // What was already in the queue is older than the new look: C has come back since.
    feed->put(Change::arrived, camera("1-4", "D"));
    feed->put(Change::left, camera("1-1", "A"));
    feed->put(Change::left, camera("1-3", "C"));
    takeEvents();
    EXPECT_THAT(announced, ElementsAre("-A", "-B", "+other", "+D"));
    EXPECT_THAT(names(), ElementsAre("C", "other", "D"));
}

TEST_F(CaptureList, SaysWhyADeviceCannotBeOpened) {
    feed->present = {camera("1-1", "A"), camera("1-2", "Microphone")};
    feed->present[1].hasVideo = false;
    std::string error;
    EXPECT_EQ(capture.devices()[0]->open(error), nullptr);
    EXPECT_EQ(error, "The camera at /nonexistent/video0 is gone.");
    EXPECT_FALSE(capture.devices()[1]->hasVideo());
    EXPECT_EQ(capture.devices()[1]->open(error), nullptr);
    EXPECT_EQ(error, "This device delivers no video.");
}

}  // namespace
}  // namespace platform
