#include "tools/joboptions/CheckCommand.h"

#include "tools/joboptions/Findings.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/JsonDocuments.h"
#include "tools/joboptions/Locate.h"
#include "tools/joboptions/SchemaOption.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

namespace {

std::string JudgementText(Judgement const& judgement) {
    std::string text;
    for (pdfsettings::Finding const& finding : judgement.findings) {
        text += FindingText(judgement.file, finding) + "\n";
    }
    return text;
}

Status StatusOf(Judgement const& judgement) {
    if (!judgement.error.empty()) {
        return Status::kBadInput;
    }
    return judgement.findings.empty() ? Status::kDone : Status::kNo;
}

} // namespace

CheckCommand::CheckCommand(CLI::App& program, Options& options)
    : Command(program, "check", "Say what of the settings is not allowed"),
      fOptions(options) {
    Parser()
        .add_option("FILE", fFiles, "The settings files; - is standard input")
        ->required()
        ->type_name("");
    AddApplication(Parser(), options, kNamesOfApplication);
    AddSchema(Parser(), options);
    AddJson(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions check *.joboptions\n"
                    "  joboptions check --schema company.schema office.joboptions\n"
                    "  joboptions check -q office.joboptions && echo valid");
}

Status CheckCommand::Run() const {
    pdfsettings::Component const component;
    pdfsettings::Schema const schema = ReadSchema(component, fOptions);
    std::vector<Judgement> judgements;
    Status status = Status::kDone;
    for (std::string const& file : fFiles) {
        judgements.push_back(Judge(component, schema, file));
        status = std::max(status, StatusOf(judgements.back()));
        if (!fOptions.json && !fOptions.quiet) {
            WriteOutput(JudgementText(judgements.back()));
        }
    }
    if (fOptions.json) {
        WriteOutput(CheckDocument(judgements));
    }
    return status;
}

Judgement CheckCommand::Judge(
    pdfsettings::Component const& component,
    pdfsettings::Schema const& schema,
    std::string const& file) const {
    Judgement judgement{file, {}, {}};
    try {
        judgement.file = Locate(component, file, fOptions);
        judgement.findings = OpenSettings(component, judgement.file, schema.Text()).Validate();
    } catch (Failure const& failure) {
        judgement.error = failure.what();
        if (!fOptions.quiet) {
            WriteError(failure.what());
        }
    }
    return judgement;
}

} // namespace joboptions
