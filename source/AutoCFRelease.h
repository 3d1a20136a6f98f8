// The owner of a reference on a CoreFoundation object.
#pragma once

#include "bib/BIBClient.h"
#include "platform/CFBase.h"

#include <utility>

// One counted reference of the type T, or none.
template <class T>
class AutoCFRelease : public BIB_T_NMT::CBIBClientBase {
public:
    // Empty.
    AutoCFRelease() noexcept = default;

    // A holder of reference, which may be null. Without retain the caller's reference goes over to
    // it.
    AutoCFRelease(T reference, bool retain) noexcept : fReference(reference) {
        if (retain) {
            Retain();
        }
    }

    AutoCFRelease(AutoCFRelease const& other) noexcept : fReference(other.fReference) { Retain(); }

    AutoCFRelease& operator=(AutoCFRelease const& other) noexcept {
        AutoCFRelease copy(other);
        std::swap(fReference, copy.fReference);
        return *this;
    }

    ~AutoCFRelease() {
        if (fReference != nullptr) {
            CFRelease(fReference);
        }
    }

    // The reference, not counted; null for none.
    T Get() const noexcept { return fReference; }

    // Where a call may store a reference for this holder. REQUIRES: it is empty.
    T* GetAddr() noexcept { return &fReference; }

private:
    void Retain() const noexcept {
        if (fReference != nullptr) {
            CFRetain(fReference);
        }
    }

    T fReference = nullptr;
};
