#pragma once

#include <string_view>

namespace platform {

/// Where log lines go.
class LogSink {
  public:
    virtual ~LogSink() = default;

    /// Takes one line: valid UTF-8, without a line break. Called on any thread.
    virtual void line(std::string_view text) = 0;
};

}  // namespace platform
