// joboptions check: judges files by a schema.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/KnownKeys.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace joboptions {

namespace {

std::string JudgementText(Judgement const& judgement, bool color) {
    std::string text;
    for (PlacedFinding const& finding : judgement.findings) {
        text += PlacedFindingText(judgement.file, *judgement.document, finding, color);
    }
    return text;
}

void Append(std::vector<PlacedFinding>& all, std::vector<PlacedFinding> more) {
    all.insert(
        all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

// Says of each file what of it is lost or taken otherwise than it looks, and what the schema does
// not allow.
class CheckCommand final : public Command {
public:
    CheckCommand(CLI::App& program, Options& options)
        : Command(program, options, "check", "Say what of the settings is not allowed") {
        AddArgument(Parser(), "FILE", fFiles, "The settings files; - is standard input")
            ->required();
        Parser().add_flag(
            "--strict",
            fIsStrict,
            "Name settings that the schema does not know; warnings count as faults");
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

    // Status::kDone when all files are valid, Status::kNo when one has faults (warnings count if
    // strict), Status::kBadInput when one cannot be read or parsed; the others are judged all the
    // same.
    Status Run() const override {
        RequireOneStandardInput(fFiles, fOptions);
        pdfsettings::Component const component;
        pdfsettings::Schema const schema = ReadSchema(component, fOptions);
        std::vector<Judgement> judgements;
        Status status = Status::kDone;
        std::string text;
        for (std::string const& file : fFiles) {
            judgements.push_back(Judge(component, schema, file));
            status = std::max(status, StatusOf(judgements.back()));
            if (!fOptions.json && !fOptions.quiet) {
                text += JudgementText(judgements.back(), UseColor(fOptions));
            }
        }
        WriteResult(fOptions, fOptions.json ? CheckDocument(judgements) : text);
        return status;
    }

private:
    Judgement Judge(
        pdfsettings::Component const& component,
        pdfsettings::Schema const& schema,
        std::string const& file) const {
        Judgement judgement{file, {}, {}, {}};
        try {
            judgement.file = Locate(component, file, fOptions);
            JudgeText(component, schema, ReadBytes(judgement.file), judgement);
        } catch (Failure const& failure) {
            judgement.error = failure.what();
            WriteError(failure.what(), fOptions.quiet);
        }
        return judgement;
    }

    void JudgeText(
        pdfsettings::Component const& component,
        pdfsettings::Schema const& schema,
        std::string text,
        Judgement& judgement) const {
        judgement.document.emplace(std::move(text));
        pdfsettings::Document const& document = *judgement.document;
        judgement.findings = TextFindings(document);
        if (document.WhyRefused() != pdfsettings::Refusal::kNone) {
            judgement.error = RefusalText(judgement.file, document);
            return;
        }
        auto const settings =
            ParseSettings(component, judgement.file, document.Text(), schema.Text());
        auto const& rules = schema.Settings();
        auto& all = judgement.findings;
        Append(all, SchemaFindings(document, settings.Validate(), rules));
        Append(all, WritingFindings(component, document, settings));
        if (fIsStrict) {
            Append(all, UnknownKeys(document, rules));
        }
        std::ranges::stable_sort(
            all, {}, [](PlacedFinding const& finding) { return finding.span.begin; });
    }

    Status StatusOf(Judgement const& judgement) const {
        if (!judgement.error.empty()) {
            return Status::kBadInput;
        }
        bool const isFaulty = std::ranges::any_of(judgement.findings, [this](auto const& finding) {
            return fIsStrict || finding.severity == pdfsettings::Severity::kError;
        });
        return isFaulty ? Status::kNo : Status::kDone;
    }

    std::vector<std::string> fFiles;
    bool fIsStrict = false;
};

} // namespace

MakeCommand* const kMakeCheckCommand = &Make<CheckCommand>;

} // namespace joboptions
