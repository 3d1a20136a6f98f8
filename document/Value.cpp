#include "pdfsettings/Value.h"

#include "format/FloatFromChars.h"
#include "format/SettingPath.h"
#include "format/StringText.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <iterator>
#include <memory>
#include <unordered_set>
#include <utility>
#include <variant>

namespace pdfsettings {

namespace detail {

namespace {

using Elements = std::vector<Value>;

// The members of a dictionary, in order. A few are searched without an index.
class Members {
public:
    Members() = default;
    Members(Members const& other) : fList(other.fList) { MakeIndex(); }
    Members& operator=(Members const&) = delete;
    ~Members() = default;

    std::vector<Member> const& List() const noexcept { return fList; }
    Value& At(std::size_t place) noexcept { return fList[place].value; }

    // The position of key; the size if there is none.
    std::size_t Find(std::string_view key) const {
        if (fIndex == nullptr) {
            auto const found = std::ranges::find(fList, key, &Member::key);
            return static_cast<std::size_t>(found - fList.begin());
        }
        auto const found = fIndex->find(key);
        return found == fIndex->end() ? fList.size() : *found;
    }

    void Append(std::string key) {
        fList.push_back({std::move(key), Value()});
        if (fIndex != nullptr) {
            fIndex->insert(fList.size() - 1);
        } else {
            MakeIndex();
        }
    }

    void Remove(std::size_t place) {
        // Append makes it again.
        fIndex.reset();
        fList.erase(fList.begin() + static_cast<std::ptrdiff_t>(place));
    }

private:
    static constexpr std::size_t kFew = 16;

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const noexcept {
            return std::hash<std::string_view>()(key);
        }
        std::size_t operator()(std::size_t place) const noexcept {
            return (*this)((*fList)[place].key);
        }
        std::vector<Member> const* fList;
    };

    struct Equal {
        using is_transparent = void;
        bool operator()(std::size_t left, std::size_t right) const noexcept {
            return left == right;
        }
        bool operator()(std::string_view key, std::size_t place) const noexcept {
            return (*fList)[place].key == key;
        }
        bool operator()(std::size_t place, std::string_view key) const noexcept {
            return (*this)(key, place);
        }
        std::vector<Member> const* fList;
    };

    using Index = std::unordered_set<std::size_t, Hash, Equal>;

    void MakeIndex() {
        if (fList.size() <= kFew) {
            return;
        }
        fIndex = std::make_unique<Index>(2 * fList.size(), Hash{&fList}, Equal{&fList});
        for (std::size_t place = 0; place < fList.size(); ++place) {
            fIndex->insert(place);
        }
    }

    std::vector<Member> fList;
    std::unique_ptr<Index> fIndex; // positions by key; null for few members
};

} // namespace

// The shared content of values, with a reference count. Content with more than one reference is
// never changed; Own copies it first. Copying a value of any depth therefore costs one reference,
// and a change copies only the collections on its path.
struct Rep {
    using Content = std::variant<double, std::string, Elements, Members>;

    template <class T>
    Rep(Kind kind, std::in_place_type_t<T> type, auto&&... arguments)
        : fKind(kind),
          fContent(type, std::forward<decltype(arguments)>(arguments)...) {}

    std::atomic<std::size_t> fReferences = 1;
    Kind const fKind;
    Rep* fNextReleased = nullptr;
    Content fContent;

    template <class T>
    T& As() noexcept {
        return *std::get_if<T>(&fContent);
    }

    static Rep* Share(Rep* rep) noexcept {
        if (rep != nullptr) {
            rep->fReferences.fetch_add(1, std::memory_order_relaxed);
        }
        return rep;
    }

    // Iterative destruction: content that loses its last reference goes into a list, linked through
    // fNextReleased, which needs no memory. Dropping the content of one node adds its children to
    // the list instead of destroying them recursively.
    static void Release(Rep* rep) noexcept {
        Rep* released = nullptr;
        Drop(rep, released);
        while (released != nullptr) {
            std::unique_ptr<Rep> const next(std::exchange(released, released->fNextReleased));
            next->DropContent(released);
        }
    }

    // The content of rep as a T with a single reference; copies shared content first.
    template <class T>
    static T& Own(Rep*& rep, Kind kind) {
        if (rep == nullptr) {
            rep = new Rep(kind, std::in_place_type<T>);
        } else if (rep->fReferences.load(std::memory_order_acquire) != 1) {
            Rep* const copy = new Rep(kind, std::in_place_type<T>, std::as_const(rep->As<T>()));
            Release(std::exchange(rep, copy));
        }
        return rep->As<T>();
    }

    static Elements& OwnElements(Rep*& rep) { return Own<Elements>(rep, Kind::kArray); }
    static Members& OwnMembers(Rep*& rep) { return Own<Members>(rep, Kind::kDictionary); }

