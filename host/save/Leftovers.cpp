#include "host/save/Leftovers.h"

#include "host/save/HiddenFile.h"
#include "host/save/SeenFile.h"
#include "pdfsettings/Error.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

// So many are looked at; there are more only where somebody makes them.
constexpr std::size_t kMostLeftovers = 20;

// A stream of its own: reading moves the descriptor's place.
std::vector<std::string> HiddenNames(Descriptor const& folder) {
    int const file = openat(folder.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::unique_ptr<DIR, int (*)(DIR*)> const stream(fdopendir(file), &closedir);
    std::vector<std::string> names;
    if (!stream) {
        static_cast<void>(Descriptor(file));
        return names;
    }
    dirent const* entry = nullptr;
    while (names.size() < kMostLeftovers && (entry = readdir(stream.get())) != nullptr) {
        if (IsHiddenName(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

// Others may have put files of that kind there, to be waited for or read for long: what cannot be
// one of the contents is not opened, and what is leased is not waited for.
bool HoldsOneOf(
    Descriptor const& folder, std::string const& name, std::vector<std::string> const& contents) {
    struct stat status {};
    bool const isPossible = Examine(folder, name, &status) && S_ISREG(status.st_mode) &&
                            std::ranges::any_of(contents, [&](std::string const& content) {
                                return static_cast<std::size_t>(status.st_size) == content.size();
                            });
    if (!isPossible) {
        return false;
    }
    try {
        auto const file = SeenFile::Open(folder, name, Deadline(std::chrono::milliseconds(0)));
        return file && !file->HasWriter() &&
               std::ranges::find(contents, file->Bytes()) != contents.end();
    } catch (Error const&) {
        return false;
    }
}

} // namespace

void RemoveLeftovers(
    Descriptor const& folder,
    std::vector<std::string> const& contents,
    std::vector<std::string>* warnings) {
    for (std::string const& name : HiddenNames(folder)) {
        bool const isGone =
            HoldsOneOf(folder, name, contents) && unlinkat(folder.Number(), name.c_str(), 0) == 0;
        if (!isGone) {
            warnings->push_back(
                "an interrupted save left " + name +
                " in its folder; delete it if you do not need what it holds");
        }
    }
}

} // namespace pdfsettings::detail
