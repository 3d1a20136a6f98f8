// What the component makes of job options text: an example of each rule. A comparison of generated
// texts with another reader is among the tests of the host API.

#include "tests/support/Settings.h"
#include "tests/support/SmallStack.h"

#include <algorithm>

namespace support {

namespace {

using namespace std::string_literals;

std::string const kInvalid = "Joboptions_To_CPOSDict joboptions file is invalid";
std::string const kNoMemory = "out of memory";

// The text of settings that hold entries.
std::string File(std::string const& entries, std::string const& tail = "") {
    return "<<" + entries + ">>setalembicorparams" + tail;
}

} // namespace

class JoboptionsReader : public SettingsTest {
protected:
    // The settings in text in one line, or what was reported.
    std::string Read(std::string_view text) {
        fLog.fMessages.clear();
        auto const settings = NewSettings(text);
        if (settings == nullptr) {
            return fLog.fMessages.size() == 1 ? fLog.fMessages[0] : "not one report";
        }
        return Describe(settings);
    }

    // Checks the settings, or the reported error, of each text.
    void Check(std::vector<std::pair<std::string, std::string>> const& cases) {
        for (auto const& [text, expected] : cases) {
            EXPECT_EQ(expected, Read(text)) << "of: " << text;
        }
    }
};

TEST_F(JoboptionsReader, FramesTheSettingsAndKeepsTheTailByteForByte) {
    Check({
        {"", "<<>>"},
        {"\0<</A 1 >>"s, "<<>>"},
        {" \0<</A 1 >>setalembicorparams"s, kInvalid},
        {"% a comment without a line end", "<<>>"},
        {"% one\r<< /A 1 >> setalembicorparams", "<<A 1>>"},
        {"<</A 1 >>%c\n setalembicorparams", "<<A 1>>"},
        {File("/A 1 ", "\r\n<<\r\n>> setpagedevice\r\n"),
         "<<A 1 AlembicorData AlembicorData{<<\r\n>> setpagedevice\r\n}>>"},
        {File("", " % comment\r\n "), "<<>>"},
        {File("", "\n\0a\0"s), "<<AlembicorData AlembicorData{\\0a\\0}>>"},
        {File("/AlembicorData /Own ", "T"), "<<AlembicorData AlembicorData{T}>>"},
    });
}

TEST_F(JoboptionsReader, ReadsEachKindOfValue) {
    Check({
        {File("/A/Name/B/true/C true/D false"), "<<A /Name B /true C /true D /false>>"},
        {File("/A trueish/B 1 "), "<<A /true B 1>>"},
        {File("/A(text)/B()/C(\\))/D(a(b)c)/E(a\\\\)/F(a\\\\\\)/G 1 "),
         "<<A (text) B () C (\\)) D (a(b) E (a\\\\) F (a\\\\\\) G 1>>"},
        {File("/A(line\r\n\\101)"), "<<A (line\r\n\\101)>>"},
        {File("/A<FEFF0041>/B< 0 g>/C<>"), "<<A <FEFF0041> B < 0 g> C <>>>"},
        {File("/A[1 /n(s)[true]<41><</B 2 >>]"), "<<A [1 /n (s) [/true] <41> <<B 2>>]>>"},
        {File("/A<</B<</C 1 >>/D 2 >>/E 3 "), "<<A <<B <<C 1>> D 2>> E 3>>"},
        {File("/A 1/A 2 /B 3 "), "<<A 2 B 3>>"},
        {File("/\xC3\xA4\xFF/\x80 "), "<<\xC3\xA4\xFF /\x80>>"},
        // The first byte of a name belongs to it, whatever it is.
        {File("//A 1 /B /)x/C 2 "), "<</A 1 B /)x C 2>>"},
        // A vertical tab is no blank.
        {File("/A\v /n\vm /B 2 "), "<<A\v /n\vm B 2>>"},
        {File("/A 010 /B 0x10 /C 08 /D 12abc /E 1 "), "<<A 8 B 16 C 0 D 12 E 1>>"},
        // A point anywhere up to the next blank makes the number a real one.
        {File("/A 010/B.x 1 /C 1.5.7 /D - /E 1 "), "<<A 10 B.x 1 C 1.5 D 0 E 1>>"},
    });
}

TEST_F(JoboptionsReader, GoesOnBehindWhatItCannotRead) {
    std::string const longest(255, 'n');
    Check({
        {File("/A 1 junk /B 2 "), "<<A 1 B 2>>"},
        {File("/A (no end /B 2 "), "<<B 2>>"},
        {File("/A/" + longest + "/B 2 "), "<<A /" + longest + " B 2>>"},
        {File("/A/" + longest + "n/B 2 "), "<<B 2>>"},
        {File("/" + longest + " 1 "), "<<" + longest + " 1>>"},
    });
}

TEST_F(JoboptionsReader, EndsANestedDictionaryInItsOwnWay) {
    Check({
        // The body runs once before any test, so the next key goes inside.
        {"<</A << >>/B 1 >>/C 2 >>setalembicorparams", "<<A <<B 1>> C 2>>"},
        // A single ">" in either place ends it.
        {File("/A <</B 1 x>/C 2 "), "<<A <<B 1>> C 2>>"},
        {File("/A <</B 1 >x/C 2 "), "<<A <<B 1>> C 2>>"},
    });
}

TEST_F(JoboptionsReader, RefusesWhatWouldNeverEnd) {
    Check({
        {"<< junk >>setalembicorparams", kInvalid},
        {File("/" + std::string(256, 'n') + " 1 "), kInvalid},
        {File("/A [1 - 2]"), kInvalid},
        {"<</A 12", kNoMemory},
        {"<</A [1 2 ", kNoMemory},
        // A zero byte ends every search, but for that of the end of an empty key.
        {"<</A (x\0)/B 1 >>setalembicorparams"s, kInvalid},
        {"<</\0 1 /B 2 >>setalembicorparams"s, "<< 1 B 2>>"},
    });
}

TEST_F(JoboptionsReader, EndsATextAtAShortRead) {
    std::string const text = File("/A 1 /B (" + std::string(2000, 'x') + ")");
    struct Source {
        std::string const fText;
        unsigned long fMost = 0; // bytes that a read gives
        std::size_t fAt = 0;
        int fReads = 0;
    };
    BIBClientStreamProcs procs{};
    procs.read = [](void* source, unsigned long* count, unsigned char* buffer, unsigned long size) {
        auto& self = *static_cast<Source*>(source);
        std::string const part = self.fText.substr(self.fAt, std::min(size, self.fMost));
        std::copy(part.begin(), part.end(), buffer);
        self.fAt += * count = part.size();
        ++self.fReads;
        return static_cast<BIBError*>(nullptr);
    };
    // The text is measured from its end, and then read from its start.
    procs.mark = [](void* source, unsigned long* position) {
        *position = static_cast<Source*>(source)->fText.size();
        return static_cast<BIBError*>(nullptr);
    };
    procs.seek = [](void*, long, BIBPositionableStream_SeekOrigin) {
        return static_cast<BIBError*>(nullptr);
    };
    for (unsigned long const most : {1024UL, 1023UL}) {
        Source source{text, most};
        BIBPositionableStream* stream = nullptr;
        EXPECT_EQ(
            nullptr, fRuntime.Streams().NewClientPositionableStream(&stream, &procs, &source));
        auto const settings = Own(fNewFromStream(Own(stream), ""));
        EXPECT_EQ(most == 1024, settings != nullptr);
        EXPECT_EQ(most == 1024 ? 2 : 1, source.fReads);
    }
    EXPECT_EQ(std::vector<std::string>{kInvalid}, fLog.fMessages);
}

TEST_F(JoboptionsReader, ReadsATextOfAnyNumberOfChunks) {
    for (unsigned long const size : {1023UL, 1024UL, 1025UL, 2048UL, 3000UL}) {
        std::string const frame = File("/A()");
        std::string const content(size - frame.size(), 'x');
        EXPECT_EQ("<<A (" + content + ")>>", Read(File("/A(" + content + ")"))) << size;
    }
}

TEST_F(JoboptionsReader, RunsOutOfMemoryWhereTheStackDoes) {
    constexpr unsigned long kLevels = 1000UL * 1000;
    std::string dictionaries;
    for (unsigned long level = 0; level < kLevels; ++level) {
        dictionaries += "/A<<";
    }
    for (std::string const& text : {File("/A" + std::string(kLevels, '[')), File(dictionaries)}) {
        OnSmallStack([&] { EXPECT_EQ(kNoMemory, Read(text)); });
    }
}

} // namespace support
