#include "pages/vendor/VersionLabel.h"

#include "platform/Utf8.h"

std::string versionLabel(std::int64_t readStatus, std::string_view version) {
    if (readStatus != 0)
        return "Get device info failed!";
    std::string text = platform::validUtf8(version);
    const auto contains = [&text](std::string_view part) {
        return text.find(part) != std::string::npos;
    };
    if (contains("V9."))
        return "v3 " + text;
    if (contains("V8."))
        return "v2 " + text;
    if (contains("1.") && !contains("SOC"))
        return "v1 SOC:V" + text;
    return text;
}
