#include "platform/qt/Images.h"

#include <QFile>

#include "platform/NSImage.h"
#include "platform/qt/WidgetPeer.h"

QString platform::imagePath(std::string_view name) {
    return QStringLiteral(":/") + fromUtf8(name);
}

std::optional<NSImage> NSImage::imageNamed(std::string_view name) {
    if (!QFile::exists(platform::imagePath(name)))
        return std::nullopt;
    return NSImage(name);
}
