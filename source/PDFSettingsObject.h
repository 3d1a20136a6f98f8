// Sets of settings: the dictionary, the schema that it is validated by, the receiver of the messages
// of that, and the file or stream that it comes from.
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

// One set of settings. It does not interpret a single key. Hosts hold it through a container and
// use it from one thread at a time. Every operation may throw CBIBError or POSException.
class PDFSettingsObject : public BIB_T_NMT::CBIBClientBase {
public:
    // Shares settings, which need not be valid, and copies the NUL-terminated schema, which is not
    // looked at. REQUIRES: schema is not null.
    PDFSettingsObject(BIB_T_NMT::CPOSDict const& settings, char const* schema);

    PDFSettingsObject(PDFSettingsObject const&) = delete;
    PDFSettingsObject& operator=(PDFSettingsObject const&) = delete;
    virtual ~PDFSettingsObject() = default;

    // Whether the file of these settings is another one than was read or written last; true while
    // there is no file. The settings themselves play no part. Throws CPDFSettingsError when the
    // file cannot be examined.
    virtual bool IsDirty();

    // Writes the settings, valid or not, to the file at path, and binds them to it. Empty on
    // success; never throws. When only the new time stamp cannot be had, the settings are bound to
    // the new path with the old stamp.
    virtual BIB_T_NMT::CBIBError Write(UnicodeEncodingNS::Unicode16 const& path);

    // A second handle on the settings, not a copy: a change through it is a change of this object.
    BIB_T_NMT::CPOSDict GetSettings() const { return fSettings; }

    // The settings as job options text, made anew. Throws as
    // PDFSettingsParser::CPOSDict_To_Joboptions.
    BIB_T_NMT::CBIBPositionableStream GetJobOptionsData() const;

    // Puts all of changes into the settings, sharing the values, unless the result is not valid:
    // then nothing changes. Gives and throws what IsPDFSettingsValid does; an exception changes
    // nothing.
    BIB_T_NMT::CPOSArray SetSettings(BIB_T_NMT::CPOSDict const& changes);

    // Validates this object's settings, or others, by the schema: an array of one dictionary for each
    // error, with "Key" and "ErrorMsg". The settings are not changed. Throws POSException for a
    // schema that cannot be used, and "CPOSObject::Clone failed". One at a time in the whole
    // process.
    BIB_T_NMT::CPOSArray IsPDFSettingsValid() const { return IsPDFSettingsValid(fSettings); }
    BIB_T_NMT::CPOSArray IsPDFSettingsValid(BIB_T_NMT::CPOSDict const& settings) const;

    // The user's settings folder, and the settings files that there are, for the application
    // appName: see the procedures of these names in api/PDFSettings.h. Throw CBIBError and
    // POSException.
    static UnicodeEncodingNS::Unicode16 GetDefaultPDFSettingsDirectory();
    static BIB_T_NMT::CPOSArray GetListofPDFSettings(char const* appName);

    // The checks of values that a schema can name, as the runtime calls them: 1 accepts value. A
    // refusal writes its message into the buffer message, if there is one and it has more bytes
    // than the message with its NUL. Neither key nor userData is looked at.
    static long CompatibilityLevelValidator(
        POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);
    static long ImageDepthValidator(
        POSObject* value, BIBStringAtom* key, BIBSharedBuffer* message, void const* userData);

    // The names under which objects stand in containers.
    static char const* GetInterfaceName() noexcept { return "PDFSettingsInterface"; }
    static char const* GetInstanceName() noexcept { return "PDFSettingsImpl"; }

    // A new container, unowned, that owns instance. When this throws, instance is not deleted.
    static PDFSettings* NewContainer(PDFSettingsObject* instance);

    // The object in a container, which owns it. Throws the runtime's error for another container.
    static PDFSettingsObject* GetInstance(PDFSettings const* container);

private:
    void WriteText(UnicodeEncodingNS::Unicode16 const& path) const;

    BIB_T_NMT::CPOSDict fSettings;
    BIB_T_NMT::TBIBMemoryBuffer<char, BIB_T_NMT::CBIBMemory> fSchema;

protected:
    // The file that was last read or written; empty while there is none.
    UnicodeEncodingNS::Unicode16 fPath;
    // That file's time stamp at that moment; its size is 0 while there is none.
    FileMgmtUtil::TimeStamp fTimeStamp;
};

// Settings read from a stream, which lives as long as they do.
class PDFSettingsStream : public PDFSettingsObject {
public:
    // Reads the stream from its start. Throws CPDFSettingsError for a text that is refused.
    PDFSettingsStream(BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

    // The settings in a stream. The schema has no part in reading: it is accepted and not looked
    // at.
    static BIB_T_NMT::CPOSDict ConvertJobOptionsToCPOSDict(
        BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

private:
    BIB_T_NMT::CBIBPositionableStream fStream;
};

// Settings read from a file. They start bound to it: not dirty until somebody else changes it.
class PDFSettingsFile : public PDFSettingsStream {
public:
    // Reads the file at path. Throws CPDFSettingsError for a file that cannot be read, a text that
    // is refused and a time stamp that cannot be had. A change between the reading of the bytes and
    // of the time stamp goes unnoticed.
    PDFSettingsFile(UnicodeEncodingNS::Unicode16 const& path, char const* schema);

    // A stream on the bytes of the file at path. Throws CPDFSettingsError.
    static BIB_T_NMT::CBIBPositionableStream
    ConvertFileToBIBStream(UnicodeEncodingNS::Unicode16 const& path);
};

// Makes records of a validator's messages for as long as it lives. The runtime's callback takes a
// message and nothing else, so the one that lives is found through a pointer of the whole process:
// at most one lives at a time, whatever the thread.
class POSValidatorErrorProc : public BIB_T_NMT::CBIBClientBase {
public:
    // The records go to errors, which outlives this.
    explicit POSValidatorErrorProc(BIB_T_NMT::CPOSArray const& errors) noexcept : fErrors(errors) {
        gPOSValidatorErrorProc = this;
    }
    POSValidatorErrorProc(POSValidatorErrorProc const&) = delete;
    POSValidatorErrorProc& operator=(POSValidatorErrorProc const&) = delete;
    virtual ~POSValidatorErrorProc() { gPOSValidatorErrorProc = nullptr; }

    // Appends a record for message, a key, a space and a text: a dictionary with the 8-bit strings
    // "Key" and "ErrorMsg". Throws the memory error, for a message without a space too; it passes
    // through the validator. REQUIRES: an instance lives.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static void errproc(char const* message);

    // The one that lives, or null.
    // NOLINTNEXTLINE(readability-identifier-naming): its fixed name
    static POSValidatorErrorProc* gPOSValidatorErrorProc;

private:
    void Append(BIB_T_NMT::CPOSDict const& record) const;

    BIB_T_NMT::CPOSArray const& fErrors;
};

} // namespace PDFSettingsImpl
