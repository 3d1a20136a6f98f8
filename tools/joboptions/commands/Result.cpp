#include "tools/joboptions/commands/Result.h"

#include "tools/joboptions/commands/Failure.h"
#include "tools/joboptions/text/Utf8.h"

#include <fmt/format.h>

namespace joboptions {

namespace {

bool IsFile(std::string const& output) {
    return !output.empty() && output != "-";
}

// What work throws as a failure of the command to write file.
template <class Work>
void AsWriting(std::string const& file, Work work) {
    try {
        work();
    } catch (pdfsettings::RefusedError const& error) {
        throw Failure(
            Status::kRefused, fmt::format("{}: {}", VisibleText(file), VisibleText(error.what())));
    } catch (pdfsettings::Error const& error) {
        throw Failure(
            Status::kNotWritten,
            fmt::format("{}: {}", VisibleText(file), VisibleText(error.what())));
    }
}

} // namespace

void WriteBy(
    std::string const& file,
    Options const& options,
    std::function<pdfsettings::SaveWarnings()> const& save) {
    pdfsettings::SaveWarnings warnings;
    AsWriting(file, [&] { warnings = save(); });
    if (options.quiet) {
        return;
    }
    for (std::string const& warning : warnings) {
        WriteWarning(fmt::format("{}: {}", VisibleText(file), VisibleText(warning)));
    }
}

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

void LookAtOutput(Options& options) {
    if (IsFile(options.output) && !options.dryRun) {
        AsWriting(options.output, [&] {
            options.seenOutput = pdfsettings::LookAt(options.output, SaveOptionsOf(options));
        });
    }
}

pdfsettings::SaveOptions SaveOptionsOf(Options const& options) {
    // Also where it is no number.
    double const seconds = options.wait > 0 ? options.wait : 0;
    return {
        std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(seconds)),
        options.overwriteChanged};
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

} // namespace joboptions
