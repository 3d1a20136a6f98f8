// joboptions manual: the manual page.
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Files.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

namespace {

// text as it is to be seen: neither a backslash nor the first letter of a line is a command, and a
// hyphen is one that can be copied.
std::string Plain(std::string_view text) {
    std::string plain;
    for (char const letter : text) {
        bool const isFirst = plain.empty() || plain.back() == '\n';
        plain += isFirst && (letter == '.' || letter == '\'') ? "\\&" : "";
        plain += letter == '\\' ? "\\e" : letter == '-' ? "\\-" : std::string(1, letter);
    }
    return plain;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Plain(text) + "\\fR";
}

std::string Italic(std::string_view text) {
    return "\\fI" + Plain(text) + "\\fR";
}

std::vector<std::string> Paragraphs(std::string_view text) {
    constexpr std::string_view kBetween = "\n\n";
    std::vector<std::string> paragraphs;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find(kBetween), text.size());
        paragraphs.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + kBetween.size(), text.size()));
    }
    return paragraphs;
}

// What stands below the options: lines of examples stay lines, other text is filled.
std::string Footer(std::string const& text) {
    std::string page;
    for (std::string const& paragraph : Paragraphs(text)) {
        bool const isExample = paragraph.starts_with("Examples:");
        page +=
            ".PP\n" + (isExample ? ".nf\n" + Plain(paragraph) + "\n.fi" : Plain(paragraph)) + "\n";
    }
    return page;
}

std::string Entry(std::string const& term, std::string const& help) {
    return ".TP\n" + term + "\n" + Plain(help) + "\n";
}

std::string Synopsis(CLI::App const& command) {
    std::string line = Bold("joboptions " + command.get_name()) + " [" + Italic("OPTION") + "...]";
    for (CLI::Option const* const option : command.get_options()) {
        if (option->get_positional()) {
            bool const isMany = option->get_items_expected_max() > 1;
            line += " " + Italic(option->get_name(/*positional=*/true)) + (isMany ? "..." : "");
        }
    }
    return line;
}

// What stands for a value, without the values that are allowed: the help tells those.
std::string Placeholder(CLI::Option const& option) {
    std::string const name = option.get_type_name();
    return name.substr(0, name.find(':'));
}

std::string OptionTerm(CLI::Option const& option) {
    std::vector<std::string> names = NamesOf(option);
    std::ranges::transform(names, names.begin(), &Bold);
    bool const takesValue = option.get_items_expected_max() > 0;
    return fmt::format(
        "{}{}", fmt::join(names, ", "), takesValue ? " " + Italic(Placeholder(option)) : "");
}

std::string CommandSection(CLI::App const& command) {
    std::string positionals;
    std::string options;
    for (CLI::Option const* const option : command.get_options()) {
        if (option->get_positional()) {
            positionals +=
                Entry(Italic(option->get_name(/*positional=*/true)), option->get_description());
        } else if (!option->get_group().empty()) {
            options += Entry(OptionTerm(*option), option->get_description());
        }
    }
    return ".SS " + Synopsis(command) + "\n" + Plain(command.get_description()) + ".\n" +
           positionals + options + Footer(command.get_footer());
}

// A sentence as a line of a table of contents.
std::string AsTitle(std::string sentence) {
    sentence.front() =
        static_cast<char>(std::tolower(static_cast<unsigned char>(sentence.front())));
    sentence.resize(sentence.find_last_not_of('.') + 1);
    return sentence;
}

std::string ManualPage(CLI::App const& program) {
    std::string page = fmt::format(
        ".TH JOBOPTIONS 1 \"\" \"{}\" \"User Commands\"\n"
        ".SH NAME\njoboptions \\- {}\n"
        ".SH SYNOPSIS\n{} {} [{}...] ...\n"
        ".SH COMMANDS\n",
        program.version(),
        Plain(AsTitle(program.get_description())),
        Bold("joboptions"),
        Italic("COMMAND"),
        Italic("OPTION"));
    for (CLI::App const* const command : ListedCommands(program)) {
        page += CommandSection(*command);
    }
    return page + ".SH NOTES\n" + Footer(program.get_footer());
}

// Writes the manual page, for those who package the program.
class ManualCommand final : public Command {
public:
    ManualCommand(CLI::App& program, Options& options)
        : Command(program, options, "manual", "Write the manual page"),
          fProgram(program) {
        AddOptions(Parser(), options);
        Parser().footer("Examples:\n"
                        "  joboptions manual | man -l -");
    }

    Status Run() const override {
        WriteResult(fOptions, ManualPage(fProgram));
        return Status::kDone;
    }

private:
    CLI::App const& fProgram;
};

} // namespace

MakeCommand* const kMakeManualCommand = &Make<ManualCommand>;

} // namespace joboptions
