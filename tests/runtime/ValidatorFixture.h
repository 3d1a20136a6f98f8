// What the tests of validators share: a validator on a schema's text, and the messages it gives.
#pragma once

#include "RuntimeFixture.h"

#include <cstring>
#include <string>

namespace runtimetest {

// The messages since they were taken last, one behind the other with a bar between.
class Messages {
public:
    static void Add(char const* message) {
        All() += All().empty() ? "" : "|";
        All() += message;
    }
    static std::string Take() { return std::exchange(All(), {}); }

private:
    static std::string& All() {
        static std::string all;
        return all;
    }
};

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

// A validator, which holds its schema.
class Validator {
public:
    explicit Validator(std::string const& schema)
        : Validator(As<POSDict>(Ours().Parse(schema.c_str()))) {}
    explicit Validator(POSDict* schema)
        : fSelf(Rows<_t_POSStructValidatorInterface>().NewPOSStructValidator(schema)),
          fMethods(
              Ours().Methods<_t_POSValidatorVirtualInterface>(static_cast<POSValidator*>(fSelf))) {}

    operator POSValidator*() const { return fSelf; }

    bool Register(char const* name, POSValidatorCheckCallback check, void const* data = nullptr) {
        return Rows<_t_POSStructValidatorInterface>().RegisterCallbackProc(
                   fSelf, Atom(name), check, data) != 0;
    }
    bool Passes(POSObject* settings, char const* structure = "S") const {
        return fMethods.Validate(fSelf, settings, Atom(structure), &Messages::Add) != 0;
    }
    // The messages on settings, whose last reference goes with them.
    std::string Validate(POSObject* settings, char const* structure = "S") const {
        Held const held(settings);
        bool const passes = Passes(held, structure);
        std::string messages = Messages::Take();
        EXPECT_EQ(passes, messages.empty()) << messages;
        return messages;
    }
    std::string CheckSchema() const {
        bool const isSound =
            Rows<_t_POSStructValidatorInterface>().ValidateSchema(fSelf, &Messages::Add) != 0;
        std::string messages = Messages::Take();
        EXPECT_EQ(isSound, messages.empty()) << messages;
        return messages;
    }

    Held<POSValidator> fSelf;
    _t_POSValidatorVirtualInterface fMethods;
};

} // namespace runtimetest
