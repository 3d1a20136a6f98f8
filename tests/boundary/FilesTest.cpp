// Settings in files, as a host opens, watches and saves them.

#include "tests/support/Settings.h"
#include "tests/support/SystemCallsDouble.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

namespace {

constexpr char16_t kMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;

std::string const kText = "<</A 1 >>setalembicorparams tail";
std::string const kWritten = "<<\r\n  /A 1\r\n>> setalembicorparams\r\ntail";

// An ASCII text in UTF-16.
std::u16string Wide(std::string const& text) {
    return std::filesystem::path(text).u16string();
}

std::u16string Swapped(std::u16string text) {
    for (char16_t& unit : text) {
        unit = static_cast<char16_t>((unit << 8) | (unit >> 8));
    }
    return text;
}

// The exit status of the tool that changes a setting of a file, which does not wait long.
int SetByTool(std::string const& file, std::string const& options = "") {
    std::string const call = PDFSETTINGS_TOOL " set --wait 0.02 -q " + options;
    return WEXITSTATUS(std::system((call + " '" + file + "' EmbedAllFonts=true").c_str()));
}

// Stops the process, as by SIGSTOP, as soon as the file is a new one without bytes.
void StopOnceEmpty(SystemCallsDouble& calls, std::string const& file) {
    calls.AfterEach([file, hasStopped = false](int) mutable {
        if (!hasStopped && std::filesystem::exists(file) && ReadBytes(file).empty()) {
            hasStopped = true;
            raise(SIGSTOP);
        }
    });
}

} // namespace

class Files : public SettingsTest {
protected:
    ~Files() override { EXPECT_EQ(fDescriptors, CountDescriptors()); }

    // Settings from a file; null with a report.
    Owned<PDFSettings> Open(std::u16string const& path) const {
        return Own(fNewFromFile(NewPath(path), ""));
    }

    // What opening the file reports; empty when it is opened.
    std::string OpenError(std::u16string const& path) {
        fLog.fMessages.clear();
        bool const isOpen = Open(path) != nullptr;
        EXPECT_EQ(isOpen ? 0U : 1U, fLog.fMessages.size());
        return isOpen ? "" : fLog.fMessages.back();
    }

    // The message and id of the error that writing gives; empty for success.
    std::string Write(PDFSettings* settings, std::u16string const& path) const {
        auto const& errors = fRuntime.Errors();
        BIBError* const error = fWrite(settings, NewPath(path));
        if (error == nullptr) {
            return "";
        }
        std::string const message = fRuntime.Atoms().GetCString(errors.GetErrorMessage(error));
        std::string const id = std::to_string(errors.GetID(error));
        errors.Release(error);
        return message + " " + id;
    }

    TemporaryFolder fFolder;
    long fDescriptors = CountDescriptors();
};

TEST_F(Files, AreWatchedOnceTheyAreOpened) {
    std::string const file = fFolder.Make("a", kText);
    auto const settings = Open(Wide(file));
    ASSERT_NE(nullptr, settings);
    EXPECT_EQ("<<A 1 AlembicorData AlembicorData{tail}>>", Describe(settings));
    EXPECT_EQ(0, fIsDirty(settings));
    timespec const time{1000000000, 500000000};
    SetTime(file, time);
    EXPECT_EQ(1, fIsDirty(settings));
    // A part of a second below the stamp's unit goes unnoticed, a unit does not.
    auto const again = Open(Wide(file));
    SetTime(file, {time.tv_sec, time.tv_nsec + 1000});
    EXPECT_EQ(0, fIsDirty(again));
    bool const isLater = SetTime(file, {time.tv_sec, time.tv_nsec + 16000});
    EXPECT_EQ(isLater ? 1 : 0, fIsDirty(again));
    SetTime(file, time);
    EXPECT_EQ(0, fIsDirty(again));
    std::string const other = fFolder.Make("other", kText);
    SetTime(other, {time.tv_sec + 1, 0});
    std::filesystem::rename(other, file);
    EXPECT_EQ(1, fIsDirty(again));
    EXPECT_TRUE(fLog.fMessages.empty());
    std::filesystem::remove(file);
    EXPECT_EQ(1, fIsDirty(again));
    EXPECT_EQ(
        std::vector<std::string>{"FileMgmtUtil::GetTimeStamp FSPathMakeRef failed"},
        fLog.fMessages);
}

