// joboptions show, get, diff, export and import: the contents of files.
#include "tools/joboptions/commands/Command.h"

#include "format/Tokens.h"
#include "pdfsettings/Compare.h"
#include "pdfsettings/Review.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"
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
using pdfsettings::Dictionary;
using pdfsettings::Document;
using pdfsettings::Kind;
using pdfsettings::Value;

namespace {

constexpr std::size_t kLineWidth = 80;
constexpr std::size_t kIndentStep = 2;
// Limits the indentation: otherwise the output would grow with the square of the nesting.
constexpr std::size_t kDeepestIndent = 200;

bool IsCollection(Value const& value) {
    return value.What() == Kind::kArray || value.What() == Kind::kDictionary;
}

bool IsEmpty(Value const& value) {
    return value == Value(Array()) || value == Value(Dictionary());
}

// Whether a value is an array of scalars that is short enough to fit on a line.
bool IsFlatArray(Value const& value) {
    auto const array = value.If<Array>();
    return array && array->size() <= kLineWidth && std::ranges::none_of(*array, &IsCollection);
}

// A line to be written.
struct Line {
    std::string fLabel;
    Value const* fValue;
    std::size_t fIndent;
    std::size_t fLabelWidth; // of all labels beside it
};

// Settings as an indented tree, one line each, in the order of the file. Keys of a dictionary are
// padded to a common width. Nested values are below their key, with positions in place of keys for
// an array; a short array of scalars is on the line of its key. The tail is last, under a heading.
// Uses an explicit stack of lines, so that deep nesting uses no more stack.
class Tree {
public:
    explicit Tree(bool color) : fColor(color) {}

    std::string Write(Document const& settings) {
        PushEntries(settings.Values(), 0);
        while (!fLines.empty()) {
            Line const line = std::move(fLines.back());
            fLines.pop_back();
            WriteLine(line);
        }
        if (!settings.Tail().empty()) {
            WriteTail(settings.Tail());
        }
        return std::move(fText);
    }

private:
    void PushEntries(Dictionary const& dictionary, std::size_t indent) {
        std::size_t const begin = fLines.size();
        for (auto const& [key, value] : dictionary) {
            Push(VisibleText(key), value, indent);
        }
        Align(begin);
    }

    void PushElements(Array const& array, std::size_t indent) {
        std::size_t const begin = fLines.size();
        for (std::size_t index = 0; index < array.size(); ++index) {
            Push(fmt::to_string(index), array[index], indent);
        }
        Align(begin);
    }

    void Push(std::string label, Value const& value, std::size_t indent) {
        fLines.push_back({std::move(label), &value, std::min(indent, kDeepestIndent), 0});
    }

    // Sets a common label width for the lines from begin on, and reverses them, so that the first
    // is on top of the stack.
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
        if (auto const dictionary = value.If<Dictionary>()) {
            PushEntries(*dictionary, indent);
        } else {
            PushElements(value.As<Array>(), indent);
        }
    }

    void WriteTail(std::string_view bytes) {
        fText += (fText.empty() ? "" : "\n") + Key(std::string(format::kTailKey)) + "\n";
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

// Shows all settings of a file, as a tree or as JSON.
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
        Document const settings = ReadDocument(file);
        WriteResult(
            fOptions,
            fOptions.json ? JsonDocument("settings", settings.Values(), settings.Tail(), file)
                          : Tree(UseColor(fOptions)).Write(settings));
        return Status::kDone;
    }

private:
    std::string fFile;
};

