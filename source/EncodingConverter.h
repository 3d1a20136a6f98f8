// Text conversion between encodings, through the platform's string service, and the owner of a
// CoreFoundation reference.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBSharedBuffer.h"
#include "platform/CFString.h"

#include <span>
#include <utility>

// Owns one reference of type T, or none.
template <class T>
class AutoCFRelease : public BIB_T_NMT::CBIBClientBase {
public:
    // Empty.
    AutoCFRelease() noexcept = default;

    // Owns reference, which may be null. With retain, adds a reference; without, takes ownership of
    // the caller's.
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

    // The reference, borrowed; null if there is none.
    T Get() const noexcept { return fReference; }

    // The address at which a call may store a reference for this object to own. REQUIRES: the
    // object is empty.
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

// Releases one platform reference at the end of a scope.
template <class T>
class UnicodeEncoding_AutoCFRelease : public AutoCFRelease<T> {
public:
    using AutoCFRelease<T>::AutoCFRelease;
    UnicodeEncoding_AutoCFRelease(UnicodeEncoding_AutoCFRelease const&) = delete;
    UnicodeEncoding_AutoCFRelease& operator=(UnicodeEncoding_AutoCFRelease const&) = delete;
    ~UnicodeEncoding_AutoCFRelease() = default;

    operator T() const noexcept { return this->Get(); }
};

// The text of source in TargetEncoding; an empty buffer if nothing can be converted. Throws the
// memory error. Defined for UTF-16 to UTF-8 and UTF-8 to UTF-16.
template <
    class Source,
    CFStringEncoding SourceEncoding,
    class Target,
    CFStringEncoding TargetEncoding>
Target EncodingConverter(Source const& source);

// A 16-bit string of exactly these units, after a byte order mark as in all 16-bit strings. If
// units starts with a byte order mark, that is kept as well, and nothing is swapped. Throws
// CBIBError.
BIB_T_NMT::CPOSUnicodeString ExactString(std::span<unsigned short const> units);

} // namespace UnicodeEncodingNS
