#include "tools/joboptions/commands/Options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace joboptions {

namespace {

bool Has(CLI::App const& command, char const* option) {
    return command.get_option_no_throw(option) != nullptr;
}

// Adds options that the command does not use, hidden from its help, so that scripts can pass the
// same options to every command.
template <class Add>
void AddUnused(CLI::App& command, char const* first, Add add) {
    if (Has(command, first)) {
        return;
    }
    std::size_t place = command.get_options().size();
    add();
    for (; place < command.get_options().size(); ++place) {
        command.get_options()[place]->group("");
    }
}

} // namespace

void AddOptions(CLI::App& command, Options& options) {
    std::map<std::string, Color> const colors{
        {"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}};
    command.add_flag(
        "-q,--quiet", options.quiet, "Print no messages; the exit status says the result");
    command
        .add_option_function<std::string>(
            "--color",
            [&options, colors](std::string const& name) { options.color = colors.at(name); },
            "Colour the output: auto (on a terminal, unless NO_COLOR is set), always or never")
        ->check(CLI::IsMember(colors))
        ->type_name("WHEN")
        ->default_str("auto");

    if (!Has(command, "--output")) {
        AddOutput(command, options, "Write to this file instead of standard output");
    }
    AddUnused(command, "--dry-run", [&] { AddDryRun(command, options); });
    AddUnused(command, "--wait", [&] { AddSaving(command, options); });
    AddUnused(command, "--schema", [&] { AddSchema(command, options); });
    AddUnused(command, "--app", [&] { AddApplication(command, options, kNamesOfApplication); });
}

void AddJson(CLI::App& command, Options& options) {
    command.add_flag("--json", options.json, "Print JSON");
}

void AddSchema(CLI::App& command, Options& options) {
    command
        .add_option("--schema", options.schema, "Use this schema instead of the standard schema")
        ->type_name("FILE");
}

void AddOutput(CLI::App& command, Options& options, char const* help) {
    command.add_option("-o,--output", options.output, help)->type_name("FILE")->check(NotEmpty());
}

CLI::Validator NotEmpty() {
    return {[](std::string const& file) { return file.empty() ? "the name is empty" : ""; }, ""};
}

void AddDryRun(CLI::App& command, Options& options) {
    command.add_flag("-n,--dry-run", options.dryRun, "Print what would change; change nothing");
}

void AddSaving(CLI::App& command, Options& options) {
    command
        .add_option(
            "--wait",
            options.wait,
            "Wait this long for programs that save in the same folder (default 10)")
        ->type_name("SECONDS")
        ->check(CLI::Validator(
            [](std::string const& text) {
                double seconds = -1;
                bool const isNumber = CLI::detail::lexical_cast(text, seconds);
                return isNumber && seconds >= 0 && seconds <= 86400
                           ? ""
                           : "expected seconds from 0 to 86400, found " + text;
            },
            ""))
        ->default_str("10");
    command.add_flag(
        "--overwrite-changed",
        options.overwriteChanged,
        "Save even if the file has changed since it was read");
}

void AddApplication(CLI::App& command, Options& options, char const* help) {
    command
        .add_option_function<std::string>(
            "--app", [&options](std::string const& name) { options.application = name; }, help)
        ->type_name("NAME");
}

std::vector<std::string> NamesOf(CLI::Option const& option) {
    std::vector<std::string> names;
    for (std::string const& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

std::vector<CLI::App const*> ListedCommands(CLI::App const& program) {
    return program.get_subcommands(
        [](CLI::App const* command) { return !command->get_group().empty(); });
}

void AddFile(CLI::App& command, Options& options, std::string& file) {
    AddApplication(command, options, kNamesOfApplication);
    AddArgument(command, "FILE", file, "The settings file; - is standard input")->required();
}

} // namespace joboptions
