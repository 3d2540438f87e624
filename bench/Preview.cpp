// The window with a preview that plays a given GStreamer source instead of a camera's node, for the
// measurement of the whole process:
//
//   preview-bench SOURCE SECONDS
//
// At the end it prints how many pictures came, how many were painted, and how many of these late.

#include <fmt/core.h>
#include <gst/gst.h>

#include <QApplication>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <cstdlib>

#include "platform/backend/Backends.h"
#include "platform/linux/preview/ClosingPreviews.h"
#include "platform/linux/preview/Preview.h"
#include "tests/support/WindowFixture.h"

namespace {

using Clock = std::chrono::steady_clock;

/// What has come from the source.
struct Arrivals {
    std::atomic<int> pictures{0};
    std::atomic<Clock::rep> last{0};  ///< when the latest one came
};

GstPadProbeReturn noteArrival(GstPad* /*pad*/, GstPadProbeInfo* /*info*/, gpointer arrivals) {
    auto& noted = *static_cast<Arrivals*>(arrivals);
    noted.last = Clock::now().time_since_epoch().count();
    ++noted.pictures;
    return GST_PAD_PROBE_OK;
}

/// A camera of the virtual bus whose pictures come from a GStreamer source.
class PlayedDevice : public platform::CaptureDevice {
  public:
    PlayedDevice(std::shared_ptr<CaptureDevice> camera, std::string source, Arrivals& arrivals)
        : camera_(std::move(camera)), source_(std::move(source)), arrivals_(arrivals) {}

    std::string uniqueID() const override { return camera_->uniqueID(); }
    std::string localizedName() const override { return camera_->localizedName(); }
    bool hasVideo() const override { return true; }

    std::unique_ptr<platform::VideoSource> open(std::string& /*error*/) override {
        const auto makeElement = [source = source_, &arrivals = arrivals_](std::string& failure) {
            for (const char* plugin : {"coreelements", "shm"})
                if (failure.empty())
                    failure = platform::loadPlugin(plugin);
            GstElement* bin = gst_parse_bin_from_description(source.c_str(), TRUE, nullptr);
            if (bin != nullptr) {
                const platform::GstPadPtr pad(gst_element_get_static_pad(bin, "src"));
                gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, noteArrival, &arrivals,
                                  nullptr);
            }
            return bin;
        };
        return platform::makePreview(
            {makeElement, [](platform::VideoNode&) { return std::string(); }},
            std::make_shared<platform::ClosingPreviews>());
    }

  private:
    std::shared_ptr<CaptureDevice> camera_;
    std::string source_;
    Arrivals& arrivals_;
};

class PlayedCapture : public platform::CaptureBackend {
  public:
    PlayedCapture(platform::CaptureBackend& bus, const std::string& source, Arrivals& arrivals)
        : device_(std::make_shared<PlayedDevice>(bus.devices().at(0), source, arrivals)) {}

    std::vector<std::shared_ptr<platform::CaptureDevice>> devices() override { return {device_}; }
    void setListener(platform::CaptureListener* /*listener*/) override {}

  private:
    std::shared_ptr<platform::CaptureDevice> device_;
};

/// Counts what is painted from the first picture on.
class PaintWatch : public QObject {
  public:
    explicit PaintWatch(Arrivals& arrivals) : arrivals_(arrivals) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        const int pictures = arrivals_.pictures;
        if (event->type() == QEvent::Paint && pictures != shown_) {
            if (painted_++ == 0)
                before_ = pictures - 1;
            shown_ = pictures;
            const auto age = Clock::now().time_since_epoch() - Clock::duration(arrivals_.last);
            late_ += age > std::chrono::milliseconds(33) ? 1 : 0;
        }
        return false;
    }

    void report() const {
        fmt::print("{{\"came\": {}, \"painted\": {}, \"late\": {}}}\n", shown_ - before_, painted_,
                   late_);
    }

  private:
    Arrivals& arrivals_;
    int before_ = 0;   // pictures that came before the first one was painted
    int shown_ = 0;    // the number of the latest picture painted
    int painted_ = 0;  // pictures painted
    int late_ = 0;     // those of them that were painted only when the next one was due
};

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc != 3)
        return EXIT_FAILURE;
    WindowFixture fixture(virtualcam::studioCamera(), false);
    Arrivals arrivals;
    PlayedCapture capture(fixture.bus().capture(), argv[1], arrivals);
    platform::installBackends({&fixture.bus().usb(), &capture, &fixture.log()});
    fixture.start();
    PaintWatch watch(arrivals);
    fixture.find<QWidget>("m_previewWnd")->installEventFilter(&watch);
    fixture.pressOpen();
    QTimer::singleShot(std::chrono::seconds(std::atoi(argv[2])), &QApplication::quit);
    const int status = QApplication::exec();
    for (const std::string& line : fixture.log().take())
        fmt::print(stderr, "{}\n", line);
    watch.report();
    fixture.stop();  // before its back end goes
    return status;
}
