#include "tools/joboptions/Options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace joboptions {

void AddOptions(CLI::App& command, Options& options) {
    std::map<std::string, Color> const colors{
        {"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}};
    command.add_flag(
        "-q,--quiet", options.quiet, "Write no messages; the exit status tells what happened");
    command
        .add_option_function<std::string>(
            "--color",
            [&options, colors](std::string const& name) { options.color = colors.at(name); },
            "Colour the output: auto (on a terminal, unless NO_COLOR is set), always or never")
        ->check(CLI::IsMember(colors))
        ->type_name("WHEN")
        ->default_str("auto");
}

} // namespace joboptions
