#include "tools/joboptions/Result.h"

#include "tools/joboptions/Utf8.h"

namespace joboptions {

namespace {

bool IsFile(std::string const& output) {
    return !output.empty() && output != "-";
}

} // namespace

void WriteResult(Options const& options, std::string_view text) {
    if (IsFile(options.output) && options.dryRun) {
        WriteOutput(VisibleText(options.output) + "\n");
        return;
    }
    WriteFile(IsFile(options.output) ? options.output : "-", text);
}

bool UseColor(Options const& options) {
    bool const isAuto = options.color == Color::kAuto;
    return !(isAuto && IsFile(options.output)) && UseColor(options.color);
}

} // namespace joboptions
