#include "pdfsettings/Settings.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Path.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TemporaryFolder.h"

#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

using namespace pdfsettings;
using namespace std::string_literals;

namespace {

class SettingsTest : public testing::Test {
protected:
    Dictionary Read(std::string const& entries, std::string const& tail = "") const {
        std::string const text = "<<" + entries + ">>setalembicorparams" + tail;
        return Settings::FromText(fComponent, text).Values();
    }

    Dictionary ThroughComponent(Dictionary const& values) const {
        return Settings::FromValues(fComponent, values).Values();
    }

    std::string Refusal(std::string const& text, std::string const& schema = {}) const {
        return MessageOf([&] { Settings::FromText(fComponent, text, schema); });
    }

    std::string Refusal(Dictionary const& values) const {
        return MessageOf([&] { Settings::FromValues(fComponent, values); });
    }

    template <class Work>
    static std::string MessageOf(Work work) {
        try {
            work();
        } catch (Error const& error) {
            return error.what();
        }
        return "accepted";
    }

    Component fComponent;
};

Dictionary OneEntry(std::string const& key, Value value) {
    Dictionary dictionary;
    dictionary.Set(key, std::move(value));
    return dictionary;
}

} // namespace

TEST_F(SettingsTest, EachKindOfValueIsRead) {
    struct {
        char const* fText;
        Value fExpected;
    } const cases[] = {
        {"/All", Word{"All"}},
        {"/\xFF\x01", Word{"\xFF\x01"}},
        {"true", Word{"true"}},
        {"0.25", 0.25},
        {"-12", -12.0},
        {"(a\\)b)", String{"a\\)b"}},
        {"()", String{""}},
        {"<FE FF>", HexString{"FE FF"}},
        {"[ 1 /A (s) ]", Array::Of({1.0, Word{"A"}, String{"s"}})},
        {"[ ]", Array()},
        {"<< /In 2 >>", OneEntry("In", 2.0)},
    };
    for (auto const& [text, expected] : cases) {
        EXPECT_EQ(Read("/Key "s + text + " "), OneEntry("Key", expected)) << text;
    }
}

TEST_F(SettingsTest, TheTailIsBinaryWithItsNulBytes) {
    std::string const tail = "<<>>\0 setpagedevice\r\n"s;
    EXPECT_EQ(Read("/A 1 ", tail).Get(kTailKey)->If<Binary>()->bytes, tail);
    EXPECT_EQ(Read("/A 1 ").Get(kTailKey), nullptr);
}

TEST_F(SettingsTest, ARefusedTextGivesTheReportedReason) {
    EXPECT_EQ(Refusal("junk"), "Joboptions_To_CPOSDict joboptions file is invalid");
    EXPECT_EQ(Refusal("<</A .5>>setalembicorparams"), "GetValue for joboptions is unknow type");
    EXPECT_EQ(Refusal("<</A 1>>setalembicorparams"), "accepted");
    EXPECT_EQ(Refusal("", "a\0b"s), "a text of this kind cannot hold a NUL byte");
}

TEST_F(SettingsTest, EachKindOfValuePassesThroughTheComponent) {
    Dictionary values = OneEntry("Word", Word{"All"});
    values.Set("Number", 0.1);
    values.Set("String", String{"a\0b"s});
    values.Set("Empty", String{});
    values.Set("Hex", HexString{"FEFF"});
    values.Set("Other", Binary{"Other type", "\0"s});
    values.Set("Text", Text16(u"\u20AC"));
    values.Set("Array", Array::Of({1.0, Value(Array()), Value(OneEntry("In", 2.0))}));
    Dictionary const read = ThroughComponent(values);
    EXPECT_EQ(read, values);
    for (std::size_t place = 0; place < values.Size(); ++place) {
        EXPECT_EQ(read.KeyAt(place), values.KeyAt(place));
    }
}

