// Scalar values, arrays, dictionaries, cursors, and values from text.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/Models.h"
#include "conformance/Stream.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

namespace conformance {

namespace {

// The methods of every value, under the signature of this one.
_t_POSObjectVirtualInterface MethodsOf(Runtime const& runtime, POSObject* value) {
    return runtime.Methods<_t_POSObjectVirtualInterface>(value);
}

bool AreEqual(Runtime const& runtime, POSObject* left, POSObject* right) {
    return MethodsOf(runtime, left).IsEqual(left, right) != 0;
}

// Scalars.

void HoldsNumbers(Runtime const& runtime) {
    auto const numbers = runtime.Numbers();
    for (double const value :
         {0.0, -0.5, 1e300, 4294967296.0, std::numeric_limits<double>::infinity()}) {
        auto const number = runtime.Hold(numbers.NewPOSNumber(value));
        Expect("the number", value, numbers.Get(number));
    }
    auto const number = runtime.Hold(numbers.NewPOSNumber(std::nan("")));
    Require(std::isnan(numbers.Get(number)), "not a number, as it was stored", "another number");
}

void CopiesStrings(Runtime const& runtime) {
    auto const strings = runtime.Strings();
    std::string text = "caf\xC3\xA9";
    auto const string = runtime.Hold(strings.NewPOSString(text.c_str()));
    text = "changed";
    Expect("the string", std::string("caf\xC3\xA9"), strings.Get(string));
    auto const empty = runtime.Hold(strings.NewPOSString(nullptr));
    Expect("a string made of null", std::string(), strings.Get(empty));
}

void CopiesUnicodeStrings(Runtime const& runtime) {
    auto const strings = runtime.Rows<_t_POSUnicodeStringInterface>();
    unsigned short units[] = {'a', 0xD83D, 0xDE00, 0};
    auto const string = runtime.Hold(strings.NewPOSUnicodeString(units));
    units[0] = 'b';
    unsigned short const* const found = strings.Get(string);
    Require(
        found && found[0] == 'a' && found[1] == 0xD83D && found[2] == 0xDE00 && found[3] == 0,
        "the units that were copied, and a zero unit",
        "others");
    auto const empty = runtime.Hold(strings.NewPOSUnicodeString(nullptr));
    Require(strings.Get(empty) && *strings.Get(empty) == 0, "an empty string for null", "another");
}

void CopiesBinaryData(Runtime const& runtime) {
    auto const rows = runtime.Rows<_t_POSBinDataInterface>();
    unsigned char bytes[] = {0, 1, 255};
    auto const data = runtime.Hold(rows.NewPOSBinData("ConformanceType", bytes, 3));
    bytes[2] = 0;
    Expect("the type name", std::string("ConformanceType"), rows.GetTypeName(data));
    Expect("the size", 3UL, rows.GetSize(data));
    Require(
        std::memcmp(rows.GetBinData(data), "\0\1\377", 3) == 0,
        "the bytes that were copied",
        "others");
    auto const empty = runtime.Hold(rows.NewPOSBinData("ConformanceType", nullptr, 0));
    Expect("the size of no bytes", 0UL, rows.GetSize(empty));
}

// One value of each type, in the order of IsOfType.
struct Samples {
    explicit Samples(Runtime const& runtime)
        : fRuntime(runtime),
          fValues{
              runtime.NewNumber(1),
              runtime.NewString("text"),
              As<POSObject>(
                  runtime.Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(kUnits)),
              As<POSObject>(runtime.Rows<_t_POSBinDataInterface>().NewPOSBinData("T", nullptr, 0)),
              As<POSObject>(runtime.Arrays().NewPOSArray()),
              As<POSObject>(runtime.Dicts().NewPOSDict())} {
        for (POSObject* const value : fValues) {
            runtime.Containers().AddRef(As<BIBContainer>(value));
        }
    }
    Samples(Samples const&) = delete;
    Samples& operator=(Samples const&) = delete;
    ~Samples() {
        for (POSObject* const value : fValues) {
            fRuntime.Containers().Release(As<BIBContainer>(value));
        }
    }

    // Whether value is of the type with that index, by the runtime's own answer.
    bool IsOfType(int type, POSObject* value) const {
        switch (type) {
        case 0:
            return fRuntime.Numbers().IsPOSNumber(value) != 0;
        case 1:
            return fRuntime.Strings().IsPOSString(value) != 0;
        case 2:
            return fRuntime.Rows<_t_POSUnicodeStringInterface>().IsPOSUnicodeString(value) != 0;
        case 3:
            return fRuntime.Rows<_t_POSBinDataInterface>().IsPOSBinData(value) != 0;
        case 4:
            return fRuntime.Arrays().IsPOSArray(value) != 0;
        default:
            return fRuntime.Dicts().IsPOSDict(value) != 0;
        }
    }

