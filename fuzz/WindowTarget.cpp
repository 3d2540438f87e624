// The real window, controller and channel on devices that say anything, while a user works the
// widgets in any order.

#include <QApplication>
#include <cerrno>
#include <set>

#include "app/ViewController.h"
#include "camera/Transfer.h"
#include "camera/UVCCameraControl.h"
#include "devices/CameraList.h"
#include "devices/CaptureSession.h"
#include "fuzz/Input.h"
#include "pages/vendor/VendorPage.h"
#include "platform/AVCaptureDevice.h"
#include "platform/AVCaptureSession.h"
#include "platform/MainLoop.h"
#include "platform/backend/Backends.h"
#include "platform/backend/CaptureBackend.h"
#include "platform/backend/LogSink.h"
#include "platform/backend/UsbBackend.h"
#include "platform/qt/Interface.h"
#include "tests/support/WindowHands.h"

namespace {

/// What happens while a device takes its time; the main loop hears of it afterwards.
std::function<void()> meanwhile;

IOReturn anyStatus() {
    static constexpr IOReturn failures[] = {EPIPE, ENODEV, ETIMEDOUT, EBUSY, EACCES, -1};
    return input.seldom() ? input.oneOf(failures) : 0;
}

/// Sends no pictures: those are not the camera's own, but the decoder's.
struct FuzzSource : platform::VideoSource {
    void start(const platform::VideoLimits& /*limits*/, platform::VideoSink& sink) override {
        if (input.seldom())
            sink.failed(input.text());
    }
    void stop() override {}
};

/// A device with all that it has. What it says of itself when it comes stays.
struct FuzzDevice : platform::UsbDevice,
                    platform::UsbInterface,
                    platform::CaptureDevice,
                    std::enable_shared_from_this<FuzzDevice> {
    IOReturn createPlugIn() override { return anyStatus(); }
    IOReturn queryInterface() override { return anyStatus(); }
    std::uint16_t vendorID() const override { return 0xAB; }
    std::uint16_t productID() const override { return product; }
    std::uint32_t locationID() const override { return product; }
    std::string uniqueID() const override { return identifier; }
    std::string localizedName() const override { return name; }
    bool hasVideo() const override { return video; }
    IOReturn interfaces(std::vector<std::shared_ptr<platform::UsbInterface>>& found) override {
        found.resize(2 - input.byte() % 3U, shared_from_this());
        return anyStatus();
    }
    Descriptor descriptor() const override {
        return input.seldom() ? Descriptor{input.byte(), input.byte()} : Descriptor{14, 1};
    }
    IOReturn open() override { return anyStatus(); }
    IOReturn close() override { return 0; }
    IOReturn controlRequest(IOUSBDevRequest& request) override {
        static constexpr std::size_t lengths[] = {0xFFFF, 0xFFFF, 2, 1, 0};
        const std::size_t count = std::min<std::size_t>(request.wLength, input.oneOf(lengths));
        const std::span data(static_cast<std::uint8_t*>(request.pData), count);
        if ((request.bmRequestType & 0x80U) != 0)
            input.fill(data);
        else  // each byte is there to be read
            sent.assign(data.begin(), data.end());
        const unsigned manner = input.byte() % 8;
        request.wLenDone = static_cast<std::uint32_t>(manner == 1 ? ~0U : count);
        if (manner == 2)
            platform::postToMainThread([] { meanwhile(); });
        return manner == 3 ? EPIPE : 0;
    }
    std::unique_ptr<platform::VideoSource> open(std::string& error) override {
        if (input.seldom())
            return error = input.text(), nullptr;
        return std::make_unique<FuzzSource>();
    }

    std::uint8_t product = input.byte() % 10;
    std::string identifier = input.seldom() ? input.text() : "00ab000" + std::to_string(product);
    std::string name = input.text();
    bool video = !input.seldom();
    std::vector<std::uint8_t> sent;
};

std::vector<std::shared_ptr<FuzzDevice>> attached;

template <class Backend, class Device>
struct Bus : Backend {
    std::vector<std::shared_ptr<Device>> devices() override {
        return {attached.begin(), attached.end()};
    }
};

struct CaptureSide : Bus<platform::CaptureBackend, platform::CaptureDevice> {
    void setListener(platform::CaptureListener* chosen) override { listener = chosen; }
    void plug() {
        attached.push_back(std::make_shared<FuzzDevice>());
        if (listener != nullptr)
            listener->arrived(attached.back());
    }
    void unplug() {
        if (attached.empty())
            return;
        std::swap(input.oneOf(attached), attached.back());
        const auto leaving = attached.back();
        attached.pop_back();
        listener->left(leaving);
    }
    platform::CaptureListener* listener = nullptr;
};

struct CheckedLog : platform::LogSink {
    void line(std::string_view text) override {
        require(QUtf8StringView(text.data(), std::ssize(text)).isValidUtf8(), "a line is UTF-8");
        require(std::ranges::none_of(text, [](char c) { return c >= 0 && c < ' '; }),
                "an event is one line");
    }
};

/// One life of the program.
struct Program : WindowHands {
    Program() {
        platform::installBackends({&usb, &capture, &log});
        meanwhile = [this] {  // behind a box nothing but the bus moves
            QApplication::activeModalWidget() == nullptr ? step() : capture.unplug();
        };
        for (int count = input.byte() % 4; count > 0; --count)
            capture.plug();
        controller.viewDidLoad();
    }
    QWidget& window() override { return interface->widget(); }

