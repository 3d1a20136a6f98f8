// The plain exception family: a message and nothing else.
#pragma once

class BRVExceptionNoOpParent {};

// An exception that carries a text. The text is kept by pointer: it must outlive the exception.
class BRVException : public BRVExceptionNoOpParent {
public:
    explicit BRVException(char const* message) noexcept : fMessage(message) {}

    char const* fMessage;
};
