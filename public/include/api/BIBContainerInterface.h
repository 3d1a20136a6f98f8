// The runtime's containers: reference-counted records of instances, a signature and its methods.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"

// A reference-counted record of the runtime. Opaque except for its primary record, see
// BIBPrimaryRecord.
typedef struct BIBContainer BIBContainer;

// The part of a container that a client may read directly. Its offset from the container's address
// is the result of GetOffsetToPrimaryInstance. Both strings are interned (BIBStringInterface), so
// they can be compared by pointer with the string of an atom.
// NOLINTBEGIN(readability-identifier-naming): plain C
typedef struct BIBPrimaryRecord {
    char const* instanceName; // name of the primary instance; null if there is none
    char const* signature;    // the interface of the methods; null if there is none
    void* instance;           // the primary instance; null if there is none
} BIBPrimaryRecord;
// NOLINTEND(readability-identifier-naming)

// Reserved for hosts that monitor the lifetime of a container; pass null.
typedef long (*BIBContainerNotifyProc)(BIBContainer* container, long event, long value);
typedef long (*BIBInstanceNotifyProc)(void* instance, long event);

// Makes a container that owns instance and destroys it through deleteProc (may be null). *result is
// unowned: it exists with a reference count of zero until the caller adds a reference. On an error
// the caller still owns instance, and deleteProc is not called.
typedef BIBError* (*BIBNewFullContainerV5Proc)(
    BIBContainer** result,
    void* instance,
    BIBStringAtom* instanceName,
    void (*deleteProc)(void*),
    BIBStringAtom* signature,
    BIBContainerNotifyProc containerProc,
    BIBInstanceNotifyProc instanceProc,
    void* clientData);

// Makes a container with a signature and no instance. *result is unowned.
typedef BIBError* (*BIBNewContainerV2Proc)(BIBContainer** result, BIBStringAtom* signature);

// Makes an independent copy through the container's own Clone method; an error if its signature has
// none. *result is unowned.
typedef BIBError* (*BIBCloneContainerProc)(BIBContainer** result, BIBContainer const* source);

// Adds a reference. Nonzero on success; zero for null and for an invalid container.
typedef long (*BIBAddRefContainerV2Proc)(BIBContainer* container);

// Releases a reference; the last one destroys the container. Accepts null.
typedef void (*BIBReleaseContainerProc)(BIBContainer* container);

// Removes a reference without destroying the container: without references it is unowned. Accepts
// null.
typedef void (*BIBDecrementWithoutDeleteProc)(BIBContainer* container);

// Destroys a container without references. Nonzero if it did. Accepts null.
typedef long (*BIBDeleteUnownedContainerProc)(BIBContainer* container);

// Declares that a method that is missing under signature is looked up under parentSignature. A
// cycle of parents is an error.
typedef BIBError* (*BIBRegisterInterfaceV2Proc)(
    BIBStringAtom* signature, BIBStringAtom* parentSignature);

// Adds another instance under its own name; deleteProc as for the primary instance. If the
// container has no instance, the new one becomes its primary instance. A name in use is an error.
typedef BIBError* (*BIBRegisterInstanceV2Proc)(
    BIBContainer* container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*));

// Finds the procedure that is registered under the container's signature, or a parent of it, with
// this name and procType. If there is none: an error, or with optional nonzero no error and a null
// *result.
typedef BIBError* (*BIBGetMethodV3Proc)(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional);

// The same, starting with the parent of the container's signature.
typedef BIBError* (*BIBGetParentMethodV2Proc)(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional);

// The instance with that name, or null.
typedef void* (*BIBGetInstanceProc)(BIBContainer const* container, BIBStringAtom* name);

// The same, with an error if there is no instance with that name.
typedef BIBError* (*BIBNGetInstanceProc)(
    void** result, BIBContainer const* container, BIBStringAtom* name);

// The atom of the container's signature, borrowed; null if there is none.
typedef BIBStringAtom* (*BIBGetSignatureProc)(BIBContainer const* container);

// The address of the reference count, for debuggers: other threads may be changing it.
typedef long const* (*BIBGetRefCountAddrProc)(BIBContainer const* container);

// The offset in bytes from a container's address to its primary record, the same for every
// container.
typedef long (*BIBGetOffsetToPrimaryInstProc)(void);

// clang-format off
#define BIB_CONTAINER_INTERFACE_ROWS(ROW)                          \
    ROW(NewFullContainer,           BIBNewFullContainerV5Proc)     \
    ROW(NewContainer,               BIBNewContainerV2Proc)         \
    ROW(CloneContainer,             BIBCloneContainerProc)         \
    ROW(AddRef,                     BIBAddRefContainerV2Proc)      \
    ROW(Release,                    BIBReleaseContainerProc)       \
    ROW(DecrementWithoutDelete,     BIBDecrementWithoutDeleteProc) \
    ROW(DeleteUnownedContainer,     BIBDeleteUnownedContainerProc) \
    ROW(RegisterInterface,          BIBRegisterInterfaceV2Proc)    \
    ROW(RegisterInstance,           BIBRegisterInstanceV2Proc)     \
    ROW(GetMethod,                  BIBGetMethodV3Proc)            \
    ROW(GetParentMethod,            BIBGetParentMethodV2Proc)      \
    ROW(GetInstance,                BIBGetInstanceProc)            \
    ROW(NGetInstance,               BIBNGetInstanceProc)           \
    ROW(GetSignature,               BIBGetSignatureProc)           \
    ROW(DebugGetRefCountAddr,       BIBGetRefCountAddrProc)        \
    ROW(GetOffsetToPrimaryInstance, BIBGetOffsetToPrimaryInstProc)
// clang-format on

// The table of "BIBContainerInterface".
typedef struct _t_BIBContainerInterface {
    BIB_CONTAINER_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_BIBContainerInterface;
