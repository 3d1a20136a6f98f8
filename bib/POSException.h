// The exceptions of the value handles: a message and nothing else.
#pragma once

class BRVExceptionNoOpParent {};

// An exception that carries a text. The text is kept by pointer: it must outlive the exception.
class BRVException : public BRVExceptionNoOpParent {
public:
    explicit BRVException(char const* message) noexcept : fMessage(message) {}

    char const* fMessage;
};

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
