#include "conformance/Models.h"

#include "conformance/Stream.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace conformance {

namespace {

constexpr int kSteps = 400;

// The same numbers in every run, so that a failure comes again.
class Random {
public:
    unsigned long Below(unsigned long bound) {
        return std::uniform_int_distribution<unsigned long>(0, bound - 1)(fEngine);
    }
    template <class T, std::size_t kSize>
    T const& OneOf(std::array<T, kSize> const& values) {
        return values[Below(kSize)];
    }

private:
    std::mt19937 fEngine{1};
};

// Names of which some begin with others.
constexpr std::array<char const*, 5> kNames = {"A", "AB", "B", "BA", "ABA"};

// Registered procedures.

using Names = std::array<std::string, 3>; // of the interface, the procedure and the type

class RegistryModel {
public:
    explicit RegistryModel(Runtime const& runtime)
        : fRuntime(runtime),
          fRegister(runtime.Bootstrap<BIBRegisterProcAddressProc>("BIBRegisterProcAddress")),
          fUnregister(runtime.Bootstrap<BIBUnregisterInterfaceProc>("BIBUnregisterInterface")),
          fCounter(
              runtime.Bootstrap<BIBGetUnregisterCountAddrProc>("BIBGetUnregisterCountAddr")()) {}
    RegistryModel(RegistryModel const&) = delete;
    RegistryModel& operator=(RegistryModel const&) = delete;
    ~RegistryModel() {
        for (char const* const name : kNames) {
            fUnregister(Interface(name).c_str());
        }
    }

    void Step() {
        Names const names = RandomNames();
        if (fRandom.Below(8) == 0) {
            Unregister(names[0]);
            return;
        }
        int* const proc = &fTargets[fRandom.Below(fTargets.size())];
        int const result = fRegister(names[0].c_str(), names[1].c_str(), names[2].c_str(), proc);
        bool const isNew = fProcs.emplace(names, proc).second;
        Require((result != 0) == isNew, "nonzero for new names alone", std::to_string(result));
    }

    void Compare() {
        Names const names = RandomNames();
        auto const found = fProcs.find(names);
        void* const expected = found != fProcs.end() ? found->second : nullptr;
        Require(
            fRuntime.Lookup()(names[0].c_str(), names[1].c_str(), names[2].c_str()) == expected,
            expected ? "the procedure that was registered" : "null, as there is none",
            names[0] + " " + names[1] + " " + names[2]);
    }

private:
    static std::string Interface(char const* name) { return std::string("Conformance") + name; }

    void Unregister(std::string const& interface) {
        unsigned long const before = *fCounter;
        fUnregister(interface.c_str());
        Require(*fCounter != before, "another value of the unregister counter", "the same one");
        std::erase_if(fProcs, [&](auto const& entry) { return entry.first[0] == interface; });
    }
    Names RandomNames() {
        return {Interface(fRandom.OneOf(kNames)), fRandom.OneOf(kNames), fRandom.OneOf(kNames)};
    }

    Runtime const& fRuntime;
    BIBRegisterProcAddressProc fRegister;
    BIBUnregisterInterfaceProc fUnregister;
    unsigned long const* fCounter;
    Random fRandom;
    std::array<int, 3> fTargets = {};
    std::map<Names, int*> fProcs;
};

// Values with a known number of references.

class CountedNumbers {
public:
    explicit CountedNumbers(Runtime const& runtime) : fRuntime(runtime) {
        for (std::size_t i = 0; i < kCount; ++i) {
            fNumbers.push_back(std::make_unique<Held<POSObject>>(
                runtime.Containers(), runtime.NewNumber(static_cast<double>(i))));
        }
    }

    POSObject* At(std::size_t index) const { return *fNumbers[index]; }

    // uses: how often a collection holds the number.
    void ExpectUses(std::size_t index, long uses) const {
        Expect(
            "the references on a value, with the caller's own",
            uses + 1,
            fRuntime.CountOf(fNumbers[index]->Container()));
    }

    static constexpr std::size_t kCount = 4;

private:
    Runtime const& fRuntime;
    std::vector<std::unique_ptr<Held<POSObject>>> fNumbers;
};

// Arrays.

class ArrayModel {
public:
    explicit ArrayModel(Runtime const& runtime)
        : fRows(runtime.Arrays()),
          fNumbers(runtime),
          fArray(runtime.Hold(fRows.NewPOSArray())) {}

