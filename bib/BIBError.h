// Errors: the handle to a runtime error, which is also the exception that the client throws.
#pragma once

#include "api/BIBErrorInterface.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"

// Fills the error table's AddRef and Release slots until the table is bound.
template <class Result>
Result NoOpErrorAddRefRelease(BIBError* /*error*/) {
    return Result();
}

namespace BIB_T_NMT {

class CBIBErrorParent {};

// Owns one reference to a runtime error, or none: an invalid error. Thrown by value. Any thread may
// use its own copy; the static members change only at start and stop.
class CBIBError : public CBIBErrorParent {
public:
    // An invalid error.
    constexpr CBIBError() noexcept : fError(nullptr) {}

    // Takes ownership of the caller's reference: none is added.
    explicit CBIBError(BIBError* error) noexcept : fError(error) {}

    // One of the runtime's predefined errors; invalid if there is no error with that id.
    explicit CBIBError(BRVErrorID id);

    // A new error. The strings are copied. infoFreeProc frees info when the last reference is
    // released; both may be null. The error is invalid if the runtime cannot make it.
    CBIBError(
        char const* message,
        char const* component,
        long id,
        void* info,
        void (*infoFreeProc)(void*));

    CBIBError(CBIBError const& other) noexcept : fError(other.fError) { AddRef(); }
    CBIBError& operator=(CBIBError const& other) noexcept;
    ~CBIBError() { Release(); }

    bool IsValid() const noexcept { return fError != nullptr; }

    // These call the runtime, also for an invalid error.
    BIBError* AddRef() const { return GetProcs<BIBErrorInterface>()->AddRef(fError); }
    void Release() const { GetProcs<BIBErrorInterface>()->Release(fError); }

    // The error, with a reference for the caller; null for an invalid error.
    operator BIBError*() const { return AddRef(); }

    // The message; "Invalid CBIBError" for an invalid error.
    CBIBStringAtom GetErrorMessage() const;

    // The text of the message. The text of a valid error stays readable while the error lives; any
    // other text is readable only for a moment.
    char const* what() const;

    // Throws an error made as by the constructor.
    [[noreturn]] static void ThrowError(
        char const* message,
        char const* component,
        long id,
        void* info,
        void (*infoFreeProc)(void*));

    // Binds the error table and gets the runtime's predefined errors. Returns whether the table is
    // bound and the unknown error is valid.
    static bool Init();
    // Releases the runtime's predefined errors.
    static void Close();
    // Makes AddRef and Release no-ops until the table is bound.
    static void Kill() noexcept;

    // The runtime's memory error; invalid before start and after stop.
    static CBIBError& GetMemError() noexcept { return fMemError; }

private:
    BIBError* fError;

    static CBIBError fUnknownError;
    static CBIBError fMemError;
};

// Its only object runs CBIBError::Kill() during static construction.
class BIBErrorInit {
public:
    BIBErrorInit() noexcept { CBIBError::Kill(); }
};

// Throws error as a CBIBError. Takes ownership of the caller's reference.
[[noreturn]] void BIBThrowError(BIBError* error);

// Calls BIBThrowError(status) unless status is null, which means success.
inline void ThrowOnFailure(BIBError* status) {
    if (status != nullptr) {
        BIBThrowError(status);
    }
}

} // namespace BIB_T_NMT
