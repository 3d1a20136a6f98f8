// A complete runtime in plain C, as a start for one's own: all that bib-conformance requires, for a
// host that calls it, and the component on it, on one thread. It has no caches, no streams on files
// and no locks.
//
// It is one translation unit: each file below uses what is above it. A row is a function with the
// name of its interface in front: ContainerAddRef is AddRef of BIBContainerInterface.
#define _GNU_SOURCE

#include <api/BIBBootstrap.h>
#include <api/BIBContainerInterface.h>
#include <api/BIBErrorInterface.h>
#include <api/BIBMemoryInterface.h>
#include <api/BIBRuntime.h>
#include <api/BIBSharedBuffInterface.h>
#include <api/BIBStreamInterface.h>
#include <api/BIBStringInterface.h>
#include <api/POSCollectionInterfaces.h>
#include <api/POSObjectInterface.h>
#include <api/POSScalarInterfaces.h>
#include <api/POSValidatorInterface.h>
#include <limits.h>
#include <locale.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// A row, or another function, of one argument and one expression.
#define ROW(result, name, type, expression) \
    static result name(type self) { \
        return expression; \
    }

// Values may be nested this deep; they are destroyed at any depth.
enum { kMostLevels = 1100 };

// Each needs those above it.
// clang-format off
#include "memory.h"
#include "atoms.h"
#include "errors.h"
#include "registry.h"
#include "containers.h"
#include "streams.h"
#include "values.h"
#include "notation.h"
#include "validator.h"
// clang-format on

// Continues a condition by registering the row of a table. The compound literal compares a
// procedure with its type.
#define ADD(interface, prefix, name, type) \
    &&BIBRegisterProcAddress(interface, #name, #type, (void*)(type){&prefix##name})

#define BIB(name, type) &&BIBRegisterProcAddress("BIB", #name, #name, (void*)(type){&name})
#define CONTAINER(name, type) ADD("BIBContainerInterface", Container, name, type)
#define ERROR(name, type) ADD("BIBErrorInterface", Error, name, type)
#define ATOM(name, type) ADD("BIBStringInterface", Atom, name, type)
#define MEMORY(name, type) ADD("BIBMemoryInterface", Memory, name, type)
#define BUFFER(name, type) ADD("BIBSharedBuffInterface", Buffer, name, type)
#define FACTORY(name, type) ADD("BIBStreamFactoryInterface", Factory, name, type)
#define NUMBER(name, type) ADD("POSNumberInterface", Number, name, type)
#define STRING(name, type) ADD("POSStringInterface", String, name, type)
#define UNICODE(name, type) ADD("POSUnicodeStringInterface", UnicodeString, name, type)
#define BINARY(name, type) ADD("POSBinDataInterface", BinData, name, type)
#define ARRAY(name, type) ADD("POSArrayInterface", Array, name, type)
#define DICT(name, type) ADD("POSDictInterface", Dict, name, type)
#define CURSOR(name, type) ADD("POSDictIteratorInterface", Cursor, name, type)
#define OBJECT(name, type) ADD("POSObjectStatics", Object, name, type)
#define VALIDATOR(name, type) ADD("POSStructValidatorInterface", Validator, name, type)
// Methods, under the signatures of their containers, which are this runtime's choice.
#define VALUE(name, type) ADD(kValueSignature, Value, name, type)
#define VALIDATION(name, type) ADD("Validator", Validator, name, type)
#define SIMPLE(name, type) ADD("SimpleStream", Stream, name, type)
#define REWINDABLE(name, type) ADD("RewindableStream", Stream, name, type)
#define POSITIONABLE(name, type) ADD("PositionableStream", Stream, name, type)

// Streams of a higher level have the methods of the lower ones.
static int InheritMethods(char const* level, char const* lowerLevel) {
    BIBStringAtom* const signature = AtomNewStringAtom(level);
    BIBStringAtom* const parent = AtomNewStringAtom(lowerLevel);
    return signature != NULL && parent != NULL &&
           ContainerRegisterInterface(signature, parent) == NULL;
}

// If memory runs out here, rows are missing, and the component does not start.
__attribute__((constructor)) static void Start(void) {
    gCoreErrors[kBRVUnknownError] = ErrorNewError("Unknown error", "runtime_in_c", 0, NULL, NULL);
    gCoreErrors[kBRVMemoryError] = ErrorNewError("Out of memory", "runtime_in_c", 1, NULL, NULL);
    int isComplete = gCoreErrors[0] != NULL && gCoreErrors[1] != NULL;
    isComplete = isComplete BIB_BOOTSTRAP_ROWS(BIB);
    isComplete = isComplete BIB_CONTAINER_INTERFACE_ROWS(CONTAINER);
    isComplete = isComplete BIB_ERROR_INTERFACE_ROWS(ERROR);
    isComplete = isComplete BIB_STRING_INTERFACE_ROWS(ATOM);
    isComplete = isComplete BIB_MEMORY_INTERFACE_ROWS(MEMORY);
    isComplete = isComplete BIB_SHARED_BUFF_INTERFACE_ROWS(BUFFER);
    isComplete = isComplete BIB_STREAM_FACTORY_INTERFACE_ROWS(FACTORY);
    isComplete = isComplete BIB_SIMPLE_STREAM_INTERFACE_ROWS(SIMPLE);
    isComplete = isComplete BIB_REWINDABLE_STREAM_INTERFACE_ROWS(REWINDABLE);
    isComplete = isComplete BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(POSITIONABLE);
    isComplete = isComplete POS_NUMBER_INTERFACE_ROWS(NUMBER);
    isComplete = isComplete POS_STRING_INTERFACE_ROWS(STRING);
    isComplete = isComplete POS_UNICODE_STRING_INTERFACE_ROWS(UNICODE);
    isComplete = isComplete POS_BIN_DATA_INTERFACE_ROWS(BINARY);
    isComplete = isComplete POS_ARRAY_INTERFACE_ROWS(ARRAY);
    isComplete = isComplete POS_DICT_INTERFACE_ROWS(DICT);
    isComplete = isComplete POS_DICT_ITERATOR_INTERFACE_ROWS(CURSOR);
    isComplete = isComplete POS_OBJECT_STATICS_ROWS(OBJECT);
    isComplete = isComplete POS_OBJECT_VIRTUAL_INTERFACE_ROWS(VALUE);
    isComplete = isComplete POS_STRUCT_VALIDATOR_INTERFACE_ROWS(VALIDATOR);
    isComplete = isComplete POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS(VALIDATION);
    isComplete = isComplete && InheritMethods("RewindableStream", "SimpleStream") &&
                 InheritMethods("PositionableStream", "RewindableStream");
    if (!isComplete) {
        fprintf(stderr, "out of memory\n");
    }
}