    void Step() {
        std::size_t const number = fRandom.Below(CountedNumbers::kCount);
        std::size_t const index = fRandom.Below(fModel.size() + 2);
        bool const isIn = index < fModel.size();
        switch (fRandom.Below(4)) {
        case 0:
        case 1:
            Require(fRows.Append(fArray, fNumbers.At(number)) != 0, "nonzero of Append", "zero");
            fModel.push_back(number);
            break;
        case 2:
            ExpectResult(fRows.SetAt(fArray, index, fNumbers.At(number)), isIn);
            if (isIn) {
                fModel[index] = number;
            }
            break;
        default:
            ExpectResult(fRows.Remove(fArray, index), isIn);
            if (isIn) {
                fModel.erase(fModel.begin() + static_cast<std::ptrdiff_t>(index));
            }
        }
    }

    void Compare() const {
        Expect("Count", fModel.size(), fRows.Count(fArray));
        for (std::size_t i = 0; i < fModel.size(); ++i) {
            Require(
                fRows.GetAt(fArray, i) == fNumbers.At(fModel[i]),
                "the element that was stored there",
                "another one at " + std::to_string(i));
        }
        Expect("GetAt behind the end", nullptr, fRows.GetAt(fArray, fModel.size()));
        for (std::size_t number = 0; number < CountedNumbers::kCount; ++number) {
            fNumbers.ExpectUses(number, std::ranges::count(fModel, number));
        }
    }

private:
    static void ExpectResult(long result, bool isIn) {
        Require(
            (result != 0) == isIn, "nonzero for an index in range alone", std::to_string(result));
    }

    Random fRandom;
    _t_POSArrayInterface const& fRows;
    CountedNumbers fNumbers;
    Held<POSArray> fArray;
    std::vector<std::size_t> fModel;
};

// Dictionaries, with a cursor that is moved now and then.

class DictModel {
public:
    explicit DictModel(Runtime const& runtime)
        : fRuntime(runtime),
          fCursors(runtime.Cursors()),
          fNumbers(runtime),
          fDict(runtime.Hold(runtime.Dicts().NewPOSDict())),
          fCursor(runtime.Hold(fCursors.NewPOSDictIterator(fDict))) {}

    void Step() {
        std::string const key = "k" + std::to_string(fRandom.Below(12));
        switch (fRandom.Below(6)) {
        case 0:
        case 1:
        case 2:
            Put(key);
            break;
        case 3:
            Remove(key);
            break;
        case 4:
            fCursors.Begin(fCursor);
            MoveBehind(0);
            break;
        default:
            fCursors.Next(fCursor);
            fCurrent.fKey.empty() ? void() : MoveBehind(fCurrent.fOrder);
        }
    }

    void Compare() const {
        ExpectKeys(fDict);
        CompareClone();
        for (int i = 0; i < 12; ++i) {
            std::string const key = "k" + std::to_string(i);
            auto const entry = std::ranges::find(fModel, key, &Entry::fKey);
            POSObject* const expected =
                entry != fModel.end() ? fNumbers.At(entry->fNumber) : nullptr;
            Require(fRuntime.Get(fDict, key.c_str()) == expected, "the value of a key", key);
        }
        for (std::size_t number = 0; number < CountedNumbers::kCount; ++number) {
            fNumbers.ExpectUses(number, std::ranges::count(fModel, number, &Entry::fNumber));
        }
        char const* const current = fCursors.CurKey(fCursor);
        Expect("the current key of a cursor", fCurrent.fKey, current ? current : "");
        Require(
            (fCursors.IsDone(fCursor) != 0) == fCurrent.fKey.empty(),
            "nonzero of IsDone without a current key alone",
            "the current key is \"" + fCurrent.fKey + "\"");
    }

private:
    // A clone has the same keys in the same order, and is another dictionary.
    void CompareClone() const {
        auto const methods = fRuntime.Methods<_t_POSObjectVirtualInterface>(fDict.Value());
        auto const clone = fRuntime.Hold(As<POSDict>(methods.Clone(fDict.Value())));
        Require(
            methods.IsEqual(fDict.Value(), clone.Value()) != 0,
            "a clone that is equal",
            "not equal");
        ExpectKeys(clone);
        fRuntime.Put(clone, "other", fRuntime.NewNumber(1));
        Require(
            methods.IsEqual(fDict.Value(), clone.Value()) == 0,
            "not equal to a clone with one more key",
            "equal");
    }

