// The new file of one save before it takes its place, and those that interrupted saves left behind.
#pragma once

#include "host/save/SeenFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings::detail {

// A whole file on disk, under a name in the target's folder that nobody can foresee and that is no
// settings file's. It is deleted again unless it takes its place.
class HiddenFile {
public:
    // Holds bytes. A replacement gets the traits of the old file, and what of them could not be
    // kept goes into *warnings; a new file gets what its folder gives (traits null). Throws Error.
    HiddenFile(
        Target const& target,
        std::string_view bytes,
        FileTraits const* traits,
        std::vector<std::string>* warnings);
    ~HiddenFile();
    HiddenFile(HiddenFile const&) = delete;
    HiddenFile& operator=(HiddenFile const&) = delete;

    std::string const& Name() const noexcept { return fName; }

    // The file as it is when it is whole.
    SeenFile const& Seen() const noexcept { return *fSeen; }

    // Says whether the file, or another one that has the name now, is to stay.
    void SetKept(bool isKept) noexcept { fIsKept = isKept; }

private:
    explicit HiddenFile(Target const& target) : fTarget(target) {}

    bool Make(bool isNameless, std::string_view bytes, FileTraits const* traits);
    bool MakeFile(bool isNameless, mode_t mode);
    bool GiveName();
    void Look();

    Target const& fTarget;
    std::string fName; // empty while it has none
    Descriptor fFile;
    std::optional<SeenFile> fSeen;
    bool fIsKept = false;
    std::vector<std::string> fWarnings;
};

// Deletes the hidden files of earlier saves in folder that hold one of these contents: nothing is
// lost with them. What holds anything else may be the only copy of a change; it stays, and goes
// into *warnings by its name. Never throws but for memory: what cannot be looked at stays.
// Looks at a few only, so that nobody can make a save long by leaving many.
// REQUIRES: the folder is locked, unless contents is empty.
void RemoveLeftovers(
    Descriptor const& folder,
    std::vector<std::string> const& contents,
    std::vector<std::string>* warnings);

} // namespace pdfsettings::detail
