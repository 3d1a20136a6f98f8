#include "api/POSObjectInterface.h"

#include "runtime/Boundary.h"
#include "runtime/PosObject.h"
#include "runtime/Tables.h"

namespace bibrt {

namespace {

POSObject* Clone(POSObject* self) {
    return self ? AtRow<POSObject*>(nullptr, [&] { return CloneValue(*self); }) : nullptr;
}

long IsEqual(POSObject* self, POSObject* other) {
    if (!self || !other) {
        return 0;
    }
    return AtRow<long>(0, [&] { return AreValuesEqual(*self, *other) ? 1 : 0; });
}

} // namespace

BIBRT_DEFINE_TABLE(
    ObjectVirtualTable,
    "POSObjectVirtualInterface",
    _t_POSObjectVirtualInterface,
    POS_OBJECT_VIRTUAL_INTERFACE_ROWS,
    2)

} // namespace bibrt
