// Start-up, and the camera list that follows cameras as they come and go.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QToolButton>
#include <set>

#include "devices/CameraList.h"
#include "tests/support/WindowBench.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What the list and the combo box hold, item by item: "name id", and what is shown.
struct Listed {
    std::vector<std::string> cameras;
    std::vector<std::string> items;
    std::string shown;
};

Listed listed(WindowBench& bench) {
    Listed all;
    for (const CameraEntry& entry : g_deviceList)
        all.cameras.emplace_back(std::string(entry.name.data()) + " " + entry.uniqueID.data());
    QComboBox& box = bench.list("m_cbxDevice");
    for (int i = 0; i < box.count(); ++i)
        all.items.push_back(box.itemText(i).toStdString());
    all.shown = box.currentText().toStdString();
    return all;
}

std::vector<std::string> items(WindowBench& bench, const char* name) {
    std::vector<std::string> texts;
    for (int i = 0; i < bench.list(name).count(); ++i)
        texts.push_back(bench.list(name).itemText(i).toStdString());
    return texts;
}

std::vector<std::string> numbersDown(int highest, int lowest) {
    std::vector<std::string> texts;
    for (; highest >= lowest; --highest)
        texts.push_back(std::to_string(highest));
    return texts;
}

TEST(StartUpTest, EveryOutletAndEveryActionHasItsOneWidget) {
    WindowBench bench;
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
    }
    std::set<std::string> offered;
    for (const NSAction& action : bench.controller().actions())
        offered.emplace(action.selector);
    EXPECT_EQ(sent, offered);
}

TEST(StartUpTest, PreparesThePagesAndOpensNoCamera) {
    WindowBench bench;
    EXPECT_EQ(bench.window().windowTitle().toStdString(), "Quelvo");
    for (const auto& [name, highest, lowest] : {std::tuple{"m_SpinCompValue", 7, -7},
                                                {"m_SpinRgain", 10, -10},
                                                {"m_SpinBgain", 10, -10},
                                                {"m_btnDrc", 8, 0},
                                                {"m_btnNR2D", 6, 0},
                                                {"m_btnNR3D", 8, 0}}) {
        EXPECT_EQ(items(bench, name), numbersDown(highest, lowest)) << name;
        EXPECT_EQ(bench.shown(name), "0") << name;
    }
    for (const char* name :
         {"m_btnCompSwitch", "m_btnH264Switch", "m_btnAudioSwitch", "m_btnFlipH", "m_btnFlipV"}) {
        EXPECT_EQ(bench.image(name), "button_off.png") << name;
        EXPECT_TRUE(dynamic_cast<QToolButton&>(bench.button(name)).autoRaise()) << name;
    }
    EXPECT_THAT(bench.requests(), IsEmpty());
}

TEST(StartUpTest, ListsTheVideoCamerasInOrderAndShowsTheFirst) {
    WindowBench bench(virtualcam::studioCamera(), false);
    bench.bus().plugMicrophone("microphone", "A microphone");
    bench.plugAnother("Second");
    bench.start();
    const Listed all = listed(bench);
    EXPECT_THAT(all.cameras, ElementsAre("Quelvo Studio Camera 0x14200000e7a14c10",
                                         "Second 0x14210000e7a14c11"));
    EXPECT_THAT(all.items, ElementsAre("Quelvo Studio Camera", "Second"));
    EXPECT_EQ(all.shown, "Quelvo Studio Camera");
    EXPECT_THAT(bench.log().take(), ElementsAre("kkk:3"));
}

TEST(StartUpTest, WithoutACameraTheListStaysEmptyUntilOneArrives) {
    WindowBench bench(virtualcam::studioCamera(), false);
    bench.bus().unplug(bench.cameraReference());
    bench.bus().plugMicrophone("microphone", "A microphone");
    bench.start();
    EXPECT_THAT(listed(bench).items, IsEmpty());
    EXPECT_THAT(listed(bench).cameras, IsEmpty());
    EXPECT_EQ(listed(bench).shown, "");
    EXPECT_THAT(bench.log().take(), ElementsAre("kkk:1"));

    bench.bus().plug(bench.cameraReference());
    EXPECT_EQ(listed(bench).shown, "Quelvo Studio Camera");
    EXPECT_THAT(bench.log().take(),
                ElementsAre("processAddDeviceEventWithNotification123", "0x14200000e7a14c10"));
}

