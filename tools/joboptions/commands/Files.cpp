#include "tools/joboptions/commands/Files.h"

#include "pdfsettings/Document.h"
#include "pdfsettings/Error.h"
#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

void RequireOneStandardInput(std::vector<std::string> files, Options const& options) {
    files.push_back(options.schema);
    if (std::ranges::count(files, "-") > 1) {
        throw Failure(Status::kWrongCall, "standard input can be named only once");
    }
}

std::string ReadBytes(std::string const& file) {
    try {
        return pdfsettings::ReadFile(file == "-" ? "/dev/stdin" : file);
    } catch (pdfsettings::Error const& error) {
        Fail(Status::kBadInput, file, VisibleText(error.what()));
    }
}

pdfsettings::Settings ParseSettings(
    pdfsettings::Component const& component,
    std::string const& file,
    std::string const& text,
    std::string const& schema) {
    try {
        return pdfsettings::Settings::FromText(component, text, schema);
    } catch (pdfsettings::Error const& error) {
        // What is wrong with text at its place, else the component's own words.
        std::string const refusal = RefusalText(file, pdfsettings::Document(text));
        if (!refusal.empty()) {
            throw Failure(Status::kBadInput, refusal);
        }
        Fail(Status::kBadInput, file, VisibleText(error.what()));
    }
}

pdfsettings::Dictionary ReadSettings(std::string const& file) {
    pdfsettings::Component const component;
    return ParseSettings(component, file, ReadBytes(file)).Values();
}

namespace {

std::string ReadText(std::string const& file) {
    try {
        return ReadBytes(file);
    } catch (Failure const& failure) {
        throw Failure(Status::kBadSchema, failure.what());
    }
}

} // namespace

pdfsettings::Schema ReadSchema(pdfsettings::Component const& component, Options const& options) {
    bool const isStandard = options.schema.empty();
    std::string const name = isStandard ? "standard schema" : InputName(options.schema);
    std::string text =
        isStandard ? std::string(pdfsettings::Schema::StandardText()) : ReadText(options.schema);
    try {
        return pdfsettings::Schema::FromText(component, std::move(text));
    } catch (pdfsettings::SchemaError const& error) {
        std::vector<std::string> faults;
        for (auto const& [line, column, message] : error.Faults()) {
            faults.push_back(fmt::format("{}:{}:{}: {}", name, line, column, VisibleText(message)));
        }
        throw Failure(Status::kBadSchema, fmt::format("{}", fmt::join(faults, "\n")));
    } catch (pdfsettings::Error const& error) {
        throw Failure(Status::kBadSchema, fmt::format("{}: {}", name, VisibleText(error.what())));
    }
}

namespace {

bool IsFile(std::string const& output) {
    return !output.empty() && output != "-";
}

pdfsettings::SaveOptions SaveOptionsOf(Options const& options) {
    // Also where it is no number.
    double const seconds = options.wait > 0 ? options.wait : 0;
    return {
        std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(seconds)),
        options.overwriteChanged};
}

// What work throws as a failure of the command to write file.
template <class Work>
void AsWriting(std::string const& file, Work work) {
    try {
        work();
    } catch (pdfsettings::RefusedError const& error) {
        Fail(Status::kRefused, file, VisibleText(error.what()));
    } catch (pdfsettings::Error const& error) {
        Fail(Status::kNotWritten, file, VisibleText(error.what()));
    }
}

// Runs save, which saves file. Writes its warnings.
void WriteBy(
    std::string const& file,
    Options const& options,
    std::function<pdfsettings::SaveWarnings()> const& save) {
    pdfsettings::SaveWarnings warnings;
    AsWriting(file, [&] { warnings = save(); });
    for (std::string const& warning : warnings) {
        WriteWarning(fmt::format("{}: {}", VisibleText(file), VisibleText(warning)), options.quiet);
    }
}

