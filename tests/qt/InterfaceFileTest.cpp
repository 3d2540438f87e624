// What the application relies on in the interface file.

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QRegularExpression>
#include <QSlider>
#include <set>

#include "tests/qt/TestWindow.h"

namespace {

struct Row {
    const char* name;
    const char* base;    ///< the widget's kind, or a class that it derives from
    const char* action;  ///< empty when it only displays
};

constexpr Row kRows[] = {
    {"m_cbxDevice", "QComboBox", "OnCbxDeviceChanged:"},
    {"m_lableVersion", "QLabel", ""},
    {"m_previewWnd", "QWidget", ""},
    {"m_btnCompSwitch", "QToolButton", "OnBtnCompSwitch:"},
    {"m_SliderCompValue", "QSlider", "OnSliderCompValue:"},
    {"m_SpinCompValue", "QComboBox", "OnChooseCompValue:"},
    {"m_SliderRgain", "QSlider", "OnSliderRgain:"},
    {"m_SpinRgain", "QComboBox", "OnChooseRgain:"},
    {"m_btnBgain", "QSlider", "OnSliderBgain:"},
    {"m_SpinBgain", "QComboBox", "OnSpinBgain:"},
    {"m_SliderDrc", "QSlider", "OnSliderDrc:"},
    {"m_btnDrc", "QComboBox", "OnChooseDrc:"},
    {"m_SliderNR2D", "QSlider", "OnSliderNR2D:"},
    {"m_SliderNR3D", "QSlider", "OnSliderNR3D:"},
    {"m_btnNR2D", "QComboBox", "OnBtnNR2D:"},
    {"m_btnNR3D", "QComboBox", "OnBtnNR3D:"},
    {"m_btnStyleNormal", "QRadioButton", "OnBtnStyleNormal:"},
    {"m_btnStyleClarity", "QRadioButton", "OnBtnStyleClarity:"},
    {"m_btnBright", "QRadioButton", "OnBtnStyleBright:"},
    {"m_btnStylePC", "QRadioButton", "OnBtnStylePC:"},
    {"m_btnClarityLed", "QRadioButton", "OnBtnStyleClarityLed:"},
    {"m_btnSytleFace", "QRadioButton", "OnBtnSytleFace:"},
    {"m_btnStyleDefault", "QRadioButton", "OnBtnStyleDefault:"},
    {"m_btnH264Switch", "QToolButton", "OnBtnH264Switch:"},
    {"m_btnAudioSwitch", "QToolButton", "OnBtnAudioSwitch:"},
    {"m_btnFlipV", "QToolButton", "OnBtnFlipV:"},
    {"m_btnFlipH", "QToolButton", "OnBtnFlipH:"},
    {"m_sliderBright", "QSlider", "OnSliderBright:"},
    {"m_textBright", "QLabel", ""},
    {"m_sliderContrast", "QSlider", "OnSliderContrast:"},
    {"m_textContrast", "QLabel", ""},
    {"m_sliderHue", "QSlider", "OnSliderHue:"},
    {"m_textHue", "QLabel", ""},
    {"m_sliderSaturation", "QSlider", "OnSliderSaturation:"},
    {"m_textSaturation", "QLabel", ""},
    {"m_sliderSharpness", "QSlider", "OnSliderSharpness:"},
    {"m_textSharpness", "QLabel", ""},
    {"m_sliderGama", "QSlider", "OnSliderGama:"},
    {"m_textGama", "QLabel", ""},
    {"m_sliderWB", "QSlider", "OnSliderWB:"},
    {"m_textWb", "QLabel", ""},
    {"m_btnAutoWB", "QCheckBox", "OnBtnAutoWB:"},
    {"m_sliderBackLight", "QSlider", "OnSliderBackLight:"},
    {"m_textBackLight", "QLabel", ""},
    {"m_sliderGain", "QSlider", "OnSliderGain:"},
    {"m_textGain", "QLabel", ""},
    {"m_sliderZoom", "QSlider", "OnSliderZoom:"},
    {"m_textZoom", "QLabel", ""},
    {"m_sliderFocus", "QSlider", "OnSliderFocus:"},
    {"m_textFocus", "QLabel", ""},
    {"m_btnAutoFocus", "QCheckBox", "OnBtnAutoFocus:"},
    {"m_sliderAutoExposure", "QSlider", "OnSliderAutoExposure:"},
    {"m_textExposure", "QLabel", ""},
    {"m_btnAutoExposure", "QCheckBox", "OnBtnAutoExposure:"},
    {"m_sliderPano", "QSlider", "OnSliderPano:"},
    {"m_textPano", "QLabel", ""},
    {"m_sliderTile", "QSlider", "OnSliderTile:"},
    {"m_textTile", "QLabel", ""},
    {"m_btn50HZ", "QRadioButton", "OnAntiFlicker50HZ:"},
    {"m_btn60HZ", "QRadioButton", "OnAntiFlicker60HZ:"},
    {"buttonOpenCamera", "QPushButton", "OnBtnOpenCamera:"},
    {"buttonRestore", "QPushButton", "OnBtnRestore:"},
    {"buttonUvcDefault", "QPushButton", "OnBtnUvcDefault:"},
};

using InterfaceFileTest = WindowTest;

TEST_F(InterfaceFileTest, HasEveryWidgetWithItsKindActionAndName) {
    std::set<QString> names;
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        const auto found = root().findChildren<QWidget*>(row.name);
        ASSERT_EQ(found.size(), 1);
        const QWidget& widget = *found.front();
        EXPECT_TRUE(widget.inherits(row.base));
        EXPECT_EQ(widget.property("action").toString(), row.action);
        if (*row.action == '\0')
            continue;
        EXPECT_FALSE(widget.accessibleName().isEmpty());
        EXPECT_TRUE(names.insert(widget.accessibleName()).second) << "is not unique";
        EXPECT_EQ(widget.focusPolicy() & Qt::StrongFocus, Qt::StrongFocus);
    }
}

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
