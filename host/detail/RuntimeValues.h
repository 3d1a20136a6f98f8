// Conversion of the runtime's values to C++ values.
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
    std::string fTail; // the text after the settings in their file
};

// A deep copy. Throws std::bad_alloc, and Error (kComponent) for a value that no file can hold.
SettingsValues ReadValues(Tables const& tables, POSDict* dict);

// Calls visit with each key of dict and its value, which is borrowed.
void ForEachEntry(
    Tables const& tables,
    POSDict* dict,
    std::function<void(std::string const&, POSObject*)> const& visit);

// Calls visit with each dictionary in array, and skips other elements.
void ForEachDict(Tables const& tables, POSArray* array, std::function<void(POSDict*)> const& visit);

// Reads one field of records; its key is made once. The result is empty if the field is missing or
// of another kind.
class FieldReader {
public:
    // Copies key.
    FieldReader(Tables const& tables, char const* key)
        : fTables(tables),
          fKey(MakeAtom(tables, key)) {}

    std::string Text(POSDict* record) const;
    std::u16string Text16(POSDict* record) const;
    double Number(POSDict* record) const;
    std::string Bytes(POSDict* record) const;
    // The numbers in a nested dictionary, with their keys.
    std::vector<std::pair<std::string, double>> Numbers(POSDict* record) const;

private:
    POSObject* Get(POSDict* record) const { return fTables.dicts.Get(record, fKey.get()); }

    Tables const& fTables;
    AtomRef fKey;
};

} // namespace pdfsettings::detail
