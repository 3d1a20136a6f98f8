// joboptions set and unset: change a file in its own text, validate, show or save the change.
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
#include <fmt/format.h>
#include <string>
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
        RequireOneStandardInput({fFile}, fOptions);
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

private:
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

// Sets values in a file: all of them or, if one is refused, none.
class SetCommand final : public ChangeCommand {
public:
    SetCommand(CLI::App& program, Options& options)
        : ChangeCommand(
              program,
              options,
              "set",
              "Change settings in a file, if the schema allows all new values") {
        AddArgument(
            Parser(),
            "KEY=VALUE",
            fAssignments,
            "Key or path, and a value as in a file: true, 1.5, /Name, "
            "(text), [ 1 2 ]")
            ->required();
        Parser().add_flag(
            "--allow-unknown", fAllowsUnknown, "Write keys that neither the schema nor FILE has");
        AddChangeOptions(options);
        Parser().footer(
            "Examples:\n"
            "  joboptions set office.joboptions ColorImageResolution=150\n"
            "  joboptions set -n office.joboptions ColorImageDict/QFactor=0.76\n"
            "  joboptions set office.joboptions 'NeverEmbed=[ /Courier ]' -o new.joboptions");
    }

private:
    void Apply(Request& request, std::string const& file) const override {
        std::vector<std::string> paths;
        for (std::string const& assignment : fAssignments) {
            std::size_t const sign = assignment.find('=');
            std::string const path = assignment.substr(0, sign);
            if (sign == std::string::npos) {
                AddProblem(request, Status::kWrongCall, VisibleText(path) + ": expected KEY=VALUE");
            } else if (Assign(request, path, assignment.substr(sign + 1), file)) {
                paths.push_back(path);
            }
        }
        for (std::string const& path : paths) {
            WarnOfFindings(request, path);
        }
    }

    // Makes one change. False if it is refused.
    bool Assign(
        Request& request,
        std::string const& path,
        std::string const& text,
        std::string const& file) const {
        try {
            request.fEdit.SetText(path, text);
        } catch (Error const& error) {
            bool const isOfFile = error.Code() == Fault::kUnwritable;
            AddProblem(
                request,
                isOfFile ? Status::kRefused : Status::kWrongCall,
                (isOfFile ? InputName(file) + ": " : "") + VisibleText(error.Message()));
            return false;
        }
        if (!fAllowsUnknown && IsUnknown(request, path)) {
            std::string const meant = request.fSettings.Rules().Suggest(path);
            std::string const message = "the schema has no such setting" +
                                        (meant.empty() ? "" : "; did you mean " + meant + "?");
            request.fFindings.emplace_back(
                pdfsettings::Severity::kError, "unknown-key", path, message);
            AddProblem(
                request,
                Status::kRefused,
                fmt::format(
                    "{}: {} (--allow-unknown writes it)", VisibleText(path), VisibleText(message)));
        }
        return true;
    }

    static bool IsUnknown(Request const& request, std::string const& path) {
        return request.fSettings.Rules().IsUnknown(path) && !request.fSettings.Has(path);
    }

    // Warns of findings about the new value, which is read otherwise than it looks.
    static void WarnOfFindings(Request& request, std::string const& path) {
        Document const& result = request.fEdit.Result();
        auto const* const entry = result.Find(path);
        std::size_t const first = entry->key.Size() == 0 ? entry->value.begin : entry->key.begin;
        for (Finding const& finding : result.Findings()) {
            std::size_t const begin = finding.Bytes()->begin;
            if (first <= begin && begin <= entry->value.end) {
                request.fWarnings.emplace_back(
                    finding.Level(), finding.Id(), path, finding.Message());
            }
        }
    }

    std::vector<std::string> fAssignments;
    bool fAllowsUnknown = false;
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
MakeCommand* const kMakeUnsetCommand = &Make<UnsetCommand>;

} // namespace joboptions
