// joboptions completion and complete: completion scripts for shells. The scripts are fixed: they
// ask the program for the possible words, so additions in a schema or a later version need no new
// script. If the program offers nothing, the shell offers files.
#include "tools/joboptions/commands/Command.h"

#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/text/FindingIds.h"
#include "tools/joboptions/text/ValueText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace joboptions {

namespace {

// Bash splits words at "=": the script joins them again, and offers only the value of an
// assignment.
constexpr char kBash[] = R"(# Completions of joboptions for bash.
_joboptions() {
    local word
    local -a words=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if ((${#words[@]} > 0)) && [[ $word == = || ${words[-1]} == *= ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    mapfile -t COMPREPLY < <("$1" complete -- "${words[@]}" 2>/dev/null | cut -f 1)
    if [[ ${words[-1]} == *=* ]]; then
        COMPREPLY=("${COMPREPLY[@]#*=}")
    elif [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}
complete -o default -F _joboptions joboptions
)";

constexpr char kZsh[] = R"(#compdef joboptions
# Completions of joboptions for zsh.
_joboptions() {
    local -a offers assignments
    offers=("${(@f)$("$words[1]" complete -- "${(@Q)words[2,CURRENT-1]}" "$PREFIX" 2>/dev/null)}")
    offers=("${(@)${(@)offers:#}/$'\t'/:}")
    assignments=("${(@M)offers:#*=}")
    offers=("${(@)offers:#*=}")
    if (($#offers + $#assignments == 0)); then
        _files
        return
    fi
    _describe setting assignments -S ''
    _describe word offers
}
if [[ $funcstack[1] == _joboptions ]]; then
    _joboptions "$@"
else
    compdef _joboptions joboptions
fi
)";

constexpr char kFish[] = R"(# Completions of joboptions for fish.
function __joboptions
    set -l words (commandline -opc)
    $words[1] complete -- $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c joboptions -f -n '__joboptions | string length -q' -a '(__joboptions)'
)";

class CompletionCommand final : public Command {
public:
    CompletionCommand(CLI::App& program, Options& options)
        : Command(program, options, "completion", "Print completions for a shell") {
        AddArgument(Parser(), "SHELL", fShell, "bash, zsh or fish")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}));
        AddOptions(Parser(), options);
        Parser().footer(
            "Examples:\n"
            "  source <(joboptions completion bash)\n"
            "  joboptions completion zsh > ~/.zfunc/_joboptions\n"
            "  joboptions completion fish > ~/.config/fish/completions/joboptions.fish");
    }

    Status Run() const override {
        static std::map<std::string, char const*> const kScripts{
            {"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};
        WriteResult(fOptions, kScripts.at(fShell));
        return Status::kDone;
    }

private:
    std::string fShell;
};

// Shells may interpret special characters in the words offered to them.
bool IsPlainWord(std::string const& word) {
    return std::ranges::all_of(word, [](char letter) {
        bool const isLetter = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
        return isLetter || std::string_view("0123456789_./+-").find(letter) != std::string::npos;
    });
}

std::vector<std::string> ValuesOf(pdfsettings::Rule const& rule) {
    if (rule.Allowed().empty() && rule.What() == pdfsettings::Kind::kBool) {
        return {"true", "false"};
    }
    std::vector<std::string> values;
    for (pdfsettings::Value const& value : rule.Allowed()) {
        values.push_back(OneLine(value));
    }
    return values;
}

// Collects the words that begin with the prefix being typed.
class Offers {
public:
    explicit Offers(std::string prefix) : fPrefix(std::move(prefix)) {}

    void Add(std::string const& word, std::string const& help = {}) {
        if (word.starts_with(fPrefix)) {
            AddAnyway(word, help);
        }
    }

    // Adds a word that takes the place of the prefix.
    void AddAnyway(std::string const& word, std::string const& help) {
        fText += help.empty() ? word + "\n" : fmt::format("{}\t{}\n", word, help);
    }

    void Add(std::initializer_list<char const*> words) {
        for (char const* const word : words) {
            Add(std::string(word));
        }
    }

    // One line per word: the word, a tab and its description.
    std::string const& Text() const noexcept { return fText; }

private:
    std::string fPrefix;
    std::string fText;
};

// The command line up to the cursor: the command, its arguments, and the word at the cursor.
class Line {
public:
    Line(CLI::App const& program, std::vector<std::string> const& words)
        : fProgram(program),
          fIsFirst(words.size() < 2),
          fWord(words.empty() ? std::string() : words.back()) {
        if (!fIsFirst) {
            Read({words.begin(), words.end() - 1});
        }
    }

    // The schema named on the line; empty if none is.
    std::string const& Schema() const noexcept { return fSchema; }

    // Whether keys are to be offered, rather than words of the program.
    bool WantsKeys() const { return AtArguments() && (Has("KEY") || Has("KEY=VALUE")); }

    void OfferKeys(pdfsettings::Schema const& schema, Offers& offers) const {
        if (TakesPatterns()) {
            OfferGroups(schema, offers);
            OfferMatches(schema, offers);
        }
        for (pdfsettings::Rule const& rule : schema.Rules()) {
            if (!IsPlainWord(rule.Path())) {
                continue;
            }
            if (!Has("KEY=VALUE") || TakesPatterns()) {
                offers.Add(rule.Path(), rule.Help());
            }
            if (!Has("KEY=VALUE")) {
                continue;
            }
            if (fWord.starts_with(rule.Path() + "=")) {
                OfferValues(rule, offers);
            } else {
                offers.Add(rule.Path() + "=", rule.Help());
            }
        }
    }

    void OfferWords(Offers& offers) const {
        if (fIsFirst) {
            for (CLI::App const* const command : ListedCommands(fProgram)) {
                offers.Add(command->get_name(), command->get_description());
            }
        } else if (fCommand == nullptr) {
            return;
        } else if (fOption != nullptr) {
            OfferValues(*fOption, offers);
        } else if (fWord.starts_with('-')) {
            OfferOptions(offers);
        } else if (Has("SHELL")) {
            offers.Add({"bash", "zsh", "fish"});
        }
    }

private:
    void Read(std::vector<std::string> const& words) {
        auto const commands = ListedCommands(fProgram);
        auto const command = std::ranges::find(commands, words.front(), &CLI::App::get_name);
        fCommand = command == commands.end() ? nullptr : *command;
        for (auto word = words.begin() + 1; word != words.end(); ++word) {
            bool const isOption = word->size() > 1 && word->starts_with('-');
            CLI::Option const* const option =
                fCommand != nullptr && isOption ? fCommand->get_option_no_throw(*word) : nullptr;
            if (option == nullptr || option->get_items_expected_max() == 0) {
                fArguments += isOption ? 0 : 1;
            } else if (++word == words.end()) {
                fOption = option;
                break;
            } else if (option->check_lname("schema")) {
                fSchema = *word;
            }
            fCopies = fCopies || (option != nullptr && option->check_lname("from"));
        }
    }

    // Whether the word at the cursor is an argument after FILE, if the command has that one.
    bool AtArguments() const {
        bool const hasFile = Has("FILE");
        return fOption == nullptr && !fWord.starts_with('-') && (!hasFile || fArguments > 0);
    }

    bool Has(char const* argument) const {
        return fCommand != nullptr && fCommand->get_option_no_throw(argument) != nullptr;
    }

    void OfferOptions(Offers& offers) const {
        for (CLI::Option const* const option : fCommand->get_options()) {
            if (option->get_positional() || option->get_group().empty()) {
                continue;
            }
            for (std::string const& name : NamesOf(*option)) {
                offers.Add(name, option->get_description());
            }
        }
    }

    static void OfferValues(CLI::Option const& option, Offers& offers) {
        if (option.check_lname("color")) {
            offers.Add({"auto", "always", "never"});
        } else if (option.check_lname("format")) {
            offers.Add({"text", "json", "sarif"});
        } else if (option.check_lname("ignore")) {
            for (FindingId const& known : FindingIds()) {
                offers.Add(known.id, known.meaning);
            }
        }
    }

    // Whether a key may also be a pattern or a group, as where settings are described, or copied
    // from another file.
    bool TakesPatterns() const {
        return Has("--search") || (fCopies && fCommand->get_name() == "set");
    }

    // The groups by names without blanks, which no shell has to quote.
    static void OfferGroups(pdfsettings::Schema const& schema, Offers& offers) {
        for (std::string const& group : schema.Groups()) {
            std::string name = group;
            std::ranges::replace(name, ' ', '-');
            if (IsPlainWord(name)) {
                offers.Add(name, "All settings of this group");
            }
        }
    }

    // What a pattern stands for.
    void OfferMatches(pdfsettings::Schema const& schema, Offers& offers) const {
        if (fWord.find_first_of("*?") == std::string::npos) {
            return;
        }
        for (pdfsettings::Rule const& rule : schema.Matching(fWord)) {
            if (IsPlainWord(rule.Path())) {
                offers.AddAnyway(rule.Path(), rule.Help());
            }
        }
    }

    static void OfferValues(pdfsettings::Rule const& rule, Offers& offers) {
        for (std::string const& value : ValuesOf(rule)) {
            if (IsPlainWord(value)) {
                offers.Add(rule.Path() + "=" + value);
            }
        }
    }

    CLI::App const& fProgram;
    bool fIsFirst;                        // the word at the cursor is the command
    CLI::App const* fCommand = nullptr;   // null if the name is unknown
    CLI::Option const* fOption = nullptr; // the option whose value is at the cursor, or null
    std::size_t fArguments = 0;           // before the cursor
    bool fCopies = false;                 // keys alone are copied from another file
    std::string fSchema;
    std::string fWord;
};

class CompleteCommand final : public Command {
public:
    CompleteCommand(CLI::App& program, Options& options)
        : Command(program, options, "complete", "Offer words for the last of WORDS"),
          fProgram(program) {
        Parser().group("");
        AddArgument(Parser(), "WORDS", fWords);
    }

    // Status::kDone, even if there is nothing to offer.
    Status Run() const override {
        Line const line(fProgram, fWords);
        Offers offers(fWords.empty() ? std::string() : fWords.back());
        if (!line.WantsKeys()) {
            line.OfferWords(offers);
        } else {
            Options options = fOptions;
            options.schema = line.Schema();
            line.OfferKeys(ReadSchema(options), offers);
        }
        WriteResult(fOptions, offers.Text());
        return Status::kDone;
    }

private:
    CLI::App const& fProgram;
    std::vector<std::string> fWords;
};

} // namespace

MakeCommand* const kMakeCompleteCommand = &Make<CompleteCommand>;
MakeCommand* const kMakeCompletionCommand = &Make<CompletionCommand>;

} // namespace joboptions