TEST_F(SettingsTest, ATextThatWouldBeCutShortIsRefused) {
    struct {
        char const* fWhere;
        Dictionary fValues;
        char const* fMessage;
    } const cases[] = {
        {"key", OneEntry("a\0b"s, 1.0), "a text of this kind cannot hold a NUL byte"},
        {"word", OneEntry("a", Word{"a\0b"s}), "a text of this kind cannot hold a NUL byte"},
        {"type", OneEntry("a", Binary{"a\0b"s, ""}), "a text of this kind cannot hold a NUL byte"},
        {"text", OneEntry("a", Text16(u"a\0b", 3)), "a 16-bit text cannot hold a NUL"},
    };
    for (auto const& [where, values, message] : cases) {
        EXPECT_EQ(Refusal(values), message) << where;
    }
}

TEST_F(SettingsTest, DeepValuesPassThroughTheComponent) {
    std::optional<bool> equal;
    support::OnSmallStack([&] {
        Value value = 1.0;
        for (int level = 0; level < 20'000; ++level) {
            Array array;
            array.Append(std::move(value));
            value = OneEntry("D", std::move(array));
        }
        Dictionary const values = OneEntry("Deep", std::move(value));
        equal = ThroughComponent(values) == values;
    });
    EXPECT_EQ(equal, true);
}

TEST_F(SettingsTest, AChangeIsMadeWholeOrNotAtAll) {
    Settings settings = Settings::FromText(
        fComponent,
        "<</A 1 /B 2 >>setalembicorparams tail",
        "< PDFSettings < optional < A number B number > > >");
    Dictionary changes = OneEntry("A", 3.0);
    changes.Set("B", Word{"x"});
    std::vector<Finding> const faults = {{"B", "expected a number, found the name x"}};
    EXPECT_EQ(settings.Set(changes), faults);
    EXPECT_EQ(*settings.Values().Get("A"), Value(1.0));
    changes.Set("B", 4.5);
    EXPECT_EQ(settings.Set(changes), std::vector<Finding>());
    EXPECT_EQ(settings.Validate(), std::vector<Finding>());
    EXPECT_EQ(settings.Text(), "<<\r\n  /A 3\r\n  /B 4.50000\r\n>> setalembicorparams\r\ntail");
}

TEST_F(SettingsTest, AValueWithoutAFormInAFileHasNoText) {
    for (Value const& value : {Value(Text16(u"x")), Value(Binary{"Other", "x"})}) {
        Dictionary values = OneEntry("A", value);
        support::TemporaryFolder const folder;
        std::string const file = folder.Make("a", "kept");
        EXPECT_THROW(Settings::FromValues(fComponent, values).Write(file), Error);
        EXPECT_EQ(support::ReadBytes(file), "kept");
        EXPECT_THROW(Settings::FromValues(fComponent, values).Text(), Error);
        values.Set(kTailKey, Binary{kTailKey, "tail"});
        EXPECT_THROW(Settings::FromValues(fComponent, values).Text(), Error);
    }
}

TEST_F(SettingsTest, AFileIsOpenedWatchedAndWritten) {
    support::TemporaryFolder const folder;
    std::string const text = "<</A 1 >>setalembicorparams tail";
    std::string const file = folder.Make("a", text);
    Settings settings = Settings::FromFile(fComponent, file);
    EXPECT_FALSE(settings.IsDirty());
    EXPECT_EQ(*settings.Values().Get("A"), Value(1.0));
    // Other bytes of the same time and size count, the same bytes of another time do not.
    auto const time = std::filesystem::last_write_time(file);
    folder.Make("a", "<</A 2 >>setalembicorparams tail");
    std::filesystem::last_write_time(file, time);
    EXPECT_TRUE(settings.IsDirty());
    folder.Make("a", text);
    std::filesystem::last_write_time(file, std::filesystem::file_time_type());
    EXPECT_FALSE(settings.IsDirty());
    std::filesystem::remove(file);
    EXPECT_TRUE(settings.IsDirty());
    std::string const other = folder / "\u20AC \U0001F600";
    settings.Write(other);
    EXPECT_FALSE(settings.IsDirty());
    EXPECT_EQ(support::ReadBytes(other), settings.Text());
    EXPECT_TRUE(Settings::FromText(fComponent, "").IsDirty());
}

