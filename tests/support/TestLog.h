#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/backend/LogSink.h"

/// A log sink that keeps its lines, on whatever thread they come.
class TestLog : public platform::LogSink {
  public:
    void line(std::string_view text) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(text);
    }

    /// Returns the lines since the last call that start with `prefix`, and forgets the others.
    std::vector<std::string> take(std::string_view prefix = {}) {
        const std::lock_guard lock(mutex_);
        std::vector<std::string> lines = std::exchange(lines_, {});
        std::erase_if(lines, [&](const std::string& text) { return !text.starts_with(prefix); });
        return lines;
    }

    /// How many of the lines since the last `take` start with `prefix`.
    int count(std::string_view prefix) const {
        const std::lock_guard lock(mutex_);
        return static_cast<int>(std::ranges::count_if(
            lines_, [&](const std::string& text) { return text.starts_with(prefix); }));
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};
