// Completions as scripts for shells.
#pragma once

#include "tools/joboptions/completion/CompletionModel.h"

#include <string>
#include <vector>

namespace joboptions {

// A script that a shell reads once, as at the start of a session.
std::string BashCompletion(
    std::vector<CompletedCommand> const& commands, std::vector<CompletedKey> const& keys);
std::string
ZshCompletion(std::vector<CompletedCommand> const& commands, std::vector<CompletedKey> const& keys);
std::string FishCompletion(
    std::vector<CompletedCommand> const& commands, std::vector<CompletedKey> const& keys);

} // namespace joboptions