TEST_F(SettingsTest, ASaveStaysBoundAndSeesWhatOthersChanged) {
    support::TemporaryFolder const folder;
    std::string const file = folder.Make("a", "<</A 1 >>setalembicorparams tail");
    Settings settings =
        Settings::FromFile(fComponent, file, "< PDFSettings < optional < A number > > >");
    for (double const value : {2.0, 3.0}) {
        EXPECT_EQ(settings.Set(OneEntry("A", value)), std::vector<Finding>());
        EXPECT_EQ(settings.Save(), SaveWarnings());
        EXPECT_FALSE(settings.IsDirty());
        EXPECT_EQ(support::ReadBytes(file), settings.Text());
    }
    folder.Make("a", "other");
    EXPECT_THROW(settings.Save(), ConflictError);
    EXPECT_EQ(support::ReadBytes(file), "other");
    EXPECT_EQ(settings.Save({std::chrono::seconds(1), /*overwriteChanged=*/true}), SaveWarnings());
    EXPECT_EQ(support::ReadBytes(file), settings.Text());
    settings.Write(folder / "b");
    EXPECT_EQ(settings.Save(), SaveWarnings());
    EXPECT_EQ(folder.Names(), "a b ");
    EXPECT_EQ(
        MessageOf([&] { Settings::FromText(fComponent, "").Save(); }),
        "these settings are bound to no file");
}

// The lock of an edit covers the component's own writing, which deletes before it creates.
TEST_F(SettingsTest, AWriteWaitsForTheEditOfAnotherThread) {
    support::TemporaryFolder const folder;
    std::string const file = folder.Make("a", "old");
    Settings settings = Settings::FromText(fComponent, "<</A 1 >>setalembicorparams");
    std::promise<void> started;
    std::jthread writer;
    auto const write = [&] {
        started.set_value();
        settings.Write(file);
    };
    auto const edit = [&](EditedFile& edited) {
        writer = std::jthread(write);
        started.get_future().wait();
        // A write without the lock would make one of these a conflict.
        for (int i = 0; i < 20; ++i) {
            edited.Save(std::to_string(i));
        }
    };
    std::string const message = MessageOf([&] { Edit(file, edit); });
    writer.join();
    EXPECT_EQ(message, "accepted");
    EXPECT_EQ(support::ReadBytes(file).substr(0, 2), "<<");
}

TEST_F(SettingsTest, AFileIsWrittenWholeOrTheFailureIsTold) {
    support::TemporaryFolder const folder;
    std::string const path = folder / "a";
    Settings settings = Settings::FromText(fComponent, "<</A 1 >>setalembicorparams");
    std::string const text = settings.Text();
    int refusals = 0;
    bool isReached = true;
    for (unsigned long n = 1; isReached; ++n) {
        folder.Make("a", "old");
        unsigned long const start = bibrt::CountAllocations();
        bibrt::FailAllocation(n, /*andAllLater=*/false);
        bool const isDone = MessageOf([&] { settings.Write(path); }) == "accepted";
        isReached = bibrt::CountAllocations() - start >= n;
        bibrt::ResetFailures();
        EXPECT_TRUE(!isDone || support::ReadBytes(path) == text) << n;
        refusals += isDone ? 0 : 1;
    }
    EXPECT_GT(refusals, 10);
}

