// A lookup in front of the runtime under test, by which rows are missing or fail.
#pragma once

#include "conformance/Runtime.h"

#include <string>
#include <vector>

namespace conformance {

// A row that the component looks up.
struct NamedRow {
    std::string fInterface;
    std::string fName;
};

// All rows of the tables that the component may look up, but those of the cache.
std::vector<NamedRow> RowsOfTheComponent();

// At most one lives at a time.
class RowDouble {
public:
    explicit RowDouble(Runtime const& runtime);
    RowDouble(RowDouble const&) = delete;
    RowDouble& operator=(RowDouble const&) = delete;
    ~RowDouble();

    // To be given to the component.
    static void* Lookup(char const* interfaceName, char const* procName, char const* procType);

    // From now on, until Restore, the row is missing.
    void Hide(NamedRow const& row);

    // From now on, until Restore, the n-th call of the row, counted from 1, gives its failure
    // value: null, zero or an error; with andAllLater so do all later ones. False for a row that
    // has none.
    bool FailCall(NamedRow const& row, unsigned long n, bool andAllLater);

    // From now on, until Restore, no call of the row does anything: it gives zero or null, or an
    // error.
    void Break(NamedRow const& row);

    void Restore();

    // How many calls were made to the row that FailCall named.
    static unsigned long CountCalls();
};

} // namespace conformance
