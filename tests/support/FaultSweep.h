// A host that makes whatever a call of the component needs fail, one thing after the other.
#pragma once

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/Settings.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>

namespace support {

// What can fail on demand: how often it was attempted so far, and the order that the n-th attempt
// from now on fails, alone or with all later ones, which 0 takes back.
struct Resource {
    unsigned long (*fCount)();
    void (*fFail)(unsigned long n, bool andAllLater);
};

enum class Reports { kNone, kOne, kAny };

// A call of the component.
struct Call {
    // Does the work and gives up what it was given. Whether the component said that it succeeded.
    // Checks what it made, if it has to, after calling the argument, which ends the injection.
    std::function<bool(std::function<void()> const& endFaults)> fWork;
    // Goes before each.
    std::function<void()> fPrepare = [] {};
    // Those of a failure. A success has none, unless any may come: one at the most.
    Reports fReports = Reports::kOne;
};

// The results of all injected failures in a call.
struct Swept {
    int fFaults = 0;   // something failed while the call ran
    int fFailures = 0; // the call failed
    int fLeaks = 0;    // something was left alive
};

// Has settings, a file "a" of the same content, and two files in the user's settings folder.
class FaultSweepTest : public SettingsTest {
protected:
    FaultSweepTest() {
        fFolder.Make("a", kText);
        fSettings = NewSettings(kText, kSchema);
        fBefore = Text(fSettings);
        fPath = NewPath((fFolder.Path() / "a").u16string());
        fUserFolder = ReadPath(fGetFolder());
        WriteBytes(fUserFolder + "/one.joboptions", kText);
        WriteBytes(fUserFolder + "/two.joboptions", kText);
    }
    ~FaultSweepTest() override {
        fRuntime.Buffers().Release(fPath);
        Release(fSettings);
        EXPECT_EQ(fDescriptors, CountDescriptors());
        if (fIsLeaky) {
            fComponent.Terminate();
            fLiveBefore = bibrt::CountLive();
        }
    }

    // Makes each use of a resource in a call fail: the settings stay as they are, the reports say
    // what the result says, and the next call succeeds.
    Swept Sweep(Resource const& resource, Call const& call) {
        EXPECT_TRUE(Do(call)) << testing::PrintToString(fLog.fMessages);
        Swept swept;
        for (bool const andAllLater : {false, true}) {
            fIsLasting = andAllLater;
            for (unsigned long n = 1; Reaches(resource, call, n, andAllLater, swept); ++n) {
                EXPECT_EQ(fBefore, Text(fSettings)) << n;
            }
        }
        return swept;
    }

    void ExpectCleanFailures(Resource const& resource, Call const& call, int atLeast = 2) {
        Swept const swept = Sweep(resource, call);
        EXPECT_GT(swept.fFaults, 0);
        EXPECT_GE(swept.fFailures, atLeast);
        EXPECT_EQ(0, swept.fLeaks);
    }

    // A call that gives a result, which goes.
    template <class Work>
    Call Giving(Work work) const {
        return {[=, this](auto const&) {
            auto* const result = work();
            AddRef(result);
            Release(result);
            return result != nullptr;
        }};
    }

    // A call that writes settings into the file "a", which holds "old" before; check gets
    // whether it succeeded and what the file holds, "(gone)" without one. Its failures are reported
    // by its result.
    template <class Check>
    Call Writing(PDFSettings* settings, Check check) {
        auto const write = [this, settings, check](auto const& endFaults) {
            BIBError* const error = fWrite(settings, fPath);
            endFaults();
            fRuntime.Errors().Release(error);
            std::string const file = fFolder / "a";
            check(error == nullptr, std::filesystem::exists(file) ? ReadBytes(file) : "(gone)");
            return error == nullptr;
        };
        return {write, [this] { fFolder.Make("a", "old"); }, Reports::kNone};
    }

