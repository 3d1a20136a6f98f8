#include "document/Spelling.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

namespace {

// Longer words are not compared letter by letter.
constexpr std::size_t kLongestWord = 64;

std::string InSmallLetters(std::string word) {
    std::ranges::transform(word, word.begin(), [](char letter) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    });
    return word;
}

// The edit distance of two words: the number of letters to insert, remove or replace. Returns most
// if it is that or more.
std::size_t Distance(std::string const& from, std::string const& to, std::size_t most) {
    if (std::max(from.size(), to.size()) - std::min(from.size(), to.size()) >= most) {
        return most;
    }
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            std::size_t const exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
        }
        if (*std::ranges::min_element(row) >= most) {
            return most;
        }
    }
    return std::min(row.back(), most);
}

} // namespace

std::string Nearest(std::string const& word, std::span<std::string const> choices) {
    std::string nearest;
    // Case is ignored, and about one letter in four may be wrong.
    std::size_t least = word.size() / 4 + 2;
    std::string const small = InSmallLetters(word);
    for (std::string const& choice : choices) {
        bool const isLong = std::max(word.size(), choice.size()) > kLongestWord;
        std::size_t const distance =
            isLong ? least : Distance(small, InSmallLetters(choice), least);
        if (distance < least && distance < choice.size()) {
            least = distance;
            nearest = choice;
        }
    }
    return nearest;
}

} // namespace pdfsettings::detail
