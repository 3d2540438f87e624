// The real window, controller and channel on devices that say anything, while a user works the
// widgets in any order.

#include <QApplication>
#include <set>

#include "camera/Transfer.h"
#include "fuzz/Input.h"
#include "platform/MainLoop.h"
#include "platform/backend/Backends.h"
#include "platform/backend/CaptureBackend.h"
#include "platform/backend/LogSink.h"
#include "platform/backend/UsbBackend.h"
#include "tests/support/WindowFixture.h"

namespace {

using namespace platform;

/// What happens while a device takes its time; the main loop hears of it afterwards.
std::function<void()> meanwhile;

/// Counts the pictures that somebody still holds.
const auto held = std::make_shared<int>();

/// Sends a flood of pictures of any sizes, or none.
struct AnySource : VideoSource {
    void start(const VideoLimits& /*limits*/, VideoSink& sink) override {
        const int width = input.byte();
        const int height = input.byte();
        const auto write = [kept = held, width, height](std::byte* pixels, int bytesPerLine) {
            for (int y = 0; y < height; ++y)
                std::fill_n(pixels + std::ptrdiff_t{y} * bytesPerLine, 4 * width, std::byte{0xFF});
        };
        for (int count = width * height > 0 ? input.byte() : 0; count > 0; --count)
            sink.frame({width, height, write});
        if (input.seldom())
            sink.noted(input.text());
        if (input.seldom())
            sink.failed(input.text());
    }
    void stop() override {}
};

/// A device with all that it has. What it says of itself when it comes stays.
struct AnyDevice : UsbDevice, UsbInterface, CaptureDevice, std::enable_shared_from_this<AnyDevice> {
    static IOReturn anyStatus() { return input.seldom() ? input.byte() : 0; }
    IOReturn createPlugIn() override { return anyStatus(); }
    IOReturn queryInterface() override { return anyStatus(); }
    std::uint16_t vendorID() const override { return 0xAB; }
    std::uint16_t productID() const override { return product; }
    std::uint32_t locationID() const override { return product; }
    std::string uniqueID() const override { return identifier; }
    std::string localizedName() const override { return name; }
    bool hasVideo() const override { return video; }
    IOReturn interfaces(std::vector<std::shared_ptr<UsbInterface>>& found) override {
        found.resize(2 - input.byte() % 3U, shared_from_this());
        return anyStatus();
    }
    Descriptor descriptor() const override {
        return input.seldom() ? Descriptor{input.byte(), input.byte()} : Descriptor{14, 1};
    }
    IOReturn open() override { return anyStatus(); }
    IOReturn close() override { return 0; }
    IOReturn controlRequest(IOUSBDevRequest& request) override {
        static constexpr std::uint32_t lengths[] = {0xFFFF, 0xFFFF, 2, 1, 0};
        const auto count = std::min<std::uint32_t>(request.wLength, input.oneOf(lengths));
        const std::span data(static_cast<std::uint8_t*>(request.pData), count);
        const bool in = (request.bmRequestType & 0x80U) != 0;
        in ? input.fill(data) : sent.assign(data.begin(), data.end());  // reads each byte there is
        const unsigned manner = input.byte() % 8;
        request.wLenDone = manner == 1 ? ~0U : count;
        if (manner == 2)
            postToMainThread([] { meanwhile(); });
        return manner == 3 ? EPIPE : manner == 4 ? ETIMEDOUT : 0;
    }
    std::unique_ptr<VideoSource> open(std::string& error) override {
        if (input.seldom())
            return error = input.text(), nullptr;
        return std::make_unique<AnySource>();
    }

