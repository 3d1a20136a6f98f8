// joboptions fmt: writes files in the component's own layout.
#include "tools/joboptions/commands/Command.h"

#include "format/Tokens.h"
#include "pdfsettings/Document.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

namespace {

// Where the settings end and what is kept whole begins.
std::size_t EndOfSettings(pdfsettings::Document const& document) {
    auto const body = document.Body();
    return document.Text().find(format::kKeyword, body ? body->end : 0);
}

bool HasPercent(std::string_view text, std::size_t begin, std::size_t end) {
    return text.substr(begin, end - begin).find('%') != std::string_view::npos;
}

// Whether a document that is read has a comment that its settings do not keep: before, between or
// within the values. What follows the settings is kept whole.
// A percent sign is a comment's anywhere but within a string.
bool HasComments(pdfsettings::Document const& document) {
    std::string_view const text =
        std::string_view(document.Text()).substr(0, EndOfSettings(document));
    std::size_t begin = 0;
    for (auto const& entry : document.Entries()) {
        if (text[entry.value.begin] != '(') {
            continue;
        }
        if (HasPercent(text, begin, entry.value.begin)) {
            return true;
        }
        begin = entry.value.end;
    }
    return HasPercent(text, begin, text.size());
}

// Rewrites files as the component writes settings.
class FmtCommand final : public Command {
public:
    FmtCommand(CLI::App& program, Options& options)
        : Command(program, options, "fmt", "Reformat files in the standard layout") {
        AddArgument(
            Parser(), "FILE", fFiles, "The settings files; - is standard input, to standard output")
            ->required();
        Parser().add_flag(
            "--check", fIsCheck, "Name the files that are laid out otherwise, change none");
        Parser().add_flag("--force", options.force, "Drop comments");
        AddSaving(Parser(), options);
        AddOutput(Parser(), options, "Write there, and leave the one FILE as it is");
        AddApplication(Parser(), options, kNamesOfApplication);
        AddDryRun(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions fmt --check *.joboptions\n"
                        "  joboptions fmt office.joboptions -o tidy.joboptions\n"
                        "  joboptions fmt --force office.joboptions");
    }

    // Status::kDone; with --check Status::kNo when a file is laid out otherwise; Status::kRefused
    // for a file with comments, which would be lost. The worst status of all files.
    Status Run() const override {
        if (fFiles.size() > 1 && !fOptions.output.empty()) {
            throw Failure(Status::kWrongCall, "--output takes a single FILE");
        }
        RequireOneStandardInput(fFiles, fOptions);
        std::vector<FormattedFile> files;
        Status status = Status::kDone;
        for (std::string const& file : fFiles) {
            files.push_back({file, {}, false});
            status = std::max(status, FormatOrReport(files.back()));
        }
        if (fOptions.json) {
            WriteOutput(LayoutDocument(files));
        }
        return status;
    }

private:
    // One file that fails does not keep the others from being laid out.
    Status FormatOrReport(FormattedFile& formatted) const {
        try {
            formatted.file = fIsCheck ? Locate(formatted.file, fOptions)
                                      : LocateForChange(formatted.file, fOptions);
            return Format(formatted);
        } catch (Failure const& failure) {
            formatted.error = failure.what();
            WriteError(failure.what(), fOptions.quiet);
            return failure.ExitStatus();
        }
    }

    Status Format(FormattedFile& formatted) const {
        std::string const& file = formatted.file;
        auto const format = [&](std::string const& text, SaveText const& save) {
            std::string const laidOut = LaidOut(file, text);
            formatted.differs = text != laidOut;
            if (fIsCheck) {
                return formatted.differs ? Announce(file) : Status::kDone;
            }
            if (!fOptions.force && HasComments(pdfsettings::Document(text))) {
                Fail(Status::kRefused, file, "its comments would be lost; use --force");
            }
            if (fOptions.dryRun) {
                RequireReplaceable(file, fOptions);
                return formatted.differs ? Announce(file) : Status::kDone;
            }
            if (formatted.differs || !fOptions.output.empty() || file == "-") {
                RequireRoom(file, fOptions);
                save(laidOut);
            }
            return Status::kDone;
        };
        return fIsCheck ? format(ReadBytes(file), nullptr) : ChangeFile(file, fOptions, format);
    }

    // Throws Failure with Status::kRefused when that would lose more than the digits of numbers.
    static std::string LaidOut(std::string const& file, std::string const& text) {
        auto const settings = ParseSettings(file, text, pdfsettings::Schema::Standard());
        try {
            return settings.CanonicalText();
        } catch (pdfsettings::Error const& error) {
            throw Failure(Status::kRefused, ErrorText(file, error));
        }
    }

    Status Announce(std::string const& file) const {
        if (!fOptions.quiet && !fOptions.json) {
            WriteOutput(InputName(file) + "\n");
        }
        return fIsCheck ? Status::kNo : Status::kDone;
    }

    std::vector<std::string> fFiles;
    bool fIsCheck = false;
};

} // namespace

MakeCommand* const kMakeFmtCommand = &Make<FmtCommand>;

} // namespace joboptions
