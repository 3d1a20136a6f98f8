// The tables of the runtime and of the component, as far as the host API calls them.
#pragma once

#include "api/BIBBootstrap.h"
#include "api/BIBContainerInterface.h"
#include "api/BIBErrorInterface.h"
#include "api/BIBSharedBuffInterface.h"
#include "api/BIBStreamInterface.h"
#include "api/BIBStringInterface.h"
#include "api/PDFSettings.h"
#include "api/POSCollectionInterfaces.h"
#include "api/POSObjectInterface.h"
#include "api/POSScalarInterfaces.h"
#include "api/POSValidatorInterface.h"

namespace pdfsettings::detail {

// The component's table, named as the headers name the others.
struct _t_PDFSettingsInterface {
    PDF_SETTINGS_INTERFACE_ROWS(BIB_TABLE_SLOT)
};

// What it does without settings.
struct _t_PDFSettingsStatics {
    PDF_SETTINGS_STATICS_ROWS(BIB_TABLE_SLOT)
};

// Every procedure is found when this is made, so that no call meets a missing one later.
struct Bindings {
    // Throws Error with the name of the first row that lookup does not have.
    // REQUIRES: the component is started on lookup.
    explicit Bindings(BIBLookupProc lookup);

    _t_BIBContainerInterface containers;
    _t_BIBErrorInterface errors;
    _t_BIBSharedBuffInterface buffers;
    _t_BIBStreamFactoryInterface streams;
    _t_BIBStringInterface atoms;
    _t_POSObjectStatics objects;
    _t_POSNumberInterface numbers;
    _t_POSStringInterface strings;
    _t_POSUnicodeStringInterface unicodeStrings;
    _t_POSBinDataInterface binData;
    _t_POSArrayInterface arrays;
    _t_POSDictInterface dicts;
    _t_POSDictIteratorInterface iterators;
    _t_POSStructValidatorInterface validators;
    _t_PDFSettingsInterface settings;
    _t_PDFSettingsStatics statics;
};

} // namespace pdfsettings::detail
