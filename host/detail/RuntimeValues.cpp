#include "host/detail/RuntimeValues.h"

#include "pdfsettings/Error.h"

namespace pdfsettings::detail {

namespace {

constexpr char const* kStringType = "JoboptionsString";
constexpr char const* kHexStringType = "JoboptionsUnicodeString";

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

void ReadRecords(
    Bindings const& tables, POSArray* array, std::function<void(Dictionary const&)> const& visit) {
    Reader reader(tables);
    unsigned long const count = tables.arrays.Count(array);
    for (unsigned long index = 0; index < count; ++index) {
        Value const value = reader.Read(tables.arrays.GetAt(array, index));
        if (auto const* const record = value.If<Dictionary>()) {
            visit(*record);
        }
    }
}

namespace {

BIBSimpleStreamReadProc FindRead(Bindings const& tables, BIBPositionableStream* stream) {
    AtomRef const name = MakeAtom(tables, "Read");
    AtomRef const procType = MakeAtom(tables, "BIBSimpleStreamReadProc");
    void* method = nullptr;
    ThrowIfError(
        tables,
        tables.containers.GetMethod(
            &method, AsContainer(stream), name.get(), procType.get(), /*optional=*/0));
    return reinterpret_cast<BIBSimpleStreamReadProc>(method);
}

} // namespace

std::string ReadStream(Bindings const& tables, BIBPositionableStream* stream) {
    BIBSimpleStreamReadProc const read = FindRead(tables, stream);
    auto* const self = reinterpret_cast<BIBSimpleStream*>(stream);
    std::string text;
    char buffer[16384];
    unsigned long size = sizeof buffer;
    while (size == sizeof buffer) {
        auto* const target = reinterpret_cast<unsigned char*>(buffer);
        ThrowIfError(tables, read(self, &size, target, sizeof buffer));
        text.append(buffer, size);
    }
    return text;
}

} // namespace pdfsettings::detail
