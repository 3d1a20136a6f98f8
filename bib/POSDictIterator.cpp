#include "bib/POSDictIterator.h"

#include "bib/POSDict.h"

namespace BIB_T_NMT {

BIB_DEFINE_GLOBAL_PROCS(POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS, 5)

CPOSDictIterator::CPOSDictIterator(CPOSDict const& dict)
    : TBIBContainerBase(GetProcs() != nullptr ? fProcs->NewPOSDictIterator(dict) : nullptr) {}

_t_POSDictIteratorInterface const* CPOSDictIterator::GetProcs() {
    return Renew(fProcs, GetGlobalPOSDictIteratorInterfaceProcs());
}

} // namespace BIB_T_NMT
