// Searches that many places of a text make for the same far end.
#pragma once

#include <cstring>

namespace platform {

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

} // namespace platform
