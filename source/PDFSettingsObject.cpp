#include "source/PDFSettingsObject.h"

#include "bib/BIBContainer.h"
#include "bib/BIBStringAtom.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsParser.h"

#include <cstring>

using BIB_T_NMT::CBIBContainer;
using BIB_T_NMT::CBIBError;
using BIB_T_NMT::CBIBPositionableStream;
using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;

namespace PDFSettingsImpl {

void DeletePDFSettingsImpl(void* instance) {
    delete static_cast<PDFSettingsObject*>(instance);
}

PDFSettingsObject::PDFSettingsObject(BIB_T_NMT::CPOSDict const& settings, char const* schema)
    : fSettings(settings),
      fSchema(schema, std::strlen(schema) + 1),
      fTimeStamp(0) {}

bool PDFSettingsObject::IsDirty() {
    if (fTimeStamp.GetSize() == 0) {
        return true;
    }
    return !FileMgmtUtil::AreTimeStampsEqual(fTimeStamp, FileMgmtUtil::GetTimeStamp(fPath));
}

CBIBError PDFSettingsObject::Write(UnicodeEncodingNS::Unicode16 const& path) {
    try {
        WriteText(path);
        fPath = path;
        fTimeStamp = FileMgmtUtil::GetTimeStamp(path);
        return CBIBError();
    } catch (CPDFSettingsError const& error) {
        return NeverEmpty(error);
    } catch (...) {
        return NeverEmpty(CPDFSettingsError("PDFSettingsObject::Write", kWriteError));
    }
}

void PDFSettingsObject::WriteText(UnicodeEncodingNS::Unicode16 const& path) const {
    CBIBPositionableStream const text = GetJobOptionsData();
    text.Seek(0, kBIBSeekFromEnd);
    unsigned long const size = text.Mark();
    text.Seek(0);
    UnicodeEncodingNS::Buffer8 const bytes(size, nullptr);
    text.Read(bytes.GetBuffer(), size);
    UnicodeEncodingNS::WriteFile<CPDFSettingsError>(path, bytes, /*failIfExists=*/false);
}

CBIBPositionableStream PDFSettingsObject::GetJobOptionsData() const {
    return PDFSettingsParser(fSettings).GetJoboptions();
}

CPOSArray PDFSettingsObject::SetSettings(CPOSDict const& changes) {
    CPOSDict const merged(fSettings.Clone(), /*quiet=*/false);
    BIB_T_NMT::CPOSDictIterator const cursor(changes);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        CBIBStringAtom const key(cursor.CurKey());
        merged.Put(key, changes.Get(key, /*quiet=*/false));
    }
    CPOSArray errors = IsPDFSettingsValid(merged);
    if (errors.Count() == 0) {
        // The changed clone replaces the dictionary: handles to the old one see no later change.
        fSettings = merged;
    }
    return errors;
}

PDFSettings* PDFSettingsObject::NewContainer(PDFSettingsObject* instance) {
    CBIBStringAtom const interfaceName(GetInterfaceName());
    CBIBStringAtom const instanceName(GetInstanceName());
    return reinterpret_cast<PDFSettings*>(CBIBContainer::NewFullContainer(
        instance, instanceName, &DeletePDFSettingsImpl, interfaceName, nullptr, nullptr, nullptr));
}

PDFSettingsObject* PDFSettingsObject::GetInstance(PDFSettings const* container) {
    CBIBStringAtom const instanceName(GetInstanceName());
    return BIB_T_NMT::TBIBGetInstance<PDFSettingsObject>(
        reinterpret_cast<BIBContainer const*>(container), instanceName);
}

PDFSettingsFile::PDFSettingsFile(UnicodeEncodingNS::Unicode16 const& path, char const* schema)
    : PDFSettingsStream(ConvertFileToBIBStream(path), schema) {
    fPath = path;
    fTimeStamp = FileMgmtUtil::GetTimeStamp(path);
}

BIB_T_NMT::CBIBPositionableStream
PDFSettingsFile::ConvertFileToBIBStream(UnicodeEncodingNS::Unicode16 const& path) {
    return BIB_T_NMT::CBIBPositionableStream(UnicodeEncodingNS::ReadFile<CPDFSettingsError>(path));
}

// The text is read before the base is constructed, so a rejected text leaves nothing to destroy.
PDFSettingsStream::PDFSettingsStream(CBIBPositionableStream const& stream, char const* schema)
    : PDFSettingsObject(ConvertJobOptionsToCPOSDict(stream, schema), schema),
      fStream(stream) {}

BIB_T_NMT::CPOSDict PDFSettingsStream::ConvertJobOptionsToCPOSDict(
    CBIBPositionableStream const& stream, char const* /*schema*/) {
    return PDFSettingsParser(stream).GetPDFSettings();
}

} // namespace PDFSettingsImpl