TEST_F(SettingsTest, AFileThatCannotBeUsedGivesTheSystemsReason) {
    support::TemporaryFolder const folder;
    folder.Make("junk", "junk");
    folder.Make("readonly", "kept");
    chmod((folder / "readonly").c_str(), 0444);
    Settings settings = Settings::FromText(fComponent, "<</A 1 >>setalembicorparams");
    auto const read = [&](std::string const& path) {
        return MessageOf([&] { Settings::FromFile(fComponent, path); });
    };
    auto const write = [&](std::string const& path) {
        return MessageOf([&] { settings.Write(path); });
    };
    EXPECT_EQ(read(folder / "missing"), "No such file or directory");
    EXPECT_EQ(read(folder / ""), "Is a directory");
    EXPECT_EQ(read(folder / "junk/below"), "Not a directory");
    EXPECT_EQ(read(folder / std::string(256, 'n')), "File name too long");
    EXPECT_EQ(read("\xFF"), "No such file or directory");
    EXPECT_EQ(read("a\0b"s), "the path holds a NUL byte");
    EXPECT_EQ(read("/dev/full"), "not a regular file");
    EXPECT_EQ(read(folder / "junk"), "Joboptions_To_CPOSDict joboptions file is invalid");
    EXPECT_EQ(write("\xFF"), "the path is no UTF-8");
    EXPECT_EQ(write(folder / "readonly"), "read-only");
    EXPECT_EQ(write(folder / ""), "Is a directory");
    EXPECT_EQ(write(folder / "missing/a"), "No such file or directory");
    EXPECT_EQ(write(folder / "junk/a"), "Not a directory");
    EXPECT_EQ(write(folder / std::string(256, 'n')), "File name too long");
    EXPECT_EQ(folder.Names(), "junk readonly ");
}

TEST_F(SettingsTest, AnUnusableSchemaIsReported) {
    Settings settings = Settings::FromText(fComponent, "<</A 1 >>setalembicorparams", "<");
    EXPECT_THROW(static_cast<void>(settings.Validate()), Error);
    EXPECT_THROW(static_cast<void>(settings.Set(OneEntry("A", 2.0))), Error);
    EXPECT_EQ(settings.Values(), OneEntry("A", 1.0));
}

TEST_F(SettingsTest, MovedSettingsStayWhole) {
    Settings first = Settings::FromText(fComponent, "<</A 1>>setalembicorparams");
    Settings second = Settings::FromText(fComponent, "<</B 1>>setalembicorparams");
    second = std::move(first);
    EXPECT_EQ(second.Values(), OneEntry("A", 1.0));
}

// The component counts only the namespaces that it validates.
TEST_F(SettingsTest, FindingsHaveThePositionsOfTheSettingsThatAreMeant) {
    std::string const schema = "< PDFSettings < optional < OtherNamespaces < type array of T > > > "
                               "T < Must number optional < > > >";
    std::string const other = " << /Namespace [ (x) (x) (x) ] >> ";
    std::string const checked = " << /A 1 >> ";
    auto const text = [](std::string const& namespaces) {
        return "<</OtherNamespaces [" + namespaces + "] /B 1 >>setalembicorparams";
    };
    Settings settings = Settings::FromText(fComponent, text(other + checked), schema);
    Dictionary const changes = Read("/OtherNamespaces [" + other + other + checked + "]");
    auto const keyOf = [](std::vector<Finding> const& findings) {
        return findings.size() == 1 ? findings[0].key : "not one finding";
    };
    EXPECT_EQ(keyOf(settings.Validate()), "OtherNamespaces/1/Must");
    EXPECT_EQ(keyOf(settings.Set(changes)), "OtherNamespaces/2/Must");
    EXPECT_EQ(keyOf(settings.Set(OneEntry("B", 2.0))), "OtherNamespaces/1/Must");
}

// What is bound is a file, not a name in whatever folder is the current one.
TEST_F(SettingsTest, ARelativePathIsBoundWhereItWasOpened) {
    support::TemporaryFolder const folder;
    std::string const file = folder.Make("a", "<</A 1 >>setalembicorparams");
    std::filesystem::path const current = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    Settings opened = Settings::FromFile(fComponent, "a");
    Settings written = Settings::FromText(fComponent, "<</B 1 >>setalembicorparams");
    written.Write("b");
    std::filesystem::current_path(current);
    EXPECT_FALSE(opened.IsDirty());
    EXPECT_FALSE(written.IsDirty());
    opened.Save();
    EXPECT_EQ(folder.Names(), "a b ");
    EXPECT_NE(support::ReadBytes(file), "<</A 1 >>setalembicorparams");
}