    static Rep*& Of(Value& value) noexcept { return value.fRep; }
    static Rep* Of(Value const& value) noexcept { return value.fRep; }

private:
    void DropContent(Rep*& released) noexcept {
        if (auto* const elements = std::get_if<Elements>(&fContent)) {
            for (Value& value : *elements) {
                Drop(std::exchange(value.fRep, nullptr), released);
            }
        } else if (auto* const members = std::get_if<Members>(&fContent)) {
            for (std::size_t place = 0; place < members->List().size(); ++place) {
                Drop(std::exchange(members->At(place).fRep, nullptr), released);
            }
        }
    }

    static void Drop(Rep* rep, Rep*& released) noexcept {
        if (rep != nullptr && rep->fReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            rep->fNextReleased = std::exchange(released, rep);
        }
    }
};

namespace {

Rep* MakeText(Kind kind, std::string text) {
    return new Rep(kind, std::in_place_type<std::string>, std::move(text));
}

std::vector<Member> const& MembersOf(Rep* rep) noexcept {
    static std::vector<Member> const kNone;
    return rep == nullptr ? kNone : rep->As<Members>().List();
}

Elements const& ElementsOf(Rep* rep) noexcept {
    static Elements const kNone;
    return rep == nullptr ? kNone : rep->As<Elements>();
}

Value const* FindMember(Rep* rep, std::string_view key) {
    if (rep == nullptr) {
        return nullptr;
    }
    auto& members = rep->As<Members>();
    std::size_t const place = members.Find(key);
    return place < members.List().size() ? &members.At(place) : nullptr;
}

Value const* FindElement(Rep* rep, std::string_view part) {
    auto const& elements = ElementsOf(rep);
    std::size_t const position = format::PositionIn(part).value_or(elements.size());
    return position < elements.size() ? &elements[position] : nullptr;
}

// The value one part of a path below value; null if there is none.
Value const* Step(Value const& value, std::string_view part) {
    switch (value.What()) {
    case Kind::kDictionary:
        return FindMember(Rep::Of(value), part);
    case Kind::kArray:
        return FindElement(Rep::Of(value), part);
    default:
        return nullptr;
    }
}

// Pairs of values to be compared. An explicit stack, so that deep nesting uses no more stack.
using Pairs = std::vector<std::pair<Value const*, Value const*>>;

bool PushElements(Rep* left, Rep* right, Pairs& pending) {
    auto const& before = ElementsOf(left);
    auto const& after = ElementsOf(right);
    if (before.size() != after.size()) {
        return false;
    }
    for (std::size_t position = 0; position < before.size(); ++position) {
        pending.emplace_back(&before[position], &after[position]);
    }
    return true;
}

bool PushMembers(Rep* left, Rep* right, Pairs& pending) {
    if (MembersOf(left).size() != MembersOf(right).size()) {
        return false;
    }
    for (Member const& member : MembersOf(left)) {
        Value const* const other = FindMember(right, member.key);
        if (other == nullptr) {
            return false;
        }
        pending.emplace_back(&member.value, other);
    }
    return true;
}

bool AreSameNumbers(double left, double right) noexcept {
    return left == right || (std::isnan(left) && std::isnan(right));
}

bool LevelEqual(Value const& left, Value const& right, Pairs& pending) {
    Rep* const one = Rep::Of(left);
    Rep* const other = Rep::Of(right);
    if (one == other) {
        return true;
    }
    if (left.What() != right.What()) {
        return false;
    }
    switch (left.What()) {
    case Kind::kNumber:
        return AreSameNumbers(one->As<double>(), other->As<double>());
    case Kind::kString:
        return left.Bytes() == right.Bytes() ||
               format::DecodeString(left.Bytes()) == format::DecodeString(right.Bytes());
    case Kind::kArray:
        return PushElements(one, other, pending);
    case Kind::kDictionary:
        return PushMembers(one, other, pending);
    default:
        return left.Bytes() == right.Bytes();
    }
}

bool AllEqual(Pairs& pending) {
    while (!pending.empty()) {
        auto const [one, other] = pending.back();
        pending.pop_back();
        if (!LevelEqual(*one, *other, pending)) {
            return false;
        }
    }
    return true;
}

} // namespace

} // namespace detail

using detail::Rep;

String String::FromRaw(std::string_view raw) {
    return {format::DecodeString(raw)};
}

Value::Value(Name name) {
    bool const isBool = name.text == "true" || name.text == "false";
    fRep = detail::MakeText(isBool ? Kind::kBool : Kind::kName, std::move(name.text));
}

Value::Value(String const& string)
    : fRep(detail::MakeText(Kind::kString, format::EncodeString(string.text))) {}
Value::Value(RawString string) : fRep(detail::MakeText(Kind::kString, std::move(string.bytes))) {}
Value::Value(HexString string)
    : fRep(detail::MakeText(Kind::kHexString, std::move(string.digits))) {}

