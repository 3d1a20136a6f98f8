// joboptions check: report problems in files.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Review.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

namespace joboptions {

using pdfsettings::Finding;

namespace {

std::string FindingsText(CheckedFile const& checked, bool color) {
    std::string text;
    for (Finding const& finding : checked.findings) {
        text += FindingText(checked.file, *checked.document, finding, color);
    }
    return text;
}

// Reports the findings of each file: what is lost or read otherwise than it looks, and what the
// schema rejects.
class CheckCommand final : public Command {
public:
    CheckCommand(CLI::App& program, Options& options)
        : Command(program, options, "check", "Report problems in settings files") {
        AddArgument(Parser(), "FILE", fFiles, "The settings files; - is standard input")
            ->required();
        Parser().add_flag(
            "--strict",
            fIsStrict,
            "Also report settings that the schema does not know; count warnings as errors");
        AddApplication(Parser(), options, kNamesOfApplication);
        AddSchema(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions check *.joboptions\n"
                        "  joboptions check --schema company.schema office.joboptions\n"
                        "  joboptions check --strict --json office.joboptions\n"
                        "  joboptions check -q office.joboptions && echo valid");
    }

    // Status::kDone if all files are valid; Status::kNo if one has errors, or warnings with
    // --strict; Status::kBadInput if one cannot be read or parsed. The other files are checked in
    // any case.
    Status Run() const override {
        RequireOneStandardInput(fFiles, fOptions);
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        std::vector<CheckedFile> files;
        Status status = Status::kDone;
        std::string text;
        for (std::string const& file : fFiles) {
            files.push_back(Check(schema, file));
            status = std::max(status, StatusOf(files.back()));
            if (!fOptions.json && !fOptions.quiet) {
                text += FindingsText(files.back(), UseColor(fOptions));
            }
        }
        WriteResult(fOptions, fOptions.json ? CheckDocument(files) : text);
        return status;
    }

private:
    CheckedFile Check(pdfsettings::Schema const& schema, std::string const& file) const {
        CheckedFile checked{file, {}, {}, {}};
        try {
            checked.file = Locate(file, fOptions);
            checked.document.emplace(ReadBytes(checked.file));
            checked.findings = Review(
                *checked.document,
                schema,
                fIsStrict ? pdfsettings::ReviewScope::kStrict : pdfsettings::ReviewScope::kUsual);
            if (checked.document->WhyRefused() != pdfsettings::Refusal::kNone) {
                checked.error = RefusalText(checked);
            }
        } catch (Failure const& failure) {
            checked.error = failure.what();
        } catch (pdfsettings::Error const& error) {
            checked.error = ErrorText(checked.file, error);
        }
        bool const isRead = checked.error.empty() || !checked.findings.empty();
        WriteError(checked.error, isRead || fOptions.quiet);
        return checked;
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
        bool const hasFindings =
            std::ranges::any_of(checked.findings, [this](Finding const& finding) {
                return fIsStrict || finding.Level() == pdfsettings::Severity::kError;
            });
        return hasFindings ? Status::kNo : Status::kDone;
    }

    std::vector<std::string> fFiles;
    bool fIsStrict = false;
};

} // namespace

MakeCommand* const kMakeCheckCommand = &Make<CheckCommand>;

} // namespace joboptions
