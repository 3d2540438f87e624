#pragma once

#include <array>
#include <string_view>
#include <vector>

/// One attached video camera: two UTF-8 texts of at most 63 bytes, each ended by zero bytes. A
/// longer name keeps its start and a longer identifier its end, which holds the USB ids; both are
/// cut between two characters.
struct CameraEntry {
    std::array<char, 64> uniqueID;  ///< the platform's unique identifier
    std::array<char, 64> name;      ///< the display name
};

/// The attached video cameras in the order in which they were found. Entry i and item i of the
/// camera combo box belong to the same camera, and the item is the entry's name.
extern std::vector<CameraEntry> g_deviceList;

/// Returns as much of a display name as a `CameraEntry` holds; names are compared in this form.
std::string_view entryName(std::string_view localizedName);

/// Returns as much of a unique identifier as a `CameraEntry` holds; they are compared in this form.
std::string_view entryUniqueID(std::string_view uniqueID);