    struct Entry {
        unsigned long fOrder = 0;
        std::string fKey;
        std::size_t fNumber = 0;
    };

    void Put(std::string const& key) {
        std::size_t const number = fRandom.Below(CountedNumbers::kCount);
        Require(
            fRuntime.Put(fDict, key.c_str(), fNumbers.At(number)) != 0, "nonzero of Put", "zero");
        auto const entry = std::ranges::find(fModel, key, &Entry::fKey);
        if (entry != fModel.end()) {
            entry->fNumber = number;
        } else {
            fModel.push_back({++fLastOrder, key, number});
        }
    }

    void Remove(std::string const& key) {
        long const result = fRuntime.Dicts().Remove(fDict, Atom(fRuntime, key));
        auto const removed =
            std::erase_if(fModel, [&](Entry const& entry) { return entry.fKey == key; });
        Require(
            (result != 0) == (removed == 1),
            "nonzero of Remove for a key alone",
            std::to_string(result));
    }

    void MoveBehind(unsigned long order) {
        auto const next = std::ranges::upper_bound(fModel, order, {}, &Entry::fOrder);
        fCurrent = next != fModel.end() ? *next : Entry{};
    }

    void ExpectKeys(POSDict* dict) const {
        auto const cursor = fRuntime.Hold(fCursors.NewPOSDictIterator(dict));
        fCursors.Begin(cursor);
        for (Entry const& entry : fModel) {
            Expect("the next key", entry.fKey, fCursors.CurKey(cursor));
            fCursors.Next(cursor);
        }
        Require(fCursors.IsDone(cursor) != 0, "the end behind the last key", "another key");
    }

    Runtime const& fRuntime;
    Random fRandom;
    _t_POSDictIteratorInterface const& fCursors;
    CountedNumbers fNumbers;
    Held<POSDict> fDict;
    Held<POSDictIterator> fCursor;
    std::vector<Entry> fModel;
    unsigned long fLastOrder = 0;
    Entry fCurrent;
};

// Two streams on the same bytes.

class StreamModel {
public:
    explicit StreamModel(Runtime const& runtime)
        : fRuntime(runtime),
          fFirst(runtime, NewMemoryStream(runtime)),
          fSecond(runtime, fFirst.Second()) {}

    void Step() {
        bool const isFirst = fRandom.Below(2) == 0;
        Stream const& stream = isFirst ? fFirst : fSecond;
        std::size_t& position = isFirst ? fFirstPosition : fSecondPosition;
        std::string const text(fRandom.Below(20), static_cast<char>('a' + fRandom.Below(26)));
        switch (fRandom.Below(4)) {
        case 0:
            stream.Write(text);
            fBytes.resize(std::max(fBytes.size(), position + text.size()));
            fBytes.replace(position, text.size(), text);
            position += text.size();
            break;
        case 1: {
            std::string const expected = fBytes.substr(position, text.size());
            Expect("what Read gives", expected, stream.Read(text.size()));
            position += expected.size();
            break;
        }
        case 2:
            if (fRandom.Below(5) == 0) {
                stream.Rewind();
                position = 0;
            }
            break;
        default:
            Seek(stream, position);
        }
    }

    void Compare() const {
        Expect("the position of the first stream", fFirstPosition, fFirst.Mark());
        Expect("the position of the second stream", fSecondPosition, fSecond.Mark());
    }

private:
    void Seek(Stream const& stream, std::size_t& position) {
        std::size_t const bases[] = {0, position, fBytes.size()};
        auto const origin = static_cast<BIBPositionableStream_SeekOrigin>(fRandom.Below(3));
        long const offset = static_cast<long>(fRandom.Below(60)) - 30;
        long const target = static_cast<long>(bases[origin]) + offset;
        bool const isIn = target >= 0 && target <= static_cast<long>(fBytes.size());
        std::string const message = fRuntime.TakeMessage(stream.TrySeek(offset, origin));
        Require(message.empty() == isIn, isIn ? "no error of Seek" : "an error of Seek", message);
        position = isIn ? static_cast<std::size_t>(target) : position;
    }

