// What the component makes of job options text.

#include "tests/support/Settings.h"
#include "tests/support/SmallStack.h"

#include <algorithm>

namespace support {

namespace {

using namespace std::string_literals;

std::string const kInvalid = "Joboptions_To_CPOSDict joboptions file is invalid";
std::string const kUnknownType = "GetValue for joboptions is unknow type";
std::string const kNoMemory = "out of memory";

struct ReaderCase {
    std::string fText;
    std::string fExpected; // the settings, or the reported error
};

// The text of settings that hold entries.
std::string File(std::string const& entries, std::string const& tail = "") {
    return "<<" + entries + ">>setalembicorparams" + tail;
}

std::string Repeat(std::string const& text, unsigned long count) {
    std::string result;
    for (unsigned long i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

} // namespace

class JoboptionsReader : public SettingsTest {
protected:
    // The settings in text in one line, or what was reported.
    std::string Read(std::string_view text) {
        fLog.fMessages.clear();
        PDFSettings* const settings = NewSettings(text);
        if (settings == nullptr) {
            return fLog.fMessages.size() == 1 ? fLog.fMessages[0] : "not one report";
        }
        std::string const described = Describe(settings);
        Release(settings);
        return described;
    }

    void Check(std::vector<ReaderCase> const& cases) {
        for (auto const& row : cases) {
            EXPECT_EQ(row.fExpected, Read(row.fText)) << "of: " << row.fText;
        }
    }
};

TEST_F(JoboptionsReader, FramesTheSettings) {
    Check({
        {"", "<<>>"},
        {"\0<</A 1 >>"s, "<<>>"},
        {" \0<</A 1 >>setalembicorparams"s, kInvalid},
        {" \t\r\n% a comment\n", "<<>>"},
        {"% a comment without a line end", "<<>>"},
        {"junk", kInvalid},
        {" <", kInvalid},
        {"% one\r% two\n<< /A 1 >> setalembicorparams", "<<A 1>>"},
        {"% one\r<< /A 1 >> setalembicorparams", "<<A 1>>"},
        {"% a << in a comment\n<</A 1 >>setalembicorparams", kInvalid},
        {"junk <</A 1 >>setalembicorparams", kInvalid},
        {"<</A 1 ", kInvalid},
        {"<</A 1 >> setpagedevice", kInvalid},
        {"<</A 1 >> setalembicorparam", kInvalid},
        {"<</A 1 >>", kInvalid},
        {"<</A 1 >>%c\n setalembicorparams", "<<A 1>>"},
        {"<<>>setalembicorparams", "<<>>"},
        {"<< >>setalembicorparams", "<<>>"},
        {"<< >>setalembicorparams /A 1 >>", kInvalid},
        {"<< >>setalembicorparams /A", kNoMemory},
        {"<<\f>>setalembicorparams", kInvalid},
    });
}

TEST_F(JoboptionsReader, KeepsTheTailByteForByte) {
    Check({
        {File("", " % comment\r\n "), "<<>>"},
        {File("/A 1 ", "\r\n<<\r\n>> setpagedevice\r\n"),
         "<<A 1 AlembicorData AlembicorData{<<\r\n>> setpagedevice\r\n}>>"},
        {File("", "X"), "<<AlembicorData AlembicorData{X}>>"},
        {File("", "\n\0a\0"s), "<<AlembicorData AlembicorData{\\0a\\0}>>"},
        {File("/AlembicorData /Own ", "T"), "<<AlembicorData AlembicorData{T}>>"},
    });
}

TEST_F(JoboptionsReader, ReadsEachKindOfValue) {
    Check({
        {File("/A/Name/B/true/C true/D false"), "<<A /Name B /true C /true D /false>>"},
        {File("/A True"), kUnknownType},
        {File("/A trueish/B 1 "), "<<A /true B 1>>"},
        {File("/A(text)/B()/C(\\))/D(a(b)c)/E(a\\\\)/F(a\\\\\\)/G 1 "),
         "<<A (text) B () C (\\)) D (a(b) E (a\\\\) F (a\\\\\\) G 1>>"},
        {File("/A(line\r\n\\101)"), "<<A (line\r\n\\101)>>"},
        {File("/A<FEFF0041>/B< 0 g>/C<>"), "<<A <FEFF0041> B < 0 g> C <>>>"},
        {File("/A[1 /n(s)[true]<41><</B 2 >>]"), "<<A [1 /n (s) [/true] <41> <<B 2>>]>>"},
        {File("/A[]/B[ ]"), "<<A [] B []>>"},
        {File("/A<</B<</C 1 >>/D 2 >>/E 3 "), "<<A <<B <<C 1>> D 2>> E 3>>"},
        {File("/A{1}"), kUnknownType},
        {File("/A +1 "), kUnknownType},
        {File("/A .5 "), kUnknownType},
        {File("/A "), kUnknownType},
        {File("/A 1/A 2 /B 3 "), "<<A 2 B 3>>"},
        {File("/\xC3\xA4\xFF/\x80 "), "<<\xC3\xA4\xFF /\x80>>"},
    });
}

TEST_F(JoboptionsReader, TakesTheFirstByteOfANameWhateverItIs) {
    Check({
        {File("//A 1 "), "<</A 1>>"},
        {File("/  1 "), "<<  1>>"},
        {File("/A/ /B 1 "), "<<A /  B 1>>"},
        {File("/A /)x/B 1 "), "<<A /)x B 1>>"},
        {File("/A /n\f1 /B 2 "), "<<A /n B 2>>"},
        // A vertical tab is no blank.
        {File("/A\v /n\vm /B 2 "), "<<A\v /n\vm B 2>>"},
        {File("/A \v1 "), kUnknownType},
        {File("/A /n{1}/B 2 /C /n%c\n/D 3 "), "<<A /n B 2 C /n D 3>>"},
    });
}

TEST_F(JoboptionsReader, DropsWhatItCannotReadAndGoesOn) {
    std::string const longest(255, 'n');
    Check({
        {File("/A 1 junk /B 2 "), "<<A 1 B 2>>"},
        {File("/A (no end /B 2 "), "<<B 2>>"},
        {File("/A [/x (no end /B 2 "), "<<B 2>>"},
        {File("/A <</x (no end /B 2 >>/C 3 "), "<<A <<B 2>> C 3>>"},
        {File("/A/" + longest + "/B 2 "), "<<A /" + longest + " B 2>>"},
        {File("/A/" + longest + "n/B 2 "), "<<B 2>>"},
        {File("/" + longest + " 1 "), "<<" + longest + " 1>>"},
    });
}

TEST_F(JoboptionsReader, ReadsNumbersWithBaseZeroAndLeavesTheRest) {
    Check({
        {File("/A 010/B 0x10 /C 08 /D -0x1f /E -7 "), "<<A 8 B 16 C 0 D -31 E -7>>"},
        {File("/A 12abc /B 1e5 /C 1.0e5 /D 1.e2 "), "<<A 12 B 1 C 100000 D 100>>"},
        {File("/A 0.50 /B -.5 /C 1.5.7 /D 1 "), "<<A 0.5 B -0.5 C 1.5 D 1>>"},
        {File("/A - /B 1 "), "<<A 0 B 1>>"},
        {File("/A 9999999999999999999 "), "<<A 9.2233720368547758e+18>>"},
        // A point anywhere up to the next blank makes the number a real one.
        {File("/A 010/B.x 1 "), "<<A 10 B.x 1>>"},
        {File("/A 0b11 /B 2 "), "<<A 0 B 2>>"},
        {File("/A 1.0e999 /B 1.0e-999 /C -inf. /D 1 "), "<<A inf B 0 C -inf D 1>>"},
        {File("/A 0x1.8p1 "), "<<A 3>>"},
    });
}

TEST_F(JoboptionsReader, EndsATextAtAShortRead) {
    std::string const text = File("/A 1 /B (" + std::string(2000, 'x') + ")");
    struct Source {
        std::string const fText;
        std::size_t fAt = 0;
        unsigned long fMost = 0;
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
    procs.mark = [](void* source, unsigned long* position) {
        *position = static_cast<Source*>(source)->fAt;
        return static_cast<BIBError*>(nullptr);
    };
    procs.seek = [](void* source, long offset, BIBPositionableStream_SeekOrigin origin) {
        auto& self = *static_cast<Source*>(source);
        self.fAt =
            (origin == kBIBSeekFromEnd ? self.fText.size() : 0) + static_cast<std::size_t>(offset);
        return static_cast<BIBError*>(nullptr);
    };
    for (unsigned long const most : {1024UL, 1023UL}) {
        Source source{text, 0, most};
        BIBPositionableStream* stream = nullptr;
        EXPECT_EQ(
            nullptr, fRuntime.Streams().NewClientPositionableStream(&stream, &procs, &source));
        AddRef(stream);
        PDFSettings* const settings = fNewFromStream(stream, "");
        EXPECT_EQ(most == 1024, settings != nullptr);
        EXPECT_EQ(most == 1024 ? 2 : 1, source.fReads);
        AddRef(settings);
        Release(settings);
        Release(stream);
    }
    EXPECT_EQ(std::vector<std::string>{kInvalid}, fLog.fMessages);
}

TEST_F(JoboptionsReader, EndsANestedDictionaryInItsOwnWay) {
    Check({
        // The body runs once before any test, so the next key goes inside.
        {File("/A << >>"), "<<A <<>>>>"},
        {"<</A << >>/B 1 >>setalembicorparams", kInvalid},
        {"<</A << >>/B 1 >>/C 2 >>setalembicorparams", "<<A <<B 1>> C 2>>"},
        // A single ">" in either place ends it.
        {File("/A <</B 1 x>/C 2 "), "<<A <<B 1>> C 2>>"},
        {File("/A <</B 1 >x/C 2 "), "<<A <<B 1>> C 2>>"},
        {"<</A <</B 1 ", kInvalid},
        {"<</A <</B 1 >", kInvalid},
    });
}

TEST_F(JoboptionsReader, RefusesWhatWouldNeverEnd) {
    std::string const tooLong(256, 'n');
    Check({
        {"<<junk", kInvalid},
        {"<< junk >>setalembicorparams", kInvalid},
        {"<< junk > >setalembicorparams", kInvalid},
        {File("/" + tooLong + " 1 "), kInvalid},
        {File("/A <</" + tooLong + " 1 >>"), kInvalid},
        {File("/A [-]"), kInvalid},
        {File("/A [1 - 2]"), kInvalid},
        {File("/A [[[-]]]"), kInvalid},
        {"<</A <<junk", kInvalid},
        {"<</A <</B <<junk", kInvalid},
    });
}

TEST_F(JoboptionsReader, RunsOutOfMemoryWhereALengthHasNoEnd) {
    Check({
        {"<</A 12", kNoMemory},
        {"<</A", kNoMemory},
        {"<</A ", kNoMemory},
        {"<</", kNoMemory},
        {"<</A [1 2 ", kNoMemory},
        {"<</A <41", kNoMemory},
        {"<</A [", kNoMemory},
    });
}

TEST_F(JoboptionsReader, EndsEverySearchAtAZeroByteAndReadsOnBehindOne) {
    Check({
        {"<</A 1 \0/B 2 >>setalembicorparams"s, kInvalid},
        {"<</A (x\0)/B 1 >>setalembicorparams"s, kInvalid},
        // An empty key steps over the zero byte that ends it.
        {"<</\0 1 /B 2 >>setalembicorparams"s, "<< 1 B 2>>"},
        {"<</A <</B 1 >\0/C 2 >>setalembicorparams"s, "<<A <<B 1>> C 2>>"},
    });
}

TEST_F(JoboptionsReader, ReadsATextOfAnyNumberOfChunks) {
    for (unsigned long const size : {1023UL, 1024UL, 1025UL, 2048UL, 3000UL}) {
        std::string const frame = File("/A()");
        std::string const content(size - frame.size(), 'x');
        EXPECT_EQ("<<A (" + content + ")>>", Read(File("/A(" + content + ")"))) << size;
    }
}

class JoboptionsReaderDepth : public JoboptionsReader {
protected:
    bool ReadsOnASmallStack(std::string const& text) {
        bool isRead = false;
        OnSmallStack([&] {
            PDFSettings* const settings = NewSettings(text);
            isRead = settings != nullptr;
            Release(settings);
        });
        return isRead;
    }
};

TEST_F(JoboptionsReaderDepth, BearsAThousandLevels) {
    EXPECT_TRUE(ReadsOnASmallStack(File("/A" + Repeat("[", 1000) + "1 " + Repeat("]", 1000))));
    EXPECT_TRUE(ReadsOnASmallStack(File(Repeat("/A<<", 1000) + "/B 1 " + Repeat(">>", 1000))));
    EXPECT_TRUE(ReadsOnASmallStack(File("/A" + Repeat("[<</A", 500) + " 1" + Repeat(">>]", 500))));
}

TEST_F(JoboptionsReaderDepth, RunsOutOfMemoryWhereTheStackDoes) {
    unsigned long const kLevels = 1000UL * 1000;
    EXPECT_FALSE(ReadsOnASmallStack(File("/A" + Repeat("[", kLevels))));
    EXPECT_FALSE(ReadsOnASmallStack(File(Repeat("/A<<", kLevels) + "/B 1 ")));
    EXPECT_EQ(std::vector<std::string>(2, kNoMemory), fLog.fMessages);
}

} // namespace support