    // A call for the user's folder, which an empty path stands for where it cannot be found out.
    Call GettingFolder() const {
        auto const get = [this](auto const& endFaults) {
            BIBSharedBuffer* const folder = fGetFolder();
            endFaults();
            std::string const path = ReadPath(folder);
            EXPECT_TRUE(path.empty() || path == fUserFolder) << path;
            return !path.empty();
        };
        return {get, [] {}, Reports::kAny};
    }

    // A call for the list of settings files, which gets shorter where something fails.
    Call GettingList() const {
        auto const get = [this](auto const& endFaults) {
            POSArray* const list = fGetList("W");
            endFaults();
            AddRef(list);
            unsigned long const count = list == nullptr ? 0 : fRuntime.Arrays().Count(list);
            EXPECT_LE(count, 2U);
            for (unsigned long i = 0; i < count; ++i) {
                auto* const record = reinterpret_cast<POSDict*>(fRuntime.Arrays().GetAt(list, i));
                for (char const* const key :
                     {"SettingsName", "FullFilePath", "ReadOnly", "ModDate"}) {
                    EXPECT_NE(nullptr, fRuntime.Get(record, key)) << key;
                }
            }
            Release(list);
            return count == 2;
        };
        return {get, [] {}, Reports::kAny};
    }

    // The path in a buffer, without a mark at its head and a slash at its end. The buffer goes.
    std::string ReadPath(BIBSharedBuffer* buffer) const {
        std::u16string units = TakePath(buffer);
        std::erase_if(units, [](char16_t unit) { return unit == 0 || unit == 0xFEFF; });
        std::string const path = std::filesystem::path(units).string();
        return path.empty() || path.back() != '/' ? path : path.substr(0, path.size() - 1);
    }

    static constexpr char kText[] =
        "<< /A 1 /B [ /x (y) <FE> ] /C << /D 1.5 >> >>setalembicorparams tail";
    static constexpr char kSchema[] =
        "< PDFSettings < A number optional < B array C dictionary > > >";

    long fDescriptors = CountDescriptors();
    TemporaryFolder fFolder;
    EnvironmentVariable fHome{"HOME", fFolder.Path().c_str()};
    EnvironmentVariable fData{"XDG_DATA_HOME", nullptr};
    EnvironmentVariable fConfig{"XDG_CONFIG_HOME", nullptr};
    PDFSettings* fSettings = nullptr;
    BIBSharedBuffer* fPath = nullptr;
    std::string fBefore;
    std::string fUserFolder;
    bool fIsLasting = false; // all later uses fail too
    bool fIsLeaky = false;   // what is left at the end is permitted

private:
    static bool Do(Call const& call) {
        call.fPrepare();
        return call.fWork([] {});
    }

    // Whether the n-th use came to pass.
    bool Reaches(
        Resource const& resource,
        Call const& call,
        unsigned long n,
        bool andAllLater,
        Swept& swept) {
        bibrt::LiveCounts const live = bibrt::CountLive();
        call.fPrepare();
        fLog.fMessages.clear();
        unsigned long const start = resource.fCount();
        unsigned long end = start;
        auto const endFaults = [&] {
            end = end == start ? resource.fCount() : end;
            resource.fFail(0, /*andAllLater=*/false);
        };
        resource.fFail(n, andAllLater);
        bool const isDone = call.fWork(endFaults);
        endFaults();
        bool const isReported = !isDone && call.fReports == Reports::kOne;
        std::size_t const reports = fLog.fMessages.size();
        EXPECT_TRUE(
            reports == (isReported ? 1U : 0U) || (call.fReports == Reports::kAny && reports < 2))
            << n << testing::PrintToString(fLog.fMessages);
        swept.fFaults += end - start >= n ? 1 : 0;
        swept.fFailures += isDone ? 0 : 1;
        swept.fLeaks += live == bibrt::CountLive() ? 0 : 1;
        EXPECT_TRUE(Do(call)) << n;
        return end - start >= n;
    }
};

} // namespace support
