#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "tests/linux/FakeMachine.h"

inline std::string joined(const Lines& lines, const char* between) {
    return fmt::format("{}", fmt::join(lines, between));
}

/// Checks the rows of a file of this folder, with a blank line between them: what `outcome` makes
/// of a row's lines is what stands behind its arrows. Lines with "#" are for people.
inline void checkRows(const std::string& name, const std::function<Lines(const Lines&)>& outcome) {
    std::ifstream file(QUELVO_LINUX_TESTS "/" + name);
    ASSERT_TRUE(file) << name;
    for (std::string line; file;) {
        Lines given, expected;
        while (std::getline(file, line) && !line.empty()) {
            const std::size_t arrow = std::min(line.find("->"), line.size());
            if (line[0] == '#')
                continue;
            if (arrow > 0)
                given.push_back(line.substr(0, line.find_last_not_of(' ', arrow - 1) + 1));
            if (arrow < line.size())
                expected.push_back(line.substr(std::min(arrow + 3, line.size())));
        }
        const Lines made = expected.empty() ? Lines() : outcome(given);
        EXPECT_EQ(joined(made, "\n"), joined(expected, "\n")) << joined(given, "\n");
    }
}
