// The in-process runtime for hosts: its one way in and its error channel. Plain C.
//
// Everything else that the runtime can do is found through the lookup, see the headers in api/.
#pragma once

#define BIBRT_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// Gives the procedure that is registered under all three texts, or null; null for a null argument
// too. Any thread may call it at any time, also while the process ends.
BIBRT_EXPORT void*
BIBRuntimeLookup(char const* interfaceName, char const* procName, char const* procType);

// Receives what BIBReportError is given: message is valid during the call, client is as set.
typedef void (*BIBRuntimeErrorProc)(char const* message, void* client);

// Sets where BIBReportError writes to. A null proc brings the default back: a line on standard
// error. A call on another thread that has begun may still reach the former proc.
BIBRT_EXPORT void BIBRuntimeSetErrorChannel(BIBRuntimeErrorProc proc, void* client);

// The same for reports on the calling thread, which then do not go to the channel of all threads. A
// null proc: they go there again. The result and *formerClient, which may be null, are what was set
// before on this thread, so that it can be set again.
BIBRT_EXPORT BIBRuntimeErrorProc
BIBRuntimeSetThreadErrorChannel(BIBRuntimeErrorProc proc, void* client, void** formerClient);

// A lock for all that call the component in this process and do not know of each other, such as a
// host and a library with the C++ API, which takes it. A thread that has it may take it again. Hold
// it around calls that must be made one at a time: starting, stopping and validating.
BIBRT_EXPORT void BIBRuntimeLockCalls(void);
BIBRT_EXPORT void BIBRuntimeUnlockCalls(void);

// Finds the place, counted from 1, the column in bytes, of a value in a text in the object
// notation. path has the form of the paths in the messages of POSStructValidatorInterface, and
// leads to the entry of a dictionary, whose key is meant, or to an element; an empty one leads to
// the whole value. Of keys that look the same in a path the last one counts, as equal ones do where
// the text is read. Non-zero
// when there is such a value; zero, and nothing is stored, when there is none, for a path that was
// cut short, for a text whose brackets do not match, for a null argument and when memory runs out.
// Any thread may call it at any time.
BIBRT_EXPORT int BIBRuntimeLocateValue(
    char const* text, char const* path, unsigned long* line, unsigned long* column);

#ifdef __cplusplus
}
#endif
