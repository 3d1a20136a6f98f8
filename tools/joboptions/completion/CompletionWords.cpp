#include "tools/joboptions/completion/CompletionWords.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <set>

namespace joboptions {

namespace {

// The names of those options whose value is completed so.
std::vector<std::string>
Choose(std::vector<CompletedOption> const& options, Completion completion) {
    std::vector<std::string> names;
    for (CompletedOption const& option : options) {
        if (option.takesValue && option.value == completion) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return names;
}

} // namespace

std::string Quoted(std::string const& text) {
    std::string quoted = "'";
    for (char const letter : text) {
        quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return quoted + "'";
}

std::string Joined(std::vector<std::string> const& words) {
    return fmt::format("{}", fmt::join(words, " "));
}

std::string Names(Commands const& commands, bool CompletedCommand::*isSo, char const* between) {
    std::vector<std::string> names;
    for (CompletedCommand const& command : commands) {
        if (command.*isSo) {
            names.push_back(command.name);
        }
    }
    return fmt::format("{}", fmt::join(names, between));
}

std::vector<std::string> AllNames(Commands const& commands) {
    std::vector<std::string> names;
    std::ranges::transform(commands, std::back_inserter(names), &CompletedCommand::name);
    return names;
}

std::vector<std::string> AllKeys(Keys const& keys) {
    std::vector<std::string> names;
    std::ranges::transform(keys, std::back_inserter(names), &CompletedKey::key);
    return names;
}

std::string KeysFirst(Commands const& commands) {
    std::vector<std::string> names;
    for (CompletedCommand const& command : commands) {
        if (command.takesKeys && !command.takesFile) {
            names.push_back(command.name);
        }
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

std::string OptionsWith(Commands const& commands, Completion completion) {
    std::set<std::string> names;
    for (CompletedCommand const& command : commands) {
        auto const options = Choose(command.options, completion);
        names.insert(options.begin(), options.end());
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

std::string OptionsWithValue(Commands const& commands) {
    std::vector<std::string> names;
    for (Completion const kind : {Completion::kNothing, Completion::kFile, Completion::kChoice}) {
        names.push_back(OptionsWith(commands, kind));
    }
    return fmt::format("{}", fmt::join(names, "|"));
}

std::string
CountPlaces(Commands const& commands, int first, std::string const& words, char const* end) {
    return fmt::format(
        "    local place=0 i\n"
        "    for ((i = {}; i < {}; ++i)); do\n"
        "        case {} in\n"
        "        {}) ((++i)) ;;\n"
        "        -?*) ;;\n"
        "        *) ((++place)) ;;\n"
        "        esac\n"
        "    done\n",
        first,
        end,
        words,
        OptionsWithValue(commands));
}

std::string ValueCases(Keys const& keys, std::string const& word, std::string const& variable) {
    std::string text = fmt::format("        case {} in\n", word);
    for (auto const& [key, values] : keys) {
        if (!values.empty()) {
            std::vector<std::string> words;
            std::ranges::transform(values, std::back_inserter(words), &Quoted);
            text += fmt::format("        {}) {}=({}) ;;\n", key, variable, Joined(words));
        }
    }
    return text + "        esac\n";
}

std::string WordCases(Commands const& commands, std::string const& word, char const* offer) {
    std::string text = fmt::format("    case {} in\n", word);
    for (CompletedCommand const& command : commands) {
        if (!command.words.empty()) {
            text += fmt::format("    {}) ", command.name) +
                    fmt::format(fmt::runtime(offer), Joined(command.words)) + "; return ;;\n";
        }
    }
    return text + "    esac\n";
}

} // namespace joboptions
