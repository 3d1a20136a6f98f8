// The searches of the reader that may lead far beyond the value that they are made for.
#pragma once

#include "platform/RepeatedSearch.h"

namespace JoboptionsParserUtils {

// Remembers the searches of one text that is being read on the current thread, which keeps the time
// for a text in proportion to its length; such objects nest. Without one, every search is made
// anew. REQUIRES: the text does not change while the object lives.
class FarSearches {
public:
    FarSearches() noexcept;
    ~FarSearches();
    FarSearches(FarSearches const&) = delete;
    FarSearches& operator=(FarSearches const&) = delete;

    // The ")" that ends the string whose bytes begin at first; null if there is none.
    static char const* EndOfString(char const* first);

    // The byte that ends the number token at first; null if there is none.
    static char const* EndOfNumber(char const* first);

    // The next "." from first on; null if there is none.
    static char const* Point(char const* first);

private:
    using Kind = platform::RepeatedSearch FarSearches::*;

    template <class Search>
    static char const* Find(Kind kind, char const* first, Search const& search);

    platform::RepeatedSearch fStringEnds;
    platform::RepeatedSearch fNumberEnds;
    platform::RepeatedSearch fPoints;
    FarSearches* fOuter;
};

} // namespace JoboptionsParserUtils
