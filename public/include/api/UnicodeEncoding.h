// Text values: paths, file names and display names in UTF-16 or UTF-8.
//
// A value holds its text in a shared buffer, without a byte order mark and without a terminator,
// UTF-16 in the machine's byte order. It hands the text out in whatever form is asked for. Copies
// share the buffer, and no operation changes a buffer that is in a value. An empty buffer makes an
// empty value, and half a unit at the end of UTF-16 is dropped. Memory failures are thrown as the
// runtime's memory error.
#pragma once

#include "bib/BIBSharedBuffer.h"
#include "bib/POSScalars.h"

namespace UnicodeEncodingNS {

// The order in which GetString hands out the bytes of UTF-16 units.
enum ByteOrder {
    kByteOrderBigEndian = 0,    // as stored, mark 0xFEFF
    kByteOrderLittleEndian = 1, // swapped, mark 0xFFFE
    kByteOrderNative = 2        // as stored, mark 0xFEFF
};

using Buffer16 = BIB_T_NMT::TBIBSharedBuffer<unsigned short>;
using Buffer8 = BIB_T_NMT::TBIBSharedBuffer<unsigned char>;

// The text of a value, in a buffer of type T: one of the two below.
template <class T>
class UnicodeEncoding;

// Text in UTF-16 units.
template <>
class UnicodeEncoding<Buffer16> {
public:
    // Empty.
    UnicodeEncoding() = default;

    // The text of buffer. A mark 0xFEFF at its head is removed; a mark 0xFFFE too, and then the
    // bytes of all units are swapped.
    explicit UnicodeEncoding(Buffer16 const& buffer);

    // buffer without its first unit, whatever that is.
    static Buffer16 StripBOM(Buffer16 const& buffer);

    // buffer with both bytes of every unit exchanged. The other two do the same, whatever the
    // machine's byte order: each brings a text of the one order into the other.
    static Buffer16 SwapBytes(Buffer16 const& buffer);
    static Buffer16 ConvertToBigEndian(Buffer16 const& buffer);
    static Buffer16 ConvertToLittleEndian(Buffer16 const& buffer);

    // The text, with a zero unit behind it if terminate, and a mark before it if mark. An order
    // that is none of the three gives an empty buffer. With neither flag and no swap the buffer is
    // the value's own.
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

    // The text of buffer, or of a NUL-terminated text. A mark at its head is removed. The bytes are
    // taken to be UTF-8 as they stand.
    explicit UnicodeEncoding(Buffer8 const& buffer);
    explicit UnicodeEncoding(char const* text);

    // A new buffer with the bytes of text up to its terminator.
    static Buffer8 CStringToUTF8(char const* text);

    // buffer without a mark: a new one, or the same if there is none.
    static Buffer8 StripBOM(Buffer8 const& buffer);

    // The text, with a zero byte behind it if terminate, and a mark before it if mark. The order is
    // not looked at. With neither flag the buffer is the value's own.
    Buffer8 GetString(ByteOrder order, bool terminate, bool mark) const;

private:
    Buffer8 fText;
};

// The value that is passed around.
template <class T>
class TUnicodeEncoding {
public:
    // An empty value.
    TUnicodeEncoding() = default;

    explicit TUnicodeEncoding(UnicodeEncoding<T> const& encoding) : fEncoding(encoding) {}

    // UTF-8 only: the value of a NUL-terminated text.
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

// A value of the text in buffer; a mark is removed or honoured.
template <class T>
TUnicodeEncoding<T> CreateUnicode(T buffer) {
    return TUnicodeEncoding<T>(UnicodeEncoding<T>(buffer));
}

// Values of a text in its own encoding and in the other one. A text that cannot be decoded, and an
// empty one, give an empty value. An unpaired surrogate cannot be decoded.
Unicode16 CreateUnicode16(Buffer16 const& buffer);
Unicode16 CreateUnicode16(Buffer8 const& buffer);
Unicode16 CreateUnicode16(Unicode8 const& text);
Unicode8 CreateUnicode8(Buffer8 const& buffer);
Unicode8 CreateUnicode8(Unicode16 const& text);

// A 16-bit string of the text with a mark at its head. Texts that are equal give equal strings.
BIB_T_NMT::CPOSUnicodeString CreateCPOSUnicodeString(Unicode16 const& text);

// The value of a 16-bit string; a mark is removed or honoured.
Unicode16 Unicode16FromCPOSUnicodeString(BIB_T_NMT::CPOSUnicodeString const& string);

} // namespace UnicodeEncodingNS