// Writes text to a file, which is replaced whole or not at all, unless it changed since the command
// began; "-" is standard output.
void WriteFile(std::string const& file, std::string_view text, Options const& options) {
    if (file == "-") {
        WriteOutput(text);
        return;
    }
    WriteBy(file, options, [&] {
        pdfsettings::SaveOptions const saving = SaveOptionsOf(options);
        return file == options.output
                   ? pdfsettings::SaveSafely(file, text, options.seenOutput, saving)
                   : pdfsettings::SaveSafely(file, text, saving);
    });
}

} // namespace

void LookAtOutput(Options& options) {
    if (IsFile(options.output) && !options.dryRun) {
        AsWriting(options.output, [&] {
            options.seenOutput = pdfsettings::LookAt(options.output, SaveOptionsOf(options));
        });
    }
}

void WriteResult(Options const& options, std::string_view text) {
    if (IsFile(options.output) && options.dryRun) {
        WriteOutput(VisibleText(options.output) + "\n");
        return;
    }
    WriteFile(IsFile(options.output) ? options.output : "-", text, options);
}

bool UseColor(Options const& options) {
    bool const isAuto = options.color == Color::kAuto;
    return !(isAuto && IsFile(options.output)) && UseColor(options.color);
}

namespace {

std::string const& TargetOf(std::string const& file, Options const& options) {
    return options.output.empty() ? file : options.output;
}

// Another spelling of the same file is another output, for what lies on the way there counts; it is
// compared with what stood there, which is all that is needed. What is no file cannot be locked.
bool IsInPlace(std::string const& file, Options const& options) {
    return (options.output.empty() || options.output == file) && file != "-" &&
           !pdfsettings::IsStream(file);
}

Status ChangeEdited(
    pdfsettings::EditedFile& edited,
    std::string const& file,
    Options const& options,
    ChangeText const& change) {
    // A copy: saving changes the bytes.
    std::string const text = *edited.Bytes();
    return change(text, [&](std::string const& changed) {
        WriteBy(file, options, [&] { return edited.Save(changed); });
    });
}

Status EditFile(std::string const& file, Options const& options, ChangeText const& change) {
    Status status = Status::kDone;
    bool isRead = false;
    auto const edit = [&](pdfsettings::EditedFile& edited) {
        isRead = edited.Bytes().has_value();
        if (!isRead) {
            throw pdfsettings::Error(std::generic_category().message(ENOENT));
        }
        status = ChangeEdited(edited, file, options, change);
    };
    try {
        Edit(file, edit, SaveOptionsOf(options));
    } catch (pdfsettings::Error const& error) {
        if (isRead) {
            throw;
        }
        bool const isRefused = dynamic_cast<pdfsettings::RefusedError const*>(&error) != nullptr;
        Fail(isRefused ? Status::kRefused : Status::kBadInput, file, VisibleText(error.what()));
    }
    return status;
}

} // namespace

Status ChangeFile(std::string const& file, Options const& options, ChangeText const& change) {
    if (!options.dryRun && IsInPlace(file, options)) {
        return EditFile(file, options, change);
    }
    return change(ReadBytes(file), [&](std::string const& text) {
        WriteFile(TargetOf(file, options), text, options);
    });
}

void RequireReplaceable(std::string const& file, Options const& options) {
    std::string const& target = TargetOf(file, options);
    if (target == "-") {
        return;
    }
    try {
        pdfsettings::LookAt(target, SaveOptionsOf(options));
    } catch (pdfsettings::RefusedError const& error) {
        Fail(Status::kRefused, target, VisibleText(error.what()));
    } catch (pdfsettings::Error const&) {
        // A dry run writes nothing that could fail.
    }
    if (pdfsettings::IsReadOnly(target)) {
        Fail(Status::kRefused, target, "read-only");
    }
}

void RequireRoom(std::string const& file, Options const& options) {
    if (options.json && !options.dryRun && TargetOf(file, options) == "-") {
        throw Failure(Status::kWrongCall, "standard output cannot take both JSON and the settings");
    }
}

} // namespace joboptions
