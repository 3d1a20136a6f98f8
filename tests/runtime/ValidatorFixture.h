// What the tests of validators share: a validator on a schema's text, and the messages it gives.
#pragma once

#include "RuntimeFixture.h"
#include "conformance/StructValidator.h"

#include <cstring>

namespace runtimetest {

// Puts a string, or a hexadecimal string, of a settings file in the place of each word of dict that
// begins with $ or #.
inline void ReplaceMarkedWords(POSDict* dict) {
    Held const cursor(Cursors().NewPOSDictIterator(dict));
    for (Cursors().Begin(cursor); !Cursors().IsDone(cursor); Cursors().Next(cursor)) {
        Atom const key(Cursors().CurKey(cursor));
        auto* const word = As<POSString>(Dicts().Get(dict, key));
        char const* const text = Ours().Strings().Get(word);
        if (text && (*text == '$' || *text == '#')) {
            POSBinData* const string = Rows<_t_POSBinDataInterface>().NewPOSBinData(
                *text == '$' ? "JoboptionsString" : "JoboptionsUnicodeString",
                reinterpret_cast<unsigned char const*>(text + 1),
                std::strlen(text + 1));
            Dicts().Put(dict, key, As<POSObject>(string));
        }
    }
}

// The value of a text, unowned, in which marked words stand for strings.
inline POSObject* NewSettings(std::string const& text) {
    POSObject* const settings = Ours().Parse(text.c_str());
    if (Dicts().IsPOSDict(settings) != 0) {
        Containers().AddRef(As<BIBContainer>(settings));
        ReplaceMarkedWords(As<POSDict>(settings));
        Containers().DecrementWithoutDelete(As<BIBContainer>(settings));
    }
    return settings;
}

// Its messages are one behind the other, with a bar between.
class Validator : public conformance::StructValidator {
public:
    explicit Validator(std::string const& schema) : StructValidator(Ours(), schema) {}
    explicit Validator(POSDict* schema) : StructValidator(Ours(), schema) {}

    // The messages about settings, whose last reference goes with them.
    std::string Validate(POSObject* settings, char const* structure = "S") const {
        return Joined(StructValidator::Validate(settings, structure));
    }
    std::string CheckSchema() const { return Joined(ValidateSchema()); }

    static std::string Joined(std::vector<std::string> const& messages) {
        std::string all;
        for (std::string const& message : messages) {
            all += (all.empty() ? "" : "|") + message;
        }
        return all;
    }
};

} // namespace runtimetest
