// joboptions check: report problems in files, and repair some.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Repair.h"
#include "pdfsettings/Review.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/commands/Paths.h"
#include "tools/joboptions/commands/Terminal.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/json/SarifDocument.h"
#include "tools/joboptions/text/FindingIds.h"
#include "tools/joboptions/text/Findings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <system_error>
#include <vector>

namespace joboptions {

using pdfsettings::Finding;

namespace {

// "1 warning", "2 warnings".
std::string Counted(std::size_t count, char const* thing) {
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

bool HasError(CheckedFile const& checked) {
    return !checked.error.empty() ||
           std::ranges::any_of(checked.findings, [](Finding const& finding) {
               return finding.Level() == pdfsettings::Severity::kError;
           });
}

// The last line: "500 files, 3 with errors, 12 warnings, 2 repaired".
std::string CountsText(std::vector<CheckedFile> const& files, bool isRepaired) {
    std::size_t warnings = 0;
    std::size_t repaired = 0;
    for (CheckedFile const& checked : files) {
        repaired += checked.repairs.empty() ? 0U : 1U;
        warnings += static_cast<std::size_t>(
            std::ranges::count(checked.findings, pdfsettings::Severity::kWarning, &Finding::Level));
    }
    return fmt::format(
        "{}, {} with errors, {}{}\n",
        Counted(files.size(), "file"),
        std::ranges::count_if(files, &HasError),
        Counted(warnings, "warning"),
        repaired == 0 ? "" : fmt::format(", {}{} repaired", repaired, isRepaired ? "" : " can be"));
}

std::string CheckId(std::string const& id) {
    auto const& known = FindingIds();
    bool const isKnown = std::ranges::find(known, id, &FindingId::id) != known.end();
    return isKnown ? "" : "no finding has the id " + id;
}

// Reports the findings of each file: what is lost or read otherwise than it looks, and what the
// schema rejects. Repairs on request what has only one meaning.
class CheckCommand final : public Command {
public:
    CheckCommand(CLI::App& program, Options& options)
        : Command(program, options, "check", "Report problems in settings files, and repair some") {
        AddArgument(
            Parser(),
            "PATH",
            fPaths,
            "Settings files, or folders, which are searched with all folders in them; - is "
            "standard "
            "input")
            ->required();
        AddChoices();
        AddRepair(options);
        AddSaving(Parser(), options);
        AddApplication(Parser(), options, kNamesOfApplication);
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("With several files, the last line counts them.\n"
                        "\n"
                        "Examples:\n"
                        "  joboptions check *.joboptions\n"
                        "  joboptions check --strict --known 'Site*' --ignore rounded presets/\n"
                        "  joboptions check --fix office.joboptions\n"
                        "  joboptions check --schema company.schema office.joboptions\n"
                        "  joboptions check --format sarif presets/ -o presets.sarif\n"
                        "  joboptions check -q office.joboptions && echo valid");
    }

    // Status::kDone if all files are valid; Status::kNo if one has errors, or warnings with
    // --strict, or would be repaired; Status::kBadInput if one cannot be read or parsed;
    // Status::kRefused if one may not be repaired. The other files are checked in any case.
    Status Run() const override {
        RequireCall();
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        std::vector<CheckedFile> files = FindAll();
        Status status = Status::kDone;
        Progress progress(files.size(), fOptions.quiet);
        for (std::size_t done = 0; done < files.size(); ++done) {
            status = std::max(status, Check(schema, files[done], progress));
            progress.Show(done + 1);
        }
        progress.Clear();
        WriteFindings(files);
        return status;
    }

private:
    void AddChoices() {
        Parser().add_flag(
            "--strict",
            fReview.isStrict,
            "Also report settings that the schema does not know; count warnings as errors");
        Parser()
            .add_option(
                "--known",
                fReview.knownKeys,
                "With --strict, accept this key or path, or those that match a pattern such as "
                "'Site*'; may be given several times")
            ->type_name("KEY")
            ->allow_extra_args(false);
        Parser()
            .add_option(
                "--ignore",
                fReview.ignoredIds,
                "Leave out findings with this id; may be given several times")
            ->type_name("ID")
            ->allow_extra_args(false)
            ->check(CLI::Validator(&CheckId, ""));
        Parser()
            .add_option("--format", fFormat, "How to report: text, json, or sarif for code hosts")
            ->type_name("FORMAT")
            ->check(CLI::IsMember({"text", "json", "sarif"}));
    }

    void AddRepair(Options& options) {
        Parser().add_flag(
            "--fix",
            fIsRepair,
            "Repair what has only one meaning, such as TRUE, 1,5 or a missing slash, and save");
        AddDryRun(Parser(), options);
    }

    void RequireCall() const {
        RequireOneStandardInput(fPaths, fOptions);
        if (fOptions.json && !fFormat.empty() && fFormat != "json") {
            throw Failure(Status::kWrongCall, "--json and --format " + fFormat + " contradict");
        }
        if (fIsRepair && std::ranges::find(fPaths, "-") != fPaths.end()) {
            throw Failure(Status::kWrongCall, "--fix repairs files, not standard input");
        }
    }

    bool IsJson() const { return fOptions.json || fFormat == "json"; }

    // The files to check, and what could not be searched, with its error.
    std::vector<CheckedFile> FindAll() const {
        std::vector<CheckedFile> files;
        for (std::string const& argument : fPaths) {
            FoundFiles const found = LocateAll(argument);
            for (std::string const& error : found.errors) {
                WriteError(error, fOptions.quiet);
                files.push_back({argument, error, {}, {}, {}});
            }
            for (std::string const& file : found.files) {
                RequireOtherOutput(file);
                files.push_back({file, {}, {}, {}, {}});
            }
        }
        return files;
    }

    // The report would replace what was checked.
    void RequireOtherOutput(std::string const& file) const {
        std::error_code error;
        if (std::filesystem::equivalent(file, fOptions.output, error)) {
            Fail(Status::kWrongCall, fOptions.output, "is one of the files to check");
        }
    }

    FoundFiles LocateAll(std::string const& argument) const {
        try {
            return FindFiles(Locate(argument, fOptions));
        } catch (Failure const& failure) {
            return {{}, {failure.what()}};
        }
    }

    Status
    Check(pdfsettings::Schema const& schema, CheckedFile& checked, Progress& progress) const {
        if (!checked.error.empty()) {
            return Status::kBadInput;
        }
        Status failed = Status::kDone;
        try {
            fIsRepair ? Repair(schema, checked)
                      : Review(schema, checked, pdfsettings::Document(ReadBytes(checked.file)));
        } catch (Failure const& failure) {
            checked.error = failure.what();
            failed = failure.ExitStatus();
        } catch (pdfsettings::Error const& error) {
            checked.error = ErrorText(checked.file, error);
            failed = Status::kBadInput;
        }
        if (failed != Status::kDone) {
            progress.Clear();
            WriteError(checked.error, fOptions.quiet);
        }
        return std::max(failed, StatusOf(checked));
    }

    void Review(
        pdfsettings::Schema const& schema,
        CheckedFile& checked,
        pdfsettings::Document const& document) const {
        checked.document = document;
        checked.findings = pdfsettings::Review(document, schema, fReview);
        checked.error = RefusalText(checked);
    }

    // Repairs a file, and finds what remains.
    void Repair(pdfsettings::Schema const& schema, CheckedFile& checked) const {
        // The output is that of the findings.
        Options options = fOptions;
        options.output.clear();
        ChangeFile(checked.file, options, [&](std::string const& text, SaveText const& save) {
            pdfsettings::Document const document(text);
            Review(schema, checked, document);
            auto const [repaired, repairs] = pdfsettings::Repair(document, schema);
            if (!repairs.empty()) {
                fOptions.dryRun ? RequireReplaceable(checked.file, options) : save(repaired.Text());
                checked.repairs = repairs;
                Review(schema, checked, repaired);
            }
            return Status::kDone;
        });
    }

    // Why the document is refused; empty if it is not.
    static std::string RefusalText(CheckedFile const& checked) {
        try {
            checked.document->RequireRead();
            return {};
        } catch (pdfsettings::Error const& error) {
            return ErrorText(checked.file, error);
        }
    }

    Status StatusOf(CheckedFile const& checked) const {
        if (!checked.error.empty()) {
            return Status::kBadInput;
        }
        bool const wouldChange = fOptions.dryRun && !checked.repairs.empty();
        bool const isBad = HasError(checked) || (fReview.isStrict && !checked.findings.empty());
        return isBad || wouldChange ? Status::kNo : Status::kDone;
    }

    void WriteFindings(std::vector<CheckedFile> const& files) const {
        // A dry run changes no settings; its report is written.
        Options options = fOptions;
        options.dryRun = false;
        if (IsJson()) {
            WriteResult(options, CheckDocument(files));
        } else if (fFormat == "sarif") {
            WriteResult(options, SarifDocument(files));
        } else {
            WriteResult(options, fOptions.quiet ? "" : FindingsText(files));
        }
    }

    std::string FindingsText(std::vector<CheckedFile> const& files) const {
        bool const color = UseColor(fOptions);
        std::string text;
        for (CheckedFile const& checked : files) {
            for (Finding const& repair : checked.repairs) {
                text += RepairText(checked.file, repair, !fOptions.dryRun, color);
            }
            for (Finding const& finding : checked.findings) {
                text += FindingText(checked.file, *checked.document, finding, color);
            }
        }
        bool const isSingle = files.size() == 1 && fPaths.size() == 1 && files[0].file == fPaths[0];
        return text + (isSingle ? "" : CountsText(files, !fOptions.dryRun));
    }

    std::vector<std::string> fPaths;
    pdfsettings::ReviewOptions fReview;
    std::string fFormat;
    bool fIsRepair = false;
};

} // namespace

MakeCommand* const kMakeCheckCommand = &Make<CheckCommand>;

} // namespace joboptions
