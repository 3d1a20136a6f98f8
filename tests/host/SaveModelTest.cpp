// Saves beside a program that takes no lock, with failing calls: random ones against a model that
// knows which bytes may be lost.
#include "pdfsettings/SafeSave.h"

#include "tests/host/SystemCallsDouble.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <unistd.h>

using namespace pdfsettings;
using support::ReadBytes;
using support::SystemCallsDouble;

namespace {

constexpr std::chrono::milliseconds kShortWait = std::chrono::milliseconds(4);

// What a save of "new" over "old" says.
std::string SaveMessage(std::string const& path) {
    return support::MessageOf(
        [&] { SaveSafely(path, "new", std::string("old"), OnConflict::kRefuse, kShortWait); });
}

// The bytes of all files in a folder.
std::multiset<std::string> AllBytes(support::TemporaryFolder const& folder) {
    std::multiset<std::string> all;
    for (auto const& entry : std::filesystem::directory_iterator(folder.Path())) {
        all.insert(ReadBytes(entry.path()));
    }
    return all;
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

    // Whether something is left of what this wrote. Expects all of it that this did not write over
    // itself.
    bool IsAlive() const {
        auto const all = AllBytes(fFolder);
        bool isAlive = false;
        for (std::string const& text : fWritten) {
            isAlive = isAlive || !HasOverwritten(text);
            EXPECT_TRUE(all.contains(text) || HasOverwritten(text)) << text;
        }
        return isAlive;
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
    // A kill would leave what is there between two calls.
    bool const isWatched = random() % 4 == 0;
    calls.AfterEach([&](int n) {
        if (moments.contains(n)) {
            other.Act(random());
        }
        if (isWatched) {
            other.IsAlive();
        }
    });
    return SaveMessage(path);
}

std::string CheckOthersBytes(unsigned seed) {
    std::mt19937 random(seed);
    support::TemporaryFolder const folder;
    folder.Make("a", "old");
    OtherWriter other(folder);
    std::string const message = SaveBeside(other, folder / "a", random);
    SCOPED_TRACE(std::to_string(seed) + " " + message);
    other.Finish();
    bool const isAlive = other.IsAlive();
    std::string const ours = message.empty() ? "new" : "old";
    EXPECT_TRUE(AllBytes(folder).contains(ours) || other.HasOverwritten(ours) || isAlive);
    return message;
}

} // namespace

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
