// Saves in folders of random files, with failing calls, kills and other programs, against a model
// that knows what may be there afterwards: names, bytes, owners, permissions, links and times.
#include "pdfsettings/SafeSave.h"

#include "tests/support/ErrorOf.h"
#include "tests/support/Rounds.h"
#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace pdfsettings;
using support::SystemCallsDouble;

namespace {

constexpr gid_t kOurGroup = 2000;
constexpr gid_t kForeignGroup = 3000;
constexpr uid_t kOtherUser = 1234;
constexpr char kLeftover[] = ".joboptions-00000000000000000000000000000000.new";
constexpr char kForeign[] = ".joboptions-0000000000000000.new"; // not quite a leftover

// Access control lists of files, as the system stores them: a version, and entries of a tag,
// permissions and an id, 16, 16 and 32 bits each, the low byte first (linux/posix_acl_xattr.h).
constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kDefaultList[] = "system.posix_acl_default";

// Whom lists of tests name.
constexpr uid_t kNamedUser = 7777;
constexpr gid_t kNamedGroup = 4000;

// A list with the permissions, rwx from the high bit on, of the owner, the named user, the group,
// the named group, the mask and the others.
std::string AccessList(std::array<char, 6> const& permissions) {
    constexpr std::uint32_t kNone = 0xFFFFFFFF;
    constexpr std::uint32_t kIds[] = {kNone, kNamedUser, kNone, kNamedGroup, kNone, kNone};
    std::string list("\2\0\0\0", 4);
    for (std::size_t entry = 0; entry < permissions.size(); ++entry) {
        list += {static_cast<char>(1 << entry), 0, permissions[entry], 0};
        for (int byte = 0; byte < 4; ++byte) {
            list += static_cast<char>(kIds[entry] >> (8 * byte));
        }
    }
    return list;
}

// What a user who is not the owner, in one group, may do with a file: a list's user counts before
// its groups, these before the others, and the mask cuts all but the others.
int RightsOf(uid_t user, gid_t group, gid_t groupOfFile, mode_t mode, std::string const& list) {
    if (list.empty()) {
        return static_cast<int>((group == groupOfFile ? mode >> 3 : mode) & 7U);
    }
    // The entries in the order of the list.
    auto const rights = [&list](std::size_t entry) {
        return static_cast<unsigned char>(list[4 + entry * 8 + 2]);
    };
    int const mask = rights(4);
    if (user == kNamedUser) {
        return rights(1) & mask;
    }
    bool const isInGroup = group == groupOfFile;
    bool const isInNamed = group == kNamedGroup;
    if (isInGroup || isInNamed) {
        return ((isInGroup ? rights(2) : 0) | (isInNamed ? rights(3) : 0)) & mask;
    }
    return rights(5);
}

bool SetAttribute(std::string const& path, char const* name, std::string const& value) {
    return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

// The value of an attribute; empty where there is none.
std::string Attribute(std::string const& path, char const* name) {
    std::string value(1000, '\0');
    ssize_t const size = getxattr(path.c_str(), name, value.data(), value.size());
    value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return value;
}

// What can be seen of an item of a folder.
struct Item {
    std::string fBytes; // where a link leads
    mode_t fMode = 0;   // with its kind
    uid_t fUser = 0;
    gid_t fGroup = 0;
    std::string fList;
    std::string fNote; // an attribute
    ino_t fFile = 0;
    std::int64_t fModified = 0; // nanoseconds

    bool operator==(Item const&) const = default;
};

using Items = std::map<std::string, Item>;

void PrintTo(Item const& item, std::ostream* out) {
    *out << item.fBytes << " mode " << std::oct << item.fMode << std::dec << " owner " << item.fUser
         << ":" << item.fGroup << " list " << testing::PrintToString(item.fList) << " note "
         << item.fNote << " file " << item.fFile << " at " << item.fModified;
}

Item LookAtItem(std::string const& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    bool const isLink = S_ISLNK(status.st_mode);
    return {
        isLink ? std::filesystem::read_symlink(path).string() : support::ReadBytes(path),
        status.st_mode,
        status.st_uid,
        status.st_gid,
        isLink ? "" : Attribute(path, kAccessList),
        isLink ? "" : Attribute(path, "user.note"),
        status.st_ino,
        std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

Items LookAtAll(support::TemporaryFolder const& folder) {
    Items items;
    for (auto const& entry : std::filesystem::directory_iterator(folder.Path())) {
        items[entry.path().filename()] = LookAtItem(entry.path());
    }
    return items;
}

// Only the owners, old and new, may do with an item what they could not do with old.
void ExpectNoWiderAccess(Item const& item, Item const& old) {
    for (uid_t const user : {uid_t{7777}, uid_t{8888}}) {
        for (gid_t const group : {getegid(), kOurGroup, kForeignGroup, gid_t{4000}}) {
            int const before = RightsOf(user, group, old.fGroup, old.fMode, old.fList);
            int const now = RightsOf(user, group, item.fGroup, item.fMode, item.fList);
            EXPECT_EQ(now & ~before, 0) << user << ":" << group << "\n"
                                        << testing::PrintToString(old) << "\n"
                                        << testing::PrintToString(item);
        }
    }
}

// Another program that changes "a" and knows nothing of locks. It keeps a record of whose bytes it
// wrote over: no other program may lose what is in it then.
class OtherProgram {
public:
    explicit OtherProgram(support::TemporaryFolder const& folder) : fFolder(folder) {}

    enum Action { kOpen, kReplace, kWrite, kMoveAway, kRemove, kTakeRights };
    static constexpr std::initializer_list<Action> kChanges = {
        kOpen, kReplace, kWrite, kMoveAway, kRemove};

    void Act(Action action) {
        std::string const file = fFolder / "a";
        std::string const text = "other" + std::to_string(fCount++);
        if (fOpen >= 0) {
            Finish();
        } else if (action == kOpen) {
            fOpen = open(file.c_str(), O_RDWR | O_CLOEXEC);
            fPending = text;
        } else if (action == kTakeRights) {
            chmod(file.c_str(), 0600);
        } else if (action == kMoveAway) {
            fOverwritten.insert(support::ReadBytes(fFolder / "moved"));
            rename(file.c_str(), (fFolder / "moved").c_str());
        } else {
            fOverwritten.insert(support::ReadBytes(file));
            Overwrite(action, file, text);
        }
    }

    // Writes what is still to be written to the file that was opened.
    void Finish() {
        if (fOpen < 0) {
            return;
        }
        char bytes[20];
        ssize_t const size = pread(fOpen, bytes, sizeof bytes, 0);
        fOverwritten.emplace(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        EXPECT_EQ(ftruncate(fOpen, 0), 0);
        EXPECT_EQ(
            write(fOpen, fPending.data(), fPending.size()), static_cast<ssize_t>(fPending.size()));
        close(fOpen);
        fOpen = -1;
        fWritten.insert(fPending);
    }

    // Whether something is left of what this wrote. Expects all of it that this did not write over
    // itself.
    bool IsAlive() const {
        std::set<std::string> all;
        for (auto const& [name, item] : LookAtAll(fFolder)) {
            all.insert(item.fBytes);
        }
        bool isAlive = false;
        for (std::string const& text : fWritten) {
            isAlive = isAlive || !HasOverwritten(text);
            EXPECT_TRUE(all.contains(text) || HasOverwritten(text)) << text;
        }
        return isAlive;
    }

    bool HasOverwritten(std::string const& text) const { return fOverwritten.contains(text); }

private:
    void Overwrite(Action action, std::string const& file, std::string const& text) {
        if (action == kRemove) {
            std::filesystem::remove(file);
            return;
        }
        std::filesystem::rename(fFolder.Make(action == kReplace ? "its" : "a", text), file);
        fWritten.insert(text);
    }

    support::TemporaryFolder const& fFolder;
    std::set<std::string> fWritten;
    std::set<std::string> fOverwritten;
    std::string fPending;
    int fOpen = -1;
    int fCount = 0;
};

// One save in one folder.
class World {
public:
    explicit World(unsigned seed) : fRandom(seed) {
        fIsRoot = Below(4) == 0;
        if (!fIsRoot) {
            fCalls.fGroups = {getegid(), kOurGroup};
        }
        fHasOld = Below(8) != 0;
        if (fHasOld) {
            MakeRandomFile("a", "old");
        }
        fSeen = fHasOld ? std::optional("old") : std::nullopt;
        MakeRandomFile("b", "other");
        std::filesystem::create_symlink("a", fFolder / "link");
        if (fHasOld && Below(3) == 0) {
            std::filesystem::create_hard_link(fFolder / "a", fFolder / "hard");
        }
        if (Below(4) == 0) {
            MakeRandomFile(kLeftover, OneOf({"old", "new", "mine"}));
            MakeRandomFile(kForeign, "new");
            if (Below(4) == 0) {
                fWriter.open(fFolder / kLeftover, std::ios::app);
            }
        }
        fPath = fFolder / (Below(3) == 0 ? "link" : "a");
        fBefore = LookAtAll(fFolder);
        fDescriptors = support::CountDescriptors();
    }

    // The ways to run it; each checks what is there afterwards.
    void Save() {
        if (Below(2) == 0) {
            SetAttribute(fFolder.Path(), kDefaultList, RandomList(6));
        }
        bool const isStale = Below(8) == 0;
        if (isStale) {
            fSeen = fHasOld && Below(2) == 0 ? std::nullopt : std::optional("seen before");
            fOnConflict = Below(2) == 0 ? OnConflict::kRefuse : OnConflict::kOverwrite;
        }
        bool const isRefused = isStale && fOnConflict == OnConflict::kRefuse;
        fRefused = OneOf({"", "", "fsetxattr", "fremovexattr"});
        fCalls.FailAlways(fRefused, EPERM);
        Run();
        CheckOthers();
        EXPECT_EQ(
            fMessage,
            IsReadOnly() ? "read-only"
            : isRefused  ? "changed since it was read"
                         : "");
        isRefused || IsReadOnly() ? CheckUnchanged() : CheckSaved(/*isExact=*/true);
    }

    void SaveWithFailure() {
        // The last one only once: a call that a signal interrupts is made again.
        int const error = OneOf({EIO, ENOSPC, EPERM, EINVAL, EINTR});
        fMayLeaveFiles = error != EINTR && Below(4) == 0;
        fCalls.FailAt(1 + static_cast<int>(Below(80)), error, fMayLeaveFiles);
        Run();
        CheckOthers();
        if (fMessage.find("kept as") != std::string::npos) {
            EXPECT_TRUE(fMayLeaveFiles) << fMessage;
            EXPECT_TRUE(std::ranges::any_of(fNow, [&](auto const& named) {
                return IsHidden(named.first) && named.second == Old();
            })) << fMessage;
            return;
        }
        fMessage.empty() ? CheckSaved(!fCalls.HasFailed()) : CheckUnchanged();
    }

    // Whether the new file was in its place already.
    bool SaveAndDie() {
        fMayLeaveFiles = true;
        int const moment = 1 + static_cast<int>(Below(80));
        if (Below(2) == 0) {
            fCalls.FailAlways("nameless", EOPNOTSUPP);
        }
        fCalls.AfterEach([end = fCalls.Count() + moment](int call) {
            if (call == end) {
                raise(SIGKILL);
            }
        });
        pid_t const child = fork();
        if (child == 0) {
            Run();
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        fCalls.AfterEach(nullptr);
        fNow = LookAtAll(fFolder);
        fMessage = "killed";
        CheckOthers();
        bool const isSaved = fNow.contains("a") && fNow["a"].fBytes == "new";
        isSaved ? CheckNewFile(/*isExact=*/true) : CheckUnchanged();
        fSeen = isSaved ? "new" : fSeen;
        Run();
        EXPECT_TRUE(fNow["a"].fBytes == "new" || IsReadOnly()) << fMessage;
        return isSaved;
    }

    // Another program acts at random moments, and a call may fail. What the save says.
    std::string SaveBesideAnother() {
        if (IsReadOnly()) {
            return "";
        }
        OtherProgram other(fFolder);
        bool const takesRights = Below(4) == 0;
        bool const isWatched = Below(4) == 0; // a kill would leave what is there between two calls
        std::set<int> moments;
        int const first = fCalls.Count() + static_cast<int>(Below(70));
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            moments.insert(first + static_cast<int>(Below(8)));
        }
        if (Below(4) == 0) {
            fCalls.FailAt(static_cast<int>(Below(70)), EIO);
        }
        bool hasActed = false;
        fCalls.AfterEach([&](int call) {
            if (moments.contains(call)) {
                other.Act(takesRights ? OtherProgram::kTakeRights : OneOf(OtherProgram::kChanges));
                hasActed = true;
            }
            if (isWatched) {
                other.IsAlive();
            }
        });
        TrySaving(std::chrono::milliseconds(4));
        other.Finish();
        CheckBeside(other);
        if (fHasOld && hasActed && takesRights) {
            EXPECT_EQ(fNow["a"].fMode & 077U, 0U) << fMessage;
        }
        return fMessage;
    }

private:
    std::size_t Below(std::size_t end) { return fRandom() % end; }
    template <class T>
    T OneOf(std::initializer_list<T> all) {
        return all.begin()[Below(all.size())];
    }
    char RandomRights() { return static_cast<char>(Below(8)); }

    std::string RandomList(char ownerRights) {
        std::array<char, 6> rights{ownerRights};
        std::generate(rights.begin() + 1, rights.end(), [this] { return RandomRights(); });
        return AccessList(rights);
    }

    void MakeRandomFile(std::string const& name, std::string const& bytes) {
        std::string const file = fFolder.Make(name, bytes);
        gid_t const group = OneOf({getegid(), kOurGroup, kForeignGroup});
        uid_t const owner = Below(4) == 0 ? kOtherUser : geteuid();
        // Only root can give files away; for others all belong to them.
        EXPECT_TRUE(geteuid() != 0 || chown(file.c_str(), owner, group) == 0);
        char const ownerRights = Below(8) == 0 ? 4 : 6;
        bool const hasList = Below(2) == 0;
        if (Below(2) == 0) {
            SetAttribute(file, "user.note", "note on " + bytes);
        }
        int const special = Below(4) == 0 ? RandomRights() : 0; // set-id and sticky bits
        chmod(
            file.c_str(),
            static_cast<mode_t>(
                special << 9 | ownerRights << 6 | RandomRights() << 3 | RandomRights()));
        if (hasList) {
            SetAttribute(file, kAccessList, RandomList(ownerRights));
        }
        timespec const times[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
        utimensat(AT_FDCWD, file.c_str(), times, 0);
    }

    void TrySaving(std::chrono::milliseconds wait) {
        fMessage = support::MessageOf(
            [&] { fWarnings = SaveSafely(fPath, "new", fSeen, fOnConflict, wait); });
        fCalls.FailAt(0, 0);
        fCalls.AfterEach(nullptr);
    }

    void Run() {
        TrySaving(std::chrono::milliseconds(0));
        EXPECT_EQ(support::CountDescriptors(), fDescriptors);
        fNow = LookAtAll(fFolder);
    }

    Item const& Old() { return fBefore["a"]; }
    bool IsReadOnly() { return fHasOld && (Old().fMode & S_IWUSR) == 0; }
    bool KeepsOwner() { return fIsRoot || Old().fUser == geteuid(); }
    bool KeepsGroup() { return fIsRoot || Old().fGroup != kForeignGroup; }
    bool KeepsList() { return fRefused != (Old().fList.empty() ? "fremovexattr" : "fsetxattr"); }
    bool KeepsNote() { return Old().fNote.empty() || fRefused != "fsetxattr"; }

    static bool IsHidden(std::string const& name) {
        return name.starts_with(".joboptions-") && name.ends_with(".new");
    }

    bool IsWarned(std::string const& part) const {
        return std::ranges::any_of(fWarnings, [&](std::string const& warning) {
            return warning.find(part) != std::string::npos;
        });
    }

    // The bytes that the save should have left are there, or the other program lost them, or there
    // are its own.
    void CheckBeside(OtherProgram const& other) {
        fNow = LookAtAll(fFolder);
        std::string const ours = fMessage.empty() ? "new" : "old";
        bool isThere = ours == "old" && !fHasOld;
        for (auto const& [name, item] : fNow) {
            bool const isMovable = name == "a" || !fBefore.contains(name);
            isThere = isThere || (isMovable && item.fBytes == ours);
            bool const isOld = item.fFile == Old().fFile;
            EXPECT_TRUE(isOld || isMovable || IsHidden(name) || item == fBefore[name]) << name;
            if (isMovable && fHasOld && item.fBytes == "new") {
                ExpectNoWiderAccess(item, Old());
            }
        }
        EXPECT_TRUE(other.IsAlive() || isThere || other.HasOverwritten(ours)) << fMessage;
    }

    // All but the target.
    void CheckOthers() {
        for (auto const& [name, item] : fBefore) {
            if (name != "a" && name != kLeftover) {
                EXPECT_EQ(fNow[name], item) << name << " " << fMessage;
            }
        }
        for (auto const& [name, item] : fNow) {
            if (name != "a" && !fBefore.contains(name)) {
                CheckAdded(name, item);
            }
        }
        CheckLeftover();
    }

    // What a save may leave behind.
    void CheckAdded(std::string const& name, Item const& item) {
        EXPECT_TRUE(IsHidden(name) && (fMayLeaveFiles || IsWarned(name))) << name << fMessage;
        EXPECT_TRUE(item == Old() || std::string("new").starts_with(item.fBytes)) << name;
        if (fHasOld) {
            ExpectNoWiderAccess(item, Old());
        }
    }

    // It goes only with bytes that are safe elsewhere.
    void CheckLeftover() {
        if (!fBefore.contains(kLeftover)) {
            return;
        }
        Item const& before = fBefore[kLeftover];
        if (fNow.contains(kLeftover)) {
            EXPECT_EQ(fNow[kLeftover], before);
            EXPECT_TRUE(fCalls.HasFailed() || !fMessage.empty() || IsWarned(kLeftover));
        } else {
            EXPECT_TRUE(before.fBytes == "new" || (before.fBytes == "old" && fHasOld));
            EXPECT_EQ(fNow["a"].fBytes, "new");
        }
    }

    void CheckUnchanged() {
        EXPECT_EQ(fNow["a"], Old()) << fMessage; // nothing where there was none
    }

    void CheckSaved(bool isExact) {
        CheckNewFile(isExact);
        if (isExact) {
            std::string const left = fBefore.contains(kLeftover) ? fBefore[kLeftover].fBytes : "";
            bool const isNeeded =
                left == "mine" || (left == "old" && !fHasOld) || fWriter.is_open();
            EXPECT_EQ(fNow.contains(kLeftover), isNeeded);
            EXPECT_EQ(fWarnings, ExpectedWarnings());
        }
    }

    std::vector<std::string> ExpectedWarnings() {
        std::pair<bool, std::string> const possible[] = {
            {fHasOld && !KeepsOwner(), "its owner could not be kept: you own it now"},
            {fHasOld && !KeepsGroup(),
             "its group could not be kept: the group's permissions were removed"},
            {fHasOld && !KeepsList(),
             "its access control list could not be kept: only its owner has access now"},
            {fHasOld && !KeepsNote(), "its attribute user.note could not be kept"},
            {fNow.contains(kLeftover),
             std::string("an interrupted save left ") + kLeftover +
                 " in its folder; delete it if you do not need its content"},
        };
        std::vector<std::string> expected;
        for (auto const& [isGiven, warning] : possible) {
            expected.insert(expected.end(), isGiven ? 1 : 0, warning);
        }
        return expected;
    }

    void CheckNewFile(bool isExact) {
        Item& item = fNow["a"];
        EXPECT_EQ(item.fBytes, "new");
        EXPECT_NE(item.fFile, Old().fFile);
        EXPECT_NE(item.fModified, Old().fModified);
        if (!fHasOld) {
            CheckAsAnyNewFile(item);
            return;
        }
        ExpectNoWiderAccess(item, Old());
        if (isExact) {
            CheckKept(item);
        }
    }

    void CheckKept(Item const& item) {
        EXPECT_EQ(item.fUser, KeepsOwner() ? Old().fUser : geteuid());
        EXPECT_EQ(item.fGroup, KeepsGroup() ? Old().fGroup : getegid());
        EXPECT_EQ(item.fNote, KeepsNote() ? Old().fNote : "");
        mode_t const mode = Old().fMode & ~mode_t{S_ISUID | S_ISGID};
        if (!KeepsList()) {
            EXPECT_EQ(item.fMode, mode & ~mode_t{S_IRWXG | S_IRWXO});
        } else if (KeepsGroup()) {
            EXPECT_EQ(item.fMode, mode);
            EXPECT_EQ(item.fList, Old().fList);
        } else {
            // The group's members are among the others now.
            auto const rights = [](gid_t group, Item const& of) {
                return RightsOf(8888, group, of.fGroup, of.fMode, of.fList);
            };
            EXPECT_EQ(item.fMode & (S_IRWXU | S_ISVTX), mode & (S_IRWXU | S_ISVTX));
            EXPECT_EQ(rights(5000, item), rights(5000, Old()) & rights(kForeignGroup, Old()));
        }
    }

    void CheckAsAnyNewFile(Item const& item) {
        std::string const path = fFolder / "made";
        close(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666));
        Item const made = LookAtItem(path);
        EXPECT_EQ(item.fMode, made.fMode);
        EXPECT_EQ(item.fList, made.fList);
    }

    std::mt19937 fRandom;
    support::TemporaryFolder fFolder;
    SystemCallsDouble fCalls;
    std::ofstream fWriter; // of one that may still write to the leftover
    long fDescriptors = 0;
    std::string fPath;
    std::optional<std::string> fSeen;
    OnConflict fOnConflict = OnConflict::kRefuse;
    std::string fRefused; // a call that the system refuses
    bool fIsRoot = false;
    bool fHasOld = false;
    bool fMayLeaveFiles = false;
    Items fBefore;
    Items fNow;
    std::string fMessage;
    std::vector<std::string> fWarnings;
};

template <class Work>
void ForEachWorld(int usual, Work work) {
    for (int seed = 0; seed < support::Rounds(usual) && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        World world(static_cast<unsigned>(seed));
        work(world);
    }
}

} // namespace

TEST(SaveFolder, KeepsAllTraitsThatItMayAndTouchesNothingElse) {
    ForEachWorld(500, [](World& world) { world.Save(); });
}

TEST(SaveFolder, IsAsItWasWhereACallFailsOrTheFileIsSavedWithNoWiderAccess) {
    ForEachWorld(1000, [](World& world) { world.SaveWithFailure(); });
}

TEST(SaveFolder, HoldsTheOldFileOrTheNewOneWithAllTraitsAfterAKill) {
    int saved = 0;
    ForEachWorld(500, [&](World& world) { saved += world.SaveAndDie() ? 1 : 0; });
    EXPECT_GT(saved, 10);
}

TEST(SaveFolder, LosesNoBytesOfAnotherProgramWhateverItDoesBetweenTheCalls) {
    int conflicts = 0;
    int kept = 0;
    ForEachWorld(2000, [&](World& world) {
        std::string const message = world.SaveBesideAnother();
        conflicts += message.starts_with("changed") ? 1 : 0;
        kept += message.find("kept as") != std::string::npos ? 1 : 0;
    });
    EXPECT_GT(conflicts, 100);
    EXPECT_GT(kept, 1);
}
