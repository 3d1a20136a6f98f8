// Every procedure of the component while what it needs fails: memory and streams of the runtime,
// and the system's calls for files. That it lives with any other row that fails is for the
// conformance kit to check.

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyList.h"
#include "tests/support/Settings.h"
#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>

// Of the sanitizer for leaks; null in programs without it.
extern "C" {
void __lsan_disable() __attribute__((weak));
void __lsan_enable() __attribute__((weak));
}

namespace support {

namespace {

// While one lives, the sanitizer forgives what is allocated and never freed.
struct ExpectedLeaks {
    ExpectedLeaks() { __lsan_disable != nullptr ? __lsan_disable() : void(); }
    ~ExpectedLeaks() { __lsan_enable != nullptr ? __lsan_enable() : void(); }
};

// What can fail on demand: how often it was attempted so far, and the order that the n-th attempt
// from now on fails, alone or with all later ones, which 0 takes back.
struct Resource {
    std::function<unsigned long()> fCount;
    std::function<void(unsigned long n, bool andAllLater)> fFail;
};

Resource const kAllocations{&bibrt::CountAllocations, [](unsigned long n, bool andAllLater) {
                                n == 0 ? bibrt::ResetFailures()
                                       : bibrt::FailAllocation(n, andAllLater);
                            }};

Resource const kStreams{&bibrt::CountStreamOperations, [](unsigned long n, bool andAllLater) {
                            n == 0 ? bibrt::ResetFailures()
                                   : bibrt::FailStreamOperation(n, andAllLater);
                        }};

// Ends the failures, so that what a call made can be looked at.
using EndFaults = std::function<void()>;

// A call of the component.
struct Call {
    // Does the work, and gives up what was made. Whether the component said that it succeeded.
    std::function<bool(EndFaults const&)> fWork;
    // Goes before each.
    std::function<void()> fPrepare = [] {};
    // How many reports a failure has. A success has none, unless any may come: one at the most.
    enum { kNone, kOne, kAny } fReports = kOne;
};

} // namespace

// Has settings, a file "a" of the same content, and two files in the user's settings
// folder, which are hidden in applications.
class Failures : public SettingsTest {
protected:
    Failures() {
        fFolder.Make("a", kText);
        fSettings = NewSettings(kText, kSchema);
        fBefore = Text(fSettings);
        fPath = NewPath((fFolder.Path() / "a").u16string());
        fUserFolder = ReadPath(fGetFolder());
        WriteBytes(fUserFolder + "/Standard.joboptions", kText);
        WriteBytes(fUserFolder + "/Press Quality.joboptions", kText);
    }
    ~Failures() override {
        fPath.reset();
        fSettings.reset();
        EXPECT_EQ(fDescriptors, CountDescriptors());
        if (fIsLeaky) {
            fComponent.Terminate();
            fLiveBefore = bibrt::CountLive();
        }
    }

    // Makes each use of a resource in a call fail: the settings stay as they are, the reports say
    // what the result says, and the next call succeeds. Expects at least so many failures, and that
    // so many of them leave something alive.
    void Sweep(Resource const& resource, Call const& call, int atLeast = 2, int leaks = 0) {
        int failures = 0;
        EXPECT_TRUE(Do(call)) << testing::PrintToString(fLog.fMessages);
        for (bool const andAllLater : {false, true}) {
            fIsLasting = andAllLater;
            unsigned long uses = 0;
            unsigned long n = 0;
            do {
                ++n;
                bibrt::LiveCounts const live = bibrt::CountLive();
                uses = DoWithFault(resource, call, n, &failures);
                leaks -= live == bibrt::CountLive() ? 0 : 1;
                EXPECT_TRUE(Do(call)) << n;
                EXPECT_EQ(fBefore, Text(fSettings)) << n;
            } while (uses >= n);
        }
        EXPECT_GE(failures, atLeast);
        EXPECT_EQ(0, leaks);
    }

    // A call that gives a result, which goes.
    template <class Work>
    Call Giving(Work work) const {
        return {[=, this](auto const&) { return Own(work()) != nullptr; }};
    }

