// joboptions fmt: rewrite files in the standard layout, or as the component writes them.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Review.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/LineDiff.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

using pdfsettings::Document;
using pdfsettings::DocumentEntry;
using pdfsettings::Error;
using pdfsettings::Fault;
using pdfsettings::Finding;
using pdfsettings::Severity;
using pdfsettings::Span;

namespace {

void AppendComments(std::vector<Finding>& found, Document const& document, Span between) {
    std::string_view const text = std::string_view(document.Text()).substr(0, between.end);
    std::size_t begin = text.find('%', between.begin);
    while (begin != std::string_view::npos) {
        std::size_t const end = std::min(text.find_first_of("\r\n", begin), text.size());
        std::string const message =
            fmt::format("the comment would be dropped: {}", text.substr(begin, end - begin));
        found.emplace_back(
            Severity::kError, "comment", "", message, Span{begin, end}, document.PlaceOf(begin));
        begin = text.find('%', end);
    }
}

// The comments of a document, except those in its tail. Outside values, a percent sign always
// begins one. REQUIRES: the document is not refused.
std::vector<Finding> CommentsOf(Document const& document) {
    std::vector<Finding> found;
    std::size_t begin = 0;
    for (DocumentEntry const& entry : document.Entries()) {
        AppendComments(found, document, {begin, entry.key.begin});
        AppendComments(found, document, {entry.key.end, entry.value.begin});
        bool const hasEntries =
            entry.next > static_cast<std::size_t>(&entry - document.Entries().data()) + 1;
        begin = hasEntries ? entry.value.begin : entry.value.end;
    }
    AppendComments(found, document, {begin, document.Text().size() - document.Tail().size()});
    return found;
}

// What a document loses when the component writes it: comments, what is not read as it looks, and
// digits that a file of the component does not hold. In the order of the text.
std::vector<Finding> LossesOf(Document const& document) {
    std::vector<Finding> losses = CommentsOf(document);
    auto const review = pdfsettings::Review(
        document, pdfsettings::Schema::Standard(), {.ignoredIds = {"value", "rule"}});
    losses.insert(losses.end(), review.begin(), review.end());
    std::ranges::stable_sort(losses, {}, [](Finding const& loss) { return loss.Bytes()->begin; });
    return losses;
}

std::string LossText(std::string const& file, Finding const& loss) {
    return fmt::format(
        "{}:{}:{}: {}{}{}{}",
        InputName(file),
        loss.Where()->line,
        loss.Where()->column,
        VisibleText(loss.Path()),
        loss.Path().empty() ? "" : ": ",
        VisibleText(loss.Message()),
        loss.Id() == "comment" ? "" : " [" + loss.Id() + "]");
}

// Rewrites files in the standard layout, or as the component writes them.
class FmtCommand final : public Command {
public:
    FmtCommand(CLI::App& program, Options& options)
        : Command(program, options, "fmt", "Reformat files in the standard layout") {
        AddArgument(
            Parser(), "FILE", fFiles, "The settings files; - is standard input, to standard output")
            ->required();
        Parser().add_flag(
            "--check", fIsCheck, "Print the files whose layout would change; change nothing");
        Parser().add_flag("--diff", fIsDiff, "Print the lines that would change; change nothing");
        Parser().add_flag("--sort", fIsSorted, "Put settings in the order of their keys");
        Parser().add_flag(
            "--canonical",
            fIsCanonical,
            "Write what the component writes, unless comments or digits of numbers would be lost");
        Parser().add_flag("--lossy", fIsLossy, "With --canonical: drop and change them");
        AddSaving(Parser(), options);
        AddOutput(Parser(), options, "Write the result to this file; do not change FILE");
        AddApplication(Parser(), options, kNamesOfApplication);
        AddDryRun(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "Comments stay, and so does each value as it is written. A file with something "
            "that\nbelongs to no setting is not changed: see check.\n"
            "\n"
            "Examples:\n"
            "  joboptions fmt office.joboptions\n"
            "  joboptions fmt --check *.joboptions\n"
            "  joboptions fmt --sort --diff office.joboptions\n"
            "  joboptions fmt --canonical office.joboptions -o canonical.joboptions");
    }

