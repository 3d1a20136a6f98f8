// joboptions merge: merge what two people changed in a file.
#include "tools/joboptions/commands/Command.h"

#include "pdfsettings/Merge.h"
#include "pdfsettings/Settings.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/commands/ListCommands.h"
#include "tools/joboptions/json/JsonDocuments.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace joboptions {

using pdfsettings::Document;
using pdfsettings::Finding;
using pdfsettings::MergedDocument;
using pdfsettings::Value;

namespace {

std::string ValueOrNone(std::string const& path, std::optional<Value> const& value) {
    return value ? OneLine(path, *value) : "none";
}

std::vector<Finding> Validated(Document const& document, pdfsettings::Schema const& schema) {
    auto const found = pdfsettings::Settings::Parse(document.Text(), schema).Validate();
    return {found.begin(), found.end()};
}

bool IsAmong(std::vector<Finding> const& known, Finding const& finding) {
    return std::ranges::any_of(known, [&](Finding const& other) {
        return other.Path() == finding.Path() && other.Message() == finding.Message();
    });
}

// Merges by key, as a merge driver of version control does.
class MergeCommand final : public Command {
public:
    MergeCommand(CLI::App& program, Options& options)
        : Command(
              program, options, "merge", "Merge what two people changed in a file, key by key") {
        AddArgument(Parser(), "BASE", fBase, "The file that both began with")->required();
        AddArgument(Parser(), "OURS", fOurs, "Our file, which gets their changes too")->required();
        AddArgument(Parser(), "THEIRS", fTheirs, "Their file")->required();
        Parser()
            .add_option("--name", fName, "How messages call the file, instead of OURS")
            ->type_name("NAME");
        AddSaving(Parser(), options);
        AddOutput(Parser(), options, "Write the result to this file; do not change OURS");
        AddSchema(Parser(), options);
        AddApplication(Parser(), options, kNamesOfApplication);
        AddDryRun(Parser(), options);
        AddJson(Parser(), options);
        AddOptions(Parser(), options);
        Parser().footer(
            "Where both changed a setting, the result has our value, and comments with "
            "both values above it.\n"
            "\n"
            "Examples:\n"
            "  joboptions merge base.joboptions ours.joboptions theirs.joboptions\n"
            "  joboptions merge -n base.joboptions ours.joboptions theirs.joboptions\n"
            "  git config merge.joboptions.driver 'joboptions merge --name %P %O %A %B'");
    }

    // Status::kDone, or Status::kNo if there are conflicts, or the schema rejects together what it
    // accepts of each side; the result is written in any case.
    Status Run() const override {
        RequireOneStandardInput({fBase, fOurs, fTheirs}, fOptions);
        pdfsettings::Schema const schema = ReadSchema(fOptions);
        Document const base = ReadSide(fBase, "the file before");
        Document const theirs = ReadSide(fTheirs, "theirs");
        std::string const file = LocateForChange(fOurs, fOptions);
        return ChangeFile(file, fOptions, [&](std::string const& text, SaveText const& save) {
            Document const ours = Readable(Document(text), fName.empty() ? file : NameOf("ours"));
            MergedDocument const merged = Merge(base, ours, theirs);
            auto const findings = NewFindings(merged, {ours, theirs}, schema);
            Report(file, merged, findings);
            if (fOptions.dryRun) {
                RequireReplaceable(file, fOptions);
            } else if (merged.document.Text() != text || !fOptions.output.empty() || file == "-") {
                RequireRoom(file, fOptions);
                save(merged.document.Text());
            }
            return merged.conflicts.empty() && findings.empty() ? Status::kDone : Status::kNo;
        });
    }

private:
    // With --name, the name of a file that belongs to one side.
    std::string NameOf(char const* side) const { return fmt::format("{} ({})", fName, side); }

    Document ReadSide(std::string const& argument, char const* side) const {
        std::string const file = Locate(argument, fOptions);
        return Readable(Document(ReadBytes(file)), fName.empty() ? file : NameOf(side));
    }

    static Document Readable(Document const& document, std::string const& name) {
        try {
            document.RequireRead();
            return document;
        } catch (pdfsettings::Error const& error) {
            throw Failure(Status::kBadInput, ErrorText(name, error));
        }
    }

    // What the schema rejects in the result and in none of the sides.
    static std::vector<Finding> NewFindings(
        MergedDocument const& merged,
        std::vector<Document> const& sides,
        pdfsettings::Schema const& schema) {
        std::vector<Finding> findings = Validated(merged.document, schema);
        for (Document const& side : sides) {
            std::vector<Finding> const known = Validated(side, schema);
            std::erase_if(
                findings, [&](Finding const& finding) { return IsAmong(known, finding); });
        }
        return findings;
    }

    void Report(
        std::string const& file,
        MergedDocument const& merged,
        std::vector<Finding> const& findings) const {
        std::string const name = fName.empty() ? InputName(file) : VisibleText(fName);
        for (auto const& [path, base, ours, theirs, isMarked] : merged.conflicts) {
            WriteError(
                fmt::format(
                    "{}: {}: conflict: ours {}, theirs {}, before {}{}",
                    name,
                    VisibleText(path),
                    ValueOrNone(path, ours),
                    ValueOrNone(path, theirs),
                    ValueOrNone(path, base),
                    isMarked ? "" : "; the file has no comment on it"),
                fOptions.quiet);
        }
        for (Finding const& finding : findings) {
            WriteError(
                fmt::format(
                    "{}: {}: {}",
                    name,
                    VisibleText(finding.Path()),
                    VisibleText(finding.Message())),
                fOptions.quiet);
        }
        if (fOptions.json) {
            WriteOutput(MergeDocument(merged, findings, fOurs));
        }
    }

    std::string fBase;
    std::string fOurs;
    std::string fTheirs;
    std::string fName;
};

} // namespace

MakeCommand* const kMakeMergeCommand = &Make<MergeCommand>;

} // namespace joboptions
