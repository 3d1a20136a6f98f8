#include "pdfsettings/ChangeWatcher.h"

#include "document/MakeSequence.h"
#include "host/detail/FilePath.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/SettingsList.h"
#include "pdfsettings/Watcher.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

using std::filesystem::path;

// What the system says of a file: while it stays the same, so do the contents.
using Marks = std::tuple<dev_t, ino_t, off_t, time_t, long, time_t, long>;

// A file as it was seen last.
struct Seen {
    std::string fName;
    bool fIsHidden = false;
    bool fIsReadOnly = false;
    Marks fMarks;
    std::size_t fContents = 0; // a hash of its bytes
};

using SeenFiles = std::map<path, Seen>;

std::optional<Marks> MarksOf(path const& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return Marks(
        status.st_dev,
        status.st_ino,
        status.st_size,
        status.st_mtim.tv_sec,
        status.st_mtim.tv_nsec,
        status.st_ctim.tv_sec,
        status.st_ctim.tv_nsec);
}

// All files that cannot be read have the same contents.
std::size_t ContentsOf(path const& file) {
    try {
        return std::hash<std::string>()(ReadFile(file.native()));
    } catch (Error const&) {
        return 0;
    }
}

// Adds what has become of one file, which was and is there or not.
void Compare(
    path const& file, Seen const* before, Seen const* now, std::vector<SettingsChange>& changes) {
    auto const add = [&](ChangeKind kind) {
        changes.push_back({kind, file, (now == nullptr ? before : now)->fName});
    };
    if (before == nullptr || now == nullptr) {
        add(now == nullptr ? ChangeKind::kRemoved : ChangeKind::kAdded);
        return;
    }
    if (before->fContents != now->fContents) {
        add(ChangeKind::kChanged);
    }
    if (before->fIsHidden != now->fIsHidden) {
        add(now->fIsHidden ? ChangeKind::kHidden : ChangeKind::kShown);
    }
    if (before->fIsReadOnly != now->fIsReadOnly) {
        add(now->fIsReadOnly ? ChangeKind::kReadOnly : ChangeKind::kWritable);
    }
}

Seen const* Find(SeenFiles const& files, path const& file) {
    auto const found = files.find(file);
    return found == files.end() ? nullptr : &found->second;
}

void AddChanges(
    SeenFiles const& before, SeenFiles const& now, std::vector<SettingsChange>& changes) {
    std::set<path> all;
    for (SeenFiles const* const files : {&before, &now}) {
        for (auto const& [file, seen] : *files) {
            all.insert(file);
        }
    }
    for (path const& file : all) {
        Compare(file, Find(before, file), Find(now, file), changes);
    }
}

// A look at all that is watched, which reads again only what may have changed since the one before.
class Look {
public:
    Look() = default;

    // changed: sorted. REQUIRES: before and changed outlive this.
    Look(SeenFiles const& before, std::span<path const> changed)
        : fBefore(&before),
          fChanged(changed) {}

    void AtFile(path const& file) {
        At(file, file.stem().string(), /*isHidden=*/false, std::nullopt);
    }

    void AtFolder(path const& folder) {
        std::error_code error;
        std::filesystem::directory_iterator entries(folder, error);
        for (; !error && entries != std::filesystem::directory_iterator();
             entries.increment(error)) {
            if (detail::IsSettingsFileName(entries->path().filename().native())) {
                AtFile(entries->path());
            }
        }
    }

    void AtListed(std::string const& application) {
        for (ListedSettings const& listed : List({application, /*withHidden=*/true})) {
            At(listed.Path(), listed.Name(), listed.IsHidden(), listed.IsReadOnly());
        }
    }

    SeenFiles Result() && { return std::move(fFiles); }

private:
    void
    At(path const& file, std::string name, bool isHidden, std::optional<bool> const& isReadOnly) {
        auto const marks = MarksOf(file);
        if (!marks) {
            return;
        }
        Seen const* const before = fBefore == nullptr ? nullptr : Find(*fBefore, file);
        bool const isSame = before != nullptr && before->fMarks == *marks && !MayHaveChanged(file);
        bool const cannotWrite = isReadOnly ? *isReadOnly
                                 : isSame   ? before->fIsReadOnly
                                            : IsReadOnly(file.native());
        Seen const now{
            std::move(name),
            isHidden,
            cannotWrite,
            *marks,
            isSame ? before->fContents : ContentsOf(file)};
        fFiles.insert_or_assign(file, now);
    }

