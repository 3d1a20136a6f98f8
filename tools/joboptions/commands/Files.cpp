#include "tools/joboptions/commands/Files.h"

#include "pdfsettings/Error.h"
#include "pdfsettings/SafeSave.h"
#include "tools/joboptions/text/Findings.h"
#include "tools/joboptions/text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <system_error>

namespace joboptions {

using pdfsettings::Error;
using pdfsettings::Fault;
using pdfsettings::OnConflict;

void RequireOneStandardInput(std::vector<std::string> files, Options const& options) {
    files.push_back(options.schema);
    if (std::ranges::count(files, "-") > 1) {
        throw Failure(Status::kWrongCall, "standard input can be named only once");
    }
}

std::string ReadBytes(std::string const& file) {
    try {
        return pdfsettings::ReadFile(file == "-" ? "/dev/stdin" : file);
    } catch (Error const& error) {
        throw Failure(Status::kBadInput, ErrorText(file, error));
    }
}

pdfsettings::Document ReadDocument(std::string const& file) {
    pdfsettings::Document document(ReadBytes(file));
    try {
        document.RequireRead();
    } catch (Error const& error) {
        throw Failure(Status::kBadInput, ErrorText(file, error));
    }
    return document;
}

pdfsettings::Settings
ParseSettings(std::string const& file, std::string const& text, pdfsettings::Schema const& schema) {
    try {
        return pdfsettings::Settings::Parse(text, schema);
    } catch (Error const& error) {
        throw Failure(Status::kBadInput, ErrorText(file, error));
    }
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

pdfsettings::Schema ReadSchema(Options const& options) {
    if (options.schema.empty()) {
        return pdfsettings::Schema::Standard();
    }
    std::string const text = ReadText(options.schema);
    std::vector<std::string> problems;
    for (pdfsettings::Finding const& problem : pdfsettings::Schema::Problems(text)) {
        problems.push_back(fmt::format(
            "{}:{}:{}: {}",
            InputName(options.schema),
            problem.Where()->line,
            problem.Where()->column,
            VisibleText(problem.Message())));
    }
    FailIfAny(Status::kBadSchema, problems);
    return pdfsettings::Schema::Parse(text);
}

namespace {

bool IsFile(std::string const& output) {
    return !output.empty() && output != "-";
}

std::chrono::milliseconds WaitOf(Options const& options) {
    // NaN gives 0 too.
    double const seconds = options.wait > 0 ? options.wait : 0;
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::duration<double>(seconds));
}

OnConflict OnConflictOf(Options const& options) {
    return options.overwriteChanged ? OnConflict::kOverwrite : OnConflict::kRefuse;
}

// Whether the error is a refusal to replace a file, rather than a failed system call.
bool IsRefusal(Error const& error) {
    switch (error.Code()) {
    case Fault::kReadOnly:
    case Fault::kConflict:
    case Fault::kBusy:
    case Fault::kUntrusted:
        return true;
    default:
        return false;
    }
}

// Runs work, which writes file. Turns its errors into Failure.
template <class Work>
void AsWriting(std::string const& file, Work work) {
    try {
        work();
    } catch (Error const& error) {
        Status const status = IsRefusal(error) ? Status::kRefused : Status::kNotWritten;
        throw Failure(status, ErrorText(file, error));
    }
}

// Runs save, which saves file, and writes its warnings.
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

// Replaces a file by text, completely or not at all, unless it has changed since the command began;
// "-" is standard output.
void WriteFile(std::string const& file, std::string_view text, Options const& options) {
    if (file == "-") {
        WriteOutput(text);
        return;
    }
    WriteBy(file, options, [&] {
        std::chrono::milliseconds const wait = WaitOf(options);
        return file == options.output
                   ? pdfsettings::SaveSafely(
                         file, text, options.seenOutput, OnConflictOf(options), wait)
                   : pdfsettings::SaveSafely(file, text, wait);
    });
}

} // namespace

void LookAtOutput(Options& options) {
    if (IsFile(options.output) && !options.dryRun) {
        AsWriting(options.output, [&] {
            options.seenOutput = pdfsettings::LookAt(options.output, WaitOf(options));
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

// The names are compared, not the files: another path to the same file counts as another output,
// since the links on it are validated separately. This is safe, because the output is compared with
// its earlier contents before it is replaced. A stream cannot be locked.
bool IsInPlace(std::string const& file, Options const& options) {
    return (options.output.empty() || options.output == file) && file != "-" &&
           !pdfsettings::IsStream(file);
}

// The lock on an existing file. Throws Failure.
pdfsettings::FileLock Lock(std::string const& file, Options const& options) {
    try {
        return pdfsettings::FileLock(file, WaitOf(options));
    } catch (Error const& error) {
        Status const status = IsRefusal(error) ? Status::kRefused : Status::kBadInput;
        throw Failure(status, ErrorText(file, error));
    }
}

Status ChangeLocked(std::string const& file, Options const& options, ChangeText const& change) {
    pdfsettings::FileLock lock = Lock(file, options);
    if (!lock.Bytes()) {
        Fail(Status::kBadInput, file, std::generic_category().message(ENOENT));
    }
    // A copy, since saving changes Bytes().
    std::string const text = *lock.Bytes();
    return change(text, [&](std::string const& changed) {
        WriteBy(file, options, [&] { return lock.Save(changed, OnConflictOf(options)); });
    });
}

} // namespace

Status ChangeFile(std::string const& file, Options const& options, ChangeText const& change) {
    if (!options.dryRun && IsInPlace(file, options)) {
        return ChangeLocked(file, options, change);
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
        pdfsettings::LookAt(target, WaitOf(options));
    } catch (Error const& error) {
        // Only refusals matter here: a dry run writes nothing.
        if (IsRefusal(error)) {
            throw Failure(Status::kRefused, ErrorText(target, error));
        }
    }
    if (pdfsettings::IsReadOnly(target)) {
        Fail(Status::kRefused, target, "read-only");
    }
}

void RequireRoom(std::string const& file, Options const& options) {
    if (options.json && !options.dryRun && TargetOf(file, options) == "-") {
        throw Failure(Status::kWrongCall, "standard output cannot have both JSON and the settings");
    }
}

} // namespace joboptions
