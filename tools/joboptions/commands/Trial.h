// A trial of settings folders before they are rolled out.
#pragma once

#include <string>

namespace joboptions {

// Shows this process, and no other, a folder in place of the administrator's or the user's: nothing
// on the machine changes. A property list of the administrator's name in adminFolder is used in
// place of the machine's, and is read before the place of the folder is known. Empty: no change.
// Throws Failure with Status::kBadInput if a folder cannot be read, if the list disables the
// folder, if a folder can only be shown in the root of the machine, or if the system allows no view
// of its own. REQUIRES: the process has one thread, and has not started the component.
void ShowFolders(std::string const& adminFolder, std::string const& userFolder);

} // namespace joboptions
