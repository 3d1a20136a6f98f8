#include "host/detail/ReadValues.h"

#include "host/detail/BinaryTypes.h"
#include "host/detail/Ref.h"
#include "pdfsettings/Error.h"

namespace pdfsettings::detail {

namespace {

// Copies level by level: what lies within an array or a dictionary waits in a list, so that no
// nesting is too deep. The values are borrowed, from the root on down.
class Reader {
public:
    explicit Reader(Bindings const& tables) : fTables(tables) {}

    Value Read(POSObject* root) {
        Value result;
        ReadObject(root, result);
        while (!fPending.empty()) {
            auto const [object, target] = fPending.back();
            fPending.pop_back();
            ReadObject(object, *target);
        }
        return result;
    }

private:
    void ReadObject(POSObject* object, Value& target) {
        if (fTables.dicts.IsPOSDict(object) != 0) {
            ReadDict(reinterpret_cast<POSDict*>(object), target);
        } else if (fTables.arrays.IsPOSArray(object) != 0) {
            ReadArray(reinterpret_cast<POSArray*>(object), target);
        } else if (fTables.numbers.IsPOSNumber(object) != 0) {
            target = fTables.numbers.Get(reinterpret_cast<POSNumber*>(object));
        } else if (fTables.strings.IsPOSString(object) != 0) {
            target = Word{fTables.strings.Get(reinterpret_cast<POSString*>(object))};
        } else if (fTables.binData.IsPOSBinData(object) != 0) {
            target = BinData(reinterpret_cast<POSBinData*>(object));
        } else if (fTables.unicodeStrings.IsPOSUnicodeString(object) != 0) {
            target = UnicodeText(reinterpret_cast<POSUnicodeString*>(object));
        } else {
            throw Error("the settings hold a value of an unknown kind");
        }
    }

    void ReadDict(POSDict* dict, Value& target) {
        Ref<POSDictIterator> const cursor =
            Share(fTables, fTables.iterators.NewPOSDictIterator(dict));
        Dictionary entries;
        std::vector<POSObject*> objects;
        fTables.iterators.Begin(cursor.get());
        while (fTables.iterators.IsDone(cursor.get()) == 0) {
            std::string const key = fTables.iterators.CurKey(cursor.get());
            objects.push_back(fTables.dicts.Get(dict, MakeAtom(fTables, key).get()));
            entries.Set(key, Value());
            fTables.iterators.Next(cursor.get());
        }
        target = std::move(entries);
        for (std::size_t place = 0; place < objects.size(); ++place) {
            fPending.emplace_back(objects[place], &target.If<Dictionary>()->ValueAt(place));
        }
    }

    void ReadArray(POSArray* array, Value& target) {
        Array elements;
        elements.Resize(fTables.arrays.Count(array));
        target = std::move(elements);
        Array& filled = *target.If<Array>();
        for (std::size_t index = 0; index < filled.Size(); ++index) {
            fPending.emplace_back(fTables.arrays.GetAt(array, index), &filled[index]);
        }
    }

    Value BinData(POSBinData* data) const {
        std::string const type = fTables.binData.GetTypeName(data);
        std::size_t const size = fTables.binData.GetSize(data);
        std::string bytes;
        if (size > 0) {
            bytes.assign(reinterpret_cast<char const*>(fTables.binData.GetBinData(data)), size);
        }
        if (type == kStringType) {
            return String{std::move(bytes)};
        }
        return type == kHexStringType ? Value(HexString{std::move(bytes)})
                                      : Value(Binary{type, std::move(bytes)});
    }

    Text16 UnicodeText(POSUnicodeString* string) const {
        Text16 text;
        for (unsigned short const* unit = fTables.unicodeStrings.Get(string); *unit != 0; ++unit) {
            text.push_back(static_cast<char16_t>(*unit));
        }
        return text;
    }

    Bindings const& fTables;
    std::vector<std::pair<POSObject*, Value*>> fPending;
};

} // namespace

Dictionary ReadValues(Bindings const& tables, POSDict* dict) {
    Value values = Reader(tables).Read(reinterpret_cast<POSObject*>(dict));
    return std::move(*values.If<Dictionary>());
}

Array ReadValues(Bindings const& tables, POSArray* array) {
    Value values = Reader(tables).Read(reinterpret_cast<POSObject*>(array));
    return std::move(*values.If<Array>());
}

} // namespace pdfsettings::detail