    template <class Widget>
    Widget& any() {
        const auto all = window().findChildren<Widget*>();
        return *input.oneOf(all);
    }
    /// Lets one thing happen: by the user's hand, on the bus or in the camera.
    void step();
    void check();

    int steps = 0;
    CheckedLog log;
    Bus<platform::UsbBackend, platform::UsbDevice> usb;
    CaptureSide capture;
    ViewController controller;
    std::unique_ptr<platform::InterfaceWindow> interface =
        platform::InterfaceWindow::load(controller);
};

void move(QSlider& slider) {
    if (slider.isEnabled())
        slider.setValue(slider.minimum() + input.number<std::uint16_t>());
}

void chooseIn(QComboBox& list) {
    if (list.count() == 0 || !list.isEnabled())
        return;
    list.setCurrentIndex(input.byte() % list.count());
    emit list.activated(list.currentIndex());
}

/// Behind its end the sanitizer watches.
void transfer() {
    std::vector<std::uint8_t> buffer(1 + input.byte() % 40);
    Capture_Transfer(input.byte() % 32U, input.byte() % 3, buffer.data(),
                     static_cast<std::uint32_t>(buffer.size()), input.byte() % 4U);
}

/// What the window does not call, or never with such values.
void workByName(UVCCameraControl& camera) {
    const auto value = input.number<float>();
    camera.setGain(value + camera.getGain());
    camera.setBrightness(value + camera.getBrightness());
    camera.setContrast(value + camera.getContrast());
    camera.setSaturation(value + camera.getSaturation());
    camera.setSharpness(value + camera.getSharpness());
    camera.setWhiteBalance(value + camera.getWhiteBalance());
    camera.setExposure(value + camera.getExposure());
    camera.setData(input.number<std::int64_t>(), input.byte() - 1, input.byte(), input.byte());
    if (const auto* control = findControl(input.byte() % 3, input.byte() % 32))
        camera.getRangeForControl(control);
    UVCCameraControl::initWithLocationID(input.byte());
}

void Program::step() {
    ++steps;
    switch (input.byte() % 9) {
        case 0:
            return buttonSending("OnBtnOpenCamera:").click();
        case 1:
            return list("m_cbxDevice").setEditText(QString::fromStdString(input.text()));
        case 2:
            return move(any<QSlider>());
        case 3:
            return chooseIn(any<QComboBox>());
        case 4:
            return any<QAbstractButton>().click();
        case 5:
            return capture.plug();
        case 6:
            return capture.unplug();
        case 7:
            return transfer();
        default:
            return g_uvcCamera ? workByName(*g_uvcCamera) : void();
    }
}

void Program::check() {
    for (const auto* slider : window().findChildren<QSlider*>())
        require(slider->minimum() < slider->maximum() && slider->minimum() <= slider->value() &&
                    slider->value() <= slider->maximum(),
                "a slider stays within its range");
    for (const vendor::ValueControl* row : vendor::values)
        require((controller.*row->list).title() ==
                    std::to_string((controller.*row->slider).intValue()),
                "a list shows its slider's number");
    std::multiset<std::string> listed, cameras;
    for (int i = 0; i < controller.m_cbxDevice.numberOfItems(); ++i)
        listed.insert(controller.m_cbxDevice.itemObjectValueAtIndex(i));
    for (const auto& device : attached)
        if (device->video)
            cameras.emplace(entryName(AVCaptureDevice(device).localizedName()));
    require(listed == cameras, "the list shows the cameras of the bus");
}

}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the sanitizer's
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";  // the caches of the toolkit's fonts
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static int count = 3;
    static char arguments[][10] = {"fuzz", "-platform", "offscreen"};
    static char* list[] = {arguments[0], arguments[1], arguments[2], nullptr};
    static const QApplication application(count, list);
    input.rest = {data, size};
    const NextBox box(input.byte() % 2 == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    Program program;
    while (!input.atEnd()) {
        program.step();
        for (int done = 0; done != program.steps;) {  // what happened meanwhile is sent as well
            done = program.steps;
            QCoreApplication::processEvents();
        }
        program.check();
    }
    meanwhile = [] {};
    QCoreApplication::processEvents();
    g_captureSession.reset();
    g_uvcCamera.reset();
    g_length = 0;
    attached.clear();
    return 0;
}
