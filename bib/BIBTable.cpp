#include "bib/BIBTable.h"

#include "bib/BIBClient.h"

#include <cstring>

namespace BIB_T_NMT {

void StoreProc(void** procs, unsigned long slot, void* proc) noexcept {
    // Byte by byte: seen through a void*, the slot would be an object of another type.
    std::memcpy(procs + slot, &proc, sizeof proc);
}

int BIBLoadProcTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    char const* interfaceName,
    void** procs,
    int /*unused*/) {
    for (unsigned long slot = count; slot-- > 0;) {
        void* const proc = BIBGetProcAddress(interfaceName, table[slot].name, table[slot].procType);
        StoreProc(procs, slot, proc);
        if (proc == nullptr) {
            return 0;
        }
    }
    return 1;
}

int BIBRegisterProcTable(
    _t_BIBFTabRegEntry const* table, unsigned long count, char const* interfaceName) {
    for (unsigned long row = 0; row < count; ++row) {
        auto const& entry = table[row];
        if (BIBRegisterProcAddress(interfaceName, entry.name, entry.procType, entry.proc) == 0) {
            return 0;
        }
    }
    return 1;
}

} // namespace BIB_T_NMT