    static constexpr int kTypes = 6;
    static constexpr unsigned short kUnits[] = {'u', 0};

    Runtime const& fRuntime;
    POSObject* fValues[kTypes];
};

void KnowsTypes(Runtime const& runtime) {
    Samples const samples(runtime);
    for (int type = 0; type < Samples::kTypes; ++type) {
        for (int value = 0; value < Samples::kTypes; ++value) {
            Require(
                samples.IsOfType(type, samples.fValues[value]) == (type == value),
                "nonzero for a value of its type and zero for any other",
                "type " + std::to_string(type) + ", value " + std::to_string(value));
        }
        Require(!samples.IsOfType(type, nullptr), "zero for null", "nonzero");
    }
}

void MakesUnownedValues(Runtime const& runtime) {
    Samples const samples(runtime);
    for (POSObject* const value : samples.fValues) {
        Expect("references after the first AddRef", 1L, runtime.CountOf(As<BIBContainer>(value)));
    }
}

void ClonesEveryKind(Runtime const& runtime) {
    Samples const samples(runtime);
    for (int type = 0; type < Samples::kTypes; ++type) {
        POSObject* const value = samples.fValues[type];
        auto const copy = runtime.Hold(MethodsOf(runtime, value).Clone(value));
        Require(copy != value, "another value", "the same one");
        Require(samples.IsOfType(type, copy), "a copy of the same type", "of another type");
        Require(AreEqual(runtime, value, copy), "a copy that is equal", "not equal");
    }
    auto const deep = runtime.Hold(runtime.NewNested(1000));
    auto const copy = runtime.Hold(MethodsOf(runtime, deep).Clone(deep));
    Require(AreEqual(runtime, deep, copy), "an equal copy of 1,000 nested arrays", "not equal");
    auto const twice = runtime.Hold(runtime.Arrays().NewPOSArray());
    auto const part = runtime.Hold(runtime.Parse("[ [ ] ]"));
    runtime.Arrays().Append(twice, part);
    runtime.Arrays().Append(twice, part);
    auto const same = runtime.Hold(runtime.Parse("[ [ [ ] ] [ [ ] ] ]"));
    Require(AreEqual(runtime, twice.Value(), same), "equal, with one part twice", "not equal");
    auto const copyOfTwice = runtime.Hold(MethodsOf(runtime, twice.Value()).Clone(twice.Value()));
    Require(AreEqual(runtime, copyOfTwice, same), "a copy, with one part twice", "another");
}

using NamedValue = std::pair<std::string, POSObject*>;

// Unowned values. Of each two of these, none is equal to the other.
std::vector<NamedValue> MakeDifferentValues(Runtime const& runtime) {
    auto const binary = [&](char const* type, char const* bytes) {
        POSBinData* const made = runtime.Rows<_t_POSBinDataInterface>().NewPOSBinData(
            type, reinterpret_cast<unsigned char const*>(bytes), std::strlen(bytes));
        return NamedValue(
            "binary data of type " + std::string(type) + ", " + bytes, As<POSObject>(made));
    };
    auto const wide = [&](char const* text) {
        std::vector<unsigned short> const units(text, text + std::strlen(text) + 1);
        POSUnicodeString* const made =
            runtime.Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(units.data());
        return NamedValue("the 16-bit string " + std::string(text), As<POSObject>(made));
    };
    std::vector<NamedValue> values{
        wide("u"),
        wide("uvwx"),
        wide("uvwy"),
        binary("T", "u"),
        binary("U", "u"),
        binary("T", "uv")};
    for (char const* const text :
         {"0",
          "1",
          "()",
          "u",
          "v",
          "[ ]",
          "< >",
          "[ [ ] ]",
          "[ < > ]",
          "[ 1 ]",
          "[ (1) ]",
          "< A 1 >",
          "< A (1) >",
          "< B 1 >"}) {
        values.emplace_back(text, runtime.Parse(text));
    }
    return values;
}

void ComparesTypesAndContents(Runtime const& runtime) {
    auto const arrays = runtime.Arrays();
    auto const owner = runtime.Hold(arrays.NewPOSArray());
    auto const values = MakeDifferentValues(runtime);
    for (auto const& [name, value] : values) {
        Require(arrays.Append(owner, value) != 0, "nonzero of Append", "zero");
    }
    for (auto const& [leftName, left] : values) {
        auto const copy = runtime.Hold(MethodsOf(runtime, left).Clone(left));
        for (auto const& [rightName, right] : values) {
            Require(
                AreEqual(runtime, copy, right) == (left == right),
                "a copy is equal to its original alone",
                std::string(leftName).append(" copied, and ").append(rightName));
        }
        Require(MethodsOf(runtime, left).IsEqual(left, nullptr) == 0, "zero for null", "nonzero");
    }
}

constexpr Check kScalarChecks[] = {
    {"value.numbers", "A number is a double.", &HoldsNumbers},
    {"value.strings", "A string is copied; null counts as empty.", &CopiesStrings},
    {"value.unicode-strings",
     "A 16-bit string is UTF-16, terminated by a zero unit, and copied; null counts as empty.",
     &CopiesUnicodeStrings},
    {"value.binary-data",
     "The type name and the bytes of binary data are copied.",
     &CopiesBinaryData},
    {"value.types",
     "Each Is procedure gives nonzero for a value of its type, and zero for any other and null.",
     &KnowsTypes},
    {"value.unowned", "A new value is unowned.", &MakesUnownedValues},
    {"value.clone",
     "Clone makes a deep copy, unowned, of 1,000 levels at least.",
     &ClonesEveryKind},
    {"value.equality",
     "IsEqual gives nonzero if both have the same type and equal contents.",
     &ComparesTypesAndContents},
};

// Arrays.

std::string Content(Runtime const& runtime, POSArray* array) {
    std::string content;
    for (unsigned long i = 0; i < runtime.Arrays().Count(array); ++i) {
        auto const number = runtime.NumberOf(runtime.Arrays().GetAt(array, i));
        content += number ? std::to_string(static_cast<long>(*number)) + " " : "? ";
    }
    return content;
}

void ChangesArrays(Runtime const& runtime) {
    auto const arrays = runtime.Arrays();
    auto const array = runtime.Hold(arrays.NewPOSArray());
    Require(arrays.IsPOSArray(array.Value()) != 0, "nonzero of IsPOSArray", "zero");
    Expect("the count of a new array", 0UL, arrays.Count(array));
    for (int i = 0; i < 3; ++i) {
        Require(arrays.Append(array, runtime.NewNumber(i)) != 0, "nonzero of Append", "zero");
    }
    Expect("the elements", std::string("0 1 2 "), Content(runtime, array));
    Require(arrays.SetAt(array, 1, runtime.NewNumber(7)) != 0, "nonzero of SetAt", "zero");
    Expect("the elements after SetAt", std::string("0 7 2 "), Content(runtime, array));
    Require(arrays.Remove(array, 0) != 0, "nonzero of Remove", "zero");
    Expect("the elements after Remove", std::string("7 2 "), Content(runtime, array));
}

void RefusesOtherIndexes(Runtime const& runtime) {
    auto const arrays = runtime.Arrays();
    auto const array = runtime.Hold(arrays.NewPOSArray());
    arrays.Append(array, runtime.NewNumber(1));
    auto const number = runtime.Hold(runtime.NewNumber(2));
    constexpr unsigned long kLargest = std::numeric_limits<unsigned long>::max();
    constexpr unsigned long kUpperHalf = kLargest
                                         << (std::numeric_limits<unsigned long>::digits / 2);
    for (unsigned long const index : {1UL, kLargest / 2 + 1, kUpperHalf, kLargest}) {
        Expect("GetAt behind the end", nullptr, arrays.GetAt(array, index));
        Expect("SetAt behind the end", 0L, arrays.SetAt(array, index, number));
        Expect("Remove behind the end", 0L, arrays.Remove(array, index));
    }
    Expect("SetAt of null", 0L, arrays.SetAt(array, 0, nullptr));
    Expect("Append of null", 0L, arrays.Append(array, nullptr));
    Expect("the elements", std::string("1 "), Content(runtime, array));
}

// A number, unowned, whose end is counted.
POSObject* NewWatched(Runtime const& runtime, int& deleted) {
    POSObject* const number = runtime.NewNumber(1);
    runtime.Succeed(
        "RegisterInstance",
        runtime.Containers().RegisterInstance(
            As<BIBContainer>(number),
            &deleted,
            Atom(runtime, "ConformanceWatch"),
            [](void* counter) { ++*static_cast<int*>(counter); }));
    return number;
}

void CountsElements(Runtime const& runtime) {
    auto const arrays = runtime.Arrays();
    auto const number = runtime.Hold(runtime.NewNumber(1));
    {
        auto const array = runtime.Hold(arrays.NewPOSArray());
        arrays.Append(array, number);
        Expect("the references on an element", 2L, runtime.CountOf(number.Container()));
        Require(arrays.GetAt(array, 0) == number, "the element itself", "another value");
        Expect("the references after reading it", 2L, runtime.CountOf(number.Container()));
        arrays.SetAt(array, 0, runtime.NewNumber(2));
        Expect("the references after replacing it", 1L, runtime.CountOf(number.Container()));
        arrays.Append(array, number);
        arrays.Remove(array, 1);
        Expect("the references after removing it", 1L, runtime.CountOf(number.Container()));
        arrays.Append(array, number);
        int deleted = 0;
        arrays.Append(array, NewWatched(runtime, deleted));
        Require(arrays.SetAt(array, 2, arrays.GetAt(array, 2)) != 0, "nonzero of SetAt", "zero");
        Expect("destructions of an element that is stored in its own place", 0, deleted);
    }
    Expect("the references without the array", 1L, runtime.CountOf(number.Container()));
}

constexpr Check kArrayChecks[] = {
    {"array.change",
     "Append adds at the end, SetAt replaces and Remove removes an element.",
     &ChangesArrays},
    {"array.indexes",
     "An index out of range gives null or zero, as does a null value; nothing changes.",
     &RefusesOtherIndexes},
    {"array.model",
     "An array does the same as a list over many random operations.",
     &FollowsAnArrayModel},
    {"array.references",
     "An array owns a reference to each element; a value that is read is borrowed.",
     &CountsElements},
};

// Dictionaries.

// More keys than any dictionary here has: a cursor that never ends is an error of its own.
constexpr int kMostKeys = 1000;

std::string Keys(Runtime const& runtime, POSDict* dict) {
    auto const cursors = runtime.Cursors();
    auto const cursor = runtime.Hold(cursors.NewPOSDictIterator(dict));
    std::string keys;
    int count = 0;
    for (cursors.Begin(cursor); cursors.IsDone(cursor) == 0; cursors.Next(cursor)) {
        Require(++count < kMostKeys, "an end of the keys", "none");
        char const* const key = cursors.CurKey(cursor);
        keys += std::string(key ? key : "(null)") + " ";
    }
    return keys;
}

void StoresUnderKeys(Runtime const& runtime) {
    auto const dict = runtime.Hold(runtime.Dicts().NewPOSDict());
    Require(runtime.Dicts().IsPOSDict(dict.Value()) != 0, "nonzero of IsPOSDict", "zero");
    Expect("a key of an empty dictionary", nullptr, runtime.Get(dict, "a"));
    for (char const* const key : {"b", "a", "c"}) {
        Require(runtime.Put(dict, key, runtime.NewNumber(1)) != 0, "nonzero of Put", "zero");
    }
    Require(runtime.Put(dict, "b", runtime.NewNumber(2)) != 0, "nonzero of Put", "zero");
    Require(runtime.NumberOf(runtime.Get(dict, "b")) == 2.0, "the last value stored", "another");
    Expect("the keys in their order", std::string("b a c "), Keys(runtime, dict));
}

void RemovesKeys(Runtime const& runtime) {
    auto const dicts = runtime.Dicts();
    auto const dict = runtime.Hold(dicts.NewPOSDict());
    runtime.Put(dict, "a", runtime.NewNumber(1));
    runtime.Put(dict, "b", runtime.NewNumber(2));
    Require(dicts.Remove(dict, Atom(runtime, "a")) != 0, "nonzero for a key", "zero");
    Expect("Remove of a missing key", 0L, dicts.Remove(dict, Atom(runtime, "a")));
    Expect("the value of a removed key", nullptr, runtime.Get(dict, "a"));
    runtime.Put(dict, "a", runtime.NewNumber(3));
    Expect("the keys, one stored again", std::string("b a "), Keys(runtime, dict));
}

// At sizes where a dictionary may store its keys in another way.
void FindsKeysAtAnySize(Runtime const& runtime) {
    auto const dict = runtime.Hold(runtime.Dicts().NewPOSDict());
    auto const numberAt = [&](int key) {
        return runtime.NumberOf(runtime.Get(dict, std::to_string(key).c_str()));
    };
    for (int const size : {1, 7, 9, 17, 1000}) {
        for (int key = 0; key < size; ++key) {
            runtime.Put(dict, std::to_string(key).c_str(), runtime.NewNumber(key));
        }
        for (int key = 0; key < size; ++key) {
            Require(numberAt(key) == key, "every key", "not all of " + std::to_string(size));
        }
        for (int key = 0; key < size; key += 2) {
            runtime.Dicts().Remove(dict, Atom(runtime, std::to_string(key)));
        }
        for (int key = 0; key < size; ++key) {
            Require(numberAt(key).has_value() == (key % 2 == 1), "each key that is left", "others");
        }
        std::string const keys = Keys(runtime, dict);
        Expect("the keys that a cursor meets", size / 2, std::ranges::count(keys, ' '));
    }
}

void RefusesNulls(Runtime const& runtime) {
    auto const dicts = runtime.Dicts();
    auto const dict = runtime.Hold(dicts.NewPOSDict());
    auto const number = runtime.Hold(runtime.NewNumber(1));
    Expect("Put under a null key", 0L, dicts.Put(dict, nullptr, number));
    Expect("Put of a null value", 0L, dicts.Put(dict, Atom(runtime, "a"), nullptr));
    Expect("the keys", std::string(), Keys(runtime, dict));
}

void CountsValues(Runtime const& runtime) {
    auto const number = runtime.Hold(runtime.NewNumber(1));
    {
        auto const dict = runtime.Hold(runtime.Dicts().NewPOSDict());
        runtime.Put(dict, "a", number);
        Expect("the references on a value", 2L, runtime.CountOf(number.Container()));
        Require(runtime.Get(dict, "a") == number, "the value itself", "another one");
        Expect("the references after reading it", 2L, runtime.CountOf(number.Container()));
        runtime.Put(dict, "a", runtime.NewNumber(2));
        Expect("the references after replacing it", 1L, runtime.CountOf(number.Container()));
        runtime.Put(dict, "a", number);
        runtime.Dicts().Remove(dict, Atom(runtime, "a"));
        Expect("the references after removing it", 1L, runtime.CountOf(number.Container()));
        runtime.Put(dict, "a", number);
        int deleted = 0;
        runtime.Put(dict, "b", NewWatched(runtime, deleted));
        Require(runtime.Put(dict, "b", runtime.Get(dict, "b")) != 0, "nonzero of Put", "zero");
        Expect("destructions of a value that is stored under its own key", 0, deleted);
    }
    Expect("the references without the dictionary", 1L, runtime.CountOf(number.Container()));
}

void FollowsPaths(Runtime const& runtime) {
    auto const dicts = runtime.Dicts();
    auto const dict =
        runtime.Hold(As<POSDict>(runtime.Parse("< A [ < B 1 > < B 2 > ] C < D 3 > >")));
    auto const number = [&](char const* path) {
        return runtime.NumberOf(dicts.DeepGet(dict, Atom(runtime, path)));
    };
    Require(number("A/1/B") == 2.0, "the value at A/1/B", "another one");
    Require(number("C/D") == 3.0, "the value at C/D", "another one");
    for (char const* const path :
         {"",
          "/",
          "A/",
          "A/2/B",
          "A/x",
          "A/-1",
          "A/0x0",
          "C/D/E",
          "Z",
          "A/1/B/0",
          "A/99999999999999999999"}) {
        Require(
            dicts.DeepGet(dict, Atom(runtime, path)) == nullptr,
            "null where there is none",
            "a value at " + Shown(path));
    }
}

void ClonesDeeply(Runtime const& runtime) {
    auto const value = runtime.Hold(runtime.Parse("< Z 1 A [ < B 1 > ] C 2 >"));
    auto const copy = runtime.Hold(MethodsOf(runtime, value).Clone(value));
    Expect("the keys of a copy", std::string("Z A C "), Keys(runtime, As<POSDict>(copy.Value())));
    auto const dicts = runtime.Dicts();
    Atom const path(runtime, "A/0");
    auto* const inner =
        As<POSDict>(dicts.DeepGet(As<POSDict>(static_cast<POSObject*>(value)), path));
    runtime.Put(inner, "B", runtime.NewNumber(2));
    auto* const copied =
        As<POSDict>(dicts.DeepGet(As<POSDict>(static_cast<POSObject*>(copy)), path));
    Require(copied != nullptr && copied != inner, "a copy of what is nested", "the same object");
    Require(
        runtime.NumberOf(runtime.Get(copied, "B")) == 1.0,
        "the value before the change",
        "another");
}

void ComparesWithoutOrder(Runtime const& runtime) {
    auto const one = runtime.Hold(runtime.Parse("< A 1 B [ 1 2 ] >"));
    auto const same = runtime.Hold(runtime.Parse("< B [ 1 2 ] A 1 >"));
    auto const other = runtime.Hold(runtime.Parse("< A 1 B [ 2 1 ] >"));
    auto const more = runtime.Hold(runtime.Parse("< A 1 B [ 1 2 ] C 1 >"));
    Require(AreEqual(runtime, one, same), "equal, whatever the order of keys", "not equal");
    Require(!AreEqual(runtime, one, other), "not equal, as arrays have an order", "equal");
    Require(!AreEqual(runtime, one, more), "not equal to one with more keys", "equal");
}

constexpr Check kDictChecks[] = {
    {"dict.put",
     "Put stores a value under a key; an existing key keeps its position in the order.",
     &StoresUnderKeys},
    {"dict.remove", "Remove gives nonzero if the key existed.", &RemovesKeys},
    {"dict.many", "Get finds every key, whatever was removed.", &FindsKeysAtAnySize},
    {"dict.null", "Put gives zero for a null key or value.", &RefusesNulls},
    {"dict.model",
     "A dictionary and a cursor do the same as a list of entries over many random operations.",
     &FollowsADictModel},
    {"dict.references",
     "A dictionary owns a reference to each value; a value that is read is borrowed.",
     &CountsValues},
    {"dict.deep-get",
     "DeepGet gives the value at a path of keys and array indexes, or null.",
     &FollowsPaths},
    {"dict.clone", "Clone copies what is nested.", &ClonesDeeply},
    {"dict.equality",
     "The order of keys does not matter for equality, that of elements does.",
     &ComparesWithoutOrder},
};

// Cursors.

void BeginsBeforeTheFirstKey(Runtime const& runtime) {
    auto const cursors = runtime.Cursors();
    auto const dict = runtime.Hold(As<POSDict>(runtime.Parse("< A 1 B 2 >")));
    auto const cursor = runtime.Hold(cursors.NewPOSDictIterator(dict));
    Require(cursors.IsDone(cursor) != 0, "no current key before Begin", "one");
    cursors.Next(cursor);
    Require(cursors.IsDone(cursor) != 0, "no current key before Begin, whatever Next does", "one");
    cursors.Begin(cursor);
    Expect("the first key", std::string("A"), cursors.CurKey(cursor));
    cursors.Next(cursor);
    cursors.Next(cursor);
    Require(cursors.IsDone(cursor) != 0, "no current key at the end", "one");
    Expect("the key at the end", nullptr, cursors.CurKey(cursor));
    for (int i = 0; i < 300; ++i) {
        cursors.Begin(cursor);
        cursors.Next(cursor);
    }
    Expect("the second key after many rounds", std::string("B"), cursors.CurKey(cursor));
    Require(runtime.Get(dict, "A") && runtime.Get(dict, "B"), "both keys after many rounds", "not");
}

void SurvivesRemovals(Runtime const& runtime) {
    auto const cursors = runtime.Cursors();
    auto const dicts = runtime.Dicts();
    auto const dict = runtime.Hold(As<POSDict>(runtime.Parse("< A 1 B 2 C 3 D 4 >")));
    auto const cursor = runtime.Hold(cursors.NewPOSDictIterator(dict));
    cursors.Begin(cursor);
    cursors.Next(cursor);
    dicts.Remove(dict, Atom(runtime, "B"));
    Expect("a key that was removed under the cursor", std::string("B"), cursors.CurKey(cursor));
    dicts.Remove(dict, Atom(runtime, "A"));
    cursors.Next(cursor);
    Expect("the key behind a removed one", std::string("C"), cursors.CurKey(cursor));
    dicts.Remove(dict, Atom(runtime, "D"));
    cursors.Next(cursor);
    Require(cursors.IsDone(cursor) != 0, "the end, as the last key was removed", "a key");
    auto const many = runtime.Hold(dicts.NewPOSDict());
    for (int key = 0; key < 100; ++key) {
        runtime.Put(many, std::to_string(key).c_str(), runtime.NewNumber(key));
    }
    auto const middle = runtime.Hold(cursors.NewPOSDictIterator(many));
    cursors.Begin(middle);
    for (int key = 0; key < 60; ++key) {
        cursors.Next(middle);
        dicts.Remove(many, Atom(runtime, std::to_string(key)));
    }
    Expect("the current key", std::string("60"), cursors.CurKey(middle));
    std::string rest;
    for (int key = 60; key < 100; ++key) {
        rest += std::to_string(key) + " ";
    }
    Expect("the keys that are left, in their order", rest, Keys(runtime, many));
}

void SeesNewKeys(Runtime const& runtime) {
    auto const cursors = runtime.Cursors();
    auto const dict = runtime.Hold(As<POSDict>(runtime.Parse("< A 1 >")));
    auto const cursor = runtime.Hold(cursors.NewPOSDictIterator(dict));
    cursors.Begin(cursor);
    for (int i = 0; i < 100; ++i) {
        runtime.Put(dict, ("K" + std::to_string(i)).c_str(), runtime.NewNumber(i));
    }
    runtime.Put(dict, "A", runtime.NewNumber(2));
    int count = 0;
    for (; cursors.IsDone(cursor) == 0; cursors.Next(cursor)) {
        Require(++count < kMostKeys, "an end of the keys", "none");
    }
    Expect("keys from the first one on, 100 of them new", 101, count);
}

void KeepsTheDictionary(Runtime const& runtime) {
    auto const cursors = runtime.Cursors();
    auto* const dict = As<POSDict>(runtime.Parse("< A 1 >"));
    auto const cursor = runtime.Hold(cursors.NewPOSDictIterator(dict));
    Expect("the references on the dictionary", 1L, runtime.CountOf(As<BIBContainer>(dict)));
    cursors.Begin(cursor);
    Expect("its first key", std::string("A"), cursors.CurKey(cursor));
}

constexpr Check kCursorChecks[] = {
    {"cursor.begin",
     "A cursor has no current key before Begin and at the end.",
     &BeginsBeforeTheFirstKey},
    {"cursor.removal",
     "A key that is removed under the cursor stays its current key until the cursor moves.",
     &SurvivesRemovals},
    {"cursor.growth",
     "A cursor survives every change to the dictionary and meets new keys.",
     &SeesNewKeys},
    {"cursor.reference", "A cursor owns a reference to the dictionary.", &KeepsTheDictionary},
};

// Values from text.

// Numbers have a comma as long as it lives, where the machine has a locale with one.
class NumbersWithComma {
public:
    NumbersWithComma() : fFormer(std::setlocale(LC_NUMERIC, nullptr)) {
        for (char const* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "ru_RU.UTF-8"}) {
            if (std::setlocale(LC_NUMERIC, name)) {
                break;
            }
        }
    }
    NumbersWithComma(NumbersWithComma const&) = delete;
    NumbersWithComma& operator=(NumbersWithComma const&) = delete;
    ~NumbersWithComma() { std::setlocale(LC_NUMERIC, fFormer.c_str()); }

private:
    std::string fFormer;
};

void ReadsEveryForm(Runtime const& runtime) {
    NumbersWithComma const numbers;
    auto const value = runtime.Hold(
        runtime.Parse("% comment\n< number 7 exponent 1e3 word All%comment\ntext (a\\(b\\)\\\\ "
                      "\\101\\n\\r\\t(c)\\0602) list [ 1 [ ] ] "
                      "(a key) < > digits (12) number -0.5 >"));
    auto* const dict = As<POSDict>(static_cast<POSObject*>(value));
    auto const strings = runtime.Strings();
    Require(runtime.Dicts().IsPOSDict(value) != 0, "a dictionary", "another value");
    Expect(
        "the keys",
        std::string("number exponent word text list a key digits "),
        Keys(runtime, dict));
    Require(runtime.NumberOf(runtime.Get(dict, "number")) == -0.5, "-0.5", "another value");
    Require(runtime.NumberOf(runtime.Get(dict, "exponent")) == 1000.0, "1000", "another value");
    for (auto const& [key, text] :
         {std::pair("word", "All"),
          std::pair("text", "a(b)\\ A\n\r\t(c)02"),
          std::pair("digits", "12")}) {
        POSObject* const found = runtime.Get(dict, key);
        Require(strings.IsPOSString(found) != 0, "an 8-bit string", key);
        Expect(key, std::string(text), strings.Get(As<POSString>(found)));
    }
    Expect("the elements", 2UL, runtime.Arrays().Count(As<POSArray>(runtime.Get(dict, "list"))));
    auto const close = runtime.Hold(runtime.Parse("[A[B]C<>D(E)F%]\n7]"));
    auto const apart = runtime.Hold(runtime.Parse("[ A [ B ] C < > D (E) F 7 ]"));
    Require(AreEqual(runtime, close, apart), "words that end at a bracket", "others");
    std::string const deep = std::string(1000, '[') + std::string(1000, ']');
    auto const read = runtime.Hold(runtime.Parse(deep.c_str()));
    auto const made = runtime.Hold(runtime.NewNested(1000));
    Require(AreEqual(runtime, read, made), "1,000 nested arrays", "another value");
}

void TellsWordsFromNumbers(Runtime const& runtime) {
    for (char const* const word :
         {"12abc",
          "1.2.3",
          "1e",
          "1e+",
          "0x10",
          "0x1p3",
          "-",
          "+",
          ".",
          "e5",
          "nan",
          "inf",
          "-inf",
          "infinity",
          "1_0",
          "1,5",
          "--1"}) {
        auto const value = runtime.Hold(runtime.Parse(word));
        Require(runtime.Strings().IsPOSString(value) != 0, "a word", word);
        Expect("the word", std::string(word), runtime.Strings().Get(As<POSString>(value.Value())));
    }
    for (auto const& [text, number] :
         {std::pair("+5", 5.0),
          {"5.", 5.0},
          {".5e1", 5.0},
          {"-0.50", -0.5},
          {"1E+2", 100.0},
          {"007", 7.0}}) {
        auto const value = runtime.Hold(runtime.Parse(text));
        Require(runtime.NumberOf(value) == number, text, "another value");
    }
}

// The numbers behind the words line and column.
std::pair<long, long> NumbersIn(std::string const& text) {
    auto const behind = [&](std::string const& word) {
        std::size_t const at = text.find(word);
        return at == std::string::npos ? 0
                                       : std::strtol(text.c_str() + at + word.size(), nullptr, 10);
    };
    return {behind("line "), behind("column ")};
}

void ReportsThePlace(Runtime const& runtime) {
    char const* message = nullptr;
    POSObject* const value = runtime.Objects().CreateFromText("<\n  A [ 1\n>", &message);
    Require(value == nullptr, "null for a text that does not parse", "a value");
    Require(message != nullptr, "a message", "null");
    std::string const text = message;
    Require(
        text.find("line ") != std::string::npos && text.find("column ") != std::string::npos,
        "a message that names line and column",
        text);
    for (auto const& [broken, place] :
         {std::pair("<\n  A )", "line 2, column 5"), std::pair(")", "line 1, column 1")}) {
        Expect(broken, nullptr, runtime.Objects().CreateFromText(broken, &message));
        Require(NumbersIn(message) == NumbersIn(place), place, message);
    }
    Expect("without a message", nullptr, runtime.Objects().CreateFromText("<", nullptr));
}

// What dump writes to a new stream; behind it, the stream is at its start or at its end.
template <class Dump>
std::string Dumped(Runtime const& runtime, bool isAtStart, Dump dump) {
    Stream const stream(runtime, NewMemoryStream(runtime));
    runtime.Succeed("DebugDump", dump(stream.Self()));
    Require(
        (stream.Mark() == 0) == isAtStart,
        "the stream at its start after DebugDumpRewind alone",
        std::to_string(stream.Mark()));
    return stream.ReadAll();
}

void WritesWhatItReads(Runtime const& runtime) {
    auto const value = runtime.Hold(
        runtime.Parse("< A 0.30000000000000004 B (a\\)b\\0012) C [ word 1e300 -1e300 < > ] "
                      "(odd key) (12) >"));
    auto const rows = runtime.Objects();
    std::string const dumps[] = {
        Dumped(
            runtime,
            /*isAtStart=*/false,
            [&](auto* stream) { return rows.DebugDump(value, stream); }),
        Dumped(
            runtime,
            /*isAtStart=*/true,
            [&](auto* stream) { return rows.DebugDumpRewind(value, stream); }),
        Dumped(runtime, /*isAtStart=*/false, [&](auto* stream) {
            return rows.DebugDumpWithHeader(value, stream, "a header\rin\ntwo lines");
        })};
    for (std::string const& dump : dumps) {
        auto const again = runtime.Hold(runtime.Parse(dump.c_str()));
        Require(AreEqual(runtime, value, again), "the same value from its own dump", dump);
    }
    for (int byte = 1; byte < 256; ++byte) {
        std::string const text{static_cast<char>(static_cast<unsigned char>(byte)), '2'};
        auto const string = runtime.Hold(runtime.NewString(text.c_str()));
        std::string const dump = Dumped(runtime, /*isAtStart=*/false, [&](auto* stream) {
            return rows.DebugDump(string, stream);
        });
        auto const again = runtime.Hold(runtime.Parse(dump.c_str()));
        Require(AreEqual(runtime, string, again), "the same string from its own dump", dump);
    }
    Require(
        dumps[2].starts_with("%") && dumps[2].find("a header") < dumps[2].find('\n'),
        "a comment line with the header",
        dumps[2]);
}

constexpr Check kNotationChecks[] = {
    {"notation.forms",
     "CreateFromText makes a value from a text in the object notation.",
     &ReadsEveryForm},
    {"notation.numbers",
     "A number may have a sign, a point and an exponent; anything else is a word.",
     &TellsWordsFromNumbers},
    {"notation.model",
     "Random texts give values that are equal to their clones, and to no others.",
     &FollowsAValueModel},
    {"notation.errors",
     "A text that does not parse gives null and a message that names line and column.",
     &ReportsThePlace},
};

constexpr Check kDumpChecks[] = {
    {"notation.dump", "DebugDump writes a value in the object notation.", &WritesWhatItReads},
};

} // namespace

constinit Group const kScalars = {
    "scalars",
    "POSNumberInterface POSStringInterface POSUnicodeStringInterface POSBinDataInterface",
    Demand::kRequired,
    kScalarChecks};
constinit Group const kArrays = {"arrays", "POSArrayInterface", Demand::kRequired, kArrayChecks};
constinit Group const kDicts = {"dicts", "POSDictInterface", Demand::kRequired, kDictChecks};
constinit Group const kCursors = {
    "cursors", "POSDictIteratorInterface", Demand::kRequired, kCursorChecks};
constinit Group const kDumps = {"dumps", "POSObjectStatics", Demand::kStrict, kDumpChecks};
constinit Group const kNotation = {
    "notation", "POSObjectStatics", Demand::kRequired, kNotationChecks};

} // namespace conformance
