// File names as the service counts them and as the system wants them. Private to the platform
// layer.
#pragma once

#include "platform/FileManager.h"

#include <string>
#include <string_view>

namespace platform {

// A name as the system wants it into *bytes. bdNamErr for one that no file can have (see
// FileManager.h).
OSErr EncodeName(UniCharCount nameLength, UniChar const* name, std::string* bytes);

// The path of the item of that name in the folder parent.
std::string ChildPath(FSRef const& parent, std::string const& name);

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
