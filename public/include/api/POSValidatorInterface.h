// The runtime's validators: containers that check a value against a schema held in a dictionary.
#pragma once

#include "api/BIBSharedBuffInterface.h"
#include "api/BIBTable.h"
#include "api/POSCollectionInterfaces.h"

typedef struct POSValidator POSValidator;

// Receives one message of a validator: the setting's key, a space, the text.
typedef void (*POSValidatorErrorCallback)(char const* message);

// A named check. Non-zero accepts value. A refusal may write its own NUL-terminated message into
// message, which may be null. userData as given at registration.
typedef long (*POSValidatorCheckCallback)(
    POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);

// Checks object against the schema's entry key; each message goes to errorProc during the call, on
// the caller's thread. Non-zero when the object passes. An exception of a callback passes through.
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

// A validator on schema, unowned, with a reference of its own on schema; null for a schema that is
// refused or when memory runs out.
typedef POSValidator* (*POSStructValidatorNewStructValidatorProc)(POSDict* schema);

// Registers a check under the name by which the schema refers to it. Non-zero on success.
typedef long (*POSStructValidatorRegisterCallbackProc)(
    POSValidator* self, BIBStringAtom* name, POSValidatorCheckCallback check, void const* userData);

// Checks the schema itself; each message goes to errorProc. Non-zero when the schema is sound.
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
