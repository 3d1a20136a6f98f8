#include "pdfsettings/Watcher.h"

#include "document/MakeSequence.h"
#include "host/detail/FilePath.h"
#include "host/detail/PropertyList.h"
#include "host/watch/FolderEvents.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/SettingsList.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

using detail::FolderEvents;
using detail::FolderNumber;
using detail::Notice;
using std::filesystem::path;

// The maximum number of links on a path, as in the system.
constexpr int kMaxLinks = 40;

// A watched file, or a folder with its settings files.
struct Target {
    path fPath; // absolute
    bool fIsFolder;
};

// A reason for watching a folder.
struct Interest {
    std::string fName; // an item on the path to the target; empty: all its settings files
    std::size_t fTarget;
};

// A missing folder is replaced by one that never exists.
std::vector<path> ListedFolders() {
    std::vector<path> folders{AdministratorFolder(), UserFolder()};
    for (path& folder : folders) {
        folder = folder.empty() ? path("/dev/null/none") : folder;
    }
    return folders;
}

} // namespace

struct Watcher::State {
    void Add(path const& added, bool isFolder);
    void Arm();
    void WatchTheWay(std::size_t target);
    void Watch(path const& folder, Notice notice, Interest interest);
    void OnEvent(std::optional<FolderNumber> folder, std::string_view name);
    void ReportAll();
    void AddListed();
    void UpdateListed();

    FolderEvents fEvents;
    std::vector<Target> fTargets;
    std::map<FolderNumber, std::vector<Interest>> fWatched;
    std::map<FolderNumber, std::vector<Interest>> fOutdated; // while fWatched is rebuilt
    std::set<path> fChanged;                                 // to be reported
    bool fIsOutdated = false;                                // whether fWatched must be rebuilt
    bool fHasLost = false;                                   // events, since the last Read
    std::vector<path> fPreferences;          // the property lists that select the listed folders
    std::vector<std::size_t> fListedFolders; // indexes in fTargets of the listed folders
};

void Watcher::State::Add(path const& added, bool isFolder) {
    std::error_code error;
    path absolute = std::filesystem::absolute(added, error);
    if (error) {
        throw Error(Fault::kSystem, error.message(), added, {}, error);
    }
    fTargets.push_back({std::move(absolute), isFolder});
    WatchTheWay(fTargets.size() - 1);
}

// Watches the folders that are now on the paths of all targets, and stops watching all others.
void Watcher::State::Arm() {
    fOutdated.merge(std::exchange(fWatched, {}));
    for (std::size_t target = 0; target < fTargets.size(); ++target) {
        WatchTheWay(target);
    }
    for (auto const& [folder, interests] : std::exchange(fOutdated, {})) {
        if (!fWatched.contains(folder)) {
            fEvents.Forget(folder);
        }
    }
    fIsOutdated = false;
}

// Each folder is watched before it is examined, so that no change in between is missed.
void Watcher::State::WatchTheWay(std::size_t target) {
    Target const& to = fTargets[target];
    std::deque<path> steps(to.fPath.begin(), to.fPath.end());
    path folder;
    int links = 0;
    while (!steps.empty()) {
        path const step = std::move(steps.front());
        steps.pop_front();
        path const item = folder / step;
        bool const isFile = steps.empty() && !to.fIsFolder;
        if (!folder.empty() && step.is_relative() && !step.empty()) {
            Watch(folder, isFile ? Notice::kContents : Notice::kNames, {step.string(), target});
        }
        std::error_code error;
        auto const status = std::filesystem::symlink_status(item, error);
        if (!std::filesystem::exists(status)) {
            return;
        }
        if (!std::filesystem::is_symlink(status)) {
            folder = item;
        } else if (path const link = std::filesystem::read_symlink(item, error);
                   !error && ++links <= kMaxLinks) {
            steps.insert(steps.begin(), link.begin(), link.end());
        } else {
            return;
        }
    }
    if (to.fIsFolder) {
        Watch(folder, Notice::kContents, {"", target});
    }
}

void Watcher::State::Watch(path const& folder, Notice notice, Interest interest) {
    if (auto const number = fEvents.Watch(folder, notice)) {
        fWatched[*number].push_back(std::move(interest));
    }
}

void Watcher::State::OnEvent(std::optional<FolderNumber> folder, std::string_view name) {
    if (!folder) {
        ReportAll();
        return;
    }
    auto const watched = fWatched.find(*folder);
    if (watched == fWatched.end()) {
        return;
    }
    for (Interest const& interest : watched->second) {
        path const& target = fTargets[interest.fTarget].fPath;
        bool const isInFolder = interest.fName.empty() && detail::IsSettingsFileName(name);
        if (isInFolder) {
            fChanged.insert(target / name);
        } else if (name.empty() || interest.fName == name) {
            fChanged.insert(target);
            fIsOutdated = true;
        }
    }
}

void Watcher::State::ReportAll() {
    for (Target const& target : fTargets) {
        fChanged.insert(target.fPath);
    }
    fIsOutdated = true;
    fHasLost = true;
}

void Watcher::State::AddListed() {
    for (path const& file : {detail::AdminPreferencesFile(), detail::UserPreferencesFile()}) {
        if (!file.empty()) {
            fPreferences.push_back(file);
            Add(file, /*isFolder=*/false);
        }
    }
    for (path const& folder : ListedFolders()) {
        fListedFolders.push_back(fTargets.size());
        Add(folder, /*isFolder=*/true);
    }
}

// Changed preferences may select other folders.
void Watcher::State::UpdateListed() {
    bool const haveChanged = std::ranges::any_of(
        fPreferences, [this](path const& file) { return fChanged.contains(file); });
    if (!haveChanged) {
        return;
    }
    auto const folders = ListedFolders();
    for (std::size_t i = 0; i < folders.size(); ++i) {
        Target& target = fTargets[fListedFolders[i]];
        if (target.fPath != folders[i]) {
            target.fPath = folders[i];
            fChanged.insert(folders[i]);
            fIsOutdated = true;
        }
    }
}

Watcher::Watcher() : fState(std::make_unique<State>()) {}

Watcher::~Watcher() = default;

void Watcher::Add(path const& file) {
    fState->Add(file, /*isFolder=*/false);
}

void Watcher::AddFolder(path const& folder) {
    fState->Add(folder, /*isFolder=*/true);
}

void Watcher::AddListed() {
    fState->AddListed();
}

int Watcher::Descriptor() const noexcept {
    return fState->fEvents.Number();
}

bool Watcher::HasLost() const noexcept {
    return fState->fHasLost;
}

Sequence<path> Watcher::Read() {
    fState->fHasLost = false;
    fState->fEvents.Read(
        [this](auto folder, std::string_view name) { fState->OnEvent(folder, name); });
    fState->UpdateListed();
    if (fState->fIsOutdated) {
        fState->Arm();
    }
    auto const changed = std::exchange(fState->fChanged, {});
    return detail::MakeSequence::From(std::vector<path>(changed.begin(), changed.end()));
}

} // namespace pdfsettings
