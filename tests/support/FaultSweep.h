// A host that makes whatever a call of the component needs fail, one thing after the other.
#pragma once

#include <functional>

#include "tests/support/ExpectedLeaks.h"
#include "tests/support/Settings.h"
#include "tests/support/TemporaryFolder.h"

namespace support {

// What can fail on demand: how often it was attempted so far, and the order that the n-th attempt
// from now on fails, alone or with all later ones, which 0 takes back.
struct Resource {
    unsigned long (*fCount)();
    void (*fFail)(unsigned long n, bool andAllLater);
};

inline constexpr Resource kAllocations{
    [] { return bibrt::CountAllocations(); },
    [](unsigned long n, bool andAllLater) {
        n == 0 ? bibrt::ResetFailures() : bibrt::FailAllocation(n, andAllLater);
    }};

inline constexpr Resource kStreams{
    [] { return bibrt::CountStreamOperations(); },
    [](unsigned long n, bool andAllLater) {
        n == 0 ? bibrt::ResetFailures() : bibrt::FailStreamOperation(n, andAllLater);
    }};

// A call of the component.
struct Call {
    // Does the work and gives up what it was given. Whether the component said that it succeeded.
    // Looks at what it made, if it has to, after calling the argument, which ends the faults.
    std::function<bool(std::function<void()> const& endFaults)> fWork;
    // Goes before each.
    std::function<void()> fPrepare = [] {};
    // A failure is told by one report, and a success by none.
    bool fIsReported = true;
};

// What came of all faults in a call.
struct Swept {
    int fFailures = 0; // the call failed
    int fLeaks = 0;    // something was left alive
};

// Has settings, and a file "a" of the same content.
class FaultSweepTest : public SettingsTest {
protected:
    explicit FaultSweepTest(BIBLookupProc lookup = &BIBRuntimeLookup) : SettingsTest(lookup) {
        Find(fNewFromFile, "NewFromFile", "PDFSettingsNewFromFileProc");
        Find(fIsDirty, "IsDirty", "PDFSettingsIsDirtyProc");
        Find(fWrite, "Write", "PDFSettingsWriteProc");
        FindStatic(fGetFolder, "GetDefaultPDFSettingsDirectory");
        FindStatic(fGetList, "GetListofPDFSettings");
        fFolder.Make("a", kText);
        fSettings = NewSettings(kText, kSchema);
        fBefore = Text(fSettings);
        fPath = NewPath("a");
    }
    ~FaultSweepTest() override {
        fBuffers.Release(fPath);
        Release(fSettings);
        EXPECT_EQ(fDescriptors, CountDescriptors());
        if (fIsLeaky) {
            fComponent.Terminate();
            fLiveBefore = bibrt::CountLive();
        }
    }

    // Makes each use of a resource in a call fail: the settings stay as they are, the reports tell
    // what the result tells, and the next call succeeds.
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
        EXPECT_GE(swept.fFailures, atLeast);
        EXPECT_EQ(0, swept.fLeaks);
    }

