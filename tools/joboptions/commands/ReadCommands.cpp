// joboptions show, get, diff, export and import: what files hold.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Component.h"
#include "pdfsettings/Path.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Differences.h"
#include "tools/joboptions/text/KnownKeys.h"
#include "tools/joboptions/text/Layout.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

using pdfsettings::Array;
using pdfsettings::Binary;
using pdfsettings::Dictionary;
using pdfsettings::Value;

namespace {

constexpr std::size_t kLineWidth = 80;
constexpr std::size_t kIndentStep = 2;
// Indentation stops growing here, or the output would grow with the square of the nesting.
constexpr std::size_t kDeepestIndent = 200;

bool IsEmpty(Value const& value) {
    auto const* const array = value.If<Array>();
    auto const* const dictionary = value.If<Dictionary>();
    return (array != nullptr && array->Size() == 0) ||
           (dictionary != nullptr && dictionary->Size() == 0);
}

// Whether a value is a short array of scalars: no more elements than could fit into a line.
bool IsFlatArray(Value const& value) {
    auto const* const array = value.If<Array>();
    if (array == nullptr || array->Size() > kLineWidth) {
        return false;
    }
    for (std::size_t index = 0; index < array->Size(); ++index) {
        if (IsCollection((*array)[index])) {
            return false;
        }
    }
    return true;
}

// A line that waits to be written.
struct Line {
    std::string fLabel;
    Value const* fValue;
    std::size_t fIndent;
    std::size_t fLabelWidth; // that of all labels beside it
};

// Settings as a tree for people, a line for each in file order. The keys of a dictionary are padded
// to one width. What is nested stands below its key, indented, with positions in place of keys for
// an array; a short array of scalars stays on the line of its key. What follows the settings in
// their file comes last under a heading. The lines wait in a list, the last one first, so that no
// nesting is too deep.
class Tree {
public:
    explicit Tree(bool color) : fColor(color) {}

    std::string Write(Dictionary const& settings) {
        auto const* const tail = As<Binary>(settings.Get(pdfsettings::kTailKey));
        PushEntries(settings, 0, /*withoutTail=*/tail != nullptr);
        while (!fLines.empty()) {
            Line const line = std::move(fLines.back());
            fLines.pop_back();
            WriteLine(line);
        }
        if (tail != nullptr) {
            WriteTail(tail->bytes);
        }
        return std::move(fText);
    }

private:
    void PushEntries(Dictionary const& dictionary, std::size_t indent, bool withoutTail) {
        std::size_t const begin = fLines.size();
        for (std::size_t place = 0; place < dictionary.Size(); ++place) {
            if (!withoutTail || dictionary.KeyAt(place) != pdfsettings::kTailKey) {
                Push(VisibleText(dictionary.KeyAt(place)), dictionary.ValueAt(place), indent);
            }
        }
        Align(begin);
    }

    void PushElements(Array const& array, std::size_t indent) {
        std::size_t const begin = fLines.size();
        for (std::size_t index = 0; index < array.Size(); ++index) {
            Push(fmt::to_string(index), array[index], indent);
        }
        Align(begin);
    }

    void Push(std::string label, Value const& value, std::size_t indent) {
        fLines.push_back({std::move(label), &value, std::min(indent, kDeepestIndent), 0});
    }

    // Gives the lines from begin on one width, and turns them so that the first is written first.
    void Align(std::size_t begin) {
        auto const first = fLines.begin() + static_cast<std::ptrdiff_t>(begin);
        std::size_t width = 0;
        for (auto line = first; line != fLines.end(); ++line) {
            width = Widened(width, line->fLabel);
        }
        for (auto line = first; line != fLines.end(); ++line) {
            line->fLabelWidth = width;
        }
        std::reverse(first, fLines.end());
    }

    void WriteLine(Line const& line) {
        std::size_t const begin =
            line.fIndent + std::max(line.fLabelWidth, DisplayWidth(line.fLabel));
        if (IsCollection(*line.fValue) && !IsEmpty(*line.fValue) &&
            !FitsBehind(begin, *line.fValue)) {
            fText += std::string(line.fIndent, ' ') + Key(line.fLabel) + "\n";
            PushNested(*line.fValue, line.fIndent + kIndentStep);
            return;
        }
        fText += std::string(line.fIndent, ' ') + Key(line.fLabel) +
                 std::string(begin - line.fIndent - DisplayWidth(line.fLabel), ' ') + "  " +
                 OneLine(*line.fValue) + "\n";
    }

    static bool FitsBehind(std::size_t begin, Value const& value) {
        return IsFlatArray(value) && begin + 2 + DisplayWidth(OneLine(value)) <= kLineWidth;
    }

    void PushNested(Value const& value, std::size_t indent) {
        if (auto const* const dictionary = value.If<Dictionary>()) {
            PushEntries(*dictionary, indent, /*withoutTail=*/false);
        } else {
            PushElements(*value.If<Array>(), indent);
        }
    }

    void WriteTail(std::string_view bytes) {
        fText += (fText.empty() ? "" : "\n") + Key(pdfsettings::kTailKey) + "\n";
        while (!bytes.empty()) {
            std::size_t const end = std::min(bytes.find_first_of("\r\n"), bytes.size());
            std::string const line = VisibleText(bytes.substr(0, end));
            fText += line.empty() ? "\n" : std::string(kIndentStep, ' ') + line + "\n";
            bytes.remove_prefix(end);
            bytes.remove_prefix(LineEndLength(bytes));
        }
    }

    static std::size_t LineEndLength(std::string_view bytes) {
        return bytes.starts_with("\r\n") ? 2 : std::min<std::size_t>(bytes.size(), 1);
    }

