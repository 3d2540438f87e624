#include "platform/qt/Interface.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QEvent>
#include <QFile>
#include <QSlider>
#include <QUiLoader>
#include <algorithm>
#include <string>

#include "platform/NSViewController.h"
#include "platform/qt/Accessibility.h"
#include "platform/qt/DecoderLayout.h"
#include "platform/qt/ImageView.h"
#include "platform/qt/Look.h"
#include "platform/qt/SliderPace.h"
#include "platform/qt/WidgetPeer.h"
#include "platform/qt/Widgets.h"

namespace platform {

namespace {

/// Makes the widgets of this layer besides the toolkit's own.
class Loader : public QUiLoader {
  public:
    Loader() { clearPluginPaths(); }  // no plug-in of the desktop changes a widget

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        QWidget* widget = createOwn(className, parent);
        if (widget == nullptr)
            return QUiLoader::createWidget(className, parent, name);
        widget->setObjectName(name);
        return widget;
    }

  private:
    static QWidget* createOwn(const QString& className, QWidget* parent) {
        if (className == QLatin1String("PopUpButton"))
            return new PopUpButton(parent);
        if (className == QLatin1String("ComboBox"))
            return new ComboBox(parent);
        if (className == QLatin1String("ImageToggle"))
            return new ImageToggle(parent);
        if (className == QLatin1String("ImageView"))
            return new ImageView(parent);
        if (className == QLatin1String("ValueLabel"))
            return new ValueLabel(parent);
        return nullptr;
    }
};

/// Lets the wheel change a value only where the focus is; elsewhere it scrolls the page.
class WheelGuard : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Wheel || widget == nullptr || widget->hasFocus())
            return QObject::eventFilter(watched, event);
        event->ignore();
        return true;
    }
};

void guardWheel(QWidget& window) {
    auto* guard = new WheelGuard(&window);
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (qobject_cast<QSlider*>(widget) == nullptr &&
            qobject_cast<QComboBox*>(widget) == nullptr)
            continue;
        widget->setFocusPolicy(Qt::StrongFocus);
        widget->installEventFilter(guard);
    }
}

}  // namespace

std::unique_ptr<InterfaceWindow> InterfaceWindow::load(NSViewController& controller) {
    QFile file(QStringLiteral(":/MainWindow.ui"));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    installLook();
    installAccessibility();
    std::unique_ptr<QWidget> window(Loader().load(&file));
    if (!window)
        return nullptr;
    return std::unique_ptr<InterfaceWindow>(new InterfaceWindow(controller, std::move(window)));
}

InterfaceWindow::InterfaceWindow(NSViewController& controller, std::unique_ptr<QWidget> window)
    : controller_(controller),
      window_(std::move(window)),
      pace_(std::make_unique<SliderPace>(*window_)) {
    // As wide as the preview needs to show each pixel of a picture.
    window_->resize(window_->sizeHint().width(), window_->height());
    DecoderLayout::align(*window_);
    guardWheel(*window_);
    nameLists(*window_);
    connectOutlets();
    connectActions();
    controller.setTitleHandler(
        [this](std::string_view title) { window_->setWindowTitle(fromUtf8(title)); });
}

InterfaceWindow::~InterfaceWindow() {
    pace_->flush();
    controller_.setTitleHandler({});
}

NSView InterfaceWindow::reference(QWidget& widget) const {
    return NSView(std::make_shared<WidgetPeer>(WidgetPeer{&widget, pace_.get()}));
}

void InterfaceWindow::connectOutlets() {
    for (const auto& outlet : controller_.outlets())
        if (auto* widget = window_->findChild<QWidget*>(fromUtf8(outlet.name)))
            outlet.reference->connect(reference(*widget));
}

void InterfaceWindow::connectActions() {
    const auto offered = controller_.actions();
    for (auto* widget : window_->findChildren<QWidget*>()) {
        const std::string wanted = widget->property("action").toString().toStdString();
        const auto action = std::ranges::find(offered, wanted, &NSAction::selector);
        if (action != offered.end())
            connectAction(*widget, *action);
    }
}

void InterfaceWindow::connectAction(QWidget& widget, const NSAction& action) {
    const auto perform = [this, &action, sender = reference(widget)] {
        action.perform(controller_, sender);
    };
    const auto performInTurn = [this, perform] {
        pace_->flush();
        perform();
    };
    if (auto* slider = qobject_cast<QAbstractSlider*>(&widget))
        pace_->connectAction(*slider, perform);
    else if (auto* button = qobject_cast<QAbstractButton*>(&widget))
        QObject::connect(button, &QAbstractButton::clicked, pace_.get(), performInTurn);
    else if (auto* list = qobject_cast<QComboBox*>(&widget))
        QObject::connect(list, &QComboBox::activated, pace_.get(), performInTurn);
}

}  // namespace platform
