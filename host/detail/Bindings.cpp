#include "host/detail/Bindings.h"

#include "pdfsettings/Error.h"

#include <string>

namespace pdfsettings::detail {

namespace {

// Finds the rows of one interface.
class Rows {
public:
    Rows(BIBLookupProc lookup, char const* interfaceName)
        : fLookup(lookup),
          fInterfaceName(interfaceName) {}

    template <class Proc>
    Proc Find(char const* operation, char const* procType) const {
        void* const proc = fLookup(fInterfaceName, operation, procType);
        if (proc == nullptr) {
            throw Error(
                std::string("missing procedure ") + fInterfaceName + "/" + operation + " of type " +
                procType);
        }
        return reinterpret_cast<Proc>(proc);
    }

private:
    BIBLookupProc fLookup;
    char const* fInterfaceName;
};

// A table is filled by its list of rows, with the local `rows` on its interface.
#define PDFSETTINGS_FOUND_ROW(operation, procType) rows.Find<procType>(#operation, #procType),
#define PDFSETTINGS_FOUND_TABLE(interfaceName, ROWS) \
    [lookup] { \
        Rows const rows(lookup, #interfaceName); \
        return _t_##interfaceName{ROWS(PDFSETTINGS_FOUND_ROW)}; \
    }()

} // namespace

// clang-format off
Bindings::Bindings(BIBLookupProc lookup)
    : containers(PDFSETTINGS_FOUND_TABLE(BIBContainerInterface, BIB_CONTAINER_INTERFACE_ROWS)),
      errors(PDFSETTINGS_FOUND_TABLE(BIBErrorInterface, BIB_ERROR_INTERFACE_ROWS)),
      buffers(PDFSETTINGS_FOUND_TABLE(BIBSharedBuffInterface, BIB_SHARED_BUFF_INTERFACE_ROWS)),
      streams(PDFSETTINGS_FOUND_TABLE(
          BIBStreamFactoryInterface, BIB_STREAM_FACTORY_INTERFACE_ROWS)),
      atoms(PDFSETTINGS_FOUND_TABLE(BIBStringInterface, BIB_STRING_INTERFACE_ROWS)),
      objects(PDFSETTINGS_FOUND_TABLE(POSObjectStatics, POS_OBJECT_STATICS_ROWS)),
      numbers(PDFSETTINGS_FOUND_TABLE(POSNumberInterface, POS_NUMBER_INTERFACE_ROWS)),
      strings(PDFSETTINGS_FOUND_TABLE(POSStringInterface, POS_STRING_INTERFACE_ROWS)),
      unicodeStrings(PDFSETTINGS_FOUND_TABLE(
          POSUnicodeStringInterface, POS_UNICODE_STRING_INTERFACE_ROWS)),
      binData(PDFSETTINGS_FOUND_TABLE(POSBinDataInterface, POS_BIN_DATA_INTERFACE_ROWS)),
      arrays(PDFSETTINGS_FOUND_TABLE(POSArrayInterface, POS_ARRAY_INTERFACE_ROWS)),
      dicts(PDFSETTINGS_FOUND_TABLE(POSDictInterface, POS_DICT_INTERFACE_ROWS)),
      iterators(PDFSETTINGS_FOUND_TABLE(
          POSDictIteratorInterface, POS_DICT_ITERATOR_INTERFACE_ROWS)),
      validators(PDFSETTINGS_FOUND_TABLE(
          POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS)),
      settings(PDFSETTINGS_FOUND_TABLE(PDFSettingsInterface, PDF_SETTINGS_INTERFACE_ROWS)),
      statics(PDFSETTINGS_FOUND_TABLE(PDFSettingsStatics, PDF_SETTINGS_STATICS_ROWS)) {}
// clang-format on

} // namespace pdfsettings::detail
