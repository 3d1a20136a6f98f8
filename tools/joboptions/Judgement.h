// What commands say of one file.
#pragma once

#include "host/Finding.h"

#include <string>
#include <vector>

namespace joboptions {

// Of its values.
struct Judgement {
    std::string file;
    std::string error; // why it could not be read or parsed; empty if it could
    std::vector<pdfsettings::Finding> findings;
};

// Of its layout.
struct LayoutJudgement {
    std::string file;
    std::string error; // why it could not be read, or why it was left as it is; empty if it was not
    bool differs = false; // it is, or was, laid out otherwise
};

} // namespace joboptions