    std::uint8_t product = input.byte() % 10;
    std::string identifier = input.seldom() ? input.text() : "00ab000" + std::to_string(product);
    std::string name = input.text();
    bool video = !input.seldom();
    std::vector<std::uint8_t> sent;
};

std::vector<std::shared_ptr<AnyDevice>> attached;

template <class Backend, class Device>
struct Bus : Backend {
    std::vector<std::shared_ptr<Device>> devices() override {
        return {attached.begin(), attached.end()};
    }
};

void move(QSlider& slider) {
    if (!slider.isEnabled())
        return;
    const int low = input.byte();
    slider.setValue(slider.minimum() + 256 * input.byte() + low);
}

void chooseIn(QComboBox& list) {
    if (list.count() == 0 || !list.isEnabled())
        return;
    list.setCurrentIndex(input.byte() % list.count());
    emit list.activated(list.currentIndex());
}

void transfer() {
    std::vector<std::uint8_t> buffer(1 + input.byte() % 40);  // the sanitizer watches its end
    Capture_Transfer(input.byte() % 32U, input.byte() % 3, buffer.data(),
                     static_cast<std::uint32_t>(buffer.size()), input.byte() % 4U);
}

/// One life of the program, with the cameras and the log that it has.
struct Program : LiveWindow, Bus<CaptureBackend, CaptureDevice>, LogSink {
    Program() {
        installBackends({&usb, this, this});
        meanwhile = [this] {  // behind a box nothing but the bus moves
            QApplication::activeModalWidget() == nullptr ? step() : unplug();
        };
        for (int count = input.byte() % 4; count > 0; --count)
            attached.push_back(std::make_shared<AnyDevice>());
        controller().viewDidLoad();
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() override { stop(); }
    void setListener(CaptureListener* chosen) override { listener = chosen; }
    void line(std::string_view text) override {
        require(QUtf8StringView(text.data(), std::ssize(text)).isValidUtf8() &&
                    std::ranges::none_of(text, [](char c) { return c >= 0 && c < ' '; }),
                "an event is one line of UTF-8");
    }

    void unplug() {
        if (attached.empty())
            return;
        const auto leaving = input.oneOf(attached);
        std::erase(attached, leaving);
        listener->left(leaving);
    }
    template <class Widget>
    Widget& any() {
        return *input.oneOf(window().findChildren<Widget*>());
    }
    /// Lets one thing happen: by the user's hand, on the bus or in the camera.
    void step() {
        const std::function<void()> deeds[] = {
            [this] { button("OnBtnOpenCamera:").click(); },
            [this] { list("m_cbxDevice").setEditText(QString::fromStdString(input.text())); },
            [this] { move(any<QSlider>()); },
            [this] { chooseIn(any<QComboBox>()); },
            [this] { any<QAbstractButton>().click(); },
            [this] { listener->arrived(attached.emplace_back(std::make_shared<AnyDevice>())); },
            [this] { unplug(); },
            transfer};
        isAtRest = false;
        input.oneOf(deeds)();
    }
    void check() {
        for (const auto* slider : window().findChildren<QSlider*>())
            require(slider->minimum() < slider->maximum(), "a slider has a range");
        std::multiset<std::string> listed, cameras;
        const QComboBox& box = list("m_cbxDevice");
        for (int i = 0; i < box.count(); ++i)
            listed.insert(box.itemText(i).toStdString());
        for (const auto& device : attached)
            if (device->video)
                cameras.emplace(entryName(AVCaptureDevice(device).localizedName()));
        require(listed == cameras, "the list shows the cameras of the bus");
        // The session that is shown and the one that failed to replace it hold two each.
        require(held.use_count() <= 5, "of a flood of pictures the latest are kept");
    }

    bool isAtRest = true;
    Bus<UsbBackend, UsbDevice> usb;
    CaptureListener* listener = nullptr;
};

}  // namespace

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";  // the caches of the toolkit's fonts
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static int arguments = 0;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(arguments, nullptr);
    input.rest = {data, size};
    const NextBox box(input.byte() % 2 == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    Program program;
    do {
        program.step();
        while (!std::exchange(program.isAtRest, true))  // what happened meanwhile is sent as well
            QCoreApplication::processEvents();
        program.check();
    } while (!input.atEnd());
    g_length = 0;
    attached.clear();
    return 0;
}
