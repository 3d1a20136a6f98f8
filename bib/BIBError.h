// Errors: the handle on a runtime's error, which is also the exception that travels in the client.
#pragma once

#include "api/BIBErrorInterface.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/BIBStringAtom.h"

// Stands in the error table's AddRef and Release slots until the table is bound.
template <class Result>
Result NoOpErrorAddRefRelease(BIBError* /*error*/) {
    return Result();
}

namespace BIB_T_NMT {

class CBIBErrorParent {};

// One counted reference on a runtime's error, or none: an invalid error. Thrown by value. Copies
// may be handled on any thread; the static members change only at start and stop.
class CBIBError : public CBIBErrorParent {
public:
    // An invalid error.
    constexpr CBIBError() noexcept : fError(nullptr) {}

    // Adopts error: no reference is added.
    explicit CBIBError(BIBError* error) noexcept : fError(error) {}

    // One of the runtime's own errors; invalid when there is none.
    explicit CBIBError(BRVErrorID id);

    // A new error. The texts are copied; info is freed by infoFreeProc with the last reference,
    // both may be null. Invalid when the runtime cannot make it.
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

    // Straight through to the runtime, also for an invalid error.
    BIBError* AddRef() const { return GetProcs<BIBErrorInterface>()->AddRef(fError); }
    void Release() const { GetProcs<BIBErrorInterface>()->Release(fError); }

    // The error with a reference for the caller; null for an invalid error.
    operator BIBError*() const { return AddRef(); }

    // The message; "Invalid CBIBError" for an invalid error.
    CBIBStringAtom GetErrorMessage() const;

    // The text of the message. That of a valid error stays readable while the error lives;
    // otherwise it is good for a moment only.
    char const* what() const;

    // Makes an error as the constructor does and throws it.
    [[noreturn]] static void ThrowError(
        char const* message,
        char const* component,
        long id,
        void* info,
        void (*infoFreeProc)(void*));

    // Binds the error table and takes the runtime's own errors; whether the unknown error is valid.
    static bool Init();
    // Gives the runtime's own errors back.
    static void Close();
    // Makes AddRef and Release harmless until the table is bound.
    static void Kill() noexcept;

    // The runtime's memory error; invalid before start and after stop.
    static CBIBError& GetMemError() noexcept { return fMemError; }

private:
    BIBError* fError;

    static CBIBError fUnknownError;
    static CBIBError fMemError;
};

// Its one object runs CBIBError::Kill() in static construction.
class BIBErrorInit {
public:
    BIBErrorInit() noexcept { CBIBError::Kill(); }
};

// Throws error as a CBIBError and takes over the reference that came with it.
[[noreturn]] void BIBThrowError(BIBError* error);

// Throws BIBThrowError(status) unless status is null, which means success.
inline void ThrowOnFailure(BIBError* status) {
    if (status != nullptr) {
        BIBThrowError(status);
    }
}

} // namespace BIB_T_NMT
