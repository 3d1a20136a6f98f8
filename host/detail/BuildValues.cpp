#include "host/detail/BuildValues.h"

#include "host/detail/BinaryTypes.h"
#include "pdfsettings/Error.h"

namespace pdfsettings::detail {

namespace {

// Builds level by level: collections that are made empty wait in lists to be filled, so that no
// nesting is too deep. A waiting object is borrowed from the collection that it was put into.
class Builder {
public:
    explicit Builder(Bindings const& tables) : fTables(tables) {}

    Ref<POSDict> Build(Dictionary const& values) {
        Ref<POSDict> root = Share(fTables, fTables.dicts.NewPOSDict());
        FillDict(root.get(), values);
        while (FillNext(fArrays, &Builder::FillArray) || FillNext(fDicts, &Builder::FillDict)) {
        }
        return root;
    }

    Ref<POSObject> operator()(Word const& word) { return Made(NewString(word.text)); }
    Ref<POSObject> operator()(double number) { return Made(fTables.numbers.NewPOSNumber(number)); }
    Ref<POSObject> operator()(String const& string) { return NewData(kStringType, string.bytes); }
    Ref<POSObject> operator()(HexString const& string) {
        return NewData(kHexStringType, string.text);
    }
    Ref<POSObject> operator()(Binary const& data) { return NewData(data.type, data.bytes); }

    Ref<POSObject> operator()(Text16 const& text) {
        if (text.find(u'\0') != Text16::npos) {
            throw Error("a 16-bit text cannot hold a NUL");
        }
        std::vector<unsigned short> units(text.begin(), text.end());
        units.push_back(0);
        return Made(fTables.unicodeStrings.NewPOSUnicodeString(units.data()));
    }

    Ref<POSObject> operator()(Array const& array) {
        POSArray* const made = fTables.arrays.NewPOSArray();
        Ref<POSObject> object = Made(made);
        fArrays.emplace_back(made, &array);
        return object;
    }

    Ref<POSObject> operator()(Dictionary const& dictionary) {
        POSDict* const made = fTables.dicts.NewPOSDict();
        Ref<POSObject> object = Made(made);
        fDicts.emplace_back(made, &dictionary);
        return object;
    }

private:
    template <class Object, class Collection>
    using Pending = std::vector<std::pair<Object*, Collection const*>>;

    // Fills one of the waiting collections; false when none waits.
    template <class Object, class Collection>
    bool FillNext(
        Pending<Object, Collection>& pending, void (Builder::*fill)(Object*, Collection const&)) {
        if (pending.empty()) {
            return false;
        }
        auto const [object, values] = pending.back();
        pending.pop_back();
        (this->*fill)(object, *values);
        return true;
    }

    void FillDict(POSDict* dict, Dictionary const& values) {
        for (std::size_t place = 0; place < values.Size(); ++place) {
            AtomRef const key = MakeAtom(fTables, values.KeyAt(place));
            Ref<POSObject> const object = std::visit(*this, values.ValueAt(place).Get());
            if (fTables.dicts.Put(dict, key.get(), object.get()) == 0) {
                ThrowOutOfMemory();
            }
        }
    }

    void FillArray(POSArray* array, Array const& values) {
        for (std::size_t index = 0; index < values.Size(); ++index) {
            Ref<POSObject> const object = std::visit(*this, values[index].Get());
            if (fTables.arrays.Append(array, object.get()) == 0) {
                ThrowOutOfMemory();
            }
        }
    }

    template <class Object>
    Ref<POSObject> Made(Object* object) const {
        return Share(fTables, reinterpret_cast<POSObject*>(object));
    }

    POSString* NewString(std::string const& text) const {
        return fTables.strings.NewPOSString(WholeText(text));
    }

    Ref<POSObject> NewData(std::string const& type, std::string const& bytes) const {
        auto const* const data = reinterpret_cast<unsigned char const*>(bytes.data());
        return Made(fTables.binData.NewPOSBinData(WholeText(type), data, bytes.size()));
    }

    Bindings const& fTables;
    Pending<POSArray, Array> fArrays;
    Pending<POSDict, Dictionary> fDicts;
};

} // namespace

Ref<POSDict> BuildValues(Bindings const& tables, Dictionary const& values) {
    return Builder(tables).Build(values);
}

} // namespace pdfsettings::detail
