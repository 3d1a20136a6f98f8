// Conversion of texts from one encoding to another, through the platform's string service, and the
// owner of a reference on a CoreFoundation object.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBSharedBuffer.h"
#include "platform/CFString.h"

#include <span>
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

namespace UnicodeEncodingNS {

// Releases one reference of the platform at the end of a scope.
template <class T>
class UnicodeEncoding_AutoCFRelease : public AutoCFRelease<T> {
public:
    using AutoCFRelease<T>::AutoCFRelease;
    UnicodeEncoding_AutoCFRelease(UnicodeEncoding_AutoCFRelease const&) = delete;
    UnicodeEncoding_AutoCFRelease& operator=(UnicodeEncoding_AutoCFRelease const&) = delete;
    ~UnicodeEncoding_AutoCFRelease() = default;

    operator T() const noexcept { return this->Get(); }
};

// The text of source in TargetEncoding; an empty buffer when nothing of it can be converted. Throws
// the memory error. Defined for UTF-16 to UTF-8 and UTF-8 to UTF-16.
template <
    class Source,
    CFStringEncoding SourceEncoding,
    class Target,
    CFStringEncoding TargetEncoding>
Target EncodingConverter(Source const& source);

// A 16-bit string of units, all of which belong to it, with a mark at its head as all strings have
// that are made of texts: one that begins with a mark keeps that too, and is not swapped. Throws
// CBIBError.
BIB_T_NMT::CPOSUnicodeString ExactString(std::span<unsigned short const> units);

} // namespace UnicodeEncodingNS
