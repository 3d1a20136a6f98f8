// joboptions set, new and unset: change a file in its own text, validate, show or save the change.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Compare.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace joboptions {

using pdfsettings::Document;
using pdfsettings::Error;
using pdfsettings::Fault;
using pdfsettings::Finding;
using pdfsettings::Settings;

namespace {

// The changes that a command makes, and the messages about them.
struct Request {
    Settings::Edit fEdit;
    Settings const& fSettings;               // before the changes
    std::vector<std::string> fProblems = {}; // why the changes are refused
    Status fStatus = Status::kDone;          // the status of the most important problem
    std::vector<Finding> fFindings = {};     // those of fProblems that are findings about settings
    std::vector<Finding> fWarnings = {};     // of new values, and of rules that they violate
};

// Adds a problem. If there are several kinds, a problem of the call itself determines the status.
void AddProblem(Request& request, Status status, std::string problem) {
    bool const isGraver = request.fStatus == Status::kDone || status == Status::kWrongCall;
    request.fStatus = isGraver ? status : request.fStatus;
    request.fProblems.push_back(std::move(problem));
}

// A command that changes settings of FILE: makes all changes or, if one of them is refused, none.
class ChangeCommand : public Command {
public:
    // Status::kDone, or Status::kRefused with all findings if the schema rejects the result. A file
    // that is changed in place is locked meanwhile.
    Status Run() const override {
        RequireOneStandardInput(Inputs(), fOptions);
        std::string const file = LocateForChange(fFile, fOptions);
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        return ChangeFile(file, fOptions, [&](std::string const& text, SaveText const& save) {
            Settings settings = ParseSettings(file, text, schema);
            Settings const before = settings;
            Request request{settings.Change(), before};
            Apply(request, file);
            Finish(request, file, save);
            return Status::kDone;
        });
    }

protected:
    ChangeCommand(CLI::App& program, Options& options, char const* name, char const* purpose)
        : Command(program, options, name, purpose) {
        AddFile(Parser(), options, fFile);
    }

    // Adds the options. Call this after the arguments are added.
    void AddChangeOptions(Options& options) {
        AddOutput(Parser(), options, "Write the changed settings to this file; do not change FILE");
        AddDryRun(Parser(), options);
        AddSaving(Parser(), options);
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
    }

    // Makes the requested changes. Adds a problem for each that cannot be made.
    virtual void Apply(Request& request, std::string const& file) const = 0;

    // The files that are read, of which one may be standard input.
    virtual std::vector<std::string> Inputs() const { return {fFile}; }

    // Shows or saves the change. Throws Failure with all problems, with Status::kWrongCall if
    // standard output would get both JSON and the settings, and as save.
    void Finish(Request& request, std::string const& file, SaveText const& save) const {
        RequireRoom(file, fOptions);
        for (Finding const& finding : request.fEdit.Check()) {
            request.fFindings.push_back(finding);
            AddProblem(
                request,
                Status::kRefused,
                fmt::format(
                    "{}: {}: {}",
                    InputName(file),
                    VisibleText(finding.Path()),
                    VisibleText(finding.Message())));
        }
        for (Finding const& finding : request.fEdit.Warnings()) {
            request.fWarnings.push_back(finding);
        }
        Document const& after =
            request.fProblems.empty() ? request.fEdit.Result() : request.fSettings.Source();
        auto const differences = Compare(request.fSettings.Values(), after.Values());
        if (fOptions.json && request.fStatus != Status::kWrongCall) {
            WriteOutput(ChangeDocument(differences, request.fFindings, request.fWarnings, file));
        }
        for (Finding const& warning : request.fWarnings) {
            WriteWarning(
                VisibleText(warning.Path()) + ": " + VisibleText(warning.Message()),
                fOptions.quiet);
        }
        FailIfAny(request.fStatus, request.fProblems);
        if (!fOptions.dryRun) {
            save(after.Text());
            return;
        }
        RequireReplaceable(file, fOptions);
        WriteOutput(fOptions.json ? "" : DifferencesText(differences, UseColor(fOptions.color)));
    }

