// Sets of settings: the dictionary, the schema that it is validated against, the receiver of the
// validator's messages, and the file or stream that it comes from.
#pragma once

#include "api/PDFSettings.h"
#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBError.h"
#include "bib/BIBMemory.h"
#include "bib/BIBStream.h"
#include "bib/POSCollections.h"
#include "source/FileMgmtUtil.h"

namespace PDFSettingsImpl {

// Frees the object in a container: a PDFSettingsObject, or null.
void DeletePDFSettingsImpl(void* instance);

// One set of settings. It does not interpret any key. Hosts own it through a container and use it
// on one thread at a time. Every operation may throw CBIBError or POSException.
class PDFSettingsObject : public BIB_T_NMT::CBIBClientBase {
public:
    // Shares settings, which need not be valid, and copies the NUL-terminated schema, which is not
    // parsed. REQUIRES: schema is not null.
    PDFSettingsObject(BIB_T_NMT::CPOSDict const& settings, char const* schema);

    PDFSettingsObject(PDFSettingsObject const&) = delete;
    PDFSettingsObject& operator=(PDFSettingsObject const&) = delete;
    virtual ~PDFSettingsObject() = default;

    // Whether the file of these settings has changed since it was last read or written; true if
    // there is no file. Changes to the settings themselves do not count. Throws CPDFSettingsError
    // if the file cannot be examined.
    virtual bool IsDirty();

    // Writes the settings, valid or not, to the file at path, and binds them to it. Returns an
    // invalid error on success; never throws. If only the new time stamp cannot be read, the
    // settings are bound to the new path with the old time stamp.
    virtual BIB_T_NMT::CBIBError Write(UnicodeEncodingNS::Unicode16 const& path);

    // Another handle to the settings, not a copy: a change through it changes this object, until
    // SetSettings replaces the dictionary.
    BIB_T_NMT::CPOSDict GetSettings() const { return fSettings; }

    // The settings as job options text, written again on each call. Throws as
    // PDFSettingsParser::CPOSDict_To_Joboptions does.
    BIB_T_NMT::CBIBPositionableStream GetJobOptionsData() const;

    // Stores all entries of changes in the settings, sharing the values, if the result is valid;
    // otherwise nothing changes. Returns and throws what IsPDFSettingsValid does; an exception
    // changes nothing.
    BIB_T_NMT::CPOSArray SetSettings(BIB_T_NMT::CPOSDict const& changes);

    // Validates this object's settings, or others, against the schema. Returns an array with one
    // dictionary for each error, with "Key" and "ErrorMsg". The settings are not changed. Throws
    // POSException for an unusable schema, and "CPOSObject::Clone failed". Calls must not overlap
    // anywhere in the process.
    BIB_T_NMT::CPOSArray IsPDFSettingsValid() const { return IsPDFSettingsValid(fSettings); }
    BIB_T_NMT::CPOSArray IsPDFSettingsValid(BIB_T_NMT::CPOSDict const& settings) const;

    // The user's settings folder, and the list of settings files for the application appName: see
    // the procedures with these names in api/PDFSettings.h. Throw CBIBError and POSException.
    static UnicodeEncodingNS::Unicode16 GetDefaultPDFSettingsDirectory();
    static BIB_T_NMT::CPOSArray GetListofPDFSettings(char const* appName);

    // The checks of values that a schema can refer to, as the runtime calls them: 1 accepts value.
    // If value is rejected, the message is written to the buffer message, if there is one and it
    // has more bytes than the message with its NUL. key and userData are ignored.
    static long CompatibilityLevelValidator(
        POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);
    static long ImageDepthValidator(
        POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);

    // The signature and the instance name of the objects' containers.
    static char const* GetInterfaceName() noexcept { return "PDFSettingsInterface"; }
    static char const* GetInstanceName() noexcept { return "PDFSettingsImpl"; }

    // A new container, unowned, that owns instance. If this throws, instance is not deleted.
    static PDFSettings* NewContainer(PDFSettingsObject* instance);

    // The object in a container, which owns it. Throws the runtime's error for any other container.
    static PDFSettingsObject* GetInstance(PDFSettings const* container);

private:
    void WriteText(UnicodeEncodingNS::Unicode16 const& path) const;

    BIB_T_NMT::CPOSDict fSettings;
    BIB_T_NMT::TBIBMemoryBuffer<char, BIB_T_NMT::CBIBMemory> fSchema;

protected:
    // The file that was last read or written; empty if there is none.
    UnicodeEncodingNS::Unicode16 fPath;
    // That file's time stamp at that moment; its size is 0 if there is none.
    FileMgmtUtil::TimeStamp fTimeStamp;
};

// Settings read from a stream, which lives as long as they do.
class PDFSettingsStream : public PDFSettingsObject {
public:
    // Reads the stream from its start. Throws CPDFSettingsError for a rejected text.
    PDFSettingsStream(BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

    // The settings in a stream. Reading ignores the schema.
    static BIB_T_NMT::CPOSDict ConvertJobOptionsToCPOSDict(
        BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

private:
    BIB_T_NMT::CBIBPositionableStream fStream;
};

// Settings read from a file and bound to it: they are not dirty until another party changes the
// file.
class PDFSettingsFile : public PDFSettingsStream {
public:
    // Reads the file at path. Throws CPDFSettingsError if the file cannot be read, its text is
    // rejected, or its time stamp cannot be read. A change between reading the bytes and reading
    // the time stamp goes unnoticed.
    PDFSettingsFile(UnicodeEncodingNS::Unicode16 const& path, char const* schema);

    // A stream that reads the bytes of the file at path. Throws CPDFSettingsError.
    static BIB_T_NMT::CBIBPositionableStream
    ConvertFileToBIBStream(UnicodeEncodingNS::Unicode16 const& path);
};

// Makes records of a validator's messages while it lives. The runtime's callback receives only the
// message, so a process-wide pointer leads to the current instance: at most one may live at a time,
// on any thread.
class POSValidatorErrorProc : public BIB_T_NMT::CBIBClientBase {
public:
    // Records are appended to errors, which must outlive this object.
    explicit POSValidatorErrorProc(BIB_T_NMT::CPOSArray const& errors) noexcept : fErrors(errors) {
        gPOSValidatorErrorProc = this;
    }
    POSValidatorErrorProc(POSValidatorErrorProc const&) = delete;
    POSValidatorErrorProc& operator=(POSValidatorErrorProc const&) = delete;
    virtual ~POSValidatorErrorProc() { gPOSValidatorErrorProc = nullptr; }

    // Appends a record for message, which is a key, a space and a text: a dictionary with the 8-bit
    // strings "Key" and "ErrorMsg". Throws the memory error, also for a message without a space;
    // the exception passes through the validator. REQUIRES: an instance lives.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static void errproc(char const* message);

    // The current instance, or null.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static POSValidatorErrorProc* gPOSValidatorErrorProc;

private:
    void Append(BIB_T_NMT::CPOSDict const& record) const;

    BIB_T_NMT::CPOSArray const& fErrors;
};

} // namespace PDFSettingsImpl
