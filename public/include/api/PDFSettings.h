// The settings component as a host sees it: three exported functions and two registered tables.
//
// A host loads the library, calls PDFSettingsInitialize with its runtime's lookup function, and
// from then on finds every procedure through that same function, by interface, operation and proc
// type name. No procedure throws. A failure is told by the result alone; its reason goes to the
// runtime's BIBReportError.
//
// Threads: start and stop must not overlap with any other call. One settings object is used by one
// thread at a time. Calls that may bind a table anew must be serialised by the host.
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

// The version of the component, 66560 (0x10400). May be called in any state.
__attribute__((visibility("default"))) long PDFSettingsGetVersion(void);

// Binds the runtime behind lookup (one and the same for as long as the component is loaded) and
// registers the tables below. 1 when the component is started; 0 on failure, and for every further
// call until PDFSettingsTerminate has run.
__attribute__((visibility("default"))) int PDFSettingsInitialize(BIBLookupProc lookup);

// Unregisters the tables and lets go of the runtime. Harmless without a start. The runtime must
// stay loaded until the component is unloaded, which calls it once more, with null. Must not be
// called after a start that failed before the runtime's BIBUnregisterInterface was found.
__attribute__((visibility("default"))) void PDFSettingsTerminate(void);

#ifdef __cplusplus
}
#endif

// One set of PDF conversion settings: a container whose primary instance belongs to the component.
// Results of this type, and all other containers below, are unowned: the receiver adds a reference.
typedef struct PDFSettings PDFSettings;

// Settings from job options text, read from the start of the stream, which the settings keep alive.
// schema is a NUL-terminated text in the runtime's object notation, copied and not looked at before
// the first validation; it must not be null. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromStreamProc)(
    BIBPositionableStream* stream, char const* schema);

// Settings from the file at path, a text of UTF-16 units with "/" between folders, in the machine's
// byte order or with a mark at its head, and without a terminator. The settings are bound to the
// file. schema as above. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromFileProc)(BIBSharedBuffer* path, char const* schema);

// Settings that share the given dictionary: a change to it is a change of the settings. schema as
// above. Null on failure.
typedef PDFSettings* (*PDFSettingsNewFromDictProc)(POSDict* settings, char const* schema);

// The settings as job options text, made anew at each call, in a stream at its start. A value that
// the format has no form for is no failure: the text is then empty, or holds the default tail
// alone, and no reader accepts it; so does a want of memory while a value is written. Null on
// failure.
typedef BIBPositionableStream* (*PDFSettingsGetJobOptionsDataProc)(PDFSettings* settings);

// The settings' live dictionary, not a copy. Null on failure.
typedef POSDict* (*PDFSettingsGetSettingsProc)(PDFSettings* settings);

// Changes the settings under all keys of changes, whose values they share from then on, and
// validates the result by the schema. If a single error is found, nothing changes. The errors: an array of
// dictionaries with the 8-bit strings "Key", the path of the setting, and "ErrorMsg"; empty when
// the change was made. Null on failure, which changes nothing; a schema that cannot be used is one.
//
// This and the next use one list for the whole process: a host calls them one at a time, whichever
// settings they are for.
typedef POSArray* (*PDFSettingsSetSettingsProc)(PDFSettings* settings, POSDict* changes);

// Validates the settings by the schema and returns the errors as above; empty when they are valid. A
// setting that the schema does not know is no error. Null on failure.
typedef POSArray* (*PDFSettingsIsPDFSettingsValidProc)(PDFSettings* settings);

// 1 when the file that the settings are bound to has been changed by somebody else, when that
// cannot be told, and while they are bound to none; else 0. A change of the settings plays no part.
typedef int (*PDFSettingsIsDirtyProc)(PDFSettings* settings);

// Writes the settings, valid or not, to the file at path (as above), whose folder must exist, and
// binds them to it. An existing file is deleted before the new one is made. Null on success, else
// an error with a reference for the caller.
typedef BIBError* (*PDFSettingsWriteProc)(PDFSettings* settings, BIBSharedBuffer* path);

// The user's settings folder as UTF-16 units in the machine's order, with a mark 0xFEFF at the head
// and a zero unit at the end, in a buffer with a reference for the caller; mark and zero alone
// where the system has no such folder. It is made where it is missing. Null on failure.
typedef BIBSharedBuffer* (*PDFSettingsGetDefaultPDFSettingsDirectoryProc)(void);

// The settings files of the administrator's folder, then those of the user's, read anew at each
// call. An array of dictionaries:
//     SettingsName  16-bit string: the name to show, which no other entry has. Missing only for
//                   an item that has the extension in the path of its folder
//     FullFilePath  16-bit string: the absolute path
//     ReadOnly      number: 1 for a file that must not be written (it is locked, its owner may not
//                   write it, it is shown under a display name, or it is the administrator's)
//     ModDate       binary data "Apple_UTCDateTime", 8 bytes: seconds since 1904-01-01 00:00 UTC
//                   as 16 high and 32 low bits, and 1/65536 s as 16 bits, in the machine's order
//     ShowHide      dictionary, where there is one: application name to number, 0 for an
//                   application that is not to show the file
// The strings have a mark 0xFEFF at their head. appName: the application whose display names apply,
// in Mac Roman. An unreadable folder shortens the list. Null on failure.
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
