#include "bib/BIBData.h"

namespace BIB_T_NMT {

int TInterfaceConstructor<_t_BIBDataBlockStreamInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBDataBlockStreamInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBDataBlockStreamInterface,
        BIB_DATA_BLOCK_STREAM_INTERFACE_ROWS,
        2,
        container,
        mustExist,
        table);
}

int TInterfaceConstructor<_t_BIBSizedDataStoreInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBSizedDataStoreInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBSizedDataStoreInterface,
        BIB_SIZED_DATA_STORE_INTERFACE_ROWS,
        1,
        container,
        mustExist,
        table);
}

int TInterfaceConstructor<_t_BIBDataStoreInterface>::InitProc(
    BIBContainer const* container, int mustExist, _t_BIBDataStoreInterface* table) {
    BIB_LOAD_METHODS(
        _t_BIBDataStoreInterface, BIB_DATA_STORE_INTERFACE_ROWS, 1, container, mustExist, table);
}

} // namespace BIB_T_NMT
