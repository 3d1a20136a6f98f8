// Making folders. Private to the platform layer.
#pragma once

#include <string>
#include <sys/types.h>

#include "platform/FileManager.h"

namespace platform {

// Makes the folder at path, whose parent must exist, with that mode less the umask.
// afpAccessDenied, and no folder, where it could end up in another user's hands: in a program with
// raised rights, and for root where a folder above belongs to somebody else or others may write to
// it. dupFNErr when there is anything at path, else the code of the failure. Throws for memory.
OSErr MakeFolder(std::string const& path, mode_t mode);

} // namespace platform