    // A call that writes settings into the file "a", which holds "old" before; check gets
    // whether it succeeded and what the file holds, "(gone)" without one. Its failures are reported
    // by its result.
    template <class Check>
    Call Writing(PDFSettings* settings, Check check) {
        auto const write = [this, settings, check](EndFaults const& endFaults) {
            BIBError* const error = fWrite(settings, fPath);
            endFaults();
            fRuntime.Errors().Release(error);
            std::string const file = fFolder / "a";
            check(error == nullptr, std::filesystem::exists(file) ? ReadBytes(file) : "(gone)");
            return error == nullptr;
        };
        return {write, [this] { fFolder.Make("a", "old"); }, Call::kNone};
    }

    // How many records of a list, which are whole, have no entry that hides them.
    int CountShown(POSArray* list) const {
        int shown = 0;
        for (unsigned long i = 0; i < fRuntime.Arrays().Count(list); ++i) {
            auto* const record = reinterpret_cast<POSDict*>(fRuntime.Arrays().GetAt(list, i));
            for (char const* const key : {"SettingsName", "FullFilePath", "ReadOnly", "ModDate"}) {
                EXPECT_NE(nullptr, fRuntime.Get(record, key)) << key;
            }
            shown += fRuntime.Get(record, "ShowHide") == nullptr ? 1 : 0;
        }
        return shown;
    }

