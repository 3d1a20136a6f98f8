#include "pdfsettings/Value.h"

namespace pdfsettings {

Value::Value(Word word) : fVariant(std::move(word)) {}
Value::Value(double number) : fVariant(number) {}
Value::Value(String string) : fVariant(std::move(string)) {}
Value::Value(HexString string) : fVariant(std::move(string)) {}
Value::Value(Binary data) : fVariant(std::move(data)) {}
Value::Value(Text16 text) : fVariant(std::move(text)) {}
Value::Value(Array array) : fVariant(std::move(array)) {}
Value::Value(Dictionary dictionary) : fVariant(std::move(dictionary)) {}

Array::Array() noexcept = default;

Array::Array(Array const& other) {
    Copies pending{{&other, this}};
    while (!pending.empty()) {
        auto const [source, target] = pending.back();
        pending.pop_back();
        target->CopyLevel(*source, pending);
    }
}

Array::Array(Array&& other) noexcept : fValues(std::exchange(other.fValues, {})) {}

Array& Array::operator=(Array const& other) {
    Array copy(other);
    fValues.swap(copy.fValues);
    return *this;
}

// The old values go with the local, after other has been emptied: other may be one of them.
Array& Array::operator=(Array&& other) noexcept {
    Array taken(std::move(other));
    fValues.swap(taken.fValues);
    return *this;
}

// Values go from the last to the first. A nested collection is first raised to the top, so that no
// destructor below meets a collection that still has values, and nothing has to be allocated.
Array::~Array() {
    while (!fValues.empty()) {
        std::vector<Value>* const nested = Nested(fValues.back());
        if (nested == nullptr || nested->empty()) {
            fValues.pop_back();
        } else {
            Raise(*nested);
        }
    }
}

// The values of a nested array or dictionary; null for any other value.
std::vector<Value>* Array::Nested(Value& value) noexcept {
    if (auto* const array = value.If<Array>()) {
        return &array->fValues;
    }
    auto* const dictionary = value.If<Dictionary>();
    return dictionary == nullptr ? nullptr : &dictionary->fValues.fValues;
}

// Turns the tree: nested, the values of the last value, becomes the top, and the former top takes
// the place of its first value. Each collection is raised once, so that the destructor ends.
void Array::Raise(std::vector<Value>& nested) noexcept {
    std::vector<Value> raised = std::exchange(nested, {});
    if (fValues.size() > 1) {
        fValues.back() = std::move(raised.front());
        Array formerTop;
        formerTop.fValues.swap(fValues);
        raised.front() = Value(std::move(formerTop));
    }
    fValues = std::move(raised);
}

// Copies the values but for those of nested collections, whose copying is left on pending.
void Array::CopyLevel(Array const& source, Copies& pending) {
    fValues.resize(source.Size());
    for (std::size_t index = 0; index < fValues.size(); ++index) {
        Value const& from = source.fValues[index];
        Value& to = fValues[index];
        if (auto const* const array = from.If<Array>()) {
            to = Value(Array());
            pending.emplace_back(array, to.If<Array>());
        } else if (auto const* const dictionary = from.If<Dictionary>()) {
            Dictionary keys;
            keys.fKeys = dictionary->fKeys;
            keys.fPlaces = dictionary->fPlaces;
            to = Value(std::move(keys));
            pending.emplace_back(&dictionary->fValues, &to.If<Dictionary>()->fValues);
        } else {
            to = from;
        }
    }
}

Array Array::Of(std::initializer_list<Value> values) {
    Array result;
    result.fValues = values;
    return result;
}

std::size_t Array::Size() const noexcept {
    return fValues.size();
}

Value const& Array::operator[](std::size_t index) const {
    return fValues[index];
}
Value& Array::operator[](std::size_t index) {
    return fValues[index];
}

void Array::Append(Value value) {
    fValues.push_back(std::move(value));
}

void Array::Resize(std::size_t count) {
    fValues.resize(count);
}

void Array::Remove(std::size_t index) {
    fValues.erase(fValues.begin() + static_cast<std::ptrdiff_t>(index));
}

std::size_t Dictionary::Size() const noexcept {
    return fPlaces.size();
}

std::string const& Dictionary::KeyAt(std::size_t place) const {
    return fKeys[place];
}
Value const& Dictionary::ValueAt(std::size_t place) const {
    return fValues[place];
}
Value& Dictionary::ValueAt(std::size_t place) {
    return fValues[place];
}

Value const* Dictionary::Get(std::string_view key) const {
    auto const found = fPlaces.find(key);
    return found == fPlaces.end() ? nullptr : &fValues[found->second];
}

Value* Dictionary::Get(std::string_view key) {
    auto const found = fPlaces.find(key);
    return found == fPlaces.end() ? nullptr : &fValues[found->second];
}

// The key enters fPlaces last, and only what stands there counts: a Set that runs out of memory
// leaves the dictionary as it was.
void Dictionary::Set(std::string const& key, Value value) {
    if (Value* const present = Get(key)) {
        *present = std::move(value);
        return;
    }
    std::size_t const place = fPlaces.size();
    fKeys.resize(place);
    fValues.Resize(place);
    fKeys.push_back(key);
    fValues.Append(std::move(value));
    fPlaces.emplace(key, place);
}

bool Dictionary::Remove(std::string_view key) {
    auto const found = fPlaces.find(key);
    if (found == fPlaces.end()) {
        return false;
    }
    std::size_t const place = found->second;
    fPlaces.erase(found);
    fKeys.erase(fKeys.begin() + static_cast<std::ptrdiff_t>(place));
    fValues.Remove(place);
    for (auto& [other, otherPlace] : fPlaces) {
        otherPlace -= otherPlace > place ? 1U : 0U;
    }
    return true;
}

namespace {

using Pairs = std::vector<std::pair<Value const*, Value const*>>;

// The level functions compare one level and leave the values within on pending.
bool LevelEqual(Array const& left, Array const& right, Pairs& pending) {
    if (left.Size() != right.Size()) {
        return false;
    }
    for (std::size_t index = 0; index < left.Size(); ++index) {
        pending.emplace_back(&left[index], &right[index]);
    }
    return true;
}

bool LevelEqual(Dictionary const& left, Dictionary const& right, Pairs& pending) {
    if (left.Size() != right.Size()) {
        return false;
    }
    for (std::size_t place = 0; place < left.Size(); ++place) {
        Value const* const other = right.Get(left.KeyAt(place));
        if (other == nullptr) {
            return false;
        }
        pending.emplace_back(&left.ValueAt(place), other);
    }
    return true;
}

bool LevelEqual(Value const& left, Value const& right, Pairs& pending) {
    if (left.Get().index() != right.Get().index()) {
        return false;
    }
    if (auto const* const array = left.If<Array>()) {
        return LevelEqual(*array, *right.If<Array>(), pending);
    }
    if (auto const* const dictionary = left.If<Dictionary>()) {
        return LevelEqual(*dictionary, *right.If<Dictionary>(), pending);
    }
    return left.Get() == right.Get();
}

template <class Kind>
bool DeepEqual(Kind const& left, Kind const& right) {
    Pairs pending;
    if (!LevelEqual(left, right, pending)) {
        return false;
    }
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

bool operator==(Array const& left, Array const& right) {
    return DeepEqual(left, right);
}

bool operator==(Dictionary const& left, Dictionary const& right) {
    return DeepEqual(left, right);
}

bool operator==(Value const& left, Value const& right) {
    return DeepEqual(left, right);
}

} // namespace pdfsettings
