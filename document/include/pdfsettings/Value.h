// Settings as C++ values.
//
// Value, Array and Dictionary make up a tree. They depend on no component and no file. Copies share
// their contents until one of them is changed, so copying is cheap. Destroying, copying and
// comparing use no more stack for a deep tree than for a flat one.
//
// Threads: const members may be called from many threads at once, also on copies of one value.
#pragma once

#include "pdfsettings/Error.h"
#include "pdfsettings/Export.h"

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace pdfsettings {

enum class Kind { kBool, kNumber, kName, kString, kHexString, kArray, kDictionary };

// A name without its slash. The names true and false are booleans: /true in a file equals true.
struct Name {
    std::string text;

    bool operator==(Name const&) const = default;
};

// The text of a string, unescaped: any bytes. The library escapes it as needed when it writes a
// file.
struct String {
    std::string text;

    // raw: the bytes between the parentheses in a file.
    static PDFSETTINGS_API String FromRaw(std::string_view raw);

    bool operator==(String const&) const = default;
};

// The bytes between the parentheses of a string in a file, with escapes.
struct RawString {
    std::string bytes;

    bool operator==(RawString const&) const = default;
};

// The bytes between the angle brackets of a hexadecimal string, neither decoded nor checked.
struct HexString {
    std::string digits;

    bool operator==(HexString const&) const = default;
};

template <class T>
concept Numeric = std::is_arithmetic_v<T> && !std::same_as<T, bool> && !std::same_as<T, char>;

class Array;
class Dictionary;
class Settings;

namespace detail {

struct Rep;

PDFSETTINGS_API double ToDouble(float number);
[[noreturn]] PDFSETTINGS_API void ThrowInexact();

template <Numeric T>
double ToDouble(T number) {
    if constexpr (std::integral<T>) {
        constexpr std::int64_t kMost = std::int64_t{1} << 53;
        if (std::cmp_greater(number, kMost) || std::cmp_less(number, -kMost)) {
            ThrowInexact();
        }
    }
    return static_cast<double>(number);
}

} // namespace detail

// One value. A default value is false. Throws Error (kKind) for an integer beyond 2^53, which no
// file can hold exactly.
class PDFSETTINGS_API Value {
public:
    explicit Value() noexcept {}
    // Templates, so that no other type is converted implicitly.
    template <std::same_as<bool> T>
    Value(T flag) : Value(Name{flag ? "true" : "false"}) {}
    template <Numeric T>
    Value(T number) : Value(FromNumber(detail::ToDouble(number))) {}
    Value(Name name);
    Value(String const& string);
    Value(RawString string);
    Value(HexString string);
    Value(Array array);
    Value(Dictionary dictionary);
    // A plain text is ambiguous: write Name or String.
    Value(char const*) = delete;
    Value(std::string) = delete;
    Value(std::string_view) = delete;

    Value(Value const& other) noexcept;
    Value(Value&& other) noexcept;
    Value& operator=(Value const& other) noexcept;
    Value& operator=(Value&& other) noexcept;
    ~Value();

    Kind What() const noexcept;

    // The value as a T: Value; bool; a number type whose range includes it (an integer type: and
    // without a fraction); Name, also for a boolean; String, RawString; HexString; Array;
    // Dictionary; or std::vector of one of these, for an array whose elements all convert. Nothing
    // if the value is of another kind.
    template <class T>
    std::optional<T> If() const;

    // As If. Throws Error (kKind) if the value is of another kind.
    template <class T>
    T As() const;

    // The bytes of a name, or of a string or hexadecimal string between its brackets in a file,
    // with escapes; "true" or "false"; empty for other kinds. Valid as long as this value.
    std::string_view Bytes() const& noexcept;
    std::string_view Bytes() const&& = delete;

    // The value in the syntax of a file, on one line if its strings are. Numbers have the fewest
    // digits that read back as the same number. The text of a value that no file can hold, such as
    // a name with a blank, is another value or none.
    std::string Text() const;

    // As Text. Throws Error (kUnwritable) for a value that no file can hold.
    std::string WritableText() const;

    // The value that text is in a file, which may have blanks and comments around it. Throws Error
    // (kSyntax) with the position in text, also if the value would be read otherwise than it looks.
    static Value Parse(std::string_view text);

    // Whether kinds and contents are equal. Strings are compared unescaped, and NaN equals NaN.
    friend PDFSETTINGS_API bool operator==(Value const& left, Value const& right);

private:
    friend class Array;
    friend class Dictionary;
    friend class Settings;
    friend struct detail::Rep;

    static Value FromNumber(double number);
    std::optional<double> Number() const noexcept;
    std::optional<Array> Elements() const noexcept;
    std::optional<Dictionary> Members() const noexcept;
    String Decoded() const;
    [[noreturn]] void ThrowKind(char const* expected) const;

    detail::Rep* fRep = nullptr; // null for false
};

struct Member;

// A sequence of values.
class PDFSETTINGS_API Array {
public:
    Array() noexcept = default;
    static Array Of(std::initializer_list<Value> values);
    Array(Array const& other) noexcept;
    Array(Array&& other) noexcept;
    Array& operator=(Array other) noexcept;
    ~Array();

    Value const* begin() const noexcept;
    Value const* end() const noexcept { return begin() + size(); }
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }
    // REQUIRES: position < size().
    Value const& operator[](std::size_t position) const noexcept { return begin()[position]; }

    // These invalidate pointers and references into this array. REQUIRES: position < size().
    void push_back(Value value);
    void Set(std::size_t position, Value value);
    void Remove(std::size_t position);

    friend PDFSETTINGS_API bool operator==(Array const& left, Array const& right);

private:
    friend class Value;
    friend class Dictionary;
    friend struct detail::Rep;

    detail::Rep* fRep = nullptr; // null if empty
};

