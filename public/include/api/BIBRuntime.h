// The in-process runtime for hosts, in plain C: its entry point, its error channel, a lock, and a
// search for the positions of values.
//
// The lookup finds everything else that the runtime provides: see the headers in api/.
#pragma once

#include "api/POSCollectionInterfaces.h"

#define BIBRT_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// Returns the procedure that is registered under all three names, or null; null also for a null
// argument. Any thread may call it at any time, even while the process exits.
BIBRT_EXPORT void*
BIBRuntimeLookup(char const* interfaceName, char const* procName, char const* procType);

// Receives the messages that are passed to BIBReportError. message is valid during the call; client
// is the value that was set with the procedure.
typedef void (*BIBRuntimeErrorProc)(char const* message, void* client);

// Sets the receiver of BIBReportError. A null proc restores the default: one line on standard error
// for each message. A call that has already begun on another thread may still reach the former
// proc.
BIBRT_EXPORT void BIBRuntimeSetErrorChannel(BIBRuntimeErrorProc proc, void* client);

// Sets the receiver for reports on the calling thread, which then no longer go to the channel of
// all threads. A null proc restores that channel. The result and *formerClient, which may be null,
// are the former values of this thread, so that the caller can restore them.
BIBRT_EXPORT BIBRuntimeErrorProc
BIBRuntimeSetThreadErrorChannel(BIBRuntimeErrorProc proc, void* client, void** formerClient);

// A lock for independent callers of the component in this process, such as a host and a library
// with the C++ API, which uses it. The lock is recursive. Hold it around calls that must not
// overlap: start, stop and validation.
BIBRT_EXPORT void BIBRuntimeLockCalls(void);
BIBRT_EXPORT void BIBRuntimeUnlockCalls(void);

// Finds the line and column, both counted from 1, of a value in a text in the object notation; the
// column is in bytes. path has the form of the paths in the messages of
// POSStructValidatorInterface. It leads to a dictionary entry, whose key is then located, or to an
// array element; an empty path leads to the whole value. If several keys look the same in a path,
// the last one is used, as for equal keys when the text is read. Nonzero if there is such a value.
// Zero, and nothing is stored, if there is none, for a path that was truncated, for a text whose
// brackets do not match, for a null argument, and if memory runs out. Any thread may call it at any
// time.
BIBRT_EXPORT int BIBRuntimeLocateValue(
    char const* text, char const* path, unsigned long* line, unsigned long* column);

// Receives what a rule between settings rejects or advises against: the path of the setting to
// change first, a text, nonzero for a warning, and the paths of the stored settings that led to it.
// Everything is valid during the call.
typedef void (*BIBRuntimeRuleProc)(
    char const* path,
    char const* text,
    int isWarning,
    char const* const* concerned,
    unsigned long concernedCount,
    void* client);

// Validates settings against the rules between settings of a schema, and against nothing else.
// POSStructValidatorInterface reports the errors among them too. The schema and the settings are
// dictionaries of this runtime and are not changed. Nonzero when all rules were applied; zero for
// other arguments, and if memory runs out. Exceptions of proc reach the caller.
BIBRT_EXPORT int
BIBRuntimeCheckRules(POSDict* schema, POSDict* settings, BIBRuntimeRuleProc proc, void* client);

#ifdef __cplusplus
}
#endif
