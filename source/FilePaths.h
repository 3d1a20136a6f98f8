// Paths at the door of the file service.
#pragma once

#include "api/UnicodeEncoding.h"
#include "platform/FileManager.h"

namespace UnicodeEncodingNS {

// The file or folder at path. The service's code; bdNamErr for a path with a zero unit in it, which
// would be cut short. Throws CBIBError.
OSErr MakeRef(Unicode16 const& path, FSRef* ref);

// The parts of a path: the folder with its last slash, and the name behind it.
struct SplitPath {
    Unicode16 fFolder;
    Buffer16 fName;
};

// Takes path apart at its last slash. Without one, and for a path that ends in one, the name is
// empty. A byte order mark that a part begins with is not of its text. Throws CBIBError.
SplitPath Split(Unicode16 const& path);

} // namespace UnicodeEncodingNS
