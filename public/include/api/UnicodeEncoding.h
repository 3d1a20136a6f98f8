// Text values: paths, file names and display names in UTF-16 or UTF-8.
//
// A value stores its text in a shared buffer, without a byte order mark and without a terminator;
// UTF-16 is in the machine's byte order. It returns the text in the requested form. Copies share
// the buffer, and no operation changes a buffer that is in a value. An empty buffer makes an empty
// value, and an odd last byte of UTF-16 is dropped. If memory runs out, the runtime's memory error
// is thrown.
#pragma once

#include "bib/BIBSharedBuffer.h"
#include "bib/POSScalars.h"

namespace UnicodeEncodingNS {

// The byte order of the UTF-16 units that GetString returns.
enum ByteOrder {
    kByteOrderBigEndian = 0,    // as stored, mark 0xFEFF
    kByteOrderLittleEndian = 1, // swapped, mark 0xFFFE
    kByteOrderNative = 2        // as stored, mark 0xFEFF
};

using Buffer16 = BIB_T_NMT::TBIBSharedBuffer<unsigned short>;
using Buffer8 = BIB_T_NMT::TBIBSharedBuffer<unsigned char>;

// The text of a value, in a buffer of type T: one of the two specializations below.
template <class T>
class UnicodeEncoding;

// Text in UTF-16 units.
template <>
class UnicodeEncoding<Buffer16> {
public:
    // Empty.
    UnicodeEncoding() = default;

    // The text of buffer. A leading byte order mark is removed; if it is 0xFFFE, the bytes of all
    // units are swapped.
    explicit UnicodeEncoding(Buffer16 const& buffer);

    // buffer without its first unit, whatever that unit is.
    static Buffer16 StripBOM(Buffer16 const& buffer);

    // buffer with the two bytes of every unit swapped. The other two do the same on every machine:
    // each converts text from one byte order to the other.
    static Buffer16 SwapBytes(Buffer16 const& buffer);
    static Buffer16 ConvertToBigEndian(Buffer16 const& buffer);
    static Buffer16 ConvertToLittleEndian(Buffer16 const& buffer);

    // The text, followed by a zero unit if terminate, and preceded by a byte order mark if mark. An
    // order that is none of the three returns an empty buffer. With neither flag and no swap, the
    // result is the value's own buffer.
    Buffer16 GetString(ByteOrder order, bool terminate, bool mark) const;

private:
    Buffer16 fText;
};

// Text in UTF-8 bytes.
template <>
class UnicodeEncoding<Buffer8> {
public:
    // Empty.
    UnicodeEncoding() = default;

    // The text of buffer, or of a NUL-terminated string. A leading byte order mark is removed. The
    // bytes are not checked to be UTF-8.
    explicit UnicodeEncoding(Buffer8 const& buffer);
    explicit UnicodeEncoding(char const* text);

    // A new buffer with the bytes of text, without its terminator.
    static Buffer8 CStringToUTF8(char const* text);

    // buffer without its byte order mark: a new buffer, or the same one if there is no mark.
    static Buffer8 StripBOM(Buffer8 const& buffer);

    // The text, followed by a zero byte if terminate, and preceded by a byte order mark if mark.
    // order is ignored. With neither flag, the result is the value's own buffer.
    Buffer8 GetString(ByteOrder order, bool terminate, bool mark) const;

private:
    Buffer8 fText;
};

// The type of text values in interfaces.
template <class T>
class TUnicodeEncoding {
public:
    // An empty value.
    TUnicodeEncoding() = default;

    explicit TUnicodeEncoding(UnicodeEncoding<T> const& encoding) : fEncoding(encoding) {}

    // UTF-8 only: the value of a NUL-terminated string.
    explicit TUnicodeEncoding(char const* text) : fEncoding(text) {}

    // See UnicodeEncoding.
    T GetString(ByteOrder order, bool terminate, bool mark) const {
        return fEncoding.GetString(order, terminate, mark);
    }

private:
    UnicodeEncoding<T> fEncoding;
};

using Unicode16 = TUnicodeEncoding<Buffer16>;
using Unicode8 = TUnicodeEncoding<Buffer8>;

// A value of the text in buffer; a byte order mark is applied and removed.
template <class T>
TUnicodeEncoding<T> CreateUnicode(T buffer) {
    return TUnicodeEncoding<T>(UnicodeEncoding<T>(buffer));
}

// Values of a text in its own encoding and in the other one. An empty text, and a text that cannot
// be decoded, such as one with an unpaired surrogate, make an empty value.
Unicode16 CreateUnicode16(Buffer16 const& buffer);
Unicode16 CreateUnicode16(Buffer8 const& buffer);
Unicode16 CreateUnicode16(Unicode8 const& text);
Unicode8 CreateUnicode8(Buffer8 const& buffer);
Unicode8 CreateUnicode8(Unicode16 const& text);

// A 16-bit string of the text, with a byte order mark. Equal texts make equal strings.
BIB_T_NMT::CPOSUnicodeString CreateCPOSUnicodeString(Unicode16 const& text);

// The value of a 16-bit string; a byte order mark is applied and removed.
Unicode16 Unicode16FromCPOSUnicodeString(BIB_T_NMT::CPOSUnicodeString const& string);

} // namespace UnicodeEncodingNS