    std::string Key(std::string const& text) const { return Colored(text, kCyan, fColor); }

    bool fColor;
    std::string fText;
    std::vector<Line> fLines;
};

// Reads a file and writes all of its settings, as a tree or as JSON.
class ShowCommand final : public Command {
public:
    ShowCommand(CLI::App& program, Options& options)
        : Command(program, options, "show", "Show all settings of a file") {
        AddFile(Parser(), options, fFile);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions show office.joboptions\n"
                        "  joboptions show --json office.joboptions > office.json\n"
                        "  joboptions show - < office.joboptions");
    }

    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        Dictionary const settings = ReadSettings(file);
        WriteResult(
            fOptions,
            fOptions.json ? JsonDocument("settings", settings, file)
                          : Tree(UseColor(fOptions)).Write(settings));
        return Status::kDone;
    }

private:
    std::string fFile;
};

// Reads a file and writes the values under the given keys, a line for each or as JSON.
class GetCommand final : public Command {
public:
    GetCommand(CLI::App& program, Options& options)
        : Command(program, options, "get", "Show single values of a file") {
        AddFile(Parser(), options, fFile);
        AddArgument(
            Parser(),
            "KEY",
            fKeys,
            "Keys, with those of nested settings and positions from 0 behind /")
            ->required();
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions get office.joboptions CompatibilityLevel\n"
                        "  joboptions get office.joboptions ColorImageDict/QFactor NeverEmbed/0\n"
                        "  joboptions get --json office.joboptions ColorImageDict");
    }

    // Status::kDone, or Status::kNo when a key is missing: what was found is written all the same.
    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        Dictionary const settings = ReadSettings(file);
        Dictionary found;
        std::string lines;
        std::vector<std::string> missing;
        for (std::string const& key : fKeys) {
            Value const* const value = Find(settings, key);
            if (value == nullptr) {
                missing.push_back(MissingKeyText(settings, key));
                continue;
            }
            lines += OneLine(*value) + "\n";
            found.Set(key, *value);
        }
        WriteResult(fOptions, fOptions.json ? JsonDocument("values", found, file) : lines);
        for (std::string const& message : missing) {
            WriteError(fmt::format("{}: {}", InputName(fFile), message), fOptions.quiet);
        }
        return missing.empty() ? Status::kDone : Status::kNo;
    }

private:
    std::string fFile;
    std::vector<std::string> fKeys;
};

// Compares two files by key and value.
class DiffCommand final : public Command {
public:
    DiffCommand(CLI::App& program, Options& options)
        : Command(
              program, options, "diff", "Say what differs between two files, by key and value") {
        AddArgument(Parser(), "A", fBefore, "A settings file; - is standard input")->required();
        AddArgument(Parser(), "B", fAfter, "The settings file that is compared with it")
            ->required();
        AddApplication(Parser(), options, kNamesOfApplication);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "A line for each setting that differs: - only in A, + only in B, ~ changed.\n"
            "\n"
            "Examples:\n"
            "  joboptions diff screen.joboptions press.joboptions\n"
            "  joboptions diff --json old.joboptions new.joboptions");
    }

    // Status::kDone when the settings are the same, else Status::kNo.
    Status Run() const override {
        RequireOneStandardInput({fBefore, fAfter}, fOptions);
        Dictionary const before = ReadSettings(Locate(fBefore, fOptions));
        Dictionary const after = ReadSettings(Locate(fAfter, fOptions));
        auto const differences = Compare(before, after);
        if (fOptions.json) {
            WriteResult(fOptions, DifferencesDocument(differences, fBefore));
        } else if (!fOptions.quiet) {
            WriteResult(fOptions, DifferencesText(differences, UseColor(fOptions)));
        }
        return differences.empty() ? Status::kDone : Status::kNo;
    }

private:
    std::string fBefore;
    std::string fAfter;
};

// Writes all settings of a file as JSON, without loss.
class ExportCommand final : public Command {
public:
    ExportCommand(CLI::App& program, Options& options)
        : Command(program, options, "export", "Write all settings of a file as JSON") {
        AddFile(Parser(), options, fFile);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "Nothing of the settings is lost: import makes of it what fmt makes of FILE.\n"
            "\n"
            "Examples:\n"
            "  joboptions export office.joboptions -o office.json\n"
            "  joboptions export office.joboptions | jq .settings.CompatibilityLevel");
    }

    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        WriteResult(fOptions, JsonDocument("settings", ReadSettings(file), file));
        return Status::kDone;
    }

private:
    std::string fFile;
};

// Writes the settings that were exported in the component's own layout.
class ImportCommand final : public Command {
public:
    ImportCommand(CLI::App& program, Options& options)
        : Command(program, options, "import", "Make a settings file of exported JSON") {
        AddArgument(Parser(), "JSON", fFile, "What export wrote; without it, standard input");
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions import office.json -o office.joboptions\n"
                        "  joboptions export a.joboptions | joboptions import > b.joboptions");
    }

    Status Run() const override {
        Dictionary const values = ReadJsonDocument("settings", ReadBytes(fFile), fFile);
        pdfsettings::Component const component;
        auto const settings = pdfsettings::Settings::FromValues(component, values);
        WriteResult(fOptions, LayOut(component, settings, fFile));
        return Status::kDone;
    }

private:
    std::string fFile = "-";
};

} // namespace

MakeCommand* const kMakeShowCommand = &Make<ShowCommand>;
MakeCommand* const kMakeGetCommand = &Make<GetCommand>;
MakeCommand* const kMakeDiffCommand = &Make<DiffCommand>;
MakeCommand* const kMakeExportCommand = &Make<ExportCommand>;
MakeCommand* const kMakeImportCommand = &Make<ImportCommand>;

} // namespace joboptions
