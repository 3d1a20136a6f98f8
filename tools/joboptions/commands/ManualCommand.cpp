// joboptions manual: the manual page.
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/text/FindingIds.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace joboptions {

extern std::string_view const kManualText;

namespace {

// Escapes text for the manual page: backslashes and the first characters of lines are not commands,
// and hyphens can be copied.
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

// The text after the options: lines of examples are kept, other text is filled.
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

// The placeholder of an option's value, without the list of allowed values, which the help text
// has.
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

// The options that several commands have with one description: they are listed once.
class CommonOptions {
public:
    explicit CommonOptions(CLI::App const& program) {
        for (CLI::App const* const command : ListedCommands(program)) {
            Count(*command);
        }
    }

    std::string const& Page() const noexcept { return fPage; }

    // The options of command alone.
    std::string OthersOf(CLI::App const& command) const {
        std::string page;
        for (CLI::Option const* const option : ListedOptions(command)) {
            page += fCounts.at(EntryOf(*option)) >= kSeveral ? "" : EntryOf(*option);
        }
        return page;
    }

private:
    void Count(CLI::App const& command) {
        for (CLI::Option const* const option : ListedOptions(command)) {
            if (++fCounts[EntryOf(*option)] == kSeveral) {
                fPage += EntryOf(*option);
            }
        }
    }

    static std::vector<CLI::Option const*> ListedOptions(CLI::App const& command) {
        return command.get_options([](CLI::Option const* option) {
            return !option->get_positional() && !option->get_group().empty();
        });
    }

    static std::string EntryOf(CLI::Option const& option) {
        return Entry(OptionTerm(option), option.get_description());
    }

    static constexpr int kSeveral = 3;

    std::map<std::string, int> fCounts;
    std::string fPage;
};

std::string CommandSection(CLI::App const& command, CommonOptions const& common) {
    std::string positionals;
    for (CLI::Option const* const option : command.get_options()) {
        if (option->get_positional()) {
            positionals +=
                Entry(Italic(option->get_name(/*positional=*/true)), option->get_description());
        }
    }
    return ".SS " + Synopsis(command) + "\n" + Plain(command.get_description()) + ".\n" +
           positionals + common.OthersOf(command) + Footer(command.get_footer());
}

// A sentence in the form of a title: small first letter, no full stop.
std::string AsTitle(std::string sentence) {
    sentence.front() =
        static_cast<char>(std::tolower(static_cast<unsigned char>(sentence.front())));
    sentence.resize(sentence.find_last_not_of('.') + 1);
    return sentence;
}

std::string FindingsPage() {
    std::string page;
    for (FindingId const& known : FindingIds()) {
        page += Entry(Bold(known.id), known.meaning);
    }
    return page;
}

std::string ManualPage(CLI::App const& program) {
    CommonOptions const common(program);
    std::string commands;
    for (CLI::App const* const command : ListedCommands(program)) {
        commands += CommandSection(*command, common);
    }
    std::string page(kManualText);
    for (auto const& [place, text] :
         {std::pair<std::string_view, std::string>("{version}", program.version()),
          {"{title}", Plain(AsTitle(program.get_description()))},
          {"{commands}\n", commands},
          {"{options}\n", common.Page()},
          {"{findings}\n", FindingsPage()}}) {
        page.replace(page.find(place), place.size(), text);
    }
    return page;
}

// Writes the manual page, for packagers.
class ManualCommand final : public Command {
public:
    ManualCommand(CLI::App& program, Options& options)
        : Command(program, options, "manual", "Print the manual page"),
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
