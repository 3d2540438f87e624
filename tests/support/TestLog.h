#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/backend/LogSink.h"

/// A log sink that keeps its lines.
class TestLog : public platform::LogSink {
  public:
    void line(std::string_view text) override { lines_.emplace_back(text); }

    /// Returns the lines since the last call.
    std::vector<std::string> take() { return std::exchange(lines_, {}); }

    /// Returns the lines since the last call that start with `prefix`.
    std::vector<std::string> take(std::string_view prefix) {
        std::vector<std::string> lines = take();
        std::erase_if(lines,
                      [prefix](const std::string& text) { return !text.starts_with(prefix); });
        return lines;
    }

  private:
    std::vector<std::string> lines_;
};
