#include "source/PDFSettingsObject.h"

#include <cstring>

#include "bib/BIBContainer.h"
#include "bib/BIBStringAtom.h"

using BIB_T_NMT::CBIBContainer;
using BIB_T_NMT::CBIBStringAtom;

namespace PDFSettingsImpl {

void DeletePDFSettingsImpl(void* instance) {
    delete static_cast<PDFSettingsObject*>(instance);
}

PDFSettingsObject::PDFSettingsObject(BIB_T_NMT::CPOSDict const& settings, char const* schema)
    : fSettings(settings),
      fSchema(schema, std::strlen(schema) + 1),
      fTimeStamp(0) {}

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
