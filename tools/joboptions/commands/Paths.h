// The settings files that the paths of a command line stand for.
#pragma once

#include <string>
#include <vector>

namespace joboptions {

// What was found at a path.
struct FoundFiles {
    std::vector<std::string> files;  // sorted; or else the path itself, if it is no folder
    std::vector<std::string> errors; // for folders that cannot be read: "FOLDER: reason"
};

// The settings files in a folder and in those below it. Links to folders are not followed.
FoundFiles FindFiles(std::string const& path);

} // namespace joboptions
