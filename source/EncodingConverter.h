// Conversion of texts from one encoding to another, through the platform's string service.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBSharedBuffer.h"
#include "platform/CFString.h"
#include "source/AutoCFRelease.h"

#include <span>

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
