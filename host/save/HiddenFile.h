// The temporary file of a save, and those that interrupted saves left behind.
#pragma once

#include "host/save/SeenFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings::detail {

// A complete file on disk in the target's folder, under a name that cannot be guessed and that is
// not a settings file's. The destructor deletes it unless it is kept.
class HiddenFile {
public:
    // Writes bytes. With traits, the file gets them, and what could not be kept is appended to
    // *warnings. Without (null), the file gets the defaults of its folder. Throws Error.
    HiddenFile(
        Target const& target,
        std::string_view bytes,
        FileTraits const* traits,
        std::vector<std::string>* warnings);
    ~HiddenFile();
    HiddenFile(HiddenFile const&) = delete;
    HiddenFile& operator=(HiddenFile const&) = delete;

    std::string const& Name() const noexcept { return fName; }

    // The complete file as it was seen after writing.
    SeenFile const& Seen() const noexcept { return *fSeen; }

    // Whether the destructor leaves the file, or any other file that has its name by then.
    void SetKept(bool isKept) noexcept { fIsKept = isKept; }

private:
    explicit HiddenFile(Target const& target) : fTarget(target) {}

    bool Make(bool isNameless, std::string_view bytes, FileTraits const* traits);
    bool MakeFile(bool isNameless, mode_t mode);
    bool GiveName();
    void Look();

    Target const& fTarget;
    std::string fName; // empty before it has one
    Descriptor fFile;
    std::optional<SeenFile> fSeen;
    bool fIsKept = false;
    std::vector<std::string> fWarnings;
};

// Deletes the hidden files of earlier saves in folder whose bytes are one of contents: they are
// copies. Any other hidden file may be the only copy of a change; it stays, and *warnings names it.
// Throws only std::bad_alloc: a file that cannot be examined stays. Examines a limited number of
// files, so that no user can delay a save by creating many. REQUIRES: the folder is locked, unless
// contents is empty.
void RemoveLeftovers(
    Descriptor const& folder,
    std::vector<std::string> const& contents,
    std::vector<std::string>* warnings);

} // namespace pdfsettings::detail
