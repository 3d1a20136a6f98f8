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

#ifdef __cplusplus
}
#endif
