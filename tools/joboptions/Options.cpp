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

void AddJson(CLI::App& command, Options& options) {
    command.add_flag("--json", options.json, "Write JSON");
}

void AddSchema(CLI::App& command, Options& options) {
    command
        .add_option("--schema", options.schema, "Judge by this schema, not by the standard schema")
        ->type_name("FILE");
}

void AddOutput(CLI::App& command, Options& options, char const* help) {
    command.add_option("-o,--output", options.output, help)->type_name("FILE");
}

void AddDryRun(CLI::App& command, Options& options) {
    command.add_flag("-n,--dry-run", options.dryRun, "Say what would change, and change nothing");
}

void AddForce(CLI::App& command, Options& options, char const* help) {
    command.add_flag("--force", options.force, help);
}

void AddChangeOptions(CLI::App& command, Options& options) {
    AddOutput(command, options, "Write the changed settings there, and leave FILE as it is");
    AddDryRun(command, options);
    AddForce(command, options, "Save though somebody else changed FILE meanwhile");
    AddSchema(command, options);
    AddJson(command, options);
    AddOptions(command, options);
}

void AddApplication(CLI::App& command, Options& options, char const* help) {
    command
        .add_option_function<std::string>(
            "--app", [&options](std::string const& name) { options.application = name; }, help)
        ->type_name("NAME");
}

void AddFile(CLI::App& command, Options& options, std::string& file) {
    AddApplication(command, options, kNamesOfApplication);
    command.add_option("FILE", file, "The settings file; - is standard input")
        ->required()
        ->type_name("");
}

} // namespace joboptions