// Values under keys, in the order in which the keys were first set.
class PDFSETTINGS_API Dictionary {
public:
    Dictionary() noexcept = default;
    static Dictionary Of(std::initializer_list<Member> members);
    Dictionary(Dictionary const& other) noexcept;
    Dictionary(Dictionary&& other) noexcept;
    Dictionary& operator=(Dictionary other) noexcept;
    ~Dictionary();

    Member const* begin() const noexcept;
    Member const* end() const noexcept;
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }

    // The value at a path: keys, and positions from 0 in arrays, joined by slashes, as in
    // "ColorImageDict/QFactor" or "OtherNamespaces/0/Namespace". Null if there is none. A slash at
    // the beginning of a key is part of it, as in a file: "A//B" is the key "/B" in A. Valid until
    // this dictionary is changed or destroyed.
    Value const* Find(std::string_view path) const&;
    Value const* Find(std::string_view path) const&& = delete;

    // Stores a value at a path. Missing dictionaries on the path are created; all other values
    // stay. A position equal to the size of an array appends an element. Throws Error (kNoValue),
    // with nothing changed, if the path leads through a value that is not a collection, or to a
    // position that does not exist.
    void Set(std::string_view path, Value value);

    // Removes the value at a path; later elements of an array move up. False if there is no value.
    bool Remove(std::string_view path);

    // As above, for a key of this dictionary, which may have slashes.
    Value const* FindKey(std::string_view key) const&;
    Value const* FindKey(std::string_view key) const&& = delete;
    void SetKey(std::string key, Value value);

    // Whether all keys and their values are equal, in any order.
    friend PDFSETTINGS_API bool operator==(Dictionary const& left, Dictionary const& right);

private:
    friend class Value;
    friend struct detail::Rep;

    detail::Rep* fRep = nullptr; // null if empty
};

// An entry of a dictionary.
struct Member {
    std::string key;
    Value value;
};

inline Member const* Dictionary::end() const noexcept {
    return begin() + size();
}

