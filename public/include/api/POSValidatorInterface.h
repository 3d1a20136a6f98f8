// The runtime's validators: containers that validate a value against a schema in a dictionary.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "api/BIBTable.h"
#include "api/POSCollectionInterfaces.h"

typedef struct POSValidator POSValidator;

// Receives one message of a validator: the setting's path, a space, and the text. message is valid
// during the call. The callback must not change the value, its enclosing values, or the schema. One
// message has no space: "out-of-memory" is the last one and means that validation did not finish.
typedef void (*POSValidatorErrorCallback)(char const* message);

// A named check. A nonzero result accepts value. key is the name of its setting. To reject the
// value with its own message, a check writes a NUL-terminated string to message, which holds 256
// zero bytes; other validators may pass null. userData is the value passed at registration. The
// check may call any procedure, but must not change the value, its enclosing values, or the schema.
typedef long (*POSValidatorCheckCallback)(
    POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);

// Validates object against the schema's entry key. Each message goes to errorProc (may be null)
// during the call, on the caller's thread. Nonzero if there was no message: the object is valid.
// Zero without a message for an invalid argument. If memory runs out, or did so when a check was
// registered, the last message says so. An exception of a callback passes to the caller.
typedef long (*POSValidatorValidateProc)(
    POSValidator* self, POSObject* object, BIBStringAtom* key, POSValidatorErrorCallback errorProc);

// clang-format off
#define POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS(ROW) \
    ROW(Validate, POSValidatorValidateProc)
// clang-format on

// The method that every validator has under its signature.
typedef struct _t_POSValidatorVirtualInterface {
    POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSValidatorVirtualInterface;

// A validator for schema, unowned, with its own reference to schema; null if schema is not a valid
// dictionary and if memory runs out. ValidateSchema checks the schema itself.
typedef POSValidator* (*POSStructValidatorNewStructValidatorProc)(POSDict* schema);

// Registers a check under the name by which the schema refers to it; replaces a check with the same
// name. userData must outlive self. Nonzero on success; zero for a null self, name or check, and if
// memory runs out: from then on self finishes no validation.
typedef long (*POSStructValidatorRegisterCallbackProc)(
    POSValidator* self, BIBStringAtom* name, POSValidatorCheckCallback check, void const* userData);

// Validates the schema itself, after its checks have been registered; the paths in the messages are
// paths in the schema. Otherwise as Validate; checks are not called.
typedef long (*POSStructValidatorValidateSchemaProc)(
    POSValidator* self, POSValidatorErrorCallback errorProc);

// clang-format off
#define POS_STRUCT_VALIDATOR_INTERFACE_ROWS(ROW)                           \
    ROW(NewPOSStructValidator, POSStructValidatorNewStructValidatorProc)   \
    ROW(RegisterCallbackProc,  POSStructValidatorRegisterCallbackProc)     \
    ROW(ValidateSchema,        POSStructValidatorValidateSchemaProc)
// clang-format on

// The table of "POSStructValidatorInterface".
typedef struct _t_POSStructValidatorInterface {
    POS_STRUCT_VALIDATOR_INTERFACE_ROWS(BIB_TABLE_SLOT)
} _t_POSStructValidatorInterface;
