// Values in one line of text, for tests to compare.
#pragma once

#include "api/BIBRuntime.h"
#include "conformance/Runtime.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <utf8/unchecked.h>

namespace support {

// A number as "%.17g", a word as "/word", a string as "(text)", a hexadecimal string as "<text>",
// a 16-bit string as "\"text\"" in UTF-8, its mark as "^", other binary data as "name{text}",
// arrays as "[a b]" and dictionaries as "<<k a l b>>"; zero bytes as "\0".
class Describer {
public:
    explicit Describer(conformance::Runtime const& runtime) : fRuntime(runtime) {}

    std::string operator()(POSObject* value) const {
        if (fRuntime.Numbers().IsPOSNumber(value) != 0) {
            return Number(fRuntime.Numbers().Get(reinterpret_cast<POSNumber*>(value)));
        }
        if (fRuntime.Strings().IsPOSString(value) != 0) {
            return std::string("/") + fRuntime.Strings().Get(reinterpret_cast<POSString*>(value));
        }
        if (fRuntime.Rows<_t_POSUnicodeStringInterface>().IsPOSUnicodeString(value) != 0) {
            return Unicode(reinterpret_cast<POSUnicodeString*>(value));
        }
        if (fRuntime.Rows<_t_POSBinDataInterface>().IsPOSBinData(value) != 0) {
            return BinData(reinterpret_cast<POSBinData*>(value));
        }
        if (fRuntime.Arrays().IsPOSArray(value) != 0) {
            return Array(reinterpret_cast<POSArray*>(value));
        }
        if (fRuntime.Dicts().IsPOSDict(value) != 0) {
            return Dict(reinterpret_cast<POSDict*>(value));
        }
        return "?";
    }

    std::string Dict(POSDict* dict) const {
        std::string text;
        auto const& cursors = fRuntime.Cursors();
        auto const cursor = fRuntime.Hold(cursors.NewPOSDictIterator(dict));
        for (cursors.Begin(cursor); cursors.IsDone(cursor) == 0; cursors.Next(cursor)) {
            std::string const key = cursors.CurKey(cursor);
            text +=
                (text.empty() ? "" : " ") + key + " " + (*this)(fRuntime.Get(dict, key.c_str()));
        }
        return "<<" + text + ">>";
    }

private:
    static std::string Number(double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", value);
        return text;
    }

    std::string Unicode(POSUnicodeString* string) const {
        unsigned short const* unit = fRuntime.Rows<_t_POSUnicodeStringInterface>().Get(string);
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
        std::string const name = fRuntime.Rows<_t_POSBinDataInterface>().GetTypeName(data);
        std::string text;
        for (unsigned long i = 0; i < fRuntime.Rows<_t_POSBinDataInterface>().GetSize(data); ++i) {
            unsigned char const byte = fRuntime.Rows<_t_POSBinDataInterface>().GetBinData(data)[i];
            text += byte == 0 ? "\\0" : std::string(1, static_cast<char>(byte));
        }
        if (name == "JoboptionsString") {
            return "(" + text + ")";
        }
        return name == "JoboptionsUnicodeString" ? "<" + text + ">" : name + "{" + text + "}";
    }

    std::string Array(POSArray* array) const {
        std::string text;
        for (unsigned long i = 0; i < fRuntime.Arrays().Count(array); ++i) {
            text += (text.empty() ? "" : " ") + (*this)(fRuntime.Arrays().GetAt(array, i));
        }
        return "[" + text + "]";
    }

    conformance::Runtime const& fRuntime;
};

} // namespace support
