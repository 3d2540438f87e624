#include "platform/linux/SystemLog.h"

#include <syslog.h>

#include <algorithm>
#include <climits>

namespace platform {

SystemLog::SystemLog() {
    openlog("quelvo", LOG_PERROR, LOG_USER);
}

SystemLog::~SystemLog() {
    closelog();
}

void SystemLog::line(std::string_view text) {
    const auto length = static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX));
    syslog(LOG_NOTICE, "%.*s", length, text.data());
}

}  // namespace platform