    std::string fFile;
};

// Where an assignment changes a setting.
enum class Change { kSet, kAdd, kRemove };

// A command with assignments: all of them are made or, if one is refused, none.
class AssignCommand : public ChangeCommand {
protected:
    AssignCommand(CLI::App& program, Options& options, char const* name, char const* purpose)
        : ChangeCommand(program, options, name, purpose) {
        AddArgument(
            Parser(),
            "KEY=VALUE",
            fAssignments,
            "Key or path, and a value as in a file: true, 1.5, /Name, (text), [ 1 2 ]; KEY+=VALUE "
            "and KEY-=VALUE change an array; with --from also a KEY, pattern or group to copy");
        Parser().add_option("--from", fFrom, "Read values from this file")->type_name("FILE");
        Parser().add_flag(
            "--allow-unknown", fAllowsUnknown, "Write keys that neither the schema nor FILE has");
        AddChangeOptions(options);
    }

    // source: what arguments without "=" are copied from; null if they are wrong.
    void ApplyAll(Request& request, std::string const& file, Document const* source) const {
        std::vector<std::string> paths;
        for (std::string const& assignment : fAssignments) {
            std::size_t const sign = assignment.find('=');
            if (sign == std::string::npos && source != nullptr) {
                CopyMatching(request, *source, assignment);
                continue;
            }
            if (sign == std::string::npos) {
                AddProblem(
                    request, Status::kWrongCall, VisibleText(assignment) + ": expected KEY=VALUE");
                continue;
            }
            std::string path = assignment.substr(0, sign);
            Change const change = TakeSign(request, path);
            if (Assign(request, path, change, assignment.substr(sign + 1), file)) {
                paths.push_back(path);
            }
        }
        for (std::string const& path : paths) {
            WarnOfFindings(request, path);
        }
    }

    // The file that values are read from, empty for none; and the assignments.
    std::string fFrom;
    std::vector<std::string> fAssignments;

private:
    // Copies settings of --from. None that match is a problem with Status::kNo.
    void CopyMatching(Request& request, Document const& source, std::string const& pattern) const {
        try {
            if (source.Find(pattern) != nullptr && IsRefused(request, pattern)) {
                return;
            }
            if (request.fEdit.CopyMatching(source, pattern) == 0) {
                AddProblem(
                    request,
                    Status::kNo,
                    InputName(fFrom) + ": nothing matches " + VisibleText(pattern));
            }
        } catch (Error const& error) {
            AddProblem(
                request, Status::kRefused, InputName(fFrom) + ": " + VisibleText(error.Message()));
        }
    }

    // Takes the sign of KEY+= or KEY-= off a path, unless the file has that very key.
    static Change TakeSign(Request const& request, std::string& path) {
        bool const isSigned = path.size() > 1 && (path.ends_with('+') || path.ends_with('-'));
        if (!isSigned || request.fSettings.Has(path)) {
            return Change::kSet;
        }
        Change const change = path.ends_with('+') ? Change::kAdd : Change::kRemove;
        path.pop_back();
        return change;
    }

    // Makes one change. False if it is refused.
    bool Assign(
        Request& request,
        std::string const& path,
        Change change,
        std::string const& text,
        std::string const& file) const {
        try {
            Make(request.fEdit, path, change, text);
        } catch (Error const& error) {
            bool const isOfFile = error.Code() == Fault::kUnwritable;
            bool const isMissing = change == Change::kRemove && error.Code() == Fault::kNoValue;
            if (isMissing) {
                request.fFindings.emplace_back(
                    pdfsettings::Severity::kError, "value", path, error.Message());
            }
            AddProblem(
                request,
                isMissing  ? Status::kNo
                : isOfFile ? Status::kRefused
                           : Status::kWrongCall,
                (isOfFile || isMissing ? InputName(file) + ": " : "") +
                    VisibleText(error.Message()));
            return false;
        }
        IsRefused(request, path);
        return true;
    }