Value::Value(Array array) : fRep(std::exchange(array.fRep, nullptr)) {
    if (fRep == nullptr) {
        Rep::OwnElements(fRep);
    }
}

Value::Value(Dictionary dictionary) : fRep(std::exchange(dictionary.fRep, nullptr)) {
    if (fRep == nullptr) {
        Rep::OwnMembers(fRep);
    }
}

Value::Value(Value const& other) noexcept : fRep(Rep::Share(other.fRep)) {}
Value::Value(Value&& other) noexcept : fRep(std::exchange(other.fRep, nullptr)) {}

// Takes the new reference before it releases the old one, which other may be part of.
Value& Value::operator=(Value const& other) noexcept {
    Value copy(other);
    std::swap(fRep, copy.fRep);
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    Rep* const taken = std::exchange(other.fRep, nullptr);
    Rep::Release(std::exchange(fRep, taken));
    return *this;
}

Value::~Value() {
    Rep::Release(fRep);
}

Kind Value::What() const noexcept {
    return fRep == nullptr ? Kind::kBool : fRep->fKind;
}

std::string_view Value::Bytes() const& noexcept {
    if (fRep == nullptr) {
        return "false";
    }
    auto const* const text = std::get_if<std::string>(&fRep->fContent);
    return text == nullptr ? std::string_view() : *text;
}

// Converts by the shortest decimal form, so that 0.4F becomes 0.4 and not 0.4000000059604645.
double detail::ToDouble(float number) {
    char digits[32];
    auto const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    double result = number;
    format::FloatFromChars({std::begin(digits), end}, result);
    return result;
}

void detail::ThrowInexact() {
    throw Error(Fault::kKind, "a whole number beyond 2^53 is not stored exactly");
}

Value Value::FromNumber(double number) {
    Value value;
    value.fRep = new Rep(Kind::kNumber, std::in_place_type<double>, number);
    return value;
}

std::optional<double> Value::Number() const noexcept {
    return What() == Kind::kNumber ? std::optional(fRep->As<double>()) : std::nullopt;
}

std::optional<Array> Value::Elements() const noexcept {
    if (What() != Kind::kArray) {
        return std::nullopt;
    }
    Array array;
    array.fRep = Rep::Share(fRep);
    return array;
}

std::optional<Dictionary> Value::Members() const noexcept {
    if (What() != Kind::kDictionary) {
        return std::nullopt;
    }
    Dictionary dictionary;
    dictionary.fRep = Rep::Share(fRep);
    return dictionary;
}

String Value::Decoded() const {
    return String::FromRaw(Bytes());
}

void Value::ThrowKind(char const* expected) const {
    constexpr std::size_t kMost = 100;
    std::string const text = Text();
    throw Error(
        Fault::kKind,
        std::string("expected ") + expected + "; found " + text.substr(0, kMost) +
            (text.size() > kMost ? "..." : ""));
}

bool operator==(Value const& left, Value const& right) {
    detail::Pairs pending{{&left, &right}};
    return detail::AllEqual(pending);
}

Array Array::Of(std::initializer_list<Value> values) {
    Array array;
    for (Value const& value : values) {
        array.push_back(value);
    }
    return array;
}

Array::Array(Array const& other) noexcept : fRep(Rep::Share(other.fRep)) {}
Array::Array(Array&& other) noexcept : fRep(std::exchange(other.fRep, nullptr)) {}

Array& Array::operator=(Array other) noexcept {
    std::swap(fRep, other.fRep);
    return *this;
}

Array::~Array() {
    Rep::Release(fRep);
}

Value const* Array::begin() const noexcept {
    return detail::ElementsOf(fRep).data();
}

std::size_t Array::size() const noexcept {
    return detail::ElementsOf(fRep).size();
}

void Array::push_back(Value value) {
    Rep::OwnElements(fRep).push_back(std::move(value));
}

void Array::Set(std::size_t position, Value value) {
    Rep::OwnElements(fRep)[position] = std::move(value);
}

void Array::Remove(std::size_t position) {
    auto& elements = Rep::OwnElements(fRep);
    elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(position));
}

bool operator==(Array const& left, Array const& right) {
    detail::Pairs pending;
    return detail::PushElements(left.fRep, right.fRep, pending) && detail::AllEqual(pending);
}

Dictionary Dictionary::Of(std::initializer_list<Member> members) {
    Dictionary dictionary;
    for (Member const& member : members) {
        dictionary.SetKey(member.key, member.value);
    }
    return dictionary;
}

Dictionary::Dictionary(Dictionary const& other) noexcept : fRep(Rep::Share(other.fRep)) {}
Dictionary::Dictionary(Dictionary&& other) noexcept : fRep(std::exchange(other.fRep, nullptr)) {}

