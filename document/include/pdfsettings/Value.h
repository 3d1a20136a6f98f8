// Settings as plain C++ values.
//
// A tree of values is made of Value, Array and Dictionary and belongs to nobody else: it knows
// neither the component nor the runtime and outlives both. Destroying, copying, moving and
// comparing one takes no more stack for a deep tree than for a flat one. Values are not protected
// against concurrent use.
#pragma once

#include "pdfsettings/Export.h"

#include <cstddef>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace pdfsettings {

class Value;

// A name without its slash, or a boolean: settings keep no difference between /true and true.
struct Word {
    std::string text;

    bool operator==(Word const&) const = default;
};

// A string: the raw bytes between its parentheses, escapes left as they are.
struct String {
    std::string bytes;

    bool operator==(String const&) const = default;
};

// A hexadecimal string: the raw text between its angle brackets, not decoded and not checked.
struct HexString {
    std::string text;

    bool operator==(HexString const&) const = default;
};

// Any other binary data with the name of its type, for one the tail of a settings file, which is
// the value of kTailKey.
struct Binary {
    std::string type;
    std::string bytes;

    bool operator==(Binary const&) const = default;
};

// UTF-16 text in the machine's byte order.
using Text16 = std::u16string;

// The key, and the name of the binary type, of what follows the settings in their file.
inline constexpr char const* kTailKey = "AlembicorData";

// Values in a row.
class PDFSETTINGS_API Array {
public:
    Array() noexcept;
    Array(Array const& other);
    Array(Array&& other) noexcept;
    Array& operator=(Array const& other);
    Array& operator=(Array&& other) noexcept;
    ~Array();

    // An array of copies of values.
    static Array Of(std::initializer_list<Value> values);

    std::size_t Size() const noexcept;

    // The value at index. REQUIRES: index < Size().
    Value const& operator[](std::size_t index) const;
    Value& operator[](std::size_t index);

    // Adds a value at the end, which ends the validity of references into the array.
    void Append(Value value);

    // Takes the value at index out. REQUIRES: index < Size().
    void Remove(std::size_t index);

    // Makes the size count: values at the end go, or empty words come.
    void Resize(std::size_t count);

    // Equal sizes and equal values.
    friend PDFSETTINGS_API bool operator==(Array const& left, Array const& right);

private:
    using Copies = std::vector<std::pair<Array const*, Array*>>;

    static std::vector<Value>* Nested(Value& value) noexcept;
    void CopyLevel(Array const& source, Copies& pending);
    void Raise(std::vector<Value>& nested) noexcept;

    std::vector<Value> fValues;
};

// Values under keys, in the order in which the keys were first set.
class PDFSETTINGS_API Dictionary {
public:
    std::size_t Size() const noexcept;

    // The key and the value at a place in the order. REQUIRES: place < Size().
    std::string const& KeyAt(std::size_t place) const;
    Value const& ValueAt(std::size_t place) const;
    Value& ValueAt(std::size_t place);

    // The value under key; null when there is none. Valid until the next Set.
    Value const* Get(std::string_view key) const;
    Value* Get(std::string_view key);

    // Stores value under key; a key that is there keeps its place.
    void Set(std::string const& key, Value value);

    // Takes the value under key out; false when there is none.
    bool Remove(std::string_view key);

    // Equal values under equal keys, whatever the order of the keys.
    friend PDFSETTINGS_API bool operator==(Dictionary const& left, Dictionary const& right);

private:
    friend class Array;

    std::vector<std::string> fKeys;
    std::map<std::string, std::size_t, std::less<>> fPlaces;
    Array fValues;
};

// One value of any kind. A new one is the empty word.
class PDFSETTINGS_API Value {
public:
    using Variant =
        std::variant<Word, double, String, HexString, Binary, Text16, Array, Dictionary>;

    Value() = default;
    Value(Word word);
    Value(double number);
    Value(String string);
    Value(HexString string);
    Value(Binary data);
    Value(Text16 text);
    Value(Array array);
    Value(Dictionary dictionary);

    // The value as a variant, for std::visit.
    Variant const& Get() const noexcept { return fVariant; }

    // The value if it is of kind Kind, else null.
    template <class Kind>
    Kind const* If() const noexcept {
        return std::get_if<Kind>(&fVariant);
    }
    template <class Kind>
    Kind* If() noexcept {
        return std::get_if<Kind>(&fVariant);
    }

    // Equal kinds and equal contents; numbers compare as in C++, so NaN equals nothing.
    friend PDFSETTINGS_API bool operator==(Value const& left, Value const& right);

private:
    Variant fVariant;
};

} // namespace pdfsettings
