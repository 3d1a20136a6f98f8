#include "pdfsettings/Watcher.h"

#include "pdfsettings/ChangeWatcher.h"
#include "pdfsettings/Component.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/SettingsList.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <vector>

using namespace pdfsettings;
using std::filesystem::path;
using support::TemporaryFolder;

namespace {

using Paths = std::vector<path>;

template <class Kind>
bool IsReadable(Kind const& watcher) {
    pollfd descriptor{watcher.Descriptor(), POLLIN, 0};
    return poll(&descriptor, 1, 0) == 1;
}

// Everything that there is to report.
template <class Kind>
auto ReadAll(Kind& watcher) {
    std::vector<std::ranges::range_value_t<decltype(watcher.Read())>> all;
    while (IsReadable(watcher)) {
        auto const some = watcher.Read();
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

// The kinds of changes of one file, by their numbers, and its name.
std::string ChangesOf(path const& file, ChangeWatcher& watcher) {
    std::string changes;
    for (SettingsChange const& change : ReadAll(watcher)) {
        if (change.file == file) {
            changes += std::to_string(static_cast<int>(change.kind)) + change.name + " ";
        }
    }
    return changes;
}

std::string Changed(ChangeKind kind, std::string const& name) {
    return std::to_string(static_cast<int>(kind)) + name + " ";
}

bool Contains(Paths const& paths, path const& wanted) {
    return std::ranges::find(paths, wanted) != paths.end();
}

TEST(WatcherTest, TellsOnceOfEachWatchedFileAndOfNoOther) {
    TemporaryFolder const folder;
    std::string const file = folder.Make("a.joboptions", "<< >>");
    std::string const inside = folder / "Settings";
    Watcher watcher;
    watcher.Add(file);
    watcher.AddFolder(inside + "/");
    folder.Make("b", "another file");
    EXPECT_EQ(Paths(watcher.Read()), Paths());
    SaveSafely(file, "<< /A 1 >>");
    EXPECT_TRUE(IsReadable(watcher));
    EXPECT_EQ(Paths(watcher.Read()), Paths{file});
    std::filesystem::create_directory(inside);
    EXPECT_EQ(ReadAll(watcher), Paths{inside + "/"});
    SaveSafely(inside + "/a.joboptions", "<< >>");
    folder.Make("Settings/b.joboptions~", "<< >>");
    folder.Make("Settings/c.txt", "");
    EXPECT_EQ(Paths(watcher.Read()), (Paths{inside + "/a.joboptions", inside + "/b.joboptions~"}));
    std::filesystem::rename(inside, folder / "Old");
    EXPECT_EQ(ReadAll(watcher), Paths{inside + "/"});
    folder.Make("Old/a.joboptions", "");
    EXPECT_EQ(Paths(watcher.Read()), Paths()) << "it was moved away";
    Watcher other;
    other.AddFolder(folder / "Old/deep");
    std::filesystem::create_directory(folder / "Old/deep");
    ReadAll(other);
    chmod((folder / "Old/deep").c_str(), 0700);
    EXPECT_EQ(ReadAll(other), Paths{folder / "Old/deep"}) << "others may read it now, or no more";
}

TEST(WatcherTest, FollowsThePreferencesToOtherFolders) {
    TemporaryFolder const folder;
    support::EnvironmentVariable const data("XDG_DATA_HOME", (folder / "data").c_str());
    support::EnvironmentVariable const config("XDG_CONFIG_HOME", (folder / "config").c_str());
    Component const component = Component::Start();
    Watcher watcher;
    watcher.AddListed();
    // The administrator's folder is of this build, and other tests may use it.
    auto const readOwn = [&] {
        Paths paths = ReadAll(watcher);
        std::erase_if(paths, [&](path const& changed) {
            return !changed.string().starts_with(folder.Path().string());
        });
        return paths;
    };
    path const user = UserFolder();
    std::filesystem::create_directories(user);
    EXPECT_TRUE(Contains(readOwn(), user));
    SaveSafely(user / "a.joboptions", "<< >>");
    EXPECT_EQ(readOwn(), Paths{user / "a.joboptions"});

    std::string const moved = folder / "moved";
    path const list = folder / "config/com.ardeo.PDFSettings.plist";
    std::filesystem::create_directories(folder / "config");
    std::filesystem::create_directories(moved);
    SaveSafely(list, support::PropertyList(support::StringEntry("PDFSettingsPath", moved)));
    Paths const changed = readOwn();
    EXPECT_TRUE(Contains(changed, list) && Contains(changed, moved))
        << testing::PrintToString(changed);
    SaveSafely(moved + "/b.joboptions", "<< >>");
    SaveSafely(user / "c.joboptions", "<< >>");
    EXPECT_EQ(readOwn(), Paths{moved + "/b.joboptions"});
}

TEST(WatcherTest, TellsOfAllWhenTheSystemLosesEvents) {
    TemporaryFolder const folder;
    Watcher watcher;
    watcher.Add(folder / "a.joboptions");
    watcher.AddFolder(folder / "Settings");
    ChangeWatcher changes;
    changes.Add(folder / "a.joboptions");
    int most = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
    for (int i = 0; i <= most / 2; ++i) {
        std::filesystem::remove(folder.Make("other", ""));
    }
    Paths const all{folder / "Settings", folder / "a.joboptions"};
    EXPECT_EQ(ReadAll(watcher), all);
    folder.Make("a.joboptions", "");
    EXPECT_EQ(Paths(watcher.Read()), Paths{folder / "a.joboptions"});
    EXPECT_FALSE(watcher.HasLost());
    std::string kinds;
    for (SettingsChange const& change : ReadAll(changes)) {
        kinds += Changed(change.kind, change.name);
    }
    EXPECT_EQ(kinds, Changed(ChangeKind::kLookAgain, "") + Changed(ChangeKind::kAdded, "a"));
}

TEST(ChangeWatcherTest, SaysWhatHasBecomeOfAFile) {
    TemporaryFolder const folder;
    support::EnvironmentVariable const data("XDG_DATA_HOME", (folder / "data").c_str());
    support::EnvironmentVariable const config("XDG_CONFIG_HOME", (folder / "config").c_str());
    Component const component = Component::Start();
    path const file = UserFolder() / "own.joboptions";
    support::WriteBytes(file, "<< >>");
    ChangeWatcher watcher;
    watcher.AddListed("Webrix");
    chmod(file.c_str(), 0400);
    EXPECT_EQ(ChangesOf(file, watcher), Changed(ChangeKind::kReadOnly, "own"));
    chmod(file.c_str(), 0600);
    EXPECT_EQ(ChangesOf(file, watcher), Changed(ChangeKind::kWritable, "own"));
    SaveSafely(file, "<< /A 1 >>");
    support::WriteBytes(file.parent_path() / "other.joboptions", "<< >>");
    EXPECT_EQ(ChangesOf(file, watcher), Changed(ChangeKind::kChanged, "own"));
    std::filesystem::last_write_time(file, {});
    EXPECT_EQ(ChangesOf(file, watcher), "") << "the contents are the same";
    std::filesystem::remove_all(UserFolder());
    EXPECT_EQ(ChangesOf(file, watcher), Changed(ChangeKind::kRemoved, "own"));
}

TEST(ChangeWatcherTest, KnowsFileSystemsThatSayNothing) {
    EXPECT_TRUE(MayMissChanges("/proc/self/none/a.joboptions"));
    EXPECT_FALSE(MayMissChanges(TemporaryFolder() / "none/a.joboptions"));
}

// Folders, files and links that come and go at random below one folder, and what the watched paths
// lead to.
class WatcherModelTest : public testing::Test {
protected:
    using State = std::map<path, std::string>; // what is at each path that may be reported

    path At(std::string const& name) const { return fFolder.Path() / name; }
    unsigned Random(unsigned count) { return static_cast<unsigned>(fRandom() % count); }

    // A path of one to three steps, or a file there.
    path Somewhere(bool isFile = false) {
        path place = fFolder.Path();
        for (unsigned steps = isFile && Random(4) == 0 ? 0 : 1 + Random(3); steps > 0; --steps) {
            place /= Random(2) == 0 ? "a" : "b";
        }
        return isFile ? place / "f.joboptions" : place;
    }

    void ChangeSomething() {
        std::error_code ignored;
        std::function<void()> const kChanges[] = {
            [&] { std::filesystem::create_directories(Somewhere(), ignored); },
            [&] { std::filesystem::create_directories(Somewhere(), ignored); },
            [&] { std::filesystem::remove_all(Somewhere(), ignored); },
            [&] { std::filesystem::rename(Somewhere(), Somewhere(), ignored); },
            [&] {
                path const to = Random(2) == 0 ? Somewhere() : path("..") / "b";
                std::filesystem::create_symlink(to, Somewhere(), ignored);
            },
            [&] { chmod(Somewhere(/*isFile=*/true).c_str(), 0600 + Random(2) * 0044); },
            [&] {
                std::filesystem::rename(
                    Somewhere(/*isFile=*/true), Somewhere(/*isFile=*/true), ignored);
            },
            [&] { std::ofstream(Somewhere(/*isFile=*/true)) << ++fWritten; },
        };
        kChanges[Random(std::size(kChanges))]();
    }

    // What a program finds at path; "" for nothing.
    static std::string LookAt(path const& path) {
        struct stat status {};
        if (stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) {
            return "";
        }
        return std::to_string(status.st_ino) + " " + std::to_string(status.st_mode) + " " +
               support::ReadBytes(path);
    }

    State Look() const {
        State state;
        for (path const& file : fFiles) {
            state[file] = LookAt(file);
        }
        for (path const& folder : fFolders) {
            state[folder / "f.joboptions"] = LookAt(folder / "f.joboptions");
        }
        return state;
    }

    // The contents of what is there, and what has changed since before, as ChangeWatcher says it.
    std::map<path, std::string> Contents() const {
        std::map<path, std::string> contents;
        for (auto const& [file, found] : Look()) {
            std::error_code ignored;
            if (std::filesystem::is_regular_file(file, ignored)) {
                contents[file] = support::ReadBytes(file);
            }
        }
        return contents;
    }

    static std::string
    Changes(std::map<path, std::string> const& before, std::map<path, std::string> const& now) {
        std::string changes;
        for (auto const& [file, contents] : before) {
            if (!now.contains(file)) {
                changes += Changed(ChangeKind::kRemoved, file);
            } else if (contents != now.at(file)) {
                changes += Changed(ChangeKind::kChanged, file);
            }
        }
        for (auto const& [file, contents] : now) {
            changes += before.contains(file) ? "" : Changed(ChangeKind::kAdded, file);
        }
        return changes;
    }

    // Whether a difference at path is reported.
    bool IsReported(Paths const& reported, path const& path) const {
        auto const folder = path.parent_path();
        return Contains(reported, path) ||
               (Contains(fFolders, folder) && Contains(reported, folder));
    }

    TemporaryFolder const fFolder;
    Paths const fFiles{At("f.joboptions"), At("a/f.joboptions"), At("a/b/a/f.joboptions")};
    Paths const fFolders{At("b"), At("b/a")};
    std::mt19937 fRandom{7};
    int fWritten = 0;
};

TEST_F(WatcherModelTest, TellsOfEveryChangeOnTheWayToWhatIsWatched) {
    Watcher watcher;
    std::ranges::for_each(fFiles, [&](path const& file) { watcher.Add(file); });
    std::ranges::for_each(fFolders, [&](path const& folder) { watcher.AddFolder(folder); });
    std::size_t differences = 0;
    for (int round = 0; round < support::Rounds(1500); ++round) {
        State const before = Look();
        for (unsigned changes = 1 + Random(3); changes > 0; --changes) {
            ChangeSomething();
        }
        Paths const reported = ReadAll(watcher);
        for (auto const& [path, found] : Look()) {
            bool const isChanged = found != before.at(path);
            differences += isChanged ? 1 : 0;
            ASSERT_TRUE(!isChanged || IsReported(reported, path)) << path << " in round " << round;
        }
    }
    EXPECT_GT(differences, 150U);
}

TEST_F(WatcherModelTest, ChangesLeadFromEachStateToTheNext) {
    ChangeWatcher watcher;
    std::ranges::for_each(fFiles, [&](path const& file) { watcher.Add(file); });
    std::ranges::for_each(fFolders, [&](path const& folder) { watcher.AddFolder(folder); });
    std::size_t differences = 0;
    for (int round = 0; round < support::Rounds(1000); ++round) {
        auto const before = Contents();
        for (unsigned changes = 1 + Random(3); changes > 0; --changes) {
            ChangeSomething();
        }
        std::string reported;
        for (SettingsChange const& change : ReadAll(watcher)) {
            reported += Changed(change.kind, change.file);
        }
        std::string const expected = Changes(before, Contents());
        auto const sorted = [](std::string text) {
            std::ranges::sort(text);
            return text;
        };
        ASSERT_EQ(sorted(reported), sorted(expected)) << reported << expected << round;
        differences += expected.empty() ? 0U : 1U;
    }
    EXPECT_GT(differences, 100U);
}

} // namespace
