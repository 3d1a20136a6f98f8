// A new file that takes the place of another one.
#pragma once

#include "host/detail/SystemCalls.h"

#include <memory>
#include <string>
#include <string_view>

#include <sys/stat.h>

namespace pdfsettings::detail {

// The new file of one save. It goes again unless it takes its place.
class Replacement {
public:
    Replacement(Replacement const&) = delete;
    Replacement& operator=(Replacement const&) = delete;
    virtual ~Replacement() = default;

    void Write(std::string_view bytes) { WriteAll(fFile, bytes); }

    // Takes the original's mode and, where the system allows it, its owner and group.
    void Resemble(struct stat const& original);

    // Takes the place of target, a path in the folder, on disk too where the folder can be flushed.
    // False when this kind of file cannot do so here.
    bool TakePlace(std::string const& target);

protected:
    Replacement(std::string folder, int file) : fFolder(std::move(folder)), fFile(file) {}

    std::string const& Folder() const noexcept { return fFolder; }
    Descriptor const& File() const noexcept { return fFile; }

private:
    virtual bool MoveTo(std::string const& target) = 0;

    std::string fFolder;
    Descriptor fFile;
};

// A file without a name until it is whole, so that nothing half-written is ever to be seen and
// nothing stays behind when the process ends. Null where the system or its file system has no such
// files.
std::unique_ptr<Replacement> NewNamelessFile(std::string const& folder, mode_t mode);

// A file with a name of its own from the start. Throws Error.
std::unique_ptr<Replacement> NewNamedFile(std::string const& folder, mode_t mode);

} // namespace pdfsettings::detail