namespace detail {

template <class T>
struct ElementOf {};
template <class T>
struct ElementOf<std::vector<T>> {
    using Type = T;
};
template <class T>
concept IsVector = requires {
    typename ElementOf<T>::Type;
};

// The number as a T; nothing if it is out of range or, for an integer type, has a fraction.
template <Numeric T>
std::optional<T> ToNumber(double number) {
    if constexpr (std::is_floating_point_v<T>) {
        bool const isInRange =
            !std::isfinite(number) ||
            std::fabs(number) <= static_cast<double>(std::numeric_limits<T>::max());
        return isInRange ? std::optional(static_cast<T>(number)) : std::nullopt;
    } else {
        // The power of two above the maximum, which a double represents exactly.
        double const end = std::ldexp(1.0, std::numeric_limits<T>::digits);
        double const begin = std::is_signed_v<T> ? -end : 0.0;
        bool const isInRange = number >= begin && number < end && std::trunc(number) == number;
        return isInRange ? std::optional(static_cast<T>(number)) : std::nullopt;
    }
}

// The words of an error message for what was expected.
template <class T>
constexpr char const* KindText() {
    if constexpr (std::same_as<T, bool>) {
        return "true or false";
    } else if constexpr (std::integral<T>) {
        return "a whole number in range";
    } else if constexpr (Numeric<T>) {
        return "a number";
    } else if constexpr (std::same_as<T, Name>) {
        return "a name, for example /All";
    } else if constexpr (std::same_as<T, HexString>) {
        return "a hexadecimal string, for example <FEFF>";
    } else if constexpr (std::same_as<T, Array>) {
        return "an array, for example [ /Courier ]";
    } else if constexpr (std::same_as<T, Dictionary>) {
        return "a dictionary, for example << /QFactor 0.4 >>";
    } else if constexpr (IsVector<T>) {
        return "an array of values of one kind";
    } else {
        return "a string in parentheses, for example (Dot Gain 20%)";
    }
}

} // namespace detail

template <class T>
std::optional<T> Value::If() const {
    Kind const kind = What();
    if constexpr (std::same_as<T, Value>) {
        return *this;
    } else if constexpr (std::same_as<T, bool>) {
        return kind == Kind::kBool ? std::optional(Bytes() == "true") : std::nullopt;
    } else if constexpr (Numeric<T>) {
        auto const number = Number();
        return number ? detail::ToNumber<T>(*number) : std::nullopt;
    } else if constexpr (std::same_as<T, Name>) {
        bool const isName = kind == Kind::kName || kind == Kind::kBool;
        return isName ? std::optional(Name{std::string(Bytes())}) : std::nullopt;
    } else if constexpr (std::same_as<T, String>) {
        return kind == Kind::kString ? std::optional(Decoded()) : std::nullopt;
    } else if constexpr (std::same_as<T, RawString>) {
        return kind == Kind::kString ? std::optional(RawString{std::string(Bytes())})
                                     : std::nullopt;
    } else if constexpr (std::same_as<T, HexString>) {
        return kind == Kind::kHexString ? std::optional(HexString{std::string(Bytes())})
                                        : std::nullopt;
    } else if constexpr (std::same_as<T, Array>) {
        return Elements();
    } else if constexpr (std::same_as<T, Dictionary>) {
        return Members();
    } else {
        static_assert(detail::IsVector<T>, "no value is read as this type");
        auto const elements = Elements();
        T result;
        for (std::size_t i = 0; elements && i < elements->size(); ++i) {
            auto element = (*elements)[i].If<typename detail::ElementOf<T>::Type>();
            if (!element) {
                return std::nullopt;
            }
            result.push_back(std::move(*element));
        }
        return elements ? std::optional(std::move(result)) : std::nullopt;
    }
}

template <class T>
T Value::As() const {
    auto value = If<T>();
    if (!value) {
        ThrowKind(detail::KindText<T>());
    }
    return std::move(*value);
}

} // namespace pdfsettings