    // The path in a buffer, without a mark at its head and the zero at its end. The buffer goes.
    std::string ReadPath(BIBSharedBuffer* buffer) const {
        std::u16string units = TakePath(buffer);
        std::erase_if(units, [](char16_t unit) { return unit == 0 || unit == 0xFEFF; });
        return std::filesystem::path(units).string();
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
    Owned<PDFSettings> fSettings;
    Owned<BIBSharedBuffer> fPath;
    std::string fBefore;
    std::string fUserFolder;
    bool fIsLasting = false; // all later uses fail too
    bool fIsLeaky = false;   // what is left at the end is permitted
    SystemCallsDouble fCalls;
    Resource const fSystem{
        [this] { return fCalls.Count(); },
        [this](unsigned long n, bool andAllLater) {
            fCalls.FailAt(static_cast<int>(n), EIO, andAllLater);
        }};

private:
    static bool Do(Call const& call) {
        call.fPrepare();
        return call.fWork([] {});
    }

    // How many uses there were; failures grows where the call failed.
    unsigned long
    DoWithFault(Resource const& resource, Call const& call, unsigned long n, int* failures) {
        call.fPrepare();
        fLog.fMessages.clear();
        unsigned long const start = resource.fCount();
        unsigned long end = start;
        auto const endFaults = [&] {
            end = end == start ? resource.fCount() : end;
            resource.fFail(0, /*andAllLater=*/false);
        };
        resource.fFail(n, fIsLasting);
        bool const isDone = call.fWork(endFaults);
        endFaults();
        *failures += isDone ? 0 : 1;
        std::size_t const expected = !isDone && call.fReports == Call::kOne ? 1 : 0;
        std::size_t const reports = fLog.fMessages.size();
        EXPECT_TRUE(reports == expected || (call.fReports == Call::kAny && reports < 2))
            << n << testing::PrintToString(fLog.fMessages);
        return end - start;
    }
};

TEST_F(Failures, LeaveSettingsAsTheyAre) {
    auto const refused = NewValue<POSDict>("< A (no number) >");
    auto const same = NewValue<POSDict>("< A 1 >");
    Sweep(kAllocations, Giving([&] { return fIsPDFSettingsValid(fSettings); }));
    Sweep(kAllocations, Giving([&] { return fSetSettings(fSettings, refused); }));
    Sweep(kAllocations, Giving([&] { return fSetSettings(fSettings, same); }));
}

TEST_F(Failures, ChangeAllOrNothing) {
    auto const changes = NewValue<POSDict>("< A 2 B [ ] New x >");
    Owned<PDFSettings> settings;
    auto const set = [&](auto const& endFaults) {
        auto const errors = Own(fSetSettings(settings, changes));
        endFaults();
        EXPECT_EQ(errors != nullptr, Text(settings) != fBefore);
        settings.reset();
        return errors != nullptr;
    };
    Sweep(kAllocations, {set, [&] { settings = NewSettings(kText, kSchema); }});
}

// Where only their container fails, the object that was to go into it cannot be freed.
TEST_F(Failures, MakeNoSettings) {
    ExpectedLeaks const leaks;
    fIsLeaky = true;
    auto const stream = NewStream(kText);
    auto const dict = NewValue<POSDict>("< A 1 >");
    Call const fromStream = Giving([&] { return fNewFromStream(stream, kSchema); });
    Call const fromDict = Giving([&] { return fNewFromDict(dict, kSchema); });
    Call const fromFile = Giving([&] { return fNewFromFile(fPath, kSchema); });
    for (Call const& call : {fromStream, fromDict, fromFile}) {
        Sweep(kAllocations, call, /*atLeast=*/5, /*leaks=*/4);
    }
    Sweep(kStreams, fromStream);
    Sweep(kStreams, fromFile);
    Sweep(fSystem, fromFile);
    // A file of the current folder, which has to be asked for.
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(fFolder.Path());
    Sweep(fSystem, Giving([&] { return fNewFromFile(NewPath(u"a"), kSchema); }));
    std::filesystem::current_path(before);
}

TEST_F(Failures, MakeSettingsChangedThatCannotBeCompared) {
    auto const settings = Own(fNewFromFile(fPath, kSchema));
    for (Resource const& resource : {kAllocations, fSystem}) {
        Sweep(resource, {[&](auto const&) { return fIsDirty(settings) == 0; }});
    }
}

// With a tail of their own and without. The writer keeps quiet where its text cannot be made: then
// the text is one that stands for that, and never a part.
TEST_F(Failures, WriteAllOrNothing) {
    auto const plain = NewSettings("<</A 1 /B << /C (y) >> >>setalembicorparams");
    for (PDFSettings* const settings : {fSettings.get(), plain.get()}) {
        std::string const whole = Text(settings);
        std::string const failed = settings == plain ? "<<\r\n>> setpagedevice\r\n" : "";
        Call const getText{[&](auto const& endFaults) {
            BIBPositionableStream* const stream = fGetJobOptionsData(settings);
            endFaults();
            std::string const text = stream == nullptr ? "" : ReadAll(stream);
            EXPECT_TRUE(text == whole || text == failed || stream == nullptr) << text;
            return stream != nullptr;
        }};
        Call const write = Writing(settings, [&](bool isDone, std::string const& bytes) {
            EXPECT_TRUE(bytes == whole || bytes == (isDone ? failed : "old")) << bytes;
        });
        for (auto const& [resource, atLeast] : {std::pair(kAllocations, 2), {kStreams, 0}}) {
            Sweep(resource, getText, atLeast);
            Sweep(resource, write, atLeast);
        }
    }
}

// The old file goes before the new one is made, and a new one that cannot be made whole goes too,
// unless nothing works any more.
TEST_F(Failures, OfTheSystemLeaveNoPartOfAFile) {
    Sweep(fSystem, Writing(fSettings, [&](bool isDone, std::string const& bytes) {
              bool const isGone = bytes == "(gone)" || (bytes.empty() && fIsLasting);
              EXPECT_TRUE(bytes == fBefore || (!isDone && (bytes == "old" || isGone))) << bytes;
          }));
}

TEST_F(Failures, GiveNoFolderAndShorterLists) {
    auto const getList = [this](EndFaults const& endFaults) {
        auto const list = Own(fGetList("W"));
        endFaults();
        unsigned long const count = list == nullptr ? 0 : fRuntime.Arrays().Count(list);
        EXPECT_LE(count, 2U);
        // A failure shows one of them at the most.
        EXPECT_TRUE(list == nullptr || CountShown(list) < 2 || fIsLasting);
        return count == 2;
    };
    // An empty path stands for a folder that cannot be found out.
    auto const getFolder = [this](EndFaults const& endFaults) {
        BIBSharedBuffer* const folder = fGetFolder();
        endFaults();
        std::string const path = ReadPath(folder);
        EXPECT_TRUE(path.empty() || path == fUserFolder) << path;
        return !path.empty();
    };
    for (Resource const& resource : {kAllocations, fSystem}) {
        Sweep(resource, {getList, [] {}, Call::kAny});
    }
    Sweep(kAllocations, {getFolder, [] {}, Call::kAny});
    Sweep(fSystem, {getFolder, [] {}, Call::kAny}, /*atLeast=*/0);
    // Without a folder in the environment, that of the password database is the user's.
    EnvironmentVariable const home("HOME", nullptr);
    fCalls.fHome = fFolder.Path();
    Sweep(fSystem, {getFolder, [] {}, Call::kAny}, /*atLeast=*/1);
}

} // namespace support
