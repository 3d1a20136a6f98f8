// The in-process runtime, on which the operations that can fail do so on demand.
#pragma once

#include "conformance/Tables.h"
#include "runtime/objects/FailurePoint.h"
#include "tests/support/LookupDouble.h"

namespace support {

using conformance::LoadTable;
using conformance::TableNames;

// Found through LookupDouble::Lookup while one lives. Containers cannot be made, or have no method
// or instance of that name; streams cannot be made.
class FaultyRuntime {
public:
    FaultyRuntime() {
        Replace<&_t_BIBContainerInterface::NewFullContainer>("NewFullContainer");
        Replace<&_t_BIBContainerInterface::GetMethod>("GetMethod");
        Replace<&_t_BIBContainerInterface::NGetInstance>("NGetInstance");
        Replace<&_t_BIBStreamFactoryInterface::NewPositionableMemoryStream>(
            "NewPositionableMemoryStream");
        Replace<&_t_BIBStreamFactoryInterface::NewPositionableBufferStream>(
            "NewPositionableBufferStream");
    }

    // Makes the component look for all that it knows of the runtime once more.
    static void MakeStale() {
        auto const unregister = reinterpret_cast<BIBUnregisterInterfaceProc>(
            BIBRuntimeLookup("BIB", "BIBUnregisterInterface", "BIBUnregisterInterface"));
        unregister("NobodysInterface");
    }

    static inline bibrt::FailurePoint fFaults;

private:
    template <auto Row>
    struct Faulty;

    template <class Table, class... Arguments, BIBError* (*Table::*Row)(Arguments...)>
    struct Faulty<Row> {
        static constexpr char const* kInterface = TableNames<Table>::kInterface;

        static BIBError* Call(Arguments... arguments) {
            static auto const kTable = LoadTable<Table>(&BIBRuntimeLookup);
            static auto const kErrors = LoadTable<_t_BIBErrorInterface>(&BIBRuntimeLookup);
            return fFaults.Attempt() ? kErrors.GetCoreError(kBRVUnknownError)
                                     : (kTable.*Row)(arguments...);
        }
    };

    template <auto Row>
    void Replace(std::string const& operation) {
        fLookup.Replace(std::string(Faulty<Row>::kInterface) + "." + operation, &Faulty<Row>::Call);
    }

    LookupDouble fLookup;
};

} // namespace support
