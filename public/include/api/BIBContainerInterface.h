// The runtime's containers: counted records that bundle instances, a signature and its methods.
#pragma once

#include "api/BIBErrorInterface.h"
#include "api/BIBStringInterface.h"
#include "api/BIBTable.h"

// A counted record of the runtime. Opaque but for its primary record, see BIBPrimaryRecord.
typedef struct BIBContainer BIBContainer;

// What a client may read of a container directly. It starts as many bytes behind the container's
// address as GetOffsetToPrimaryInstance answers. Both texts are interned (BIBStringInterface): they
// may be compared as pointers with the text of an atom.
// NOLINTBEGIN(readability-identifier-naming): plain C
typedef struct BIBPrimaryRecord {
    char const* instanceName; // name of the primary instance; null when there is none
    char const* signature;    // the interface under which the methods are found; null for none
    void* instance;           // the primary instance; null when there is none
} BIBPrimaryRecord;
// NOLINTEND(readability-identifier-naming)

// Reserved for hosts that follow the life of a container; pass null.
typedef long (*BIBContainerNotifyProc)(BIBContainer* container, long event, long value);
typedef long (*BIBInstanceNotifyProc)(void* instance, long event);

// Makes a container around instance, which is destroyed through deleteProc (may be null) together
// with it. *result is unowned: alive, with a count of zero, until somebody adds a reference. On an
// error instance still belongs to the caller: deleteProc is not called.
typedef BIBError* (*BIBNewFullContainerV5Proc)(
    BIBContainer** result,
    void* instance,
    BIBStringAtom* instanceName,
    void (*deleteProc)(void*),
    BIBStringAtom* signature,
    BIBContainerNotifyProc containerProc,
    BIBInstanceNotifyProc instanceProc,
    void* clientData);

// Makes a container that has a signature and no instance yet. *result is unowned.
typedef BIBError* (*BIBNewContainerV2Proc)(BIBContainer** result, BIBStringAtom* signature);

// Makes an independent copy through the container's own Clone method; an error when its signature
// has none. *result is unowned.
typedef BIBError* (*BIBCloneContainerProc)(BIBContainer** result, BIBContainer const* source);

// Adds a reference. Non-zero on success; zero for null and for a container that has become invalid.
typedef long (*BIBAddRefContainerV2Proc)(BIBContainer* container);

// Gives a reference up and destroys the container with the last one. Accepts null.
typedef void (*BIBReleaseContainerProc)(BIBContainer* container);

// Gives a reference up and never destroys: with none left the container is unowned. Accepts null.
typedef void (*BIBDecrementWithoutDeleteProc)(BIBContainer* container);

// Destroys a container that nobody has a reference on. Non-zero when it did so. Accepts null.
typedef long (*BIBDeleteUnownedContainerProc)(BIBContainer* container);

// Declares that a method that is missing under signature is looked for under parentSignature. A
// circle of parents is an error.
typedef BIBError* (*BIBRegisterInterfaceV2Proc)(
    BIBStringAtom* signature, BIBStringAtom* parentSignature);

// Adds a further instance under a name of its own; deleteProc as for the primary one. The first
// instance of a container that has none becomes its primary instance. A name in use is an error.
typedef BIBError* (*BIBRegisterInstanceV2Proc)(
    BIBContainer* container, void* instance, BIBStringAtom* name, void (*deleteProc)(void*));

// Finds the procedure that is registered under the container's signature, or a parent of it, with
// this name and proc type. None: an error, or with optional non-zero no error and a null *result.
typedef BIBError* (*BIBGetMethodV3Proc)(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional);

// The same, beginning with the parent of the container's signature.
typedef BIBError* (*BIBGetParentMethodV2Proc)(
    void** result,
    BIBContainer const* container,
    BIBStringAtom* name,
    BIBStringAtom* procType,
    long optional);

// The instance of that name, or null.
typedef void* (*BIBGetInstanceProc)(BIBContainer const* container, BIBStringAtom* name);

// The same with an error when there is no instance of that name.
typedef BIBError* (*BIBNGetInstanceProc)(
    void** result, BIBContainer const* container, BIBStringAtom* name);

// The atom of the container's signature, borrowed; null for none.
typedef BIBStringAtom* (*BIBGetSignatureProc)(BIBContainer const* container);

// Where the reference count stands, for debuggers: other threads may be changing it.
typedef long const* (*BIBGetRefCountAddrProc)(BIBContainer const* container);

// Bytes from a container's address to its primary record, the same for every container.
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