Dictionary& Dictionary::operator=(Dictionary other) noexcept {
    std::swap(fRep, other.fRep);
    return *this;
}

Dictionary::~Dictionary() {
    Rep::Release(fRep);
}

Member const* Dictionary::begin() const noexcept {
    return detail::MembersOf(fRep).data();
}

std::size_t Dictionary::size() const noexcept {
    return detail::MembersOf(fRep).size();
}

Value const* Dictionary::FindKey(std::string_view key) const& {
    return detail::FindMember(fRep, key);
}

Value const* Dictionary::Find(std::string_view path) const& {
    std::string_view part = format::FirstPart(path);
    Value const* value = FindKey(part);
    while (value != nullptr && part.size() < path.size()) {
        path.remove_prefix(part.size() + 1);
        part = format::FirstPart(path);
        value = detail::Step(*value, part);
    }
    return value;
}

namespace detail {

namespace {

// The value of key, which is added if it is missing.
Value& SlotAt(Rep*& dictionary, std::string_view key) {
    auto& members = Rep::OwnMembers(dictionary);
    std::size_t const place = members.Find(key);
    if (place == members.List().size()) {
        members.Append(std::string(key));
    }
    return members.At(place);
}

Value& SlotAtPosition(Rep*& array, std::string_view part) {
    auto& elements = Rep::OwnElements(array);
    std::size_t const position = *format::PositionIn(part);
    if (position == elements.size()) {
        elements.emplace_back();
    }
    return elements[position];
}

[[noreturn]] void ThrowNoWay(std::string_view path, std::size_t end, char const* reason) {
    throw Error(
        Fault::kNoValue, std::string(path) + ": " + std::string(path.substr(0, end)) + reason);
}

// Throws Error (kNoValue) if value, whose path is the first end bytes of path, cannot have part as
// its next part.
void RequireStep(
    Value const& value, std::string_view path, std::size_t end, std::string_view part) {
    if (value.What() == Kind::kDictionary) {
        return;
    }
    if (value.What() != Kind::kArray) {
        ThrowNoWay(path, end, " is neither a dictionary nor an array");
    }
    auto const position = format::PositionIn(part);
    if (!position || *position > value.As<Array>().size()) {
        ThrowNoWay(path, end, " has no such position");
    }
}

// Throws Error (kNoValue) if existing values do not allow a value at path.
void RequireWay(Dictionary const& root, std::string_view path) {
    std::string_view part = format::FirstPart(path);
    std::size_t end = part.size();
    Value const* value = root.FindKey(part);
    while (value != nullptr && end < path.size()) {
        part = format::FirstPart(path.substr(end + 1));
        RequireStep(*value, path, end, part);
        value = Step(*value, part);
        end += 1 + part.size();
    }
}

} // namespace

} // namespace detail

void Dictionary::Set(std::string_view path, Value value) {
    detail::RequireWay(*this, path);
    std::string_view part = format::FirstPart(path);
    Value* slot = &detail::SlotAt(fRep, part);
    while (part.size() < path.size()) {
        path.remove_prefix(part.size() + 1);
        part = format::FirstPart(path);
        bool const isArray = slot->What() == Kind::kArray;
        if (!isArray && slot->What() != Kind::kDictionary) {
            *slot = Dictionary();
        }
        slot = isArray ? &detail::SlotAtPosition(Rep::Of(*slot), part)
                       : &detail::SlotAt(Rep::Of(*slot), part);
    }
    *slot = std::move(value);
}

void Dictionary::SetKey(std::string key, Value value) {
    auto& members = Rep::OwnMembers(fRep);
    std::size_t const place = members.Find(key);
    if (place == members.List().size()) {
        members.Append(std::move(key));
    }
    members.At(place) = std::move(value);
}

bool Dictionary::Remove(std::string_view path) {
    Value const* const found = Find(path);
    if (found == nullptr) {
        return false;
    }
    Rep** collection = &fRep;
    bool isArray = false;
    std::string_view part = format::FirstPart(path);
    while (part.size() < path.size()) {
        Value& slot =
            isArray ? detail::SlotAtPosition(*collection, part) : detail::SlotAt(*collection, part);
        isArray = slot.What() == Kind::kArray;
        collection = &Rep::Of(slot);
        path.remove_prefix(part.size() + 1);
        part = format::FirstPart(path);
    }
    if (isArray) {
        auto& elements = Rep::OwnElements(*collection);
        elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(*format::PositionIn(part)));
    } else {
        auto& members = Rep::OwnMembers(*collection);
        members.Remove(members.Find(part));
    }
    return true;
}

bool operator==(Dictionary const& left, Dictionary const& right) {
    detail::Pairs pending;
    return detail::PushMembers(left.fRep, right.fRep, pending) && detail::AllEqual(pending);
}

} // namespace pdfsettings