TEST(CameraListTest, FollowsCamerasAndSkipsMicrophones) {
    WindowBench bench;
    bench.log().take();
    const auto second = bench.plugAnother("Second");
    EXPECT_EQ(listed(bench).shown, "Quelvo Studio Camera");  // the shown one stays
    EXPECT_THAT(listed(bench).items, SizeIs(2));
    bench.bus().plugMicrophone("microphone", "A microphone");
    bench.bus().unplugMicrophone("microphone");
    EXPECT_THAT(bench.log().take(),
                ElementsAre("processAddDeviceEventWithNotification123", "0x14210000e7a14c11",
                            "processAddDeviceEventWithNotification123",
                            "processRemoveDeviceEventWithNotification"));

    bench.bus().unplug(second);
    EXPECT_EQ(listed(bench).shown, "");  // whichever left
    EXPECT_THAT(listed(bench).items, ElementsAre("Quelvo Studio Camera"));
    EXPECT_THAT(bench.log().take(),
                ElementsAre("processRemoveDeviceEventWithNotification", "Second"));

    bench.bus().plug(second);
    EXPECT_EQ(listed(bench).shown, "");  // an arrival changes no text while others are listed
    bench.bus().unplug(bench.cameraReference());
    bench.bus().plug(bench.cameraReference());
    EXPECT_THAT(listed(bench).items, ElementsAre("Second", "Quelvo Studio Camera"));
    EXPECT_THAT(listed(bench).cameras, ElementsAre("Second 0x14210000e7a14c11",
                                                   "Quelvo Studio Camera 0x14200000e7a14c10"));
}

TEST(CameraListTest, OfEqualNamesTheFirstListedGoes) {
    WindowBench bench;
    const auto twin = bench.plugAnother("Quelvo Studio Camera");
    EXPECT_THAT(listed(bench).items, ElementsAre("Quelvo Studio Camera", "Quelvo Studio Camera"));
    bench.bus().unplug(twin);
    EXPECT_THAT(listed(bench).cameras, ElementsAre("Quelvo Studio Camera 0x14210000e7a14c11"));
    EXPECT_THAT(listed(bench).items, SizeIs(1));
}

TEST(CameraListTest, CutsLongNamesBetweenCharactersAndFindsThemAgain) {
    WindowBench bench;
    bench.log().take();
    std::string name(62, 'n');
    name += "\u00e9 with more behind";
    const auto camera = bench.plugAnother(name);
    EXPECT_EQ(listed(bench).items[1], std::string(62, 'n'));
    bench.list("m_cbxDevice").setCurrentIndex(1);
    bench.buttonSending("OnBtnOpenCamera:").click();
    EXPECT_FALSE(camera->requests().empty());
    bench.bus().unplug(camera);
    EXPECT_THAT(listed(bench).items, ElementsAre("Quelvo Studio Camera"));
    EXPECT_THAT(bench.log().take("n"), ElementsAre(name));

    const auto broken = bench.plugAnother("Bro\xFFken\n\x1B[1m");
    EXPECT_EQ(listed(bench).items[1], "Bro\uFFFDken  [1m");
    bench.bus().unplug(broken);
    EXPECT_THAT(listed(bench).items, SizeIs(1));
}

TEST(CameraListTest, CutsLongIdentifiersToTheirEnd) {
    const std::string ids = "e7a14c10";
    EXPECT_EQ(entryUniqueID(std::string(70, 'x') + ids), std::string(55, 'x') + ids);
    // Never in the middle of a character: two bytes of it go, not one.
    EXPECT_EQ(entryUniqueID("0\u00e9" + std::string(54, 'x') + ids), std::string(54, 'x') + ids);
    EXPECT_EQ(entryUniqueID(ids), ids);
}

TEST(CameraListTest, ALeavingNameThatIsNotListedChangesNothing) {
    WindowBench bench;
    const auto second = bench.plugAnother("Second");
    g_deviceList.pop_back();
    bench.controller().m_cbxDevice.removeItemAtIndex(1);
    bench.controller().m_cbxDevice.setStringValue("typed");
    bench.bus().unplug(second);
    EXPECT_THAT(listed(bench).items, SizeIs(1));
    EXPECT_EQ(listed(bench).shown, "typed");
}

}  // namespace
