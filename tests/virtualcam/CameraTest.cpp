// The built-in camera by itself: what it answers, what its automatic modes do, and its pictures.

#include <gmock/gmock.h>

#include <QByteArray>
#include <QImage>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <sstream>

#include "tests/support/CameraFixture.h"
#include "virtualcam/scene/FrameGenerator.h"

namespace virtualcam {
namespace {

/// Calls `visit` with each row of a file of this folder. What is behind a "#" is for people.
template <typename Visit>
void forEachRow(const char* name, const Visit& visit) {
    std::ifstream file(std::string(QUELVO_CAMERA_TESTS "/") + name);
    int number = 0;
    for (std::string row; std::getline(file, row);) {
        row.resize(std::min(row.find('#'), row.size()));
        row.resize(row.find_last_not_of(' ') + 1);
        SCOPED_TRACE(testing::Message() << name << ':' << ++number << ": " << row);
        if (!row.empty())
            visit(row);
    }
}

/// Sends the request that `wireText` gives as this row, and returns it with what became of it, and
/// with the reason that the camera now gives for its last refusal.
std::string sent(VirtualCamera& camera, const std::string& row) {
    IOUSBDevRequest request{};
    std::sscanf(row.c_str(), "%hhx %hhx %hx %hx %hu", &request.bmRequestType, &request.bRequest,
                &request.wValue, &request.wIndex, &request.wLength);
    QByteArray data(request.wLength, '\xCC');
    if (row.starts_with('2') && row.find('|') < row.size())
        data = QByteArray::fromHex(row.substr(row.find('|')).c_str()).first(request.wLength);
    request.pData = data.data();
    const IOReturn result = camera.controlRequest(request);
    const RequestRecord record = camera.requests().back();
    EXPECT_EQ(record.result, result);
    QByteArray why(1, '\0');
    IOUSBDevRequest reason{requestFromInterface, GET_CUR, 0x0200, 0, 1, why.data()};
    EXPECT_EQ(camera.controlRequest(reason), 0);
    return wireText(record) + (why[0] == '\0' ? "" : " why " + why.toHex().toStdString());
}

TEST(CameraTest, AnswersEachRequestAndMovesWhatItsAutomaticModesHold) {
    VirtualCamera camera(studioCamera());
    IOUSBDevRequest none{};
    for (int i = 0; i < 4096; ++i)
        camera.controlRequest(none);
    camera.setFaults({.lengths = {{{16, XU_FLIP_H}, 9}, {{16, XU_FLIP_V}, 0}}});
    forEachRow("requests.txt", [&](const std::string& row) {
        if (row == "restart")
            camera.powerOn();
        else if (row.starts_with("pictures "))
            for (int left = std::stoi(row.substr(9)); left > 0; --left)
                camera.nextPicture();
        else
            EXPECT_EQ(sent(camera, row), row);
    });
    // The last thing is that everything is restored.
    EXPECT_EQ(camera.picture(), (PictureState{.whiteBalance = 6500, .style = 6}))
        << "all else as a camera without controls shows it";
    EXPECT_EQ(camera.requests().size(), 4096U) << "the last ones are remembered";
}

constexpr PictureSize size{128, 96};

/// Draws the pictures of pictures.txt below each other.
QImage drawPictures() {
    std::vector<std::uint32_t> pixels;
    const auto generator = makeSceneGenerator(size);
    forEachRow("pictures.txt", [&](const std::string& row) {
        VirtualCamera camera(studioCamera());
        std::istringstream words(row);
        std::uint64_t index = 0;
        words >> index;
        for (std::string word; words >> word;) {
            ControlId control{};
            std::sscanf(word.c_str(), "%hhu/%hhu", &control.unit, &control.selector);
            const QByteArray value = QByteArray::fromHex(word.substr(word.find('=')).c_str());
            setInCamera(camera, control, {value.begin(), value.end()});
        }
        constexpr std::size_t count = std::size_t{size.width} * size.height;
        pixels.resize(pixels.size() + count);
        generator->generate(camera.picture(), index, std::span(pixels).last(count));
    });
    return QImage(reinterpret_cast<const uchar*>(pixels.data()), size.width,
                  static_cast<int>(pixels.size()) / size.width, QImage::Format_RGB32)
        .convertToFormat(QImage::Format_RGB888);
}

// After a change of the scene that is meant, the new pictures take the place of those that were
// kept, which are coarser: what counts can still be told in steps of eight.
TEST(CameraTest, ItsPicturesAreThoseThatWereKept) {
    const QImage is = drawPictures();
    is.save("pictures.png");
    const QImage was =
        QImage(QUELVO_CAMERA_TESTS "/pictures.png").convertToFormat(QImage::Format_RGB888);
    ASSERT_EQ(is.size(), was.size());
    constexpr int bytes = 3 * size.width * size.height;
    for (qsizetype start = 0; start < is.sizeInBytes(); start += bytes) {
        const uchar* first = is.constBits() + start;
        const int different = std::transform_reduce(
            first, first + bytes, was.constBits() + start, 0, std::plus(),
            [](int one, int other) { return std::abs(one - other) > 6 ? 1 : 0; });
        EXPECT_LE(different, 4) << "in picture " << start / bytes + 1;
    }
}

}  // namespace
}  // namespace virtualcam
