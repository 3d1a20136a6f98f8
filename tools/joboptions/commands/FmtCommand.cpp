// joboptions fmt: rewrite files in the component's layout.
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

// The end of the settings; everything from here on is kept.
std::size_t EndOfSettings(pdfsettings::Document const& document) {
    auto const body = document.Body();
    return document.Text().find(format::kKeyword, body ? body->end : 0);
}

bool HasPercent(std::string_view text, std::size_t begin, std::size_t end) {
    return text.substr(begin, end - begin).find('%') != std::string_view::npos;
}

// Whether a document has a comment that reformatting would lose: before the settings, between or
// inside values. The tail is kept. Outside strings, a percent sign always begins a comment.
// REQUIRES: the document is not refused.
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

// Rewrites files in the layout in which the component writes settings.
class FmtCommand final : public Command {
public:
    FmtCommand(CLI::App& program, Options& options)
        : Command(program, options, "fmt", "Reformat files in the standard layout") {
        AddArgument(
            Parser(), "FILE", fFiles, "The settings files; - is standard input, to standard output")
            ->required();
        Parser().add_flag(
            "--check",
            fIsCheck,
            "Print the files that are not in the standard layout; change nothing");
        Parser().add_flag("--force", options.force, "Drop comments");
        AddSaving(Parser(), options);
        AddOutput(Parser(), options, "Write the result to this file; do not change FILE");
        AddApplication(Parser(), options, kNamesOfApplication);
        AddDryRun(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions fmt --check *.joboptions\n"
                        "  joboptions fmt office.joboptions -o tidy.joboptions\n"
                        "  joboptions fmt --force office.joboptions");
    }

    // Status::kDone; with --check Status::kNo if the layout of a file differs; Status::kRefused for
    // a file with comments, which would be lost. Of several files, the worst status.
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
    // Records a failure, so that the other files are still processed.
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
                Fail(Status::kRefused, file, "its comments would be lost; --force drops them");
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

    // The text in the standard layout. Throws Failure with Status::kRefused if more than digits of
    // numbers would be lost.
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