    void ExpectFewLeaks(Resource const& resource, Call const& call) {
        Swept const swept = Sweep(resource, call);
        EXPECT_GE(swept.fFailures, 4);
        EXPECT_GE(swept.fLeaks, 1);
        EXPECT_LE(swept.fLeaks, 4);
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

    // The calls that leave the settings as they are.
    template <class Check>
    void CheckReadingCalls(Check check) {
        auto* const refused = NewValue<POSDict>("< A (no number) >");
        auto* const same = NewValue<POSDict>("< A 1 >");
        check(Giving([&] { return fGetJobOptionsData(fSettings); }));
        check(Giving([&] { return fIsPDFSettingsValid(fSettings); }));
        check(Giving([&] { return fSetSettings(fSettings, refused); }));
        check(Giving([&] { return fSetSettings(fSettings, same); }));
        Release(refused);
        Release(same);
    }

    // The calls that make settings. Where only their container fails, the object that was to go
    // into it cannot be freed.
    template <class Check>
    void CheckMakingCalls(Check check) {
        ExpectedLeaks const leaks;
        fIsLeaky = true;
        BIBPositionableStream* const stream = NewStream(kText);
        auto* const dict = NewValue<POSDict>("< A 1 >");
        check(Giving([&] { return fNewFromStream(stream, kSchema); }));
        check(Giving([&] { return fNewFromDict(dict, kSchema); }));
        check(Giving([&] { return fNewFromFile(fPath, kSchema); }));
        Release(dict);
        Release(stream);
    }

    // A call that writes the settings into the file "a", which holds "old" before; check is told
    // whether it succeeded and what the file holds, "(gone)" without one. Its failures are told by
    // its result.
    template <class Check>
    Call Writing(Check check) {
        auto const write = [this, check](auto const& endFaults) {
            BIBError* const error = fWrite(fSettings, fPath);
            endFaults();
            fErrors.Release(error);
            check(error == nullptr, fFolder.Names().empty() ? "(gone)" : ReadBytes(fFolder / "a"));
            return error == nullptr;
        };
        return {write, [this] { fFolder.Make("a", "old"); }, /*fIsReported=*/false};
    }

    // The writer keeps quiet where its text cannot be made: then the file is empty, and never holds
    // a part of it.
    Call WritingAllOrNothing() {
        return Writing([this](bool isDone, std::string const& bytes) {
            EXPECT_TRUE(bytes == fBefore || bytes == (isDone ? "" : "old")) << bytes;
        });
    }

    // A call for the user's folder.
    Call GettingFolder() const {
        return {[this](auto const&) {
            BIBSharedBuffer* const folder = fGetFolder();
            fBuffers.Release(folder);
            return folder != nullptr;
        }};
    }

    // A call for the list of settings files, which gets shorter where something fails.
    Call GettingList() const {
        Call call = Giving([this] { return fGetList("W"); });
        call.fIsReported = false;
        return call;
    }

    // Makes a buffer for the path of a file in the folder.
    BIBSharedBuffer* NewPath(std::string const& name) const {
        std::string const path = fFolder / name;
        std::u16string const units(path.begin(), path.end());
        unsigned long const size = units.size() * sizeof(char16_t);
        BIBSharedBuffer* const buffer =
            fBuffers.NewBuffer(size, nullptr, nullptr, nullptr, nullptr);
        std::memcpy(fBuffers.GetBuffer(buffer), units.data(), size);
        return buffer;
    }

    template <class Proc>
    static void FindStatic(Proc& proc, std::string const& name) {
        proc = reinterpret_cast<Proc>(BIBRuntimeLookup(
            "PDFSettingsStatics", name.c_str(), ("PDFSettings" + name + "Proc").c_str()));
        EXPECT_NE(nullptr, proc) << name;
    }

    static constexpr char kText[] =
        "<< /A 1 /B [ /x (y) <FE> ] /C << /D 1.5 >> >>setalembicorparams tail";
    static constexpr char kSchema[] =
        "< PDFSettings < A number optional < B array C dictionary > > >";

    long fDescriptors = CountDescriptors();
    _t_BIBSharedBuffInterface fBuffers = LoadTable<_t_BIBSharedBuffInterface>(&BIBRuntimeLookup);
    _t_BIBErrorInterface fErrors = LoadTable<_t_BIBErrorInterface>(&BIBRuntimeLookup);
    TemporaryFolder fFolder;
    PDFSettings* fSettings = nullptr;
    BIBSharedBuffer* fPath = nullptr;
    std::string fBefore;
    bool fIsLasting = false; // all later uses fail too
    PDFSettingsNewFromFileProc fNewFromFile = nullptr;
    PDFSettingsIsDirtyProc fIsDirty = nullptr;
    PDFSettingsWriteProc fWrite = nullptr;
    PDFSettingsGetDefaultPDFSettingsDirectoryProc fGetFolder = nullptr;
    PDFSettingsGetListofPDFSettingsProc fGetList = nullptr;

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
        if (call.fIsReported) {
            EXPECT_EQ(isDone ? 0U : 1U, fLog.fMessages.size()) << n;
        }
        swept.fFailures += isDone ? 0 : 1;
        swept.fLeaks += live == bibrt::CountLive() ? 0 : 1;
        EXPECT_TRUE(Do(call)) << n;
        return end - start >= n;
    }

    bool fIsLeaky = false; // what is left at the end is no fault
};

} // namespace support