TEST_F(Files, AreBoundByWritingAndNotByChanging) {
    char const* const schema = "< PDFSettings < optional < A number > > >";
    auto const settings = NewSettings(kText, schema);
    EXPECT_EQ(1, fIsDirty(settings));
    EXPECT_EQ("", Write(settings, Wide(fFolder / "one")));
    EXPECT_EQ(0, fIsDirty(settings));
    EXPECT_EQ(kWritten, ReadBytes(fFolder / "one"));
    auto const changes = NewValue<POSDict>("< A 2 >");
    auto const errors = Own(fSetSettings(settings, changes));
    EXPECT_EQ(0, fIsDirty(settings));
    // The settings follow a new path and forget the old one.
    EXPECT_EQ("", Write(settings, Wide(fFolder / "two")));
    EXPECT_EQ(kWritten, ReadBytes(fFolder / "one"));
    std::filesystem::remove(fFolder / "one");
    EXPECT_EQ(0, fIsDirty(settings));
    EXPECT_EQ("", Write(settings, Wide(fFolder / "two")));
    EXPECT_NE(std::string::npos, ReadBytes(fFolder / "two").find("/A 2"));
    EXPECT_EQ("two ", fFolder.Names());
}

TEST_F(Files, HaveNamesInEveryScriptAndPathsInEitherByteOrder) {
    std::u16string const folder = Wide(fFolder.Path().string() + "/");
    std::u16string deep = folder;
    for (int i = 0; i < 6; ++i) {
        deep += std::u16string(250, u'f') + u"/";
    }
    std::filesystem::create_directories(std::filesystem::path(deep));
    std::pair<std::u16string, std::string> const kCases[] = {
        {folder + u"\u00E9t\u00E9 \u65E5\u672C", "\xC3\xA9t\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC"},
        {folder + u"\U0001F600.joboptions", "\xF0\x9F\x98\x80.joboptions"},
        {kMark + folder + u"marked", "marked"},
        {kSwappedMark + Swapped(folder + u"swapped\u20AC"), "swapped\xE2\x82\xAC"},
        {folder + std::u16string(255, u'n'), std::string(255, 'n')},
        {folder + std::u16string(85, u'\u20AC'), ""},
        {deep + u"a", ""},
    };
    auto const settings = NewSettings(kText);
    for (auto const& [path, name] : kCases) {
        EXPECT_EQ("", Write(settings, path)) << name;
        EXPECT_EQ(0, fIsDirty(settings)) << name;
        EXPECT_EQ("", OpenError(path)) << name;
        EXPECT_TRUE(std::filesystem::is_regular_file(fFolder / name) || name.empty()) << name;
    }
}

TEST_F(Files, ThatCannotBeReadAreToldByTheErrorAlone) {
    std::u16string const folder = Wide(fFolder.Path().string());
    fFolder.Make("whole", kText);
    fFolder.Make("junk", "junk");
    ASSERT_EQ(0, mkfifo((fFolder / "pipe").c_str(), 0666));
    std::filesystem::create_symlink("nowhere", fFolder / "dangling");
    std::pair<std::u16string, char const*> const kCases[] = {
        {folder + u"/whole", ""},
        {folder + u"/missing", "Error"},
        {folder, "Error"},
        {folder + u"/pipe", "Error"},
        {folder + u"/dangling", "Error"},
        {u"", "Error"},
        {folder + std::u16string(u"/whole\0cut", 10), "Error"},
        {folder + u"/\xD800", "Error"},
        {folder + u"/" + std::u16string(256, u'n'), "Error"},
        {folder + std::u16string(5000, u'/') + u"whole", "Error"},
        {folder + u"/junk", "Joboptions_To_CPOSDict joboptions file is invalid"},
    };
    for (auto const& [path, error] : kCases) {
        EXPECT_EQ(error, OpenError(path)) << std::string(path.begin(), path.end());
    }
    EXPECT_EQ(nullptr, fNewFromFile(nullptr, ""));
    fFolder.Make("empty", "");
    EXPECT_EQ("", OpenError(folder + u"/empty"));
}

