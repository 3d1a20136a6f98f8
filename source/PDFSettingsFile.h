// A set of settings that comes from a file.
#pragma once

#include "source/PDFSettingsStream.h"

namespace PDFSettingsImpl {

// Settings read from a file. They start bound to it: not dirty until somebody else changes it.
class PDFSettingsFile : public PDFSettingsStream {
public:
    // Reads the file at path. Throws CPDFSettingsError for a file that cannot be read, a text that
    // is refused and a time stamp that cannot be had. A change between the reading of the bytes and
    // of the time stamp goes unnoticed.
    PDFSettingsFile(UnicodeEncodingNS::Unicode16 const& path, char const* schema);

    // A stream on the bytes of the file at path. Throws CPDFSettingsError.
    static BIB_T_NMT::CBIBPositionableStream
    ConvertFileToBIBStream(UnicodeEncodingNS::Unicode16 const& path);
};

} // namespace PDFSettingsImpl
