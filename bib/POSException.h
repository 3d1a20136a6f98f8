// The exception of the value handles.
#pragma once

#include "bib/BRVException.h"

namespace BIB_T_NMT {

// A failed operation on a value. Shares no base with CBIBError: a clause for one does not see the
// other.
class POSException : public BRVException {
public:
    using BRVException::BRVException;
};

// Throws a POSException that holds message, which must outlive it.
[[noreturn]] void _POSSignalError(char const* message);

} // namespace BIB_T_NMT
