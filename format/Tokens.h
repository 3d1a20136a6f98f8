// The bytes of settings texts: what each is for, and where strings and numbers end. All readers of
// the format share this; docs/format.md describes it. No locale matters.
#pragma once

#include <array>
#include <cstring>
#include <string_view>

namespace format {

// Bytes, each found in one step.
class CharSet {
public:
    explicit constexpr CharSet(std::string_view chars) noexcept {
        for (char const c : chars) {
            fHas[static_cast<unsigned char>(c)] = true;
        }
    }

    constexpr bool Has(char c) const noexcept { return fHas[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, 256> fHas{};
};

// What may stand between any two tokens, beside comments.
inline constexpr CharSet kBlanks("\t\n\r ");

// What ends a name: form feed too, which is no blank, and the zero byte behind the text.
inline constexpr CharSet kNameEnds(std::string_view("\0\t\n\f\r ()<>[]{}/%", 16));

// What a number begins with. The zero byte is among it, so that a value that is missing at the end
// of the text gets as far as the search for its end.
inline constexpr CharSet kNumberStarts(std::string_view("\0-0123456789", 12));

// What ends the token of a number, together with the zero byte.
inline constexpr CharSet kNumberEnds(" \n\r\t]>");

// The longest key or name, in bytes.
inline constexpr std::size_t kMaxNameSize = 255;

// A scan may step over the first zero byte behind a text and then looks at two more.
inline constexpr std::size_t kZerosBehindText = 4;

// What the name of a settings file ends in.
inline constexpr std::string_view kExtension = ".joboptions";

// Behind the settings; what follows is their tail, which the component keeps under a key of its
// own.
inline constexpr std::string_view kKeyword = "setalembicorparams";
inline constexpr std::string_view kTailKey = "AlembicorData";

// One kind of search in one text, which remembers what it passed over: a text in which every value
// looks for an end that only the last one has is searched once, not once for each value.
class RepeatedSearch {
public:
    // What search(from) gives: the first place of its kind at or behind from and before the next
    // zero byte, or null. The text must not change between the calls.
    template <class Search>
    char const* From(char const* from, Search const& search) {
        bool const isKnown = fFrom != nullptr && fFrom <= from && from <= fTo;
        if (!isKnown) {
            fFound = search(from);
            fFrom = from;
            fTo = fFound != nullptr ? fFound : from + std::strlen(from);
        }
        return fFound;
    }

private:
    char const* fFrom = nullptr;
    char const* fTo = nullptr;
    char const* fFound = nullptr;
};

// What is remembered of the searches below while one text is read.
struct FarSearches {
    RepeatedSearch fStringEnds;
    RepeatedSearch fNumberEnds;
    RepeatedSearch fPoints;
};

// The ")" that ends the string whose bytes begin at first; null if there is none. searches may be
// null. REQUIRES, here and below: the text ends in a zero byte, and before first stands "(".
char const* EndOfString(char const* first, FarSearches* searches) noexcept;

struct NumberToken {
    char const* fEnd; // null for a token without an end
    bool fHasPoint;
};

// The token of the number that begins at first: up to one of kNumberEnds, which must come before
// the zero byte.
NumberToken FindNumber(char const* first, FarSearches* searches) noexcept;

} // namespace format
