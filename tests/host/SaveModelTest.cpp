// Saves beside programs that take no lock, with failing calls and kills: random ones against a
// model that knows which bytes may be lost.
#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace pdfsettings;
using support::ReadBytes;
using support::SystemCallsDouble;

namespace {

constexpr std::chrono::milliseconds kShortWait = std::chrono::milliseconds(4);

// What a save of "new" says; with seen, if that is there. Warnings are stored on request.
std::string SaveMessage(
    std::string const& path,
    char const* seen = nullptr,
    std::vector<std::string>* warnings = nullptr) {
    try {
        auto const given =
            seen == nullptr
                ? SaveSafely(path, "new", kShortWait)
                : SaveSafely(path, "new", std::string(seen), OnConflict::kRefuse, kShortWait);
        if (warnings != nullptr) {
            *warnings = given;
        }
        return "";
    } catch (Error const& error) {
        return error.Message();
    }
}

// The bytes of all files in a folder.
std::multiset<std::string> AllBytes(support::TemporaryFolder const& folder) {
    std::multiset<std::string> all;
    for (auto const& entry : std::filesystem::directory_iterator(folder.Path())) {
        all.insert(ReadBytes(entry.path()));
    }
    return all;
}

constexpr mode_t kOldMode = 0640;

std::string MakeOld(support::TemporaryFolder const& folder) {
    std::string file = folder.Make("a", "old");
    chmod(file.c_str(), kOldMode);
    return file;
}

mode_t ModeOf(std::filesystem::path const& file) {
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
}

// Whatever is in the folder: no user may read what they could not read before.
void ExpectNoWiderAccess(support::TemporaryFolder const& folder) {
    for (auto const& entry : std::filesystem::directory_iterator(folder.Path())) {
        EXPECT_EQ(ModeOf(entry.path()) & ~kOldMode, 0U) << entry.path();
    }
}

// A program that changes a file and knows nothing of locks. It keeps a record of whose bytes it
// wrote over: no other writer may lose what is there then.
class OtherWriter {
public:
    explicit OtherWriter(support::TemporaryFolder const& folder) : fFolder(folder) {}
    ~OtherWriter() { Finish(); }
    OtherWriter(OtherWriter const&) = delete;
    OtherWriter& operator=(OtherWriter const&) = delete;

    void Act(unsigned long kind) {
        std::string const file = fFolder / "a";
        if (fOpen >= 0) {
            Finish();
            return;
        }
        std::string const text = "other" + std::to_string(fCount++);
        if (kind % 4 == 3) {
            // Writes only later what it opens now.
            fOpen = open(file.c_str(), O_RDWR | O_CLOEXEC);
            fPending = text;
            return;
        }
        fOverwritten.insert(ReadBytes(file));
        if (kind % 4 == 0) {
            fFolder.Make("b", text);
            std::filesystem::rename(fFolder / "b", file);
        } else {
            if (kind % 4 == 1) {
                std::filesystem::remove(file);
            }
            fFolder.Make("a", text);
        }
        fWritten.insert(text);
    }

    // Writes what is still to be written.
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

    // All that this wrote and did not write over itself.
    std::set<std::string> Living() const {
        std::set<std::string> living;
        for (std::string const& text : fWritten) {
            if (!fOverwritten.contains(text)) {
                living.insert(text);
            }
        }
        return living;
    }

