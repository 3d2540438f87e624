#pragma once

#include "platform/backend/LogSink.h"

namespace platform {

/// Sends each line to the system log, under the identity "quelvo", and to standard error. At most
/// one exists at a time: the connection to the system log belongs to the process.
class SystemLog : public LogSink {
  public:
    SystemLog();
    SystemLog(const SystemLog&) = delete;
    SystemLog& operator=(const SystemLog&) = delete;
    ~SystemLog() override;

    void line(std::string_view text) override;
};

}  // namespace platform
