// What the scripts for the shells have in common.
#pragma once

#include "tools/joboptions/completion/CompletionModel.h"

#include <string>
#include <vector>

namespace joboptions {

using Commands = std::vector<CompletedCommand>;
using Keys = std::vector<CompletedKey>;

// A text as one word of bash and zsh.
std::string Quoted(std::string const& text);

// The words with blanks between them.
std::string Joined(std::vector<std::string> const& words);

// The names of the commands for which isSo holds, with a text between them.
std::string Names(Commands const& commands, bool CompletedCommand::*isSo, char const* between);

// The names of all commands, and all keys.
std::vector<std::string> AllNames(Commands const& commands);
std::vector<std::string> AllKeys(Keys const& keys);

// The commands whose keys come first, with no file before them; as a pattern of a case, like all
// lists of names below.
std::string KeysFirst(Commands const& commands);

// The names of the options, of any command, whose value is completed so.
std::string OptionsWith(Commands const& commands, Completion completion);

// The names of all options that have a value behind them.
std::string OptionsWithValue(Commands const& commands);

// Counts the arguments between the command and the word that is completed, in bash and zsh, whose
// arrays begin with different numbers.
std::string
CountPlaces(Commands const& commands, int first, std::string const& words, char const* end);

// "    case $word in", a line for each of the keys with values, "esac".
std::string ValueCases(Keys const& keys, std::string const& word, std::string const& variable);

// The commands with words of their own, each a case with what completes it in place of the braces.
std::string WordCases(Commands const& commands, std::string const& word, char const* offer);

} // namespace joboptions
