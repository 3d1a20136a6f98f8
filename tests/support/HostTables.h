// The tables that a host of the component uses, all at once.
#pragma once

#include "api/BIBRuntime.h"
#include "conformance/Tables.h"

namespace support {

using conformance::LoadMethods;
using conformance::LoadTable;

struct HostTables {
    _t_BIBContainerInterface fContainer = Load<_t_BIBContainerInterface>();
    _t_BIBStringInterface fStringAtom = Load<_t_BIBStringInterface>();
    _t_BIBStreamFactoryInterface fStreams = Load<_t_BIBStreamFactoryInterface>();
    _t_POSObjectStatics fObjects = Load<_t_POSObjectStatics>();
    _t_POSNumberInterface fNumber = Load<_t_POSNumberInterface>();
    _t_POSStringInterface fString = Load<_t_POSStringInterface>();
    _t_POSUnicodeStringInterface fUnicodeString = Load<_t_POSUnicodeStringInterface>();
    _t_POSBinDataInterface fBinData = Load<_t_POSBinDataInterface>();
    _t_POSArrayInterface fArray = Load<_t_POSArrayInterface>();
    _t_POSDictInterface fDict = Load<_t_POSDictInterface>();
    _t_POSDictIteratorInterface fDictIterator = Load<_t_POSDictIteratorInterface>();

private:
    template <class Table>
    static Table Load() {
        return LoadTable<Table>(&BIBRuntimeLookup);
    }
};

} // namespace support
