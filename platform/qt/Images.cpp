#include "platform/qt/Images.h"

#include <QFileInfo>
#include <QString>

#include "platform/NSImage.h"
#include "platform/qt/WidgetPeer.h"

QIcon platform::loadImage(std::string_view name) {
    const QFileInfo file(QStringLiteral(":/") + fromUtf8(name));
    if (!file.isFile())
        return {};
    QIcon icon(file.filePath());
    // The toolkit looks for this one only while a dense screen is attached.
    icon.addFile(QStringLiteral(":/%1@2x.%2").arg(file.completeBaseName(), file.suffix()));
    return icon;
}

std::optional<NSImage> NSImage::imageNamed(std::string_view name) {
    if (platform::loadImage(name).isNull())
        return std::nullopt;
    return NSImage(name);
}