// Shows the values of some keys of a file, one per line or as JSON.
class GetCommand final : public Command {
public:
    GetCommand(CLI::App& program, Options& options)
        : Command(program, options, "get", "Show values of a file") {
        AddFile(Parser(), options, fFile);
        AddArgument(
            Parser(),
            "KEY",
            fKeys,
            "Key or path, for example ColorImageDict/QFactor or NeverEmbed/0")
            ->required();
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions get office.joboptions CompatibilityLevel\n"
                        "  joboptions get office.joboptions ColorImageDict/QFactor NeverEmbed/0\n"
                        "  joboptions get --json office.joboptions ColorImageDict");
    }

    // Status::kDone, or Status::kNo if a key is missing. The values that were found are written in
    // any case.
    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        Document const settings = ReadDocument(file);
        Dictionary found;
        std::string tail;
        std::string lines;
        std::vector<std::string> missing;
        for (std::string const& key : fKeys) {
            if (key == format::kTailKey && !settings.Tail().empty()) {
                tail = settings.Tail();
                lines += VisibleText(tail) + "\n";
                continue;
            }
            try {
                Value const& value = settings.At(key);
                lines += OneLine(value) + "\n";
                found.SetKey(key, value);
            } catch (pdfsettings::Error const& error) {
                missing.push_back(ErrorText(fFile, error));
            }
        }
        WriteResult(fOptions, fOptions.json ? JsonDocument("values", found, tail, file) : lines);
        for (std::string const& message : missing) {
            WriteError(message, fOptions.quiet);
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
        : Command(program, options, "diff", "Compare two files by key and value") {
        AddArgument(Parser(), "A", fBefore, "A settings file; - is standard input")->required();
        AddArgument(Parser(), "B", fAfter, "The settings file to compare with it")->required();
        AddApplication(Parser(), options, kNamesOfApplication);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("One line for each difference: - only in A, + only in B, ~ changed.\n"
                        "\n"
                        "Examples:\n"
                        "  joboptions diff screen.joboptions press.joboptions\n"
                        "  joboptions diff --json old.joboptions new.joboptions");
    }

    // Status::kDone if the settings are equal, else Status::kNo.
    Status Run() const override {
        RequireOneStandardInput({fBefore, fAfter}, fOptions);
        Document const before = ReadDocument(Locate(fBefore, fOptions));
        Document const after = ReadDocument(Locate(fAfter, fOptions));
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
        Parser().footer("Lossless: import makes a file of it that has the settings of FILE.\n"
                        "\n"
                        "Examples:\n"
                        "  joboptions export office.joboptions -o office.json\n"
                        "  joboptions export office.joboptions | jq .settings.CompatibilityLevel");
    }

    Status Run() const override {
        std::string const file = Locate(fFile, fOptions);
        Document const settings = ReadDocument(file);
        WriteResult(fOptions, JsonDocument("settings", settings.Values(), settings.Tail(), file));
        return Status::kDone;
    }

private:
    std::string fFile;
};

// Writes exported settings as a file in the component's layout.
class ImportCommand final : public Command {
public:
    ImportCommand(CLI::App& program, Options& options)
        : Command(program, options, "import", "Convert exported JSON to a settings file") {
        AddArgument(Parser(), "JSON", fFile, "Output of export; default: standard input");
        Parser().add_flag(
            "--allow-invalid", fAllowsInvalid, "Write settings even if the schema rejects them");
        AddSchema(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions import office.json -o office.joboptions\n"
                        "  joboptions export a.joboptions | joboptions import > b.joboptions");
    }

    // Status::kDone, or Status::kRefused with all findings if the schema rejects the settings. A
    // number that the file cannot hold exactly is a warning.
    Status Run() const override {
        auto const [values, tail] = ReadJsonDocument("settings", ReadBytes(fFile), fFile);
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        try {
            auto const settings = pdfsettings::Settings::From(values, tail, schema);
            Report(settings.Source(), schema);
            WriteResult(fOptions, settings.CanonicalText());
        } catch (pdfsettings::Error const& error) {
            throw Failure(Status::kRefused, ErrorText(fFile, error));
        }
        return Status::kDone;
    }

private:
    void Report(Document const& document, pdfsettings::Schema const& schema) const {
        std::vector<std::string> errors;
        for (pdfsettings::Finding const& finding : Review(document, schema)) {
            // A finding without a path is about the generated text, not about the input.
            if (finding.Path().empty()) {
                continue;
            }
            std::string const text = fmt::format(
                "{}: {}: {} [{}]",
                InputName(fFile),
                VisibleText(finding.Path()),
                VisibleText(finding.Message()),
                finding.Id());
            bool const isError = finding.Level() == pdfsettings::Severity::kError;
            if (isError && !fAllowsInvalid) {
                errors.push_back(text);
            } else {
                WriteWarning(text, fOptions.quiet);
            }
        }
        FailIfAny(Status::kRefused, errors);
    }

    bool fAllowsInvalid = false;
    std::string fFile = "-";
};

} // namespace

MakeCommand* const kMakeShowCommand = &Make<ShowCommand>;
MakeCommand* const kMakeGetCommand = &Make<GetCommand>;
MakeCommand* const kMakeDiffCommand = &Make<DiffCommand>;
MakeCommand* const kMakeExportCommand = &Make<ExportCommand>;
MakeCommand* const kMakeImportCommand = &Make<ImportCommand>;

} // namespace joboptions
