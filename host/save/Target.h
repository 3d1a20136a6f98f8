// Where a save goes.
#pragma once

#include "host/save/SystemCalls.h"

#include <string>
#include <string_view>

namespace pdfsettings::detail {

// The file that a path leads to, whether it exists or not: its folder, opened once, and its name in
// it. All that a save does goes through that descriptor, so nobody can move it elsewhere by
// exchanging what lies on the way.
struct Target {
    Descriptor folder;
    // Whether the folder can be locked, listed and flushed; otherwise it is open as a path only.
    bool isReadable = false;
    std::string name;
    // Where the path names the null device or a descriptor of this process: that, and no folder.
    Descriptor stream;

    bool IsStream() const noexcept { return stream.IsOpen(); }
};

// Follows path. A link on the way is followed only where no other user can have planted it: it
// belongs to the owner of what it leads to, or it belongs to root or to the effective user, has one
// name, and lies in a folder that nobody else owns or may write to. Throws LinkError for another
// one, and Error with the system's reason.
Target FindTarget(std::string const& path);

// The folder that path itself lies in, for a lock on it: the last link is not followed. Without an
// open folder where there is none.
Target FolderOf(std::string const& path);

// Throws Error for a path with a NUL byte, which would end it before its end.
void RequireWhole(std::string const& path);

// Whether path names a descriptor of this process, which is a stream even if a file is behind it.
bool NamesDescriptor(std::string_view path) noexcept;

// A copy of the descriptor that path names, with its place and its rights: opening it anew would
// begin at the start of a file, and wait for the other end of a pipe. Throws Error. REQUIRES:
// NamesDescriptor(path).
Descriptor DuplicateNamed(std::string const& path);

// Whether the file is the null device.
bool IsNullDevice(struct stat const& status) noexcept;

} // namespace pdfsettings::detail
