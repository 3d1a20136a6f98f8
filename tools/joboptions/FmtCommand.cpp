#include "tools/joboptions/FmtCommand.h"

#include "tools/joboptions/Comments.h"
#include "tools/joboptions/Input.h"
#include "tools/joboptions/Layout.h"
#include "tools/joboptions/Replace.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace joboptions {

FmtCommand::FmtCommand(CLI::App& program, Options& options)
    : Command(program, "fmt", "Lay files out as the component writes them"),
      fOptions(options) {
    Parser()
        .add_option("FILE", fFiles, "The settings files; - is standard input, to standard output")
        ->required()
        ->type_name("");
    Parser().add_flag(
        "--check", fIsCheck, "Name the files that are laid out otherwise, change none");
    AddForce(
        Parser(), options, "Drop comments, and save though somebody else changed FILE meanwhile");
    AddOutput(Parser(), options, "Write there, and leave the one FILE as it is");
    AddDryRun(Parser(), options);
    AddOptions(Parser(), options);
    Parser().footer("Examples:\n"
                    "  joboptions fmt --check *.joboptions\n"
                    "  joboptions fmt office.joboptions -o tidy.joboptions\n"
                    "  joboptions fmt --force office.joboptions");
}

Status FmtCommand::Run() const {
    if (fFiles.size() > 1 && !fOptions.output.empty()) {
        throw Failure(Status::kWrongCall, "--output takes a single FILE");
    }
    pdfsettings::Component const component;
    Status status = Status::kDone;
    for (std::string const& file : fFiles) {
        status = std::max(status, FormatOrReport(component, file));
    }
    return status;
}

// One file that fails does not keep the others from being laid out.
Status
FmtCommand::FormatOrReport(pdfsettings::Component const& component, std::string const& file) const {
    try {
        return Format(component, file);
    } catch (Failure const& failure) {
        if (!fOptions.quiet) {
            WriteError(failure.what());
        }
        return failure.ExitStatus();
    }
}

Status FmtCommand::Format(pdfsettings::Component const& component, std::string const& file) const {
    auto const [settings, text] = OpenWithText(component, file);
    std::string const laidOut = LayOut(component, settings, file);
    bool const isSame = text == laidOut;
    if (fIsCheck || fOptions.dryRun) {
        return isSame ? Status::kDone : Announce(file);
    }
    if (HasComments(text) && !fOptions.force) {
        throw Failure(
            Status::kRefused,
            fmt::format("{}: its comments would be lost; use --force", InputName(file)));
    }
    if (!isSame || !fOptions.output.empty() || file == "-") {
        Replace(file, settings, laidOut, fOptions);
    }
    return Status::kDone;
}

Status FmtCommand::Announce(std::string const& file) const {
    if (!fOptions.quiet) {
        WriteOutput(InputName(file) + "\n");
    }
    return fIsCheck ? Status::kNo : Status::kDone;
}

} // namespace joboptions