    Runtime const& fRuntime;
    Random fRandom;
    Stream fFirst;
    Stream fSecond;
    std::size_t fFirstPosition = 0;
    std::size_t fSecondPosition = 0;
    std::string fBytes;
};

// Texts in the object notation, of which one number may be another one.
class RandomText {
public:
    // changed: the place of the number among all, from 0; none for a large one.
    std::string Make(unsigned seed, unsigned changed) {
        fEngine.seed(seed);
        fNumbers = 0;
        fChanged = changed;
        return Value(/*levels=*/3);
    }
    unsigned CountNumbers() const noexcept { return fNumbers; }

private:
    std::string Value(int levels) {
        switch (fEngine() % (levels > 0 ? 5 : 3)) {
        case 0:
            return std::to_string(fEngine() % 3 + (fNumbers++ == fChanged ? 100 : 0));
        case 1:
            return "word";
        case 2:
            return "(a text \\(12\\) \\t)";
        case 3:
            return Collection("[", "]", levels, /*hasKeys=*/false);
        default:
            return Collection("<", ">", levels, /*hasKeys=*/true);
        }
    }
    std::string Collection(std::string const& open, char const* close, int levels, bool hasKeys) {
        std::string text = open;
        for (unsigned long i = 0, count = fEngine() % 4; i < count; ++i) {
            text += hasKeys ? " k" + std::to_string(i) : "";
            text += " " + Value(levels - 1);
        }
        return text + " " + close;
    }

    std::mt19937 fEngine;
    unsigned fNumbers = 0;
    unsigned fChanged = 0;
};

template <class Model>
void Follow(Runtime const& runtime) {
    Model model(runtime);
    for (int step = 0; step < kSteps; ++step) {
        model.Step();
        model.Compare();
    }
}

} // namespace

void FollowsARegistryModel(Runtime const& runtime) {
    Follow<RegistryModel>(runtime);
}

void FollowsAnAtomModel(Runtime const& runtime) {
    auto const& rows = runtime.Atoms();
    Random random;
    std::map<std::string, std::vector<BIBStringAtom*>> held; // one entry for each reference
    for (int step = 0; step < 5 * kSteps; ++step) {
        std::string const text = "Conformance model " + std::to_string(random.Below(40));
        auto& references = held[text];
        if (!references.empty() && random.Below(2) == 0) {
            rows.DeleteStringAtom(references.back());
            references.pop_back();
            continue;
        }
        BIBStringAtom* const atom = rows.NewStringAtom(text.c_str());
        Expect("the string of an atom", text, rows.GetCString(atom));
        Require(
            references.empty() || references.front() == atom,
            "the atom that is held already",
            "another one");
        references.push_back(atom);
    }
    for (auto const& [text, references] : held) {
        for (BIBStringAtom* const atom : references) {
            Expect("the string of an atom that is held", text, rows.GetCString(atom));
            rows.DeleteStringAtom(atom);
        }
    }
}

void FollowsAStreamModel(Runtime const& runtime) {
    Follow<StreamModel>(runtime);
}

void FollowsAnArrayModel(Runtime const& runtime) {
    Follow<ArrayModel>(runtime);
}

void FollowsADictModel(Runtime const& runtime) {
    Follow<DictModel>(runtime);
}

void FollowsAValueModel(Runtime const& runtime) {
    RandomText texts;
    constexpr unsigned kNone = 1000000;
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::string const text = texts.Make(seed, kNone);
        unsigned const numbers = texts.CountNumbers();
        auto const value = runtime.Hold(runtime.Parse(text.c_str()));
        auto const methods = runtime.Methods<_t_POSObjectVirtualInterface>(value.Value());
        auto const clone = runtime.Hold(methods.Clone(value));
        auto const again = runtime.Hold(runtime.Parse(text.c_str()));
        Require(methods.IsEqual(value, clone) != 0, "a clone that is equal", text);
        Require(methods.IsEqual(clone, again) != 0, "the same text gives an equal value", text);
        for (unsigned changed = 0; changed < numbers; ++changed) {
            std::string const other = texts.Make(seed, changed);
            auto const otherValue = runtime.Hold(runtime.Parse(other.c_str()));
            Require(
                methods.IsEqual(value, otherValue) == 0,
                "a value with another number is not equal",
                std::string(text).append(" and ").append(other));
        }
    }
}

} // namespace conformance
