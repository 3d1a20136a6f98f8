// From the runtime's values to plain ones.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Value.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

struct SettingsValues {
    Dictionary fValues;
    std::string fTail; // what follows settings in their file
};

// A deep copy. Throws std::bad_alloc, and Error (kComponent) for a value that no file can hold.
SettingsValues ReadValues(Tables const& tables, POSDict* dict);

// Calls visit with each key of dict and the value under it, which is borrowed.
void ForEachEntry(
    Tables const& tables,
    POSDict* dict,
    std::function<void(std::string const&, POSObject*)> const& visit);

// Calls visit with each dictionary in array; other elements are passed over.
void ForEachDict(Tables const& tables, POSArray* array, std::function<void(POSDict*)> const& visit);

// Reads the fields of records, whose keys are made once. A field that is missing or of another kind
// is empty.
class FieldReader {
public:
    // key outlives nothing: it is copied.
    FieldReader(Tables const& tables, char const* key)
        : fTables(tables),
          fKey(MakeAtom(tables, key)) {}

    std::string Text(POSDict* record) const;
    std::u16string Text16(POSDict* record) const;
    double Number(POSDict* record) const;
    std::string Bytes(POSDict* record) const;
    // The numbers of a nested dictionary with their keys.
    std::vector<std::pair<std::string, double>> Numbers(POSDict* record) const;

private:
    POSObject* Get(POSDict* record) const { return fTables.dicts.Get(record, fKey.get()); }

    Tables const& fTables;
    AtomRef fKey;
};

} // namespace pdfsettings::detail
