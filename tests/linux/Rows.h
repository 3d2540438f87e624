#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

/// A row of a test's data: the lines that it begins with, and those that say what is expected then.
struct Row {
    std::vector<std::string> given;
    std::vector<std::string> expected;  ///< each stands behind "->" in the file
};

inline std::string inLines(const std::vector<std::string>& lines) {
    return fmt::format("{}", fmt::join(lines, "\n"));
}

/// Reads the rows of a file of this folder. Blank lines and those with "#" are for people.
inline std::vector<Row> readRows(const std::string& name) {
    std::ifstream file(QUELVO_LINUX_TESTS "/" + name);
    std::vector<Row> rows(1);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("->")) {
            rows.back().expected.push_back(line.substr(std::min<std::size_t>(line.size(), 3)));
        } else if (!line.empty() && line[0] != '#') {
            if (!rows.back().expected.empty())
                rows.emplace_back();
            rows.back().given.push_back(line);
        }
    }
    return rows;
}
