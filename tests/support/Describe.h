// Values in one line of text, for tests to compare.
#pragma once

#include "tests/support/HostTables.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <utf8/unchecked.h>

namespace support {

// Calls visit(key) for each key of dict, in its order.
template <class Visit>
void ForEachKey(HostTables const& tables, POSDict* dict, Visit visit) {
    auto const& cursors = tables.fDictIterator;
    POSDictIterator* const cursor = cursors.NewPOSDictIterator(dict);
    auto* const container = reinterpret_cast<BIBContainer*>(cursor);
    tables.fContainer.AddRef(container);
    for (cursors.Begin(cursor); cursors.IsDone(cursor) == 0; cursors.Next(cursor)) {
        visit(std::string(cursors.CurKey(cursor)));
    }
    tables.fContainer.Release(container);
}

inline unsigned long CountKeys(HostTables const& tables, POSDict* dict) {
    unsigned long count = 0;
    ForEachKey(tables, dict, [&count](std::string const&) { ++count; });
    return count;
}

// A number as "%.17g", a word as "/word", a string as "(text)", a hexadecimal string as "<text>",
// a 16-bit string as "\"text\"" in UTF-8, its mark as "^", other binary data as "name{text}",
// arrays as "[a b]" and dictionaries as "<<k a l b>>"; zero bytes as "\0".
class Describer {
public:
    explicit Describer(HostTables const& tables) : fTables(tables) {}

    std::string operator()(POSObject* value) const {
        if (fTables.fNumber.IsPOSNumber(value) != 0) {
            return Number(fTables.fNumber.Get(reinterpret_cast<POSNumber*>(value)));
        }
        if (fTables.fString.IsPOSString(value) != 0) {
            return std::string("/") + fTables.fString.Get(reinterpret_cast<POSString*>(value));
        }
        if (fTables.fUnicodeString.IsPOSUnicodeString(value) != 0) {
            return Unicode(reinterpret_cast<POSUnicodeString*>(value));
        }
        if (fTables.fBinData.IsPOSBinData(value) != 0) {
            return BinData(reinterpret_cast<POSBinData*>(value));
        }
        if (fTables.fArray.IsPOSArray(value) != 0) {
            return Array(reinterpret_cast<POSArray*>(value));
        }
        if (fTables.fDict.IsPOSDict(value) != 0) {
            return Dict(reinterpret_cast<POSDict*>(value));
        }
        return "?";
    }

    std::string Dict(POSDict* dict) const {
        std::string text;
        ForEachKey(fTables, dict, [&](std::string const& key) {
            text += (text.empty() ? "" : " ") + key + " " + (*this)(Get(dict, key));
        });
        return "<<" + text + ">>";
    }

private:
    static std::string Number(double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", value);
        return text;
    }

    POSObject* Get(POSDict* dict, std::string const& key) const {
        BIBStringAtom* const atom = fTables.fStringAtom.NewStringAtom(key.c_str());
        POSObject* const value = fTables.fDict.Get(dict, atom);
        fTables.fStringAtom.DeleteStringAtom(atom);
        return value;
    }

    std::string Unicode(POSUnicodeString* string) const {
        unsigned short const* unit = fTables.fUnicodeString.Get(string);
        bool const isMarked = *unit == 0xFEFF;
        unsigned short const* end = unit += isMarked ? 1 : 0;
        while (*end != 0) {
            ++end;
        }
        std::string text;
        utf8::unchecked::utf16to8(unit, end, std::back_inserter(text));
        return (isMarked ? "^\"" : "\"") + text + "\"";
    }

    std::string BinData(POSBinData* data) const {
        std::string const name = fTables.fBinData.GetTypeName(data);
        std::string text;
        for (unsigned long i = 0; i < fTables.fBinData.GetSize(data); ++i) {
            unsigned char const byte = fTables.fBinData.GetBinData(data)[i];
            text += byte == 0 ? "\\0" : std::string(1, static_cast<char>(byte));
        }
        if (name == "JoboptionsString") {
            return "(" + text + ")";
        }
        return name == "JoboptionsUnicodeString" ? "<" + text + ">" : name + "{" + text + "}";
    }

    std::string Array(POSArray* array) const {
        std::string text;
        for (unsigned long i = 0; i < fTables.fArray.Count(array); ++i) {
            text += (text.empty() ? "" : " ") + (*this)(fTables.fArray.GetAt(array, i));
        }
        return "[" + text + "]";
    }

    HostTables const& fTables;
};

} // namespace support
