// Settings as plain C++ values.
//
// A tree of values is made of Value, Array and Dictionary. It knows no component and no file.
// Copies share what neither of them has changed since, so that they cost nothing. Destroying,
// copying and comparing takes no more stack for a deep tree than for a flat one.
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

// A name without its slash. In a file the name /true and true are the same, a boolean.
struct Name {
    std::string text;

    bool operator==(Name const&) const = default;
};

// The text of a string, with its escapes resolved: any bytes. The library escapes what has to be
// when it writes them.
struct String {
    std::string text;

    // raw: what stands between the parentheses in a file.
    static PDFSETTINGS_API String FromRaw(std::string_view raw);

    bool operator==(String const&) const = default;
};

// What stands between the parentheses of a string in a file, escapes included.
struct RawString {
    std::string bytes;

    bool operator==(RawString const&) const = default;
};

// What stands between the angle brackets of a hexadecimal string, not decoded and not checked.
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

// One value. A new one is false. Throws Error (kKind) for a whole number beyond 2^53, which no file
// holds exactly.
class PDFSETTINGS_API Value {
public:
    explicit Value() noexcept {}
    // Templates, so that nothing is converted on the way.
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
    // A text alone does not say what it is to be: write Name or String.
    Value(char const*) = delete;
    Value(std::string) = delete;
    Value(std::string_view) = delete;

    Value(Value const& other) noexcept;
    Value(Value&& other) noexcept;
    Value& operator=(Value const& other) noexcept;
    Value& operator=(Value&& other) noexcept;
    ~Value();

    Kind What() const noexcept;

    // The value as a T: Value; bool; a number type that it is in the range of (a whole type:
    // without a fraction); Name, also of a boolean; String, RawString; HexString; Array;
    // Dictionary; std::vector of one of these, for an array of nothing else. Nothing when it is of
    // another kind.
    template <class T>
    std::optional<T> If() const;

    // The same. Throws Error (kKind).
    template <class T>
    T As() const;

    // The bytes of a name, of a string with its escapes, or of a hexadecimal string, as they stand
    // in a file between its brackets; "true" or "false"; empty for other kinds. Valid as long as
    // this value.
    std::string_view Bytes() const& noexcept;
    std::string_view Bytes() const&& = delete;

    // The value as it stands in a file, on one line if its strings are. A number has the fewest
    // digits that read back as the same.
    std::string Text() const;

    // The value that text is in a file, blanks and comments around it aside. Throws Error (kSyntax)
    // with the place in text, also where the value would be read otherwise than it looks.
    static Value Parse(std::string_view text);

    // Equal kinds and equal contents; strings are compared without their escapes. Not-a-number
    // equals itself.
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

// Values in a row.
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

    // These end the validity of pointers into this array. REQUIRES: position < size().
    void push_back(Value value);
    void Set(std::size_t position, Value value);
    void Remove(std::size_t position);

    friend PDFSETTINGS_API bool operator==(Array const& left, Array const& right);

private:
    friend class Value;
    friend class Dictionary;
    friend struct detail::Rep;

    detail::Rep* fRep = nullptr; // null for an empty one
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
    // "ColorImageDict/QFactor" or "OtherNamespaces/0/Namespace". Null when there is none. A slash
    // that begins a key belongs to it, as it does in a file: "A//B" is the key "/B" in A. Valid
    // until this dictionary is changed or destroyed.
    Value const* Find(std::string_view path) const&;
    Value const* Find(std::string_view path) const&& = delete;

    // Stores a value at a path. Dictionaries that are missing on the way are made, and what stands
    // beside it stays. The size of an array as a position adds an element. Throws Error (kNoValue)
    // where the path leads through a value that is no dictionary or array, or to no position; then
    // nothing has changed.
    void Set(std::string_view path, Value value);

    // Removes the value at a path; elements behind one in an array move up. Whether there was one.
    bool Remove(std::string_view path);

    // The same for a key of this dictionary, which may hold slashes.
    Value const* FindKey(std::string_view key) const&;
    Value const* FindKey(std::string_view key) const&& = delete;
    void SetKey(std::string key, Value value);

    // Equal values under equal keys, whatever the order of the keys.
    friend PDFSETTINGS_API bool operator==(Dictionary const& left, Dictionary const& right);

private:
    friend class Value;
    friend struct detail::Rep;

    detail::Rep* fRep = nullptr; // null for an empty one
};

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

// The number as a T; nothing where that cannot hold it exactly, but for its precision.
template <Numeric T>
std::optional<T> ToNumber(double number) {
    if constexpr (std::is_floating_point_v<T>) {
        bool const isInRange =
            !std::isfinite(number) ||
            std::fabs(number) <= static_cast<double>(std::numeric_limits<T>::max());
        return isInRange ? std::optional(static_cast<T>(number)) : std::nullopt;
    } else {
        // The power of two behind the largest value, which a double holds exactly.
        double const end = std::ldexp(1.0, std::numeric_limits<T>::digits);
        double const begin = std::is_signed_v<T> ? -end : 0.0;
        bool const isInRange = number >= begin && number < end && std::trunc(number) == number;
        return isInRange ? std::optional(static_cast<T>(number)) : std::nullopt;
    }
}

// What an error says was expected.
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