    bool MayHaveChanged(path const& file) const {
        return std::ranges::binary_search(fChanged, file) ||
               std::ranges::binary_search(fChanged, file.parent_path());
    }

    SeenFiles const* fBefore = nullptr;
    std::span<path const> fChanged;
    SeenFiles fFiles;
};

} // namespace

struct ChangeWatcher::State {
    // Adds what is there to what was seen.
    void Add(Look&& look) { fSeen.merge(std::move(look).Result()); }

    Watcher fWatcher;
    std::vector<path> fFiles;
    std::vector<path> fFolders;
    std::optional<std::string> fApplication; // for the listed files, if they are watched
    SeenFiles fSeen;
    std::set<path> fChanged; // since the last look
    bool fHasLost = false;
};

ChangeWatcher::ChangeWatcher() : fState(std::make_unique<State>()) {}

ChangeWatcher::~ChangeWatcher() = default;

void ChangeWatcher::Add(path const& file) {
    fState->fWatcher.Add(file);
    fState->fFiles.push_back(std::filesystem::absolute(file).lexically_normal());
    Look look;
    look.AtFile(fState->fFiles.back());
    fState->Add(std::move(look));
}

void ChangeWatcher::AddFolder(path const& folder) {
    path const normal = std::filesystem::absolute(folder).lexically_normal();
    fState->fFolders.emplace_back(detail::FolderPath(normal.native()));
    fState->fWatcher.AddFolder(fState->fFolders.back());
    Look look;
    look.AtFolder(fState->fFolders.back());
    fState->Add(std::move(look));
}

void ChangeWatcher::AddListed(std::string const& application) {
    fState->fWatcher.AddListed();
    fState->fApplication = application;
    Look look;
    look.AtListed(application);
    fState->Add(std::move(look));
}

int ChangeWatcher::Descriptor() const noexcept {
    return fState->fWatcher.Descriptor();
}

Sequence<SettingsChange> ChangeWatcher::Read() {
    std::vector<SettingsChange> changes;
    // Kept until the look has succeeded: a list may throw.
    auto const read = fState->fWatcher.Read();
    fState->fChanged.insert(read.begin(), read.end());
    fState->fHasLost = fState->fHasLost || fState->fWatcher.HasLost();
    if (fState->fChanged.empty()) {
        return detail::MakeSequence::From(std::move(changes));
    }
    if (fState->fHasLost) {
        changes.push_back({ChangeKind::kLookAgain, {}, {}});
    }
    std::vector<path> const changed(fState->fChanged.begin(), fState->fChanged.end());
    Look look(fState->fSeen, changed);
    std::ranges::for_each(fState->fFiles, [&](path const& file) { look.AtFile(file); });
    std::ranges::for_each(fState->fFolders, [&](path const& folder) { look.AtFolder(folder); });
    if (fState->fApplication) {
        look.AtListed(*fState->fApplication);
    }
    SeenFiles now = std::move(look).Result();
    AddChanges(fState->fSeen, now, changes);
    fState->fSeen = std::move(now);
    fState->fChanged.clear();
    fState->fHasLost = false;
    return detail::MakeSequence::From(std::move(changes));
}

bool MayMissChanges(path const& path) {
    // The numbers of linux/magic.h, and of the file systems themselves.
    constexpr std::uint32_t kWithoutEvents[] = {
        0x6969,     // NFS
        0x517B,     // SMB
        0xFE534D42, // SMB 2 and later
        0xFF534D42, // CIFS
        0x65735546, // FUSE
        0x01021997, // 9P
        0x00C36400, // Ceph
        0x5346414F, // AFS
        0x73757245, // Coda
        0x9FA0,     // /proc
        0x62656572  // /sys
    };
    std::error_code ignored;
    auto place = std::filesystem::absolute(path, ignored);
    struct statfs status {};
    while (statfs(place.c_str(), &status) != 0) {
        if (place == place.parent_path()) {
            return false;
        }
        place = place.parent_path();
    }
    auto const type = static_cast<std::uint32_t>(status.f_type);
    return std::ranges::find(kWithoutEvents, type) != std::end(kWithoutEvents);
}

} // namespace pdfsettings
