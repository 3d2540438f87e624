#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QEventLoop>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "platform/NSViewController.h"
#include "platform/qt/Interface.h"

/// A controller that notes each action with the value that its sender has by then.
class Recorder : public NSViewController {
  public:
    IBOutlet<NSSlider> bright{this, "m_sliderBright"};
    IBOutlet<NSSlider> contrast{this, "m_sliderContrast"};
    IBOutlet<NSSlider> redGain{this, "m_SliderRgain"};
    IBOutlet<NSTextField> brightText{this, "m_textBright"};
    IBOutlet<NSButton> pc{this, "m_btnStylePC"};
    IBOutlet<NSButton> face{this, "m_btnSytleFace"};
    IBOutlet<NSButton> autoFocus{this, "m_btnAutoFocus"};
    IBOutlet<NSButton> flip{this, "m_btnFlipV"};
    IBOutlet<NSPopUpButton> redList{this, "m_SpinRgain"};
    IBOutlet<NSComboBox> cameras{this, "m_cbxDevice"};
    IBOutlet<NSImageView> preview{this, "m_previewWnd"};
    IBOutlet<NSSlider> absent{this, "noSuchWidget"};

    std::vector<std::string> sent;
    std::function<void()> onBright = [] {};  ///< called by the next action of `bright`

    void OnSliderBright(const NSSlider& sender) {
        note("bright", sender.intValue());
        std::exchange(onBright, [] {})();
    }
    void OnSliderContrast(const NSSlider& sender) { note("contrast", sender.intValue()); }
    void OnBtnStylePC(const NSButton& sender) { note("pc", sender.state()); }
    void OnBtnSytleFace(const NSButton& sender) { note("face", sender.state()); }
    void OnBtnAutoFocus(const NSButton& sender) { note("autoFocus", sender.state()); }
    void OnBtnFlipV(const NSButton& sender) { note("flip", sender.state()); }
    void OnChooseRgain(const NSPopUpButton& sender) { sent.push_back("red " + sender.title()); }
    void OnCbxDeviceChanged(const NSComboBox& sender) {
        sent.push_back("camera " + sender.stringValue());
    }
    void OnBtnOpenCamera(const NSButton& sender) { note("open", sender.state()); }

    std::span<const NSAction> actions() const override {
        static constexpr NSAction rows[] = {
            IBAction<&Recorder::OnSliderBright>("OnSliderBright:"),
            IBAction<&Recorder::OnSliderContrast>("OnSliderContrast:"),
            IBAction<&Recorder::OnBtnStylePC>("OnBtnStylePC:"),
            IBAction<&Recorder::OnBtnSytleFace>("OnBtnSytleFace:"),
            IBAction<&Recorder::OnBtnAutoFocus>("OnBtnAutoFocus:"),
            IBAction<&Recorder::OnBtnFlipV>("OnBtnFlipV:"),
            IBAction<&Recorder::OnChooseRgain>("OnChooseRgain:"),
            IBAction<&Recorder::OnCbxDeviceChanged>("OnCbxDeviceChanged:"),
            IBAction<&Recorder::OnBtnOpenCamera>("OnBtnOpenCamera:"),
        };
        return rows;
    }

  private:
    void note(const char* what, int value) {
        sent.push_back(std::string(what) + ' ' + std::to_string(value));
    }
};

/// The real window, shown, on a recording controller.
class WindowTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(window);
        root().show();
        QApplication::setActiveWindow(&root());
        ASSERT_TRUE(QTest::qWaitForWindowActive(&root()));
    }

    QWidget& root() { return window->widget(); }

    /// Finds a widget by its name and brings its page to the front.
    template <class Widget>
    Widget& find(const char* name) {
        auto* widget = root().findChild<Widget*>(QString::fromLatin1(name));
        auto* tabs = root().findChild<QTabWidget*>();
        for (int page = 0; page < tabs->count(); ++page)
            if (tabs->widget(page)->isAncestorOf(widget))
                tabs->setCurrentIndex(page);
        return *widget;
    }

    /// Handles what is queued, and what waits for the queue to be empty.
    static void runQueued() {
        QEventLoop loop;
        QTimer last;
        QObject::connect(&last, &QTimer::timeout, &loop, &QEventLoop::quit);
        last.start(0);
        loop.exec();
    }

    /// Returns what was sent by now, and forgets it.
    std::vector<std::string> takeSent() {
        runQueued();
        return std::exchange(controller.sent, {});
    }

    Recorder controller;
    std::unique_ptr<platform::InterfaceWindow> window = platform::InterfaceWindow::load(controller);
};
