#include "source/PDFSettingsObject.h"

#include <cstring>

#include "bib/BIBContainer.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSDictIterator.h"
#include "source/PDFSettingsParser.h"

using BIB_T_NMT::CBIBContainer;
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

BIB_T_NMT::CBIBPositionableStream PDFSettingsObject::GetJobOptionsData() const {
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

} // namespace PDFSettingsImpl
