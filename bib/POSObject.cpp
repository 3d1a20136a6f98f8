#include "bib/POSObject.h"

#include "bib/POSScalars.h"

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

CPOSNumber::CPOSNumber(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSNumber(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSNumber failed");
}

BIB_DEFINE_GLOBAL_PROCS(POSStringInterface, POS_STRING_INTERFACE_ROWS, 3)

CPOSString::CPOSString(char const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSString(text) : nullptr)) {}

CPOSString::CPOSString(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSString(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSString failed");
}

BIB_DEFINE_GLOBAL_PROCS(POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS, 3)

CPOSUnicodeString::CPOSUnicodeString(unsigned short const* text)
    : CPOSObject(AsObject(GetProcs() != nullptr ? fProcs->NewPOSUnicodeString(text) : nullptr)) {}

CPOSUnicodeString::CPOSUnicodeString(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSUnicodeString(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSUnicodeString failed");
}

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

CPOSBinData::CPOSBinData(CPOSObject const& object, bool quiet) : CPOSObject(object) {
    Narrow(
        GetProcs() != nullptr && fProcs->IsPOSBinData(*this) != 0,
        quiet,
        "downcast from CPOSObject to CPOSBinData failed");
}

} // namespace BIB_T_NMT