TEST_F(Files, ThatCannotBeWrittenLeaveNothingBehind) {
    std::u16string const folder = Wide(fFolder.Path().string());
    std::filesystem::create_directory(fFolder / "folder");
    fFolder.Make("folder/inside", "kept");
    fFolder.Make("readonly", "kept");
    chmod((fFolder / "readonly").c_str(), 0444);
    std::filesystem::create_symlink("readonly", fFolder / "link");
    ASSERT_EQ(0, mkfifo((fFolder / "pipe").c_str(), 0666));
    std::u16string const kPaths[] = {
        u"",
        u"name",
        folder + u"/",
        folder + u"/" + kMark,
        folder + u"/missing/name",
        folder + u"/folder",
        folder + u"/readonly",
        folder + u"/link",
        folder + u"/pipe",
        folder + u"/\xDC00",
        folder + std::u16string(u"/a\0b", 4),
        folder + u"/" + std::u16string(86, u'\u20AC'),
        folder + std::u16string(5000, u'/') + u"name",
    };
    auto const settings = NewSettings(kText);
    for (std::u16string const& path : kPaths) {
        EXPECT_EQ("Error 2", Write(settings, path)) << std::string(path.begin(), path.end());
        EXPECT_EQ(1, fIsDirty(settings));
    }
    // What a result says is not reported besides, and settings without a file are no failure.
    EXPECT_TRUE(fLog.fMessages.empty());
    EXPECT_EQ("folder link pipe readonly ", fFolder.Names());
    EXPECT_EQ("kept", ReadBytes(fFolder / "readonly"));
    EXPECT_EQ("kept", ReadBytes(fFolder / "folder/inside"));
    // What is no settings object is a failure from outside.
    auto const dict = NewValue<PDFSettings>("< >");
    EXPECT_EQ("Write Failed 7", Write(dict, folder + u"/name"));
}

// The old file goes before the new one is made: where the disk is full, neither stays.
TEST_F(Files, AreGoneWhereTheDiskIsFull) {
    std::string const file = fFolder.Make("a", kText);
    auto const settings = Open(Wide(file));
    std::string error;
    {
        FileSizeLimit const limit(10);
        error = Write(settings, Wide(file));
    }
    EXPECT_EQ("Error 2", error);
    EXPECT_EQ("", fFolder.Names());
    EXPECT_EQ(1, fIsDirty(settings));
    EXPECT_EQ("", Write(settings, Wide(file)));
    EXPECT_EQ(kWritten, ReadBytes(file));
    EXPECT_EQ(0, fIsDirty(settings));
}

TEST_F(Files, BindSettingsAsFarAsTheWritingWent) {
    auto const settings = NewSettings(kText);
    SystemCallsDouble calls;
    auto const write = [&](char const* name, int failing) {
        calls.FailAt(failing, EIO);
        return Write(settings, Wide(fFolder / name));
    };
    EXPECT_EQ("", write("one", 0));
    int const all = calls.Count();
    EXPECT_EQ(0, fIsDirty(settings));
    // The new file is there, but its stamp is not to be had: the old stamp meets the new path.
    EXPECT_EQ("FileMgmtUtil::GetTimeStamp FSPathMakeRef failed 7", write("two", all - 1));
    EXPECT_EQ("MacOSErr 3", write("three", all));
    EXPECT_EQ(kWritten, ReadBytes(fFolder / "three"));
    SetTime(fFolder / "three", {1000000000, 0});
    EXPECT_EQ(1, fIsDirty(settings));
    std::filesystem::last_write_time(
        fFolder / "three", std::filesystem::last_write_time(fFolder / "one"));
    EXPECT_EQ(0, fIsDirty(settings));
    // The stream's failure is no failure of the file.
    bibrt::FailStreamOperation(1, /*andAllLater=*/true);
    EXPECT_EQ("PDFSettingsObject::Write 8", write("four", 0));
    bibrt::ResetFailures();
    EXPECT_EQ(0, fIsDirty(settings));
    // A mark at the head of a name is no part of the file's name, but of the path.
    std::u16string const marked = Wide(fFolder.Path().string() + "/") + kMark + u"unmarked";
    EXPECT_EQ("FileMgmtUtil::GetTimeStamp FSPathMakeRef failed 7", Write(settings, marked));
    EXPECT_EQ("one three two unmarked ", fFolder.Names());
}

// The component deletes a file before it makes the new one; a program that saves in between must
// not take the empty one for settings.
TEST_F(Files, OfAHostThatIsStillWritingAreNotReplaced) {
    std::string const file = fFolder.Make("a.joboptions", kText);
    pid_t const host = fork();
    if (host == 0) {
        auto const settings = NewSettings(kText);
        SystemCallsDouble calls;
        StopOnceEmpty(calls, file);
        Write(settings, Wide(file));
        raise(SIGKILL); // ends without what a program does at its end
    }
    int status = 0;
    ASSERT_EQ(host, waitpid(host, &status, WUNTRACED));
    ASSERT_TRUE(WIFSTOPPED(status));
    EXPECT_EQ("", ReadBytes(file));
    // The second one has other settings to put there.
    std::string const other = fFolder.Make("b.joboptions", kText);
    EXPECT_EQ(5, SetByTool(file));
    EXPECT_EQ(5, SetByTool(other, "--overwrite-changed -o '" + file + "'"));
    kill(host, SIGCONT);
    ASSERT_EQ(host, waitpid(host, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(kWritten, ReadBytes(file));
    EXPECT_EQ("a.joboptions b.joboptions ", fFolder.Names());
}

} // namespace support
