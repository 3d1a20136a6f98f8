// A complete runtime in plain C, as a start for one's own: all that bib-conformance requires, for a
// host that calls it, and the component on it, on one thread. It has no caches, no streams on files
// and no locks.
//
// It is one translation unit: each file below uses what is above it. A row is a function with the
// name of its interface in front: ContainerAddRef is AddRef of BIBContainerInterface.
#define _GNU_SOURCE

// All that is counted has one structure (objects.h), so one type of pointer is enough.
#define BIBContainer Object
#define BIBError Object
#define BIBPositionableStream Object
#define BIBRewindableStream Object
#define BIBSharedBuffer Object
#define BIBSimpleStream Object
#define BIBStringAtom Atom
#define POSArray Object
#define POSBinData Object
#define POSDict Object
#define POSDictIterator Object
#define POSNumber Object
#define POSObject Object
#define POSString Object
#define POSUnicodeString Object
#define POSValidator Object

#include <api/BIBBootstrap.h>
#include <api/BIBMemoryInterface.h>
#include <api/BIBRuntime.h>
#include <api/POSScalarInterfaces.h>
#include <api/POSValidatorInterface.h>
#include <locale.h>
#include <search.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Rows have parameters that a small runtime does not need.
#pragma GCC diagnostic ignored "-Wunused-parameter"

// A row, or another function, of one expression.
#define ROW(declaration, expression) \
    static declaration { \
        return expression; \
    }

// Values may be nested this deep; they are destroyed at any depth.
enum { kMostLevels = 1100 };

typedef unsigned char Byte;
typedef unsigned long Size;
typedef char const* Text; // with a zero at its end

// clang-format off
#include "basics.h"
#include "objects.h"
#include "values.h"
#include "registry.h"
#include "containers.h"
#include "streams.h"
#include "notation.h"
#include "validator.h"
// clang-format on

// Continues a condition by registering the row of a table. The compound literal compares a
// procedure with its type.
#define ADD(interface, prefix, name, type) \
    &&BIBRegisterProcAddress(interface, #name, #type, (void*)(type){&prefix##name})

#define BIB(name, type) &&BIBRegisterProcAddress("BIB", #name, #name, (void*)(type){name})
#define CONTAINER(name, type) ADD("BIBContainerInterface", Container, name, type)
#define ERROR(name, type) ADD("BIBErrorInterface", Error, name, type)
#define ATOM(name, type) ADD("BIBStringInterface", Atom, name, type)
#define MEMORY(name, type) ADD("BIBMemoryInterface", Memory, name, type)
#define BUFFER(name, type) ADD("BIBSharedBuffInterface", Buffer, name, type)
#define FACTORY(name, type) ADD("BIBStreamFactoryInterface", Stream, name, type)
#define NUMBER(name, type) ADD("POSNumberInterface", Number, name, type)
#define STRING(name, type) ADD("POSStringInterface", String, name, type)
#define UNICODE(name, type) ADD("POSUnicodeStringInterface", UnicodeString, name, type)
#define BINARY(name, type) ADD("POSBinDataInterface", BinData, name, type)
#define ARRAY(name, type) ADD("POSArrayInterface", Array, name, type)
#define DICT(name, type) ADD("POSDictInterface", Dict, name, type)
#define CURSOR(name, type) ADD("POSDictIteratorInterface", Cursor, name, type)
#define OBJECT(name, type) ADD("POSObjectStatics", Object, name, type)
#define VALIDATOR(name, type) ADD("POSStructValidatorInterface", Validator, name, type)
// Methods of streams, under the signatures of their levels.
#define SIMPLE(name, type) ADD("SimpleStream", Stream, name, type)
#define REWINDABLE(name, type) ADD("RewindableStream", Stream, name, type)
#define POSITIONABLE(name, type) ADD("PositionableStream", Stream, name, type)

// If memory runs out here, rows are missing, and the component does not start.
__attribute__((constructor)) static void Start(void) {
    gCoreErrors[kBRVUnknownError] = ErrorNewError("Unknown error", "runtime_in_c", 0, NULL, NULL);
    gCoreErrors[kBRVMemoryError] = ErrorNewError("Out of memory", "runtime_in_c", 1, NULL, NULL);
    gNumbers = newlocale(LC_ALL_MASK, "C", NULL);
    int isDone = gCoreErrors[0] != NULL && gCoreErrors[1] != NULL && gNumbers != NULL &&
                 Inherit("RewindableStream", "SimpleStream") &&
                 Inherit("PositionableStream", "RewindableStream");
    isDone = isDone BIB_BOOTSTRAP_ROWS(BIB) BIB_CONTAINER_INTERFACE_ROWS(CONTAINER);
    isDone = isDone BIB_MEMORY_INTERFACE_ROWS(MEMORY) BIB_SHARED_BUFF_INTERFACE_ROWS(BUFFER);
    isDone = isDone BIB_STRING_INTERFACE_ROWS(ATOM) BIB_ERROR_INTERFACE_ROWS(ERROR);
    isDone = isDone POS_NUMBER_INTERFACE_ROWS(NUMBER) POS_STRING_INTERFACE_ROWS(STRING);
    isDone = isDone POS_UNICODE_STRING_INTERFACE_ROWS(UNICODE) POS_BIN_DATA_INTERFACE_ROWS(BINARY);
    isDone = isDone POS_ARRAY_INTERFACE_ROWS(ARRAY) POS_DICT_INTERFACE_ROWS(DICT);
    isDone = isDone POS_DICT_ITERATOR_INTERFACE_ROWS(CURSOR);
    isDone = isDone BIB_STREAM_FACTORY_INTERFACE_ROWS(FACTORY);
    isDone = isDone BIB_SIMPLE_STREAM_INTERFACE_ROWS(SIMPLE);
    isDone = isDone BIB_REWINDABLE_STREAM_INTERFACE_ROWS(REWINDABLE);
    isDone = isDone BIB_POSITIONABLE_STREAM_INTERFACE_ROWS(POSITIONABLE);
    // What makes values and validators is also the signature of their methods.
    isDone = isDone POS_OBJECT_STATICS_ROWS(OBJECT) POS_OBJECT_VIRTUAL_INTERFACE_ROWS(OBJECT);
    isDone = isDone POS_STRUCT_VALIDATOR_INTERFACE_ROWS(VALIDATOR);
    isDone = isDone POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS(VALIDATOR);
    (void)(isDone || BIBReportError("out of memory"));
}
