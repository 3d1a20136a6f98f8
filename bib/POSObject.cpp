#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "bib/POSValidator.h"

// Defines the constructor that takes a handle to any value and rejects a value of another type.
#define POS_DEFINE_NARROWING(Type) \
    C##Type::C##Type(CPOSObject const& object, bool quiet) : CPOSObject(object) { \
        Narrow( \
            GetProcs() != nullptr && fProcs->Is##Type(*this) != 0, \
            quiet, \
            "downcast from CPOSObject to C" #Type " failed"); \
    }

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSObjectStatics, POS_OBJECT_STATICS_ROWS, 4)

void _POSSignalError(char const* message) {
    throw POSException(message);
}

BIB_DEFINE_METHOD_LOADER(POSObjectVirtualInterface, POS_OBJECT_VIRTUAL_INTERFACE_ROWS, 2)

CPOSObject::CPOSObject(POSObject* object) : TBIBContainerBase(object) {
    fTerm.InitVTab(this);
}

CPOSObject CPOSObject::Clone() const {
    POSObject* const clone = fVTab->Clone(*this);
    if (clone == nullptr) {
        _POSSignalError("CPOSObject::Clone failed");
    }
    return CPOSObject(clone);
}

CPOSObject CPOSObject::CreateFromText(char const* objectText, char const** errorText, bool quiet) {
    if (GetStaticProcs() == nullptr) {
        return CPOSObject();
    }
    POSObject* const object = fStaticProcs->CreateFromText(objectText, errorText);
    return HandleOn(object, quiet, "CreateFromText failed");
}

CPOSObject CPOSObject::HandleOn(POSObject* object, bool quiet, char const* message) {
    if (object == nullptr && !quiet) {
        _POSSignalError(message);
    }
    return object != nullptr ? CPOSObject(object) : CPOSObject();
}

void CPOSObject::Narrow(bool isOfType, bool quiet, char const* message) {
    if (isOfType) {
        return;
    }
    if (!quiet) {
        _POSSignalError(message);
    }
    Invalidate();
}

BIB_DEFINE_GLOBAL_PROCS(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS, 3)

CPOSNumber::CPOSNumber(double value)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSNumber(value) : nullptr)) {}

POS_DEFINE_NARROWING(POSNumber)

BIB_DEFINE_GLOBAL_PROCS(POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

CPOSString::CPOSString(char const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSString(text) : nullptr)) {}

POS_DEFINE_NARROWING(POSString)

BIB_DEFINE_GLOBAL_PROCS(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS, 3)

CPOSUnicodeString::CPOSUnicodeString(unsigned short const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSUnicodeString(text) : nullptr)) {}

POS_DEFINE_NARROWING(POSUnicodeString)

unsigned int CPOSUnicodeString::GetLength(unsigned short const* text) noexcept {
    unsigned int length = 0;
    while (text[length] != 0) {
        ++length;
    }
    return length;
}

BIB_DEFINE_GLOBAL_PROCS(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS, 5)

CPOSBinData::CPOSBinData(char const* typeName, unsigned char const* data, unsigned long size)
    : CPOSObject(
          AsObject(GetProcs() != nullptr ? fProcs->NewPOSBinData(typeName, data, size) : nullptr)) {
}

POS_DEFINE_NARROWING(POSBinData)

BIB_DEFINE_GLOBAL_PROCS(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS, 7)

CPOSArray::CPOSArray()
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSArray() : nullptr)) {}

POS_DEFINE_NARROWING(POSArray)

CPOSObject CPOSArray::GetAt(unsigned long index, bool quiet) const {
    POSObject* const value = fProcs->GetAt(As<POSArray>(), index);
    return HandleOn(value, quiet, "CPOSArray::GetAt subscript failed");
}

BIB_DEFINE_GLOBAL_PROCS(POSDictInterface, POS_DICT_INTERFACE_ROWS, 6)

CPOSDict::CPOSDict()
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSDict() : nullptr)) {}

CPOSDict::CPOSDict(POSDict* dict) : CPOSObject(AsObject(dict)) {
    if (GetProcs() == nullptr) {
        Invalidate();
    }
}

POS_DEFINE_NARROWING(POSDict)

CPOSObject CPOSDict::Get(CBIBStringAtom const& key, bool quiet) const {
    return HandleOn(fProcs->Get(As<POSDict>(), key), quiet, "CPOSDict::Get failed");
}

unsigned int CPOSDict::NumKeys() const {
    unsigned int count = 0;
    CPOSDictIterator const iterator(*this);
    for (iterator.Begin(); !iterator.IsDone(); iterator.Next()) {
        ++count;
    }
    return count;
}

BIB_DEFINE_GLOBAL_PROCS(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS, 5)

CPOSDictIterator::CPOSDictIterator(CPOSDict const& dict)
    : TBIBContainerBase(GetProcs() != nullptr ? fProcs->NewPOSDictIterator(dict) : nullptr) {}

BIB_DEFINE_GLOBAL_PROCS(POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS, 3)

BIB_DEFINE_METHOD_LOADER(POSValidatorVirtualInterface, POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS, 1)

CPOSValidator::CPOSValidator(POSValidator* validator) : TBIBContainerBase(validator) {
    fTerm.InitVTab(this);
}

bool CPOSValidator::Validate(
    CPOSObject const& object,
    CBIBStringAtom const& key,
    POSValidatorErrorCallback errorProc) const {
    return fVTab->Validate(*this, object, key, errorProc) != 0;
}

CPOSStructValidator::CPOSStructValidator(CPOSDict const& schema)
    : CPOSValidator(GetProcs() != nullptr ? fProcs->NewPOSStructValidator(schema) : nullptr) {}

long CPOSStructValidator::RegisterExtraValidationProc(
    CBIBStringAtom const& name, POSValidatorCheckCallback check, void const* userData) {
    return fProcs->RegisterCallbackProc(*this, name, check, userData);
}

} // namespace BIB_T_NMT
