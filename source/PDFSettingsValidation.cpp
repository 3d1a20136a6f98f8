// Judging settings by the schema of their object.
#include "bib/POSDictIterator.h"
#include "bib/POSValidator.h"
#include "source/OtherNamespaces.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsObject.h"
#include "source/POSValidatorErrorProc.h"

using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSDictIterator;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSStructValidator;

namespace PDFSettingsImpl {

namespace {

constexpr char kRootStructure[] = "PDFSettings";

// Throws POSException for a text that does not parse to a dictionary.
CPOSDict ReadSchema(char const* text) {
    char const* errorText = nullptr;
    CPOSDict schema(CPOSObject::CreateFromText(text, &errorText, /*quiet=*/true), /*quiet=*/false);
    if (!schema.IsValid()) {
        throw CPDFSettingsError(errorText, kSchemaError);
    }
    return schema;
}

void RegisterChecks(CPOSStructValidator& validator) {
    validator.RegisterExtraValidationProc(
        CBIBStringAtom("CompatibilityLevelParams"),
        &PDFSettingsObject::CompatibilityLevelValidator,
        nullptr);
    validator.RegisterExtraValidationProc(
        CBIBStringAtom("ImageDepthParams"), &PDFSettingsObject::ImageDepthValidator, nullptr);
}

// Removes from copy what the structure known does not know. The cursor walks the settings that the
// copy was made of, so that no removal disturbs it.
void RemoveUnknown(CPOSDictIterator const& cursor, CPOSDict const& known, CPOSDict const& copy) {
    CPOSDict const optional = known.GetDict("optional", /*quiet=*/false);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        CBIBStringAtom const key(cursor.CurKey());
        if (!known.HasKey(key) && optional.IsValid() && !optional.HasKey(key)) {
            copy.Remove(key);
        }
    }
}

} // namespace

CPOSArray PDFSettingsObject::IsPDFSettingsValid() const {
    return IsPDFSettingsValid(fSettings);
}

CPOSArray PDFSettingsObject::IsPDFSettingsValid(CPOSDict const& settings) const {
    CPOSArray errors;
    CPOSDict const schema = ReadSchema(fSchema.GetBuffer());
    POSValidatorErrorProc const receiver(errors);
    CPOSStructValidator validator(schema);
    RegisterChecks(validator);
    CPOSDict const copy(settings.Clone(), /*quiet=*/false);
    CPOSDictIterator const cursor(settings);
    CPOSDict const known = schema.GetDict(kRootStructure, /*quiet=*/false);
    if (known.IsValid()) {
        RemoveUnknown(cursor, known, copy);
    }
    PruneOtherNamespaces(copy);
    // The errors tell the outcome; the answer says no more.
    validator.Validate(copy, CBIBStringAtom(kRootStructure), &POSValidatorErrorProc::errproc);
    return errors;
}

} // namespace PDFSettingsImpl
