#include "api/POSObjectInterface.h"

#include "runtime/objects/Boundary.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosObject.h"

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
