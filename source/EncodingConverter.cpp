#include "source/EncodingConverter.h"

namespace UnicodeEncodingNS {

namespace {

using Buffer16 = BIB_T_NMT::TBIBSharedBuffer<unsigned short>;
using Buffer8 = BIB_T_NMT::TBIBSharedBuffer<unsigned char>;

// Converts all of string, or only measures if buffer is null: see CFStringGetBytes.
CFIndex GetAllBytes(
    CFStringRef string, CFStringEncoding encoding, UInt8* buffer, CFIndex size, CFIndex* usedSize) {
    CFRange const range = CFRangeMake(0, CFStringGetLength(string));
    return CFStringGetBytes(string, range, encoding, 0, 0, buffer, size, usedSize);
}

} // namespace

template <
    class Source,
    CFStringEncoding SourceEncoding,
    class Target,
    CFStringEncoding TargetEncoding>
Target EncodingConverter(Source const& source) {
    UnicodeEncoding_AutoCFRelease<CFStringRef> const string(
        CFStringCreateWithBytes(
            kCFAllocatorDefault,
            reinterpret_cast<UInt8 const*>(source.GetBuffer()),
            static_cast<CFIndex>(source.GetSize()),
            SourceEncoding,
            0),
        /*retain=*/false);
    CFIndex size = 0;
    if (GetAllBytes(string, TargetEncoding, nullptr, 0, &size) == 0) {
        return Target();
    }
    Target target(static_cast<unsigned long>(size) / sizeof *target.GetBuffer(), nullptr);
    GetAllBytes(
        string,
        TargetEncoding,
        reinterpret_cast<UInt8*>(target.GetBuffer()),
        static_cast<CFIndex>(target.GetSize()),
        &size);
    return target;
}

template Buffer8
EncodingConverter<Buffer16, kCFStringEncodingUnicode, Buffer8, kCFStringEncodingUTF8>(
    Buffer16 const&);
template Buffer16
EncodingConverter<Buffer8, kCFStringEncodingUTF8, Buffer16, kCFStringEncodingUnicode>(
    Buffer8 const&);

} // namespace UnicodeEncodingNS