    // Status::kDone; with --check or --diff Status::kNo if the layout of a file differs;
    // Status::kRefused for a file that cannot be laid out, or with --canonical would lose
    // something. Of several files, the worst status.
    Status Run() const override {
        RequirePossibleCall();
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
    void RequirePossibleCall() const {
        RequireOneStandardInput(fFiles, fOptions);
        if (fFiles.size() > 1 && !fOptions.output.empty()) {
            throw Failure(Status::kWrongCall, "--output takes a single FILE");
        }
        if (fIsDiff && (fIsCheck || fOptions.json)) {
            throw Failure(Status::kWrongCall, "--diff contradicts --check and --json");
        }
        if (fIsCanonical && fIsSorted) {
            throw Failure(Status::kWrongCall, "--canonical and --sort contradict");
        }
        if (fIsLossy && !fIsCanonical) {
            throw Failure(Status::kWrongCall, "--lossy needs --canonical");
        }
    }

    bool IsQuestion() const { return fIsCheck || fIsDiff; }

    // Records a failure, so that the other files are still processed.
    Status FormatOrReport(FormattedFile& formatted) const {
        try {
            formatted.file = IsQuestion() ? Locate(formatted.file, fOptions)
                                          : LocateForChange(formatted.file, fOptions);
            return Format(formatted);
        } catch (Failure const& failure) {
            formatted.error = failure.what();
            WriteErrors(failure.what(), fOptions.quiet);
            return failure.ExitStatus();
        }
    }

    Status Format(FormattedFile& formatted) const {
        std::string const& file = formatted.file;
        if (IsQuestion()) {
            std::string const text = ReadBytes(file);
            std::string const laidOut = LaidOut(file, text);
            formatted.differs = text != laidOut;
            return formatted.differs ? Answer(file, text, laidOut) : Status::kDone;
        }
        return ChangeFile(file, fOptions, [&](std::string const& text, SaveText const& save) {
            std::string const laidOut = LaidOut(file, text);
            formatted.differs = text != laidOut;
            if (formatted.differs) {
                RequireNoLoss(file, text);
            }
            if (fOptions.dryRun) {
                RequireReplaceable(file, fOptions);
                Announce(file, formatted.differs);
            } else if (formatted.differs || !fOptions.output.empty() || file == "-") {
                RequireRoom(file, fOptions);
                save(laidOut);
            }
            return Status::kDone;
        });
    }

    // The text in the layout that was asked for. Throws Failure: Status::kBadInput if it is
    // refused, Status::kRefused if it has no such layout.
    std::string LaidOut(std::string const& file, std::string const& text) const {
        try {
            return fIsCanonical ? pdfsettings::Settings::Parse(text).CanonicalText()
                                : Document(text).Formatted({.isSorted = fIsSorted}).Text();
        } catch (Error const& error) {
            bool const isRead = error.Code() != Fault::kSyntax;
            throw Failure(isRead ? Status::kRefused : Status::kBadInput, ErrorText(file, error));
        }
    }

    // Throws Failure with Status::kRefused and all that the component would not write.
    void RequireNoLoss(std::string const& file, std::string const& text) const {
        if (!fIsCanonical || fIsLossy) {
            return;
        }
        std::vector<std::string> messages;
        for (Finding const& loss : LossesOf(Document(text))) {
            messages.push_back(LossText(file, loss));
        }
        if (!messages.empty()) {
            messages.push_back(InputName(file) + ": not written; --lossy drops and changes this");
        }
        FailIfAny(Status::kRefused, messages);
    }

    Status
    Answer(std::string const& file, std::string const& text, std::string const& laidOut) const {
        if (fIsCheck) {
            Announce(file, /*differs=*/true);
        } else if (!fOptions.quiet) {
            WriteOutput(LineDiff(InputName(file), text, laidOut, UseColor(fOptions.color)));
        }
        return Status::kNo;
    }

    void Announce(std::string const& file, bool differs) const {
        if (differs && !fOptions.quiet && !fOptions.json) {
            WriteOutput(InputName(file) + "\n");
        }
    }

    std::vector<std::string> fFiles;
    bool fIsCheck = false;
    bool fIsDiff = false;
    bool fIsSorted = false;
    bool fIsCanonical = false;
    bool fIsLossy = false;
};

} // namespace

MakeCommand* const kMakeFmtCommand = &Make<FmtCommand>;

} // namespace joboptions
