#include "host/detail/RuntimeValues.h"

#include "format/Tokens.h"
#include "pdfsettings/Error.h"

namespace pdfsettings::detail {

namespace {

constexpr std::string_view kStringType = "JoboptionsString";
constexpr std::string_view kHexStringType = "JoboptionsUnicodeString";

std::string BytesOf(Tables const& tables, POSBinData* data) {
    std::size_t const size = tables.binData.GetSize(data);
    std::string bytes;
    if (size > 0) {
        bytes.assign(reinterpret_cast<char const*>(tables.binData.GetBinData(data)), size);
    }
    return bytes;
}

// Copies a value with an explicit stack of open collections, so that deep nesting uses no more
// stack. The runtime's values are borrowed from the root.
class Reader {
public:
    explicit Reader(Tables const& tables) : fTables(tables) {}

    SettingsValues Read(POSDict* root) {
        OpenDict(root);
        for (;;) {
            Open& open = fOpen.back();
            if (open.fNext < open.fEntries.size()) {
                ReadNext(open.fEntries[open.fNext++].second);
                continue;
            }
            if (fOpen.size() == 1) {
                return {std::move(open.fDictionary), std::move(fTail)};
            }
            Value closed =
                open.fIsArray ? Value(std::move(open.fArray)) : Value(std::move(open.fDictionary));
            fOpen.pop_back();
            Store(std::move(closed));
        }
    }

private:
    // A collection that is being read. Keys are empty in an array.
    struct Open {
        std::vector<std::pair<std::string, POSObject*>> fEntries;
        std::size_t fNext = 0;
        bool fIsArray = false;
        Dictionary fDictionary;
        Array fArray;
    };

    void OpenDict(POSDict* dict) {
        Open open;
        ForEachEntry(fTables, dict, [&](std::string const& key, POSObject* value) {
            open.fEntries.emplace_back(key, value);
        });
        fOpen.push_back(std::move(open));
    }

    void OpenArray(POSArray* array) {
        Open open;
        open.fIsArray = true;
        unsigned long const count = fTables.arrays.Count(array);
        for (unsigned long index = 0; index < count; ++index) {
            open.fEntries.emplace_back(std::string(), fTables.arrays.GetAt(array, index));
        }
        fOpen.push_back(std::move(open));
    }

    void ReadNext(POSObject* object) {
        if (fTables.dicts.IsPOSDict(object) != 0) {
            OpenDict(reinterpret_cast<POSDict*>(object));
        } else if (fTables.arrays.IsPOSArray(object) != 0) {
            OpenArray(reinterpret_cast<POSArray*>(object));
        } else if (fTables.numbers.IsPOSNumber(object) != 0) {
            Store(fTables.numbers.Get(reinterpret_cast<POSNumber*>(object)));
        } else if (fTables.strings.IsPOSString(object) != 0) {
            Store(Name{fTables.strings.Get(reinterpret_cast<POSString*>(object))});
        } else if (fTables.binData.IsPOSBinData(object) != 0) {
            StoreData(reinterpret_cast<POSBinData*>(object));
        } else {
            ThrowUnknownKind();
        }
    }

    void StoreData(POSBinData* data) {
        std::string_view const type = fTables.binData.GetTypeName(data);
        if (type == kStringType) {
            Store(RawString{BytesOf(fTables, data)});
        } else if (type == kHexStringType) {
            Store(HexString{BytesOf(fTables, data)});
        } else if (type == format::kTailKey && fOpen.size() == 1) {
            fTail = BytesOf(fTables, data);
        } else {
            ThrowUnknownKind();
        }
    }

    // Stores value as the entry of the top collection that was read last.
    void Store(Value value) {
        Open& open = fOpen.back();
        if (open.fIsArray) {
            open.fArray.push_back(std::move(value));
        } else {
            open.fDictionary.SetKey(open.fEntries[open.fNext - 1].first, std::move(value));
        }
    }

    [[noreturn]] static void ThrowUnknownKind() {
        throw Error(Fault::kComponent, "the settings hold a value of an unknown kind");
    }

    Tables const& fTables;
    std::vector<Open> fOpen;
    std::string fTail;
};

} // namespace

SettingsValues ReadValues(Tables const& tables, POSDict* dict) {
    return Reader(tables).Read(dict);
}

void ForEachEntry(
    Tables const& tables,
    POSDict* dict,
    std::function<void(std::string const&, POSObject*)> const& visit) {
    Ref<POSDictIterator> const cursor = Share(tables, tables.iterators.NewPOSDictIterator(dict));
    tables.iterators.Begin(cursor.get());
    while (tables.iterators.IsDone(cursor.get()) == 0) {
        std::string const key = tables.iterators.CurKey(cursor.get());
        visit(key, tables.dicts.Get(dict, MakeAtom(tables, key).get()));
        tables.iterators.Next(cursor.get());
    }
}

void ForEachDict(
    Tables const& tables, POSArray* array, std::function<void(POSDict*)> const& visit) {
    unsigned long const count = tables.arrays.Count(array);
    for (unsigned long index = 0; index < count; ++index) {
        POSObject* const element = tables.arrays.GetAt(array, index);
        if (tables.dicts.IsPOSDict(element) != 0) {
            visit(reinterpret_cast<POSDict*>(element));
        }
    }
}

std::string FieldReader::Text(POSDict* record) const {
    POSObject* const value = Get(record);
    bool const isText = value != nullptr && fTables.strings.IsPOSString(value) != 0;
    return isText ? fTables.strings.Get(reinterpret_cast<POSString*>(value)) : "";
}

std::u16string FieldReader::Text16(POSDict* record) const {
    std::u16string text;
    POSObject* const value = Get(record);
    if (value == nullptr || fTables.unicodeStrings.IsPOSUnicodeString(value) == 0) {
        return text;
    }
    auto const* unit = fTables.unicodeStrings.Get(reinterpret_cast<POSUnicodeString*>(value));
    for (; *unit != 0; ++unit) {
        text.push_back(static_cast<char16_t>(*unit));
    }
    return text;
}

double FieldReader::Number(POSDict* record) const {
    POSObject* const value = Get(record);
    bool const isNumber = value != nullptr && fTables.numbers.IsPOSNumber(value) != 0;
    return isNumber ? fTables.numbers.Get(reinterpret_cast<POSNumber*>(value)) : 0;
}

std::string FieldReader::Bytes(POSDict* record) const {
    POSObject* const value = Get(record);
    bool const isData = value != nullptr && fTables.binData.IsPOSBinData(value) != 0;
    return isData ? BytesOf(fTables, reinterpret_cast<POSBinData*>(value)) : std::string();
}

std::vector<std::pair<std::string, double>> FieldReader::Numbers(POSDict* record) const {
    std::vector<std::pair<std::string, double>> numbers;
    POSObject* const value = Get(record);
    if (value == nullptr || fTables.dicts.IsPOSDict(value) == 0) {
        return numbers;
    }
    ForEachEntry(
        fTables, reinterpret_cast<POSDict*>(value), [&](std::string const& key, POSObject* entry) {
            if (fTables.numbers.IsPOSNumber(entry) != 0) {
                numbers.emplace_back(key, fTables.numbers.Get(reinterpret_cast<POSNumber*>(entry)));
            }
        });
    return numbers;
}

} // namespace pdfsettings::detail
