// Who may do what with a file, and what is noted on it.
#pragma once

#include "host/save/SystemCalls.h"

#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// What a replacement takes over from the file before it. Capabilities, integrity data, trusted
// attributes and set-id bits are not among it: new contents must not get rights that were given to
// the old.
struct FileTraits {
    mode_t mode = 0; // permissions without set-id bits
    uid_t owner = 0;
    gid_t group = 0;
    std::string accessList;      // as the system stores it; empty where the mode says it all
    bool hasForeignList = false; // of another kind, which cannot be kept
    std::vector<std::pair<std::string, std::string>> attributes; // "user." and security labels

    bool operator==(FileTraits const&) const = default;
};

// Those of an open file. Throws Error.
FileTraits ReadTraits(Descriptor const& file);

// Gives them to a new file of the caller. What cannot be given is cut, so that nobody may do more
// than before; a sentence for each. Throws Error when not even that can be done.
std::vector<std::string> GiveTraits(FileTraits const& traits, Descriptor const& file);

} // namespace pdfsettings::detail
