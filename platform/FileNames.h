// File names as the service counts them and as the system wants them. Private to the platform
// layer.
#pragma once

#include <string>
#include <string_view>

#include "platform/FileManager.h"

namespace platform {

// The path of a name in the folder parent into *path. bdNamErr for a name that no file can have
// (see FileManager.h).
OSErr ChildPath(
    FSRef const& parent, UniCharCount nameLength, UniChar const* name, std::string* path);

// The units of a name in the system's bytes; false for one that is no UTF-8.
bool DecodeName(char const* bytes, HFSUniStr255* name) noexcept;

// Calls work, which gives a code; ioErr when memory runs out in it.
template <class Work>
OSErr AtService(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return ioErr;
    }
}

} // namespace platform
