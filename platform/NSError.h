#pragma once

#include <string>

/// What went wrong, for a person.
struct NSError {
    std::string description;
};
