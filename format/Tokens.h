// The character classes of settings files, and the ends of strings and numbers. All readers of the
// format share this; docs/format.md describes the format. Nothing depends on the locale.
#pragma once

#include <array>
#include <cstring>
#include <string_view>

namespace format {

// A set of bytes with lookup in constant time.
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

// The bytes that may separate tokens, besides comments.
inline constexpr CharSet kBlanks("\t\n\r ");

// The bytes that end a name. Form feed is one though it is no blank, and so is the terminating
// zero.
inline constexpr CharSet kNameEnds(std::string_view("\0\t\n\f\r ()<>[]{}/%", 16));

// The bytes that a number begins with. The zero byte is one, so that a value missing at the end of
// the text is handled by the search for the end of a number.
inline constexpr CharSet kNumberStarts(std::string_view("\0-0123456789", 12));

// The bytes that end the token of a number, together with the zero byte.
inline constexpr CharSet kNumberEnds(" \n\r\t]>");

// The maximum length of a key or name, in bytes.
inline constexpr std::size_t kMaxNameSize = 255;

// The number of zero bytes after a text. A scan may move past the first one and look at two more.
inline constexpr std::size_t kZerosBehindText = 4;

// The extension of settings files.
inline constexpr std::string_view kExtension = ".joboptions";

// The keyword after the settings. The text after it is the tail, which the component keeps under a
// key of its own.
inline constexpr std::string_view kKeyword = "setalembicorparams";
inline constexpr std::string_view kTailKey = "AlembicorData";

// One kind of search in one text, with its last result cached. Without the cache, a text in which
// every value searches for an end that only the last one has would be searched once for each value.
class RepeatedSearch {
public:
    // Returns the result of search(from): the first match at from or later and before the next zero
    // byte, or null. The text must not change between calls.
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

// The cached searches of one text.
struct FarSearches {
    RepeatedSearch fStringEnds;
    RepeatedSearch fNumberEnds;
    RepeatedSearch fPoints;
};

// The first line end of text: LF, CR or CR LF; LF if it has none.
std::string_view FirstLineEnd(std::string_view text) noexcept;

// The ")" that ends the string whose bytes begin at first; null if there is none. searches may be
// null. REQUIRES, also for FindNumber: the text ends with a zero byte. REQUIRES: "(" is before
// first.
char const* EndOfString(char const* first, FarSearches* searches) noexcept;

struct NumberToken {
    char const* fEnd; // null if the token has no end
    bool fHasPoint;
};

// The token of the number that begins at first. It ends at one of kNumberEnds, which must come
// before the zero byte.
NumberToken FindNumber(char const* first, FarSearches* searches) noexcept;

} // namespace format
