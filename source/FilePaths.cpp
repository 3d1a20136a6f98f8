#include "source/FilePaths.h"

#include <algorithm>
#include <cstring>

namespace UnicodeEncodingNS {

namespace {

constexpr unsigned short kSlash = '/';

Buffer16 Copy(unsigned short const* begin, unsigned short const* end) {
    auto const count = static_cast<unsigned long>(end - begin);
    Buffer16 const copy(count, nullptr);
    std::copy(begin, end, copy.GetBuffer());
    return copy;
}

Buffer16 Units(Unicode16 const& text) {
    return text.GetString(kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false);
}

} // namespace

OSErr MakeRef(Unicode16 const& path, FSRef* ref) {
    Buffer8 const text =
        CreateUnicode8(path).GetString(kByteOrderBigEndian, /*terminate=*/true, /*mark=*/false);
    auto const* const bytes = reinterpret_cast<char const*>(text.GetBuffer());
    bool const isWhole = std::strlen(bytes) + 1 == text.GetSize();
    return isWhole ? FSPathMakeRef(text.GetBuffer(), ref, nullptr) : bdNamErr;
}

SplitPath Split(Unicode16 const& path) {
    Buffer16 const text = Units(path);
    unsigned short const* const begin = text.GetBuffer();
    unsigned short const* const end = begin + text.GetNumElements();
    unsigned short const* name = end;
    while (name != begin && name[-1] != kSlash) {
        --name;
    }
    if (name == begin) {
        return {};
    }
    return {CreateUnicode16(Copy(begin, name)), Units(CreateUnicode16(Copy(name, end)))};
}

} // namespace UnicodeEncodingNS
