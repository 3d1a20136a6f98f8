// Tables of named procedures: their rows, and how a table is bound and registered.
#pragma once

namespace BIB_T_NMT {

// NOLINTBEGIN(readability-identifier-naming): the rows keep the names they have everywhere

// One row of a table to be bound. A table ends in a row of two empty strings that nothing reads.
struct _t_BIBFTabEntry {
    char const* name;     // the procedure's name within its interface
    char const* procType; // the name of the procedure's signature
};

// One row of a table to be registered. The closing row has a null proc too.
struct _t_BIBFTabRegEntry {
    char const* name;     // the procedure's name within its interface
    char const* procType; // the name of the procedure's signature
    void* proc;           // the procedure
};

// NOLINTEND(readability-identifier-naming)

// Fills procs, one slot for each of the count rows (the closing row not among them), from the last
// row to the first. 1 on success; 0 at the first name that cannot be found, with a null in its slot
// and the slots before it as they were. Throws CBIBError for such a name once the client is bound.
// The last argument is not read.
int BIBLoadProcTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    char const* interfaceName,
    void** procs,
    int);

// Registers the count rows from the first to the last under interfaceName. 1 on success; 0 at the
// first row that is refused, and what was registered before stays so.
int BIBRegisterProcTable(
    _t_BIBFTabRegEntry const* table, unsigned long count, char const* interfaceName);

// Stores proc in a slot of a table whose slots are procedure pointers of types of their own.
void StoreProc(void** procs, unsigned long slot, void* proc) noexcept;

} // namespace BIB_T_NMT
