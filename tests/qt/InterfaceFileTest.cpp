// What the application relies on in the interface file.

#include <QRegularExpression>
#include <QSlider>
#include <set>

#include "tests/qt/TestWindow.h"

namespace {

using InterfaceFileTest = WindowTest;

TEST_F(InterfaceFileTest, SlidersHoldWhatTheirControlsNeed) {
    struct Range {
        const char* name;
        int minimum;
        int maximum;
        int tickInterval;
    };
    const Range exact[] = {{"m_sliderAutoExposure", -13, -5, 0},
                           {"m_sliderPano", -180, 180, 0},
                           {"m_sliderTile", -180, 180, 0},
                           {"m_SliderCompValue", -7, 7, 1},
                           {"m_SliderDrc", 0, 8, 1},
                           {"m_SliderNR2D", 0, 6, 1},
                           {"m_SliderNR3D", 0, 8, 1},
                           {"m_SliderRgain", -10, 10, 1},
                           {"m_btnBgain", -10, 10, 1}};
    for (const Range& range : exact) {
        const auto& slider = find<QSlider>(range.name);
        EXPECT_EQ(slider.minimum(), range.minimum) << range.name;
        EXPECT_EQ(slider.maximum(), range.maximum) << range.name;
        EXPECT_EQ(slider.tickInterval(), range.tickInterval) << range.name;
    }
    const std::pair<const char*, int> held[] = {
        {"m_sliderBright", 7},    {"m_sliderContrast", 7},     {"m_sliderHue", 7},
        {"m_sliderHue", -180},    {"m_sliderSaturation", 100}, {"m_sliderSharpness", 9},
        {"m_sliderGama", 238},    {"m_sliderWB", 6500},        {"m_sliderBackLight", 0},
        {"m_sliderGain", 6},      {"m_sliderZoom", 0},         {"m_sliderFocus", 0},
        {"m_sliderBright", -255}, {"m_sliderContrast", -255}};
    for (const auto& [name, value] : held) {
        auto& slider = find<QSlider>(name);
        slider.setValue(value);
        EXPECT_EQ(slider.value(), value) << name;
    }
}

TEST_F(InterfaceFileTest, MnemonicsAreUniqueOnEachPage) {
    auto* tabs = root().findChild<QTabWidget*>();
    const QRegularExpression mnemonic("&([^&])");
    for (int page = 0; page < tabs->count(); ++page) {
        tabs->setCurrentIndex(page);
        std::vector<QString> texts = {tabs->tabText(0), tabs->tabText(1)};
        for (const auto* widget : root().findChildren<QWidget*>())
            if (widget->isVisible())
                for (const char* property : {"text", "title"})
                    texts.push_back(widget->property(property).toString());
        std::set<QString> seen;
        for (const QString& text : texts) {
            const auto match = mnemonic.match(text);
            if (match.hasMatch() && !seen.insert(match.captured(1).toUpper()).second)
                ADD_FAILURE() << text.toStdString();
        }
        EXPECT_GT(seen.size(), 15U);
    }
}

TEST_F(InterfaceFileTest, TabReachesEveryControlFromTopToBottom) {
    const auto next = [] {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        return QApplication::focusWidget()->objectName();
    };
    find<QSlider>("m_sliderBright");
    root().findChild<QWidget*>("m_cbxDevice")->setFocus();
    for (const char* expected :
         {"buttonOpenCamera", "pages", "m_sliderBright", "m_sliderContrast", "m_sliderHue",
          "m_sliderSaturation", "m_sliderSharpness", "m_sliderGama", "m_sliderBackLight",
          "m_sliderGain", "m_sliderWB", "m_btnAutoWB", "m_sliderAutoExposure", "m_btnAutoExposure",
          "m_btn50HZ"}) {
        QString reached = next();
        if (reached == "qt_tabwidget_tabbar")
            reached = "pages";
        EXPECT_EQ(reached, expected);
    }
}

TEST_F(InterfaceFileTest, FitsTheSmallestWindow) {
    root().resize(1024, 700);
    for (const char* name : {"m_SpinRgain", "m_sliderBright"}) {
        find<QWidget>(name);
        runQueued();
        EXPECT_EQ(root().width(), 1024);
        for (const auto* widget : root().findChildren<QWidget*>()) {
            const QRect place(widget->mapTo(&root(), QPoint()), widget->size());
            const bool worked = widget->isVisible() && !widget->property("action").isNull();
            EXPECT_TRUE(!worked || root().rect().contains(place))
                << widget->objectName().toStdString();
        }
    }
}

}  // namespace
