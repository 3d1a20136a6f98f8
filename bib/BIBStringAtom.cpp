#include "bib/BIBStringAtom.h"

#include "bib/BIBInterfaceClient.h"
#include "bib/BIBMemory.h"

namespace BIB_T_NMT {

CBIBStringAtom::CBIBStringAtom(char const* text)
    : fAtom(GetProcs<BIBStringInterface>()->NewStringAtom(text)) {
    if (fAtom == nullptr) {
        ThrowBadAlloc();
    }
    fCString = GetProcs<BIBStringInterface>()->GetCString(fAtom);
}

CBIBStringAtom::CBIBStringAtom(BIBStringAtom* atom, bool adopt) : fAtom(atom) {
    if (fAtom == nullptr) {
        return;
    }
    auto const* const procs = GetProcs<BIBStringInterface>();
    if (!adopt) {
        procs->AddRef(fAtom);
    }
    fCString = procs->GetCString(fAtom);
}

CBIBStringAtom& CBIBStringAtom::operator=(char const* text) {
    auto const* const procs = GetProcs<BIBStringInterface>();
    // Takes the new reference before it releases the old one: for equal strings the count must not
    // reach zero.
    BIBStringAtom* const atom = procs->NewStringAtom(text);
    if (fAtom != nullptr) {
        procs->DeleteStringAtom(fAtom);
    }
    fAtom = atom;
    fCString = procs->GetCString(fAtom);
    return *this;
}

CBIBStringAtom::~CBIBStringAtom() {
    if (fAtom != nullptr) {
        GetProcs<BIBStringInterface>()->DeleteStringAtom(fAtom);
    }
}

void CBIBStringAtom::ThrowBadAlloc() {
    CBIBMemory::ThrowMemError();
}

} // namespace BIB_T_NMT