    // Whether a key that neither the schema nor the file has is refused, which is a problem.
    bool IsRefused(Request& request, std::string const& path) const {
        if (fAllowsUnknown || !IsUnknown(request, path)) {
            return false;
        }
        std::string const meant = request.fSettings.Rules().Suggest(path);
        std::string const message = "the schema has no such setting" +
                                    (meant.empty() ? "" : "; did you mean " + meant + "?");
        request.fFindings.emplace_back(pdfsettings::Severity::kError, "unknown-key", path, message);
        AddProblem(
            request,
            Status::kRefused,
            fmt::format(
                "{}: {} (--allow-unknown writes it)", VisibleText(path), VisibleText(message)));
        return true;
    }

    static void
    Make(Settings::Edit& edit, std::string const& path, Change change, std::string const& text) {
        switch (change) {
        case Change::kSet:
            edit.SetText(path, text);
            break;
        case Change::kAdd:
            edit.AddElementText(path, text);
            break;
        case Change::kRemove:
            edit.RemoveElementText(path, text);
        }
    }

    static bool IsUnknown(Request const& request, std::string const& path) {
        return request.fSettings.Rules().IsUnknown(path) && !request.fSettings.Has(path);
    }

    // Warns of findings about the new value, which is read otherwise than it looks.
    static void WarnOfFindings(Request& request, std::string const& path) {
        Document const& result = request.fEdit.Result();
        auto const* const entry = result.Find(path);
        if (entry == nullptr) {
            return; // a later assignment replaced what is around it, or nothing had to be stored
        }
        std::size_t const first = entry->key.Size() == 0 ? entry->value.begin : entry->key.begin;
        for (Finding const& finding : result.Findings()) {
            std::size_t const begin = finding.Bytes()->begin;
            if (first <= begin && begin <= entry->value.end) {
                request.fWarnings.emplace_back(
                    finding.Level(), finding.Id(), path, finding.Message());
            }
        }
    }

    bool fAllowsUnknown = false;
};

// Changes settings in a file.
class SetCommand final : public AssignCommand {
public:
    SetCommand(CLI::App& program, Options& options)
        : AssignCommand(
              program,
              options,
              "set",
              "Change settings in a file, if the schema allows all new values") {
        Parser().get_option("KEY=VALUE")->required();
        Parser().footer(
            "Examples:\n"
            "  joboptions set office.joboptions ColorImageResolution=150\n"
            "  joboptions set -n office.joboptions ColorImageDict/QFactor=0.76\n"
            "  joboptions set office.joboptions NeverEmbed+=/Courier AlwaysEmbed-=/Courier\n"
            "  joboptions set office.joboptions --from press.joboptions 'Color*' Fonts PDFX=true\n"
            "  joboptions set office.joboptions 'NeverEmbed=[ /Courier ]' -o new.joboptions");
    }

private:
    void Apply(Request& request, std::string const& file) const override {
        auto const source = fFrom.empty() ? std::nullopt : std::optional(ReadDocument(fFrom));
        ApplyAll(request, file, source ? &*source : nullptr);
    }

    std::vector<std::string> Inputs() const override { return {fFile, fFrom}; }
};

// Makes a file of settings: those of another file, or none, with changes.
class NewCommand final : public AssignCommand {
public:
    NewCommand(CLI::App& program, Options& options)
        : AssignCommand(program, options, "new", "Create a settings file") {
        Parser().footer(
            "Examples:\n"
            "  joboptions new mine.joboptions CompatibilityLevel=1.7 EmbedAllFonts=true\n"
            "  joboptions new mine.joboptions --from press.joboptions ColorImageResolution=200");
    }

