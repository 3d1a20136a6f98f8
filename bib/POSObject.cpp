#include "bib/POSObject.h"

#include "bib/POSException.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSObjectStatics, POS_OBJECT_STATICS_ROWS, 4)

void _POSSignalError(char const* message) {
    throw POSException(message);
}

int ConstructPOSObjectVirtualInterfaceMethods(
    BIBContainer const* container, int mustExist, _t_POSObjectVirtualInterface* table) {
    BIB_LOAD_METHODS(
        _t_POSObjectVirtualInterface,
        POS_OBJECT_VIRTUAL_INTERFACE_ROWS,
        2,
        container,
        mustExist,
        table);
}

CPOSObject* CPOSObjectTerminate::InitVTab(CPOSObject* handle) {
    handle->fVTab =
        CPOSObject::fVTabList.GetVTab(*handle, &ConstructPOSObjectVirtualInterfaceMethods);
    return handle;
}

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

bool CPOSObject::IsEqual(CPOSObject const& other) const {
    return fVTab->IsEqual(*this, other) != 0;
}

CPOSObject CPOSObject::CreateFromText(char const* objectText, char const** errorText, bool quiet) {
    if (GetStaticProcs() == nullptr) {
        return CPOSObject();
    }
    POSObject* const object = fStaticProcs->CreateFromText(objectText, errorText);
    if (object != nullptr) {
        return CPOSObject(object);
    }
    if (!quiet) {
        _POSSignalError("CreateFromText failed");
    }
    return CPOSObject();
}

_t_POSObjectStatics const* CPOSObject::GetStaticProcs() {
    return Renew(fStaticProcs, GetGlobalPOSObjectStaticsProcs());
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

} // namespace BIB_T_NMT
