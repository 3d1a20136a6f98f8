// Finding settings of a schema by what people remember of them.
#include "document/MakeSequence.h"
#include "format/SettingPath.h"
#include "host/detail/Patterns.h"
#include "pdfsettings/Schema.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace pdfsettings {

namespace {

constexpr std::pair<std::string_view, std::string_view> kSpellings[] = {
    {"colour", "color"},
    {"grey", "gray"},
    {"centre", "center"},
    {"isation", "ization"},
    {"ising", "izing"},
    {"ise", "ize"}};

// Words that say nothing about a setting.
constexpr std::string_view kFillers[] = {
    "a", "an", "and", "by", "for", "in", "is", "of", "on", "or", "the", "to", "with"};

// The endings of words that are compared by their beginning.
constexpr std::string_view kEndings[] = {"ions", "ion", "ing", "ed", "es", "s"};

char Lowered(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// In small letters and American spelling.
std::string Normalized(std::string_view text) {
    std::string normalized(text);
    std::ranges::transform(normalized, normalized.begin(), &Lowered);
    for (auto const& [british, american] : kSpellings) {
        for (std::size_t at = normalized.find(british); at != std::string::npos;
             at = normalized.find(british, at + american.size())) {
            normalized.replace(at, british.size(), american);
        }
    }
    return normalized;
}

std::string_view Stem(std::string_view word) {
    constexpr std::size_t kShortest = 4;
    for (std::string_view const ending : kEndings) {
        if (word.ends_with(ending) && word.size() >= ending.size() + kShortest) {
            return Stem(word.substr(0, word.size() - ending.size()));
        }
    }
    return word;
}

// The parts of text between blanks.
std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        std::string_view const word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        words.push_back(word);
    }
    return words;
}

std::vector<std::string> Stems(std::string_view text) {
    std::vector<std::string> stems;
    std::string const normalized = Normalized(text);
    for (std::string_view const word : Words(normalized)) {
        if (!word.empty() && std::ranges::find(kFillers, word) == std::end(kFillers)) {
            stems.emplace_back(Stem(word));
        }
    }
    return stems;
}

std::string TextOf(Rule const& rule) {
    return rule.Path() + " " + rule.Label() + " " + rule.Help() + " " + rule.Group() + " ";
}

// The text of a setting, and of those that its description names.
std::string TextWithNamed(Rule const& rule, Schema const& schema) {
    std::string text = TextOf(rule);
    for (std::string_view const word : Words(rule.Help())) {
        Rule const* const named = schema.Find(word.substr(0, word.find_last_not_of(".,;:()") + 1));
        text += named == nullptr ? "" : TextOf(*named);
    }
    return text;
}

// What is said of a setting, and of those around it.
std::string WordsOf(Rule const& rule, Schema const& schema) {
    std::string words;
    for (std::string_view path = rule.Path(); !path.empty(); path = format::ParentPath(path)) {
        Rule const* const around = schema.Find(path);
        words += around == nullptr ? "" : TextWithNamed(*around, schema);
    }
    return Normalized(words);
}

template <class IsChosen>
Sequence<Rule> Chosen(std::span<Rule const> rules, IsChosen isChosen) {
    std::vector<Rule> chosen;
    std::ranges::copy_if(rules, std::back_inserter(chosen), isChosen);
    return detail::MakeSequence::From(std::move(chosen));
}

} // namespace

bool detail::IsPattern(std::string_view text) noexcept {
    return text.find_first_of("*?") != std::string_view::npos;
}

namespace {

bool Matches(std::string_view pattern, std::string_view text, bool (*areEqual)(char, char)) {
    std::size_t star = std::string_view::npos; // the last one, and where its text ends
    std::size_t end = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            end = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || areEqual(pattern[p], text[t]))) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++end;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

// A group may be named by one word of a command line.
std::string NameOfGroup(std::string_view label) {
    std::string name = Normalized(label);
    std::ranges::replace(name, ' ', '-');
    return name;
}

bool AreSame(char one, char other) noexcept {
    return one == other;
}

bool AreSameLetters(char one, char other) noexcept {
    return Lowered(one) == Lowered(other);
}

} // namespace

bool detail::MatchesAsWritten(std::string_view pattern, std::string_view text) {
    return Matches(pattern, text, &AreSame);
}

bool detail::MatchesPattern(std::string_view pattern, std::string_view text) {
    return Matches(pattern, text, &AreSameLetters) ||
           Matches(Normalized(pattern), Normalized(text), &AreSame);
}

Sequence<Rule> Schema::Search(std::string_view text) const {
    std::vector<std::string> const stems = Stems(text);
    return Chosen(Rules(), [&](Rule const& rule) {
        std::string const words = WordsOf(rule, *this);
        return !stems.empty() && std::ranges::all_of(stems, [&](std::string const& stem) {
            return words.find(stem) != std::string::npos;
        });
    });
}

Sequence<Rule> Schema::Matching(std::string_view pattern) const {
    return Chosen(
        Rules(), [&](Rule const& rule) { return detail::MatchesPattern(pattern, rule.Path()); });
}

std::string Schema::FindGroup(std::string_view name) const {
    auto const group = std::ranges::find_if(Groups(), [&](std::string const& label) {
        return NameOfGroup(label) == NameOfGroup(name);
    });
    return group == Groups().end() ? std::string() : *group;
}

} // namespace pdfsettings