    // Status::kDone, or Status::kRefused if the file exists or the schema rejects the settings.
    // Those of another file may have problems already.
    Status Run() const override {
        RequireOneStandardInput({fFrom}, fOptions);
        RequireNewFile();
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        std::string const text =
            fFrom.empty() ? Settings(schema).CanonicalText() : ReadBytes(fFrom);
        Settings settings = ParseSettings(fFrom, text, schema);
        Settings const before = settings;
        Request request{settings.Change(), before};
        Apply(request, fFile);
        if (fFrom.empty()) {
            RequireValid(request, schema);
        }
        Finish(request, fFile, [&](std::string const& changed) { Save(changed); });
        return Status::kDone;
    }

private:
    void Apply(Request& request, std::string const& file) const override {
        ApplyAll(request, file, /*source=*/nullptr);
    }

    // A save refuses a file that exists; this says so before, for a dry run too.
    void RequireNewFile() const {
        if (!fOptions.output.empty() || fOptions.application) {
            throw Failure(
                Status::kWrongCall, "new writes FILE, a path: it takes no -o and no --app");
        }
        std::error_code ignored;
        if (fFile != "-" && std::filesystem::exists(fFile, ignored)) {
            Fail(Status::kRefused, fFile, "the file exists already");
        }
    }

    // What is missing in a set that begins with nothing is a problem of its own.
    static void RequireValid(Request& request, pdfsettings::Schema const& schema) {
        auto const settings = Settings::Parse(request.fEdit.Result().Text(), schema);
        auto const fresh = request.fEdit.Check();
        for (Finding const& finding : settings.Validate()) {
            if (std::ranges::find(fresh, finding.Path(), &Finding::Path) == fresh.end()) {
                request.fFindings.push_back(finding);
                AddProblem(
                    request,
                    Status::kRefused,
                    VisibleText(finding.Path()) + ": " + VisibleText(finding.Message()));
            }
        }
    }

    void Save(std::string const& text) const {
        if (fFile == "-") {
            WriteOutput(text);
            return;
        }
        try {
            auto const wait = std::chrono::milliseconds(static_cast<long>(fOptions.wait * 1000));
            for (std::string const& warning :
                 Settings::Parse(text).SaveAs(fFile, pdfsettings::OnConflict::kRefuse, wait)) {
                WriteWarning(InputName(fFile) + ": " + VisibleText(warning), fOptions.quiet);
            }
        } catch (Error const& error) {
            bool const isConflict = error.Code() == Fault::kConflict;
            Fail(isConflict ? Status::kRefused : Status::kNotWritten, fFile, error.Message());
        }
    }
};

// Removes keys from a file: all of them or, if one is missing or the schema rejects the result,
// none.
class UnsetCommand final : public ChangeCommand {
public:
    UnsetCommand(CLI::App& program, Options& options)
        : ChangeCommand(program, options, "unset", "Remove settings from a file") {
        AddArgument(Parser(), "KEY", fKeys, "Key or path, as for get")->required();
        AddChangeOptions(options);
        Parser().footer(
            "Examples:\n"
            "  joboptions unset office.joboptions ColorImageDict\n"
            "  joboptions unset -n office.joboptions ColorImageDict/QFactor NeverEmbed");
    }

private:
    // A missing key is a problem with Status::kNo.
    void Apply(Request& request, std::string const& file) const override {
        for (std::string const& key : fKeys) {
            try {
                request.fEdit.Remove(key);
            } catch (Error const& error) {
                bool const isMissing = error.Code() == Fault::kNoValue;
                AddProblem(
                    request,
                    isMissing ? Status::kNo : Status::kRefused,
                    InputName(file) + ": " + VisibleText(error.Message()));
            }
        }
    }

    std::vector<std::string> fKeys;
};

} // namespace

MakeCommand* const kMakeSetCommand = &Make<SetCommand>;
MakeCommand* const kMakeNewCommand = &Make<NewCommand>;
MakeCommand* const kMakeUnsetCommand = &Make<UnsetCommand>;

} // namespace joboptions
