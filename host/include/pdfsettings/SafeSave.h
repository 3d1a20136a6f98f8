// Replacing a file without ever losing it.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"

#include <string>
#include <string_view>

namespace pdfsettings {

// Says that a file must not be replaced: it exists and its owner has no write permission.
class PDFSETTINGS_API ReadOnlyError : public Error {
public:
    using Error::Error;
};

// Whether SaveSafely would throw ReadOnlyError for the file at path. False when there is none, or
// when it cannot be examined.
PDFSETTINGS_API bool IsReadOnly(std::string const& path);

// Makes bytes the contents of the file at path: whatever happens, the file holds the old bytes or
// the new ones, on disk too once this returns. An existing file keeps its mode and, where the
// system allows it, its owner and group; a link is followed, and other hard links keep the old
// bytes. A device or a pipe is written into as it stands, which waits for the pipe's reader. Throws
// ReadOnlyError, and Error with the system's reason; then the file is as it was and no other file
// stays behind. A process that is killed leaves nothing half-written behind where the file system
// has files without names; killed in the one moment between the new file's name and its move, it
// leaves that file whole, under a hidden name that the next save of the same file takes away.
PDFSETTINGS_API void SaveSafely(std::string const& path, std::string_view bytes);

} // namespace pdfsettings