    bool HasOverwritten(std::string const& text) const { return fOverwritten.contains(text); }

private:
    support::TemporaryFolder const& fFolder;
    std::set<std::string> fWritten;
    std::set<std::string> fOverwritten;
    std::string fPending;
    int fOpen = -1;
    int fCount = 0;
};

// How many calls a save of an old or a new file makes.
int CountCalls(bool hasOld) {
    support::TemporaryFolder const folder;
    SystemCallsDouble calls;
    if (hasOld) {
        folder.Make("a", "old");
    }
    SaveMessage(folder / "a");
    return calls.Count();
}

// Saves in a process of its own, which does something after each call that may end it.
void SaveAndDie(
    std::string const& path,
    char const* seen,
    std::function<void(int)> const& action,
    bool isNamed = false) {
    pid_t const child = fork();
    if (child == 0) {
        SystemCallsDouble calls;
        if (isNamed) {
            calls.FailAlways("nameless", EOPNOTSUPP);
        }
        calls.AfterEach(action);
        SaveMessage(path, seen);
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || status == 0);
}

std::function<void(int)> KillAt(int n) {
    return [n](int call) {
        if (call == n) {
            raise(SIGKILL);
        }
    };
}

// A save that is killed after the nth call; whether it left its new file behind.
bool CheckKill(int n, bool hasOld, bool isNamed) {
    support::TemporaryFolder const folder;
    std::string const file = hasOld ? MakeOld(folder) : folder / "a";
    SaveAndDie(file, nullptr, KillAt(n), isNamed);
    auto const all = AllBytes(folder);
    std::string const left = ReadBytes(file);
    if (hasOld) {
        ExpectNoWiderAccess(folder);
    }
    EXPECT_TRUE(left == "new" || left == (hasOld ? "old" : "")) << n << left;
    EXPECT_EQ(std::filesystem::exists(file), hasOld || left == "new") << n;
    // A file that has a name from the start may be left half-written.
    EXPECT_TRUE(isNamed || all.size() < 2 || (all.contains("new") && hasOld)) << n;
    EXPECT_EQ(SaveMessage(file), "") << n;
    EXPECT_EQ(ReadBytes(file), "new") << n;
    return all.size() > 1;
}

// One other writer at a random moment, and a kill at a later one. Whether it came when both files
// were exchanged.
bool CheckKillBesideAnotherWriter(unsigned seed) {
    std::mt19937 random(seed);
    support::TemporaryFolder const folder;
    folder.Make("a", "old");
    // Most of what can go wrong lies around the exchange.
    int const moment = 17 + static_cast<int>(random() % 60);
    int const end = moment + 1 + static_cast<int>(random() % 30);
    unsigned long const kind = random() % 3;
    OtherWriter other(folder);
    SaveAndDie(folder / "a", "old", [&, hasActed = false](int call) mutable {
        if (call >= moment && !std::exchange(hasActed, true)) {
            other.Act(kind);
        } else if (hasActed && call >= end) {
            raise(SIGKILL);
        }
    });
    auto const all = AllBytes(folder);
    std::string const left = ReadBytes(folder / "a");
    bool const hasActed = all.contains("other0");
    EXPECT_TRUE(hasActed || all.size() == 1) << seed << left;
    EXPECT_TRUE(left == "other0" || left == "old" || left == "new") << seed << left;
    return hasActed && left == "new";
}

// A save whose nth call fails.
void CheckFailure(int n, bool hasOld, bool andAllLater) {
    support::TemporaryFolder const folder;
    std::string const file = hasOld ? MakeOld(folder) : folder / "a";
    long const descriptors = support::CountDescriptors();
    std::string message;
    std::vector<std::string> warnings;
    {
        SystemCallsDouble calls;
        calls.FailAt(n, EIO, andAllLater);
        message = SaveMessage(file, nullptr, &warnings);
        EXPECT_TRUE(calls.HasFailed()) << n;
    }
    EXPECT_EQ(support::CountDescriptors(), descriptors) << n;
    auto const all = AllBytes(folder);
    if (hasOld) {
        ExpectNoWiderAccess(folder);
    }
    if (message.empty()) {
        EXPECT_EQ(ReadBytes(file), "new") << n;
        EXPECT_TRUE(!hasOld || !warnings.empty() || ModeOf(file) == kOldMode) << n;
        EXPECT_TRUE(all.size() == 1 || (all.contains("old") && all.contains("new"))) << n;
    } else {
        EXPECT_EQ(all.contains("old"), hasOld) << n << message;
        EXPECT_TRUE(andAllLater || all.size() == (hasOld ? 1 : 0)) << n << message;
    }
}

// What a save says beside another writer who acts at random moments, and perhaps with a failing
// call.
std::string SaveBeside(OtherWriter& other, std::string const& path, std::mt19937& random) {
    std::set<int> moments;
    for (auto count = 1 + random() % 3; count > 0; --count) {
        moments.insert(static_cast<int>(random() % 70));
    }
    SystemCallsDouble calls;
    if (random() % 4 == 0) {
        calls.FailAt(static_cast<int>(random() % 70), EIO);
    }
    calls.AfterEach([&](int n) {
        if (moments.contains(n)) {
            other.Act(random());
        }
    });
    return SaveMessage(path, "old");
}

std::string CheckOthersBytes(unsigned seed) {
    std::mt19937 random(seed);
    support::TemporaryFolder const folder;
    folder.Make("a", "old");
    OtherWriter other(folder);
    std::string const message = SaveBeside(other, folder / "a", random);
    other.Finish();
    auto const all = AllBytes(folder);
    for (std::string const& text : other.Living()) {
        EXPECT_TRUE(all.contains(text)) << seed << " " << text << " " << message;
    }
    std::string const ours = message.empty() ? "new" : "old";
    EXPECT_TRUE(all.contains(ours) || other.HasOverwritten(ours) || !other.Living().empty())
        << seed << " " << ours << " " << message;
    return message;
}

} // namespace

TEST(SaveModel, AKillAfterAnyCallLeavesOldOrNewBytesWhole) {
    int leftovers = 0;
    for (auto const& [hasOld, isNamed] :
         {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
        int const count = CountCalls(hasOld);
        for (int n = 1; n <= count; ++n) {
            leftovers += CheckKill(n, hasOld, isNamed) ? 1 : 0;
        }
    }
    EXPECT_GT(leftovers, 0);
}

TEST(SaveModel, AKillBesideAnotherWriterLeavesEverybodysBytes) {
    int exchanged = 0;
    for (int seed = 0; seed < support::Rounds(600) && !testing::Test::HasFailure(); ++seed) {
        exchanged += CheckKillBesideAnotherWriter(static_cast<unsigned>(seed)) ? 1 : 0;
    }
    EXPECT_GT(exchanged, 0) << "none was killed between the exchanges";
}

TEST(SaveModel, EveryFailingCallGivesTheOldBytesWithAReasonOrTheNewOnes) {
    for (auto const& [hasOld, andAllLater] :
         {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
        int const count = CountCalls(hasOld);
        ASSERT_GT(count, 20);
        for (int n = 1; n <= count; ++n) {
            CheckFailure(n, hasOld, andAllLater);
        }
    }
}

TEST(SaveModel, BytesOfOthersAreNeverLostWhateverTheyDoBetweenTheCalls) {
    int conflicts = 0;
    int kept = 0;
    for (int seed = 0; seed < support::Rounds(3000) && !testing::Test::HasFailure(); ++seed) {
        std::string const message = CheckOthersBytes(static_cast<unsigned>(seed));
        conflicts += message.starts_with("changed") ? 1 : 0;
        kept += message.find("kept as") != std::string::npos ? 1 : 0;
    }
    EXPECT_GT(conflicts, 100);
    EXPECT_GT(kept, 1);
}
