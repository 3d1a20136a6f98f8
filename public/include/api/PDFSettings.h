// The host's interface to the settings component: three exported functions and two registered
// tables.
//
// A host loads the library and calls PDFSettingsInitialize with its runtime's lookup function.
// After that it finds every procedure through the same function, by the names of the interface, the
// operation and the proc type. No procedure throws. Only the result reports a failure; the reason
// is passed to the runtime's BIBReportError.
//
// Threads: start and stop must not overlap with any other call. Use one settings object on one
// thread at a time. The host must serialize calls that may bind a table again.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/BIBErrorInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBTable.h"
#include "api/POSCollectionInterfaces.h"

#ifdef __cplusplus
extern "C" {
#endif

// The component's version, 66560 (0x10400). May be called in any state.
__attribute__((visibility("default"))) long PDFSettingsGetVersion(void);

// Binds the runtime behind lookup, which must be the same while the component is loaded, and
// registers the tables below. Returns 1 if the component is started. Returns 0 on failure, and for
// every further call until PDFSettingsTerminate has run.
__attribute__((visibility("default"))) int PDFSettingsInitialize(BIBLookupProc lookup);

// Unregisters the tables and releases the runtime. Does nothing without a start. The runtime must
// stay loaded until the component is unloaded: unloading calls it once more, with null. Must not be
// called after a start that failed before it found the runtime's BIBUnregisterInterface.
__attribute__((visibility("default"))) void PDFSettingsTerminate(void);

#ifdef __cplusplus
}
#endif

// One set of PDF conversion settings: a container whose primary instance is owned by the component.
// Results of this type, and all other containers below, are unowned: the receiver adds a reference.
typedef struct PDFSettings PDFSettings;

// Settings read from job options text, from the start of the stream, which the settings keep alive.
// schema is a NUL-terminated string in the runtime's object notation. It must not be null; it is
// copied, and first parsed by a validation. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromStreamProc)(
    BIBPositionableStream* stream, char const* schema);

// Settings read from the file at path. path is UTF-16 with "/" between folders and no terminator;
// its units are in the machine's byte order or start with a byte order mark. The settings are bound
// to the file. schema as above. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromFileProc)(BIBSharedBuffer* path, char const* schema);

// Settings that share the dictionary: a change to it changes the settings, until SetSettings
// replaces the dictionary. schema as above. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromDictProc)(POSDict* settings, char const* schema);

// The settings as job options text, written again on each call, in a stream at its start. A value
// that the format cannot represent is not a failure, and neither is running out of memory while a
// value is written: the text is then empty, which reads as settings without entries, or the default
// tail alone, which every reader rejects. Null on failure.
typedef BIBPositionableStream* (*PDFSettingsGetJobOptionsDataProc)(PDFSettings* settings);

// The settings' own dictionary, not a copy. A successful SetSettings replaces it with a changed
// copy. Null on failure.
typedef POSDict* (*PDFSettingsGetSettingsProc)(PDFSettings* settings);

// Stores all entries of changes in the settings, which share the values from then on, and validates
// the result against the schema. If there is any error, nothing changes. The result is the array of
// errors, empty if the change was made. Each error is a dictionary with the 8-bit strings "Key",
// the path of the setting, and "ErrorMsg". Null on failure, for example an unusable schema; nothing
// changes then either.
//
// This call and the next share one error list for the whole process: a host must not overlap them,
// even for different settings.
typedef POSArray* (*PDFSettingsSetSettingsProc)(PDFSettings* settings, POSDict* changes);

// Validates the settings against the schema and returns the errors as above; empty if the settings
// are valid. A setting that the schema does not know is not an error. Null on failure.
typedef POSArray* (*PDFSettingsIsPDFSettingsValidProc)(PDFSettings* settings);

// 1 if the file of the settings has been changed by another party, if that cannot be determined,
// and if the settings are not bound to a file; else 0. Changes to the settings themselves do not
// count.
typedef int (*PDFSettingsIsDirtyProc)(PDFSettings* settings);

// Writes the settings, valid or not, to the file at path (as above) and binds them to it. The
// folder must exist. An existing file is deleted before the new one is created. Null on success,
// else an error with a reference for the caller.
typedef BIBError* (*PDFSettingsWriteProc)(PDFSettings* settings, BIBSharedBuffer* path);

// The user's settings folder as UTF-16 in the machine's byte order, with a byte order mark 0xFEFF
// and a terminating zero unit, in a buffer with a reference for the caller. Only the mark and the
// zero unit if the system has no such folder. A missing folder is created. Null on failure.
typedef BIBSharedBuffer* (*PDFSettingsGetDefaultPDFSettingsDirectoryProc)(void);

// The settings files of the administrator's folder, then those of the user's folder, listed again
// on each call. An array of dictionaries:
//     SettingsName  16-bit string: the name to show, unique in the list. Missing only for an item
//                   that has the extension in the path of its folder
//     FullFilePath  16-bit string: the absolute path
//     ReadOnly      number: 1 for a file that must not be written (it is locked, its owner may not
//                   write it, it is shown under a display name, or it is the administrator's)
//     ModDate       binary data "Apple_UTCDateTime", 8 bytes: seconds since 1904-01-01 00:00 UTC
//                   as 16 high and 32 low bits, and 1/65536 s as 16 bits, in the machine's order
//     ShowHide      dictionary, if there is one: application name to number, 0 for an
//                   application that must not show the file
// The strings start with a byte order mark 0xFEFF. appName, in Mac Roman: the application whose
// display names apply. If a folder cannot be read, its files are missing from the list. Null on
// failure.
typedef POSArray* (*PDFSettingsGetListofPDFSettingsProc)(char const* appName);

// The rows of "PDFSettingsStatics".
// clang-format off
#define PDF_SETTINGS_STATICS_ROWS(ROW)                                                     \
    ROW(GetDefaultPDFSettingsDirectory, PDFSettingsGetDefaultPDFSettingsDirectoryProc)     \
    ROW(GetListofPDFSettings,           PDFSettingsGetListofPDFSettingsProc)
// clang-format on

// The rows of "PDFSettingsInterface".
// clang-format off
#define PDF_SETTINGS_INTERFACE_ROWS(ROW)                         \
    ROW(NewFromStream,      PDFSettingsNewFromStreamProc)        \
    ROW(NewFromFile,        PDFSettingsNewFromFileProc)          \
    ROW(NewFromDict,        PDFSettingsNewFromDictProc)          \
    ROW(GetJobOptionsData,  PDFSettingsGetJobOptionsDataProc)    \
    ROW(GetSettings,        PDFSettingsGetSettingsProc)          \
    ROW(SetSettings,        PDFSettingsSetSettingsProc)          \
    ROW(IsPDFSettingsValid, PDFSettingsIsPDFSettingsValidProc)   \
    ROW(IsDirty,            PDFSettingsIsDirtyProc)              \
    ROW(Write,              PDFSettingsWriteProc)
// clang-format on
