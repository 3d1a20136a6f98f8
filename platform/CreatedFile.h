// A file that was just made. Private to the platform layer.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/FileManager.h"

namespace platform {

// Holds the new file and its folder open: what is written goes to this file and only this file is
// deleted, whatever is renamed in the folder meanwhile.
class CreatedFile {
public:
    // Makes an empty file of that name in the folder at a path, which must not have one. dupFNErr
    // if it has, else the code of the failure. Throws for memory.
    static OSErr
    Make(std::string const& folder, std::string const& name, std::shared_ptr<CreatedFile>* made);

    ~CreatedFile();
    CreatedFile(CreatedFile const&) = delete;
    CreatedFile& operator=(CreatedFile const&) = delete;

    // A descriptor for reading and writing, for the caller, or -1 with the reason in errno.
    int Duplicate() const noexcept;

    // Deletes the file, unless another one has its name now: then fnfErr.
    OSErr Delete() const noexcept;

private:
    explicit CreatedFile(std::string name) : fName(std::move(name)) {}

    std::string const fName;
    int fFolder = -1;
    int fFile = -1;
};

} // namespace platform
