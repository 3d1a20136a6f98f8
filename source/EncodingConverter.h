// Conversion of texts from one encoding to another, through the platform's string service.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBSharedBuffer.h"
#include "platform/CFString.h"

#include <span>

namespace UnicodeEncodingNS {

// Releases one reference of the platform at the end of a scope. Lives on one thread.
template <class T>
class UnicodeEncoding_AutoCFRelease : public BIB_T_NMT::CBIBClientBase {
public:
    // A guard on reference, which may be null. retain: the guard adds a reference of its own;
    // otherwise the caller's goes over to it.
    UnicodeEncoding_AutoCFRelease(T const& reference, bool retain) noexcept
        : fReference(reference) {
        if (fReference != nullptr && retain) {
            CFRetain(fReference);
        }
    }

    UnicodeEncoding_AutoCFRelease(UnicodeEncoding_AutoCFRelease const&) = delete;
    UnicodeEncoding_AutoCFRelease& operator=(UnicodeEncoding_AutoCFRelease const&) = delete;

    ~UnicodeEncoding_AutoCFRelease() {
        if (fReference != nullptr) {
            CFRelease(fReference);
        }
    }

    operator T() const noexcept { return fReference; }

private:
    T fReference;
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
