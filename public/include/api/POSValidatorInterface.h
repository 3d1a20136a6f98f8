// The runtime's validators: containers that check a value against a schema held in a dictionary.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "api/BIBTable.h"
#include "api/POSCollectionInterfaces.h"

typedef struct POSValidator POSValidator;

// Receives one message of a validator: the setting's path, a space, the text. message is valid
// during the call. It must not change the value, what holds it, or the schema. The one message
// without a space, "out-of-memory", is the last one and says that validation was not finished.
typedef void (*POSValidatorErrorCallback)(char const* message);

// A named check. Non-zero accepts value. key is the name of its setting. A refusal may write its
// own NUL-terminated message into message, which holds 256 zero bytes; other validators may pass
// null there. userData as given at registration. It may call every row, but must not change the
// value, what holds it, or the schema.
typedef long (*POSValidatorCheckCallback)(
    POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);

// Checks object against the schema's entry key; each message goes to errorProc (may be null) during
// the call, on the caller's thread. Non-zero when the object passes, which is when there was no
// message. Zero without a message for an argument that is wrong. When memory runs out, or did so
// when a check was registered, the last message says so. An exception of a callback passes through.
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

// A validator on schema, unowned, with a reference of its own on schema; null for what is no valid
// dictionary and when memory runs out. Whether the schema is sound, ValidateSchema tells.
typedef POSValidator* (*POSStructValidatorNewStructValidatorProc)(POSDict* schema);

// Registers a check under the name by which the schema refers to it, in the place of one that has
// the name. userData must live as long as self. Non-zero on success; zero for a null self, name or
// check, and when memory runs out: from then on self finishes no validation.
typedef long (*POSStructValidatorRegisterCallbackProc)(
    POSValidator* self, BIBStringAtom* name, POSValidatorCheckCallback check, void const* userData);

// Checks the schema itself, after its checks have been registered; the paths of the messages lead
// through the schema. The rest is as for Validate; checks are not called.
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
