#pragma once

#include <functional>
#include <initializer_list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TestLog.h"
#include "tests/support/WindowHands.h"
#include "virtualcam/camera/VirtualCamera.h"

/// A block of a script in tests/exchanges, whose README tells what its statements mean.
struct Exchange {
    std::string file;
    int line;
    std::string name;
    std::vector<std::pair<int, std::string>> statements;  // with the line of each

    friend std::ostream& operator<<(std::ostream& out, const Exchange& exchange) {
        return out << exchange.file << ':' << exchange.line;
    }
};

/// Reads the blocks of scripts, without what is marked for another stage than `stage`.
std::vector<Exchange> readExchanges(std::initializer_list<const char*> files,
                                    const std::string& stage);

/// What an exchange is performed on: a window, and the camera behind it.
struct Stage {
    WindowHands& hands;
    virtualcam::VirtualCamera& camera;
    TestLog& log;
    std::function<void()> loadPages;
    /// Whether something below the application makes the request of itself.
    std::function<bool(const virtualcam::RequestRecord&)> isForeign;
};

/// Performs an exchange up to its first failure, which is reported with its place in the script.
void perform(const Exchange& exchange, const Stage& stage);
