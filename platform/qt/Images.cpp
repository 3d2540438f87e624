#include "platform/qt/Images.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QString>

#include "platform/NSImage.h"
#include "platform/qt/WidgetPeer.h"

namespace {

/// The images that were asked for. One made anew each time would leave a copy of itself behind in
/// the toolkit's cache.
QHash<QString, QIcon> loaded;

QIcon readImage(const QFileInfo& file) {
    QIcon icon(file.filePath());
    // The toolkit looks for this one only while a dense screen is attached.
    icon.addFile(QStringLiteral(":/%1@2x.%2").arg(file.completeBaseName(), file.suffix()));
    return icon;
}

}  // namespace

QIcon platform::loadImage(std::string_view name) {
    const QFileInfo file(QStringLiteral(":/") + fromUtf8(name));
    if (!file.isFile())
        return {};
    if (loaded.isEmpty())
        qAddPostRoutine([] { loaded.clear(); });  // no image outlives the application
    auto icon = loaded.find(file.filePath());
    if (icon == loaded.end())
        icon = loaded.insert(file.filePath(), readImage(file));
    return *icon;
}

std::optional<NSImage> NSImage::imageNamed(std::string_view name) {
    if (platform::loadImage(name).isNull())
        return std::nullopt;
    return NSImage(name);
}
