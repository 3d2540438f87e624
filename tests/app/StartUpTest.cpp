// Start-up, and the camera list that follows cameras as they come and go.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QToolButton>
#include <set>

#include "devices/CameraList.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr const char* added = "processAddDeviceEventWithNotification123";
constexpr const char* removed = "processRemoveDeviceEventWithNotification";

/// The listed cameras, each with the end of its identifier, and what the combo box shows:
/// "Studio 10, Second 11 > Studio". Its items are the same.
std::string listed(WindowBench& bench) {
    std::string text;
    QComboBox& box = bench.list("m_cbxDevice");
    EXPECT_EQ(static_cast<std::size_t>(box.count()), g_deviceList.size());
    for (const CameraEntry& entry : g_deviceList) {
        const auto index = static_cast<int>(&entry - g_deviceList.data());
        EXPECT_EQ(box.itemText(index).toStdString(), entry.name.data());
        const std::string id = entry.uniqueID.data();
        text += std::string(index > 0 ? ", " : "") + entry.name.data() + ' ' + id.substr(16);
    }
    return text + " > " + box.currentText().toStdString();
}

virtualcam::CameraModel studio() {
    virtualcam::CameraModel model = virtualcam::studioCamera();
    model.name = "Studio";
    return model;
}

TEST(StartUpTest, EveryOutletAndEveryActionHasItsOneWidget) {
    WindowBench bench;
    EXPECT_EQ(bench.window().windowTitle().toStdString(), "Quelvo");
    EXPECT_THAT(bench.controller().outlets(), SizeIs(60));
    for (const auto& outlet : bench.controller().outlets()) {
        const QLatin1String name(outlet.name.data(), static_cast<qsizetype>(outlet.name.size()));
        EXPECT_THAT(bench.window().findChildren<QWidget*>(name), SizeIs(1)) << outlet.name;
    }
    std::set<std::string> sent;
    std::set<QString> spoken;
    for (const auto* widget : bench.window().findChildren<QWidget*>()) {
        const std::string action = widget->property("action").toString().toStdString();
        if (action.empty())
            continue;
        EXPECT_TRUE(sent.insert(action).second) << action;
        EXPECT_TRUE(spoken.insert(widget->accessibleName()).second) << action;
        EXPECT_FALSE(widget->accessibleName().isEmpty()) << action;
        EXPECT_EQ(widget->focusPolicy() & Qt::StrongFocus, Qt::StrongFocus) << action;
        const auto* toggle = qobject_cast<const QToolButton*>(widget);
        EXPECT_TRUE(toggle == nullptr || toggle->autoRaise()) << action;
    }
    std::set<std::string> offered;
    for (const NSAction& action : bench.controller().actions())
        offered.emplace(action.selector);
    EXPECT_EQ(sent, offered);
}

TEST(CameraListTest, ListsTheCamerasAtStartUpAndFollowsThemSkippingMicrophones) {
    WindowBench bench(studio(), false);
    bench.bus().plugMicrophone("microphone", "A microphone");
    const auto second = bench.plugAnother("Second");
    bench.start();
    EXPECT_EQ(listed(bench), "Studio 10, Second 11 > Studio");
    bench.bus().unplugMicrophone("microphone");
    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench), "Studio 10 > ");  // whichever left
    bench.bus().plug(second);
    EXPECT_EQ(listed(bench), "Studio 10, Second 11 > ");  // others were listed
    EXPECT_THAT(bench.log().take(),
                ElementsAre("kkk:3", removed, removed, "Second", added, "0x14210000e7a14c11"));
    EXPECT_THAT(bench.requests(), SizeIs(0));
    bench.bus().unplug(bench.cameraReference());
    EXPECT_EQ(listed(bench), "Second 11 > ");
    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench), " > ");
    bench.bus().plugMicrophone("microphone", "A microphone");
    bench.bus().plug(second);
    EXPECT_EQ(listed(bench), "Second 11 > Second");  // the first to arrive is shown
    bench.bus().plug(bench.cameraReference());
    EXPECT_EQ(listed(bench), "Second 11, Studio 10 > Second");

    // A leaving name that is not listed changes nothing.
    g_deviceList.erase(g_deviceList.begin());
    bench.controller().m_cbxDevice.removeItemAtIndex(0);
    bench.controller().m_cbxDevice.setStringValue("typed");
    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench), "Studio 10 > typed");
}

TEST(CameraListTest, OfEqualNamesTheFirstListedGoes) {
    WindowBench bench(studio());
    const auto twin = bench.plugAnother("Studio");
    EXPECT_EQ(listed(bench), "Studio 10, Studio 11 > Studio");
    bench.bus().unplug(twin);
    EXPECT_EQ(listed(bench), "Studio 11 > ");
}

TEST(CameraListTest, CutsLongNamesBetweenCharactersAndFindsThemAgain) {
    WindowBench bench(studio());
    bench.log().take();
    const std::string start(62, 'n');
    const auto camera = bench.plugAnother(start + "\u00e9 with more behind");
    EXPECT_EQ(listed(bench), "Studio 10, " + start + " 11 > Studio");
    bench.list("m_cbxDevice").setCurrentIndex(1);
    bench.click("OnBtnOpenCamera:");
    EXPECT_FALSE(camera->requests().empty());
    bench.bus().unplug(camera);
    EXPECT_EQ(listed(bench), "Studio 10 > ");
    EXPECT_THAT(bench.log().take("n"), ElementsAre(start + "\u00e9 with more behind"));

    // Neither a terminal's commands nor a change of direction get into the list or the log.
    bench.log().take();
    const std::string shown = "Bro\uFFFDken  [1m \u05D0  b ";
    const auto broken = bench.plugAnother("Bro\xFFken\n\x1B[1m \u05D0\u202E\u2066b\u2028");
    EXPECT_EQ(listed(bench), "Studio 10, " + shown + " 11 > ");
    bench.bus().unplug(broken);
    EXPECT_EQ(listed(bench), "Studio 10 > ");
    EXPECT_THAT(bench.log().take("Bro"), ElementsAre(shown));
}

TEST(CameraListTest, CutsLongIdentifiersToTheirEnd) {
    const std::string ids = "e7a14c10";
    EXPECT_EQ(entryUniqueID(std::string(70, 'x') + ids), std::string(55, 'x') + ids);
    // Never in the middle of a character: two bytes of it go, not one.
    EXPECT_EQ(entryUniqueID("0\u00e9" + std::string(54, 'x') + ids), std::string(54, 'x') + ids);
    EXPECT_EQ(entryUniqueID(ids), ids);
}

}  // namespace
