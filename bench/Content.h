// Settings of many sizes, as the text of each library that is measured.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

// Whether the larger texts repeat the keys of the smallest in dictionaries of their own, or have
// one dictionary in which every key is different.
enum class Keys { kFew, kDistinct };

// The same values, each text in the layout that its library writes.
struct Content {
    std::string joboptions;
    std::string json;
    std::string plist;
    std::size_t keys; // in all dictionaries
};

// As many copies of an example of 10 KB with 110 keys; the same object for every call.
Content const& GetContent(std::size_t copies, Keys keys);

} // namespace bench
