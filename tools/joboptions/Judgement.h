// What a check says of one file.
#pragma once

#include "host/Finding.h"

#include <string>
#include <vector>

namespace joboptions {

struct Judgement {
    std::string file;
    std::string error; // why it could not be read or parsed; empty if it could
    std::vector<pdfsettings::Finding> findings;
};

} // namespace joboptions
