#include "source/EncodingConverter.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace UnicodeEncodingNS {

namespace {

using Buffer16 = BIB_T_NMT::TBIBSharedBuffer<unsigned short>;
using Buffer8 = BIB_T_NMT::TBIBSharedBuffer<unsigned char>;

constexpr unsigned short kMark16 = 0xFEFF;
constexpr unsigned short kSwappedMark16 = 0xFFFE;
constexpr unsigned char kMark8[] = {0xEF, 0xBB, 0xBF};

// Converts all of string; only measures if buffer is null. See CFStringGetBytes.
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

BIB_T_NMT::CPOSUnicodeString ExactString(std::span<unsigned short const> units) {
    Buffer16 const text(units.size() + 2, nullptr);
    text[0] = kMark16;
    *std::copy(units.begin(), units.end(), text.GetBuffer() + 1) = 0;
    return BIB_T_NMT::CPOSUnicodeString(text.GetBuffer());
}

namespace {

// A copy of the elements of buffer from index skip, with before and after zero elements around
// them.
template <class T>
BIB_T_NMT::TBIBSharedBuffer<T> CopyWithRoom(
    BIB_T_NMT::TBIBSharedBuffer<T> const& buffer,
    unsigned long skip,
    unsigned long before,
    unsigned long after) {
    unsigned long const count = buffer.GetNumElements() - skip;
    BIB_T_NMT::TBIBSharedBuffer<T> copy(before + count + after, nullptr);
    T* const text = std::fill_n(copy.GetBuffer(), before, T{});
    if (count != 0) {
        std::memcpy(text, buffer.GetBuffer() + skip, count * sizeof(T));
    }
    std::fill_n(text + count, after, T{});
    return copy;
}

} // namespace

UnicodeEncoding<Buffer16>::UnicodeEncoding(Buffer16 const& buffer) : fText(buffer) {
    if (buffer.GetNumElements() == 0) {
        return;
    }
    if (buffer[0] == kMark16) {
        fText = StripBOM(buffer);
    } else if (buffer[0] == kSwappedMark16) {
        fText = ConvertToBigEndian(StripBOM(buffer));
    }
}

Buffer16 UnicodeEncoding<Buffer16>::StripBOM(Buffer16 const& buffer) {
    return buffer.GetNumElements() == 0 ? buffer : CopyWithRoom(buffer, 1, 0, 0);
}

Buffer16 UnicodeEncoding<Buffer16>::SwapBytes(Buffer16 const& buffer) {
    Buffer16 const swapped = CopyWithRoom(buffer, 0, 0, 0);
    auto* const bytes = reinterpret_cast<unsigned char*>(swapped.GetBuffer());
    for (unsigned long i = 0; i + 1 < swapped.GetSize(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
    return swapped;
}

// Both conversions swap on every machine: text is stored in the machine's order. The first converts
// text of the other order to it, the second back.
Buffer16 UnicodeEncoding<Buffer16>::ConvertToBigEndian(Buffer16 const& buffer) {
    return SwapBytes(buffer);
}

Buffer16 UnicodeEncoding<Buffer16>::ConvertToLittleEndian(Buffer16 const& buffer) {
    return SwapBytes(buffer);
}

Buffer16 UnicodeEncoding<Buffer16>::GetString(ByteOrder order, bool terminate, bool mark) const {
    if (order < kByteOrderBigEndian || order > kByteOrderNative) {
        return Buffer16();
    }
    Buffer16 const text =
        terminate || mark ? CopyWithRoom(fText, 0, mark ? 1 : 0, terminate ? 1 : 0) : fText;
    if (mark) {
        text[0] = kMark16;
    }
    return order == kByteOrderLittleEndian ? ConvertToLittleEndian(text) : text;
}

UnicodeEncoding<Buffer8>::UnicodeEncoding(Buffer8 const& buffer) : fText(StripBOM(buffer)) {}

UnicodeEncoding<Buffer8>::UnicodeEncoding(char const* text)
    : fText(StripBOM(CStringToUTF8(text))) {}

Buffer8 UnicodeEncoding<Buffer8>::CStringToUTF8(char const* text) {
    unsigned long const size = std::strlen(text);
    Buffer8 const buffer(size, nullptr);
    if (size != 0) {
        std::memcpy(buffer.GetBuffer(), text, size);
    }
    return buffer;
}

Buffer8 UnicodeEncoding<Buffer8>::StripBOM(Buffer8 const& buffer) {
    constexpr unsigned long kMarkSize = std::size(kMark8);
    if (buffer.GetSize() < kMarkSize || std::memcmp(buffer.GetBuffer(), kMark8, kMarkSize) != 0) {
        return buffer;
    }
    BIB_T_NMT::TBIBMemoryBuffer<unsigned char, BIB_T_NMT::CBIBMemory> rest(
        buffer.GetBuffer() + kMarkSize, buffer.GetSize() - kMarkSize);
    return Buffer8(rest, &BIB_T_NMT::BIBDeleteSharedBuff);
}

Buffer8 UnicodeEncoding<Buffer8>::GetString(ByteOrder /*order*/, bool terminate, bool mark) const {
    if (!terminate && !mark) {
        return fText;
    }
    unsigned long const markSize = mark ? std::size(kMark8) : 0;
    Buffer8 const text = CopyWithRoom(fText, 0, markSize, terminate ? 1 : 0);
    std::copy_n(kMark8, markSize, text.GetBuffer());
    return text;
}

Unicode16 CreateUnicode16(Buffer16 const& buffer) {
    return CreateUnicode(buffer);
}

Unicode16 CreateUnicode16(Buffer8 const& buffer) {
    return CreateUnicode16(CreateUnicode8(buffer));
}

Unicode16 CreateUnicode16(Unicode8 const& text) {
    return CreateUnicode(
        EncodingConverter<Buffer8, kCFStringEncodingUTF8, Buffer16, kCFStringEncodingUnicode>(
            text.GetString(kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false)));
}

Unicode8 CreateUnicode8(Buffer8 const& buffer) {
    return CreateUnicode(buffer);
}

Unicode8 CreateUnicode8(Unicode16 const& text) {
    return CreateUnicode(
        EncodingConverter<Buffer16, kCFStringEncodingUnicode, Buffer8, kCFStringEncodingUTF8>(
            text.GetString(kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false)));
}

BIB_T_NMT::CPOSUnicodeString CreateCPOSUnicodeString(Unicode16 const& text) {
    Buffer16 const units = text.GetString(kByteOrderBigEndian, /*terminate=*/true, /*mark=*/true);
    return BIB_T_NMT::CPOSUnicodeString(units.GetBuffer());
}

Unicode16 Unicode16FromCPOSUnicodeString(BIB_T_NMT::CPOSUnicodeString const& string) {
    unsigned long const length = string.GetLength();
    Buffer16 const units(length, nullptr);
    if (length != 0) {
        std::memcpy(units.GetBuffer(), string.Get(), units.GetSize());
    }
    return CreateUnicode16(units);
}

} // namespace UnicodeEncodingNS
