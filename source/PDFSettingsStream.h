// A set of settings that comes from a stream of job options text.
#pragma once

#include "bib/BIBStream.h"
#include "source/PDFSettingsObject.h"

namespace PDFSettingsImpl {

// Settings read from a stream, which lives as long as they do.
class PDFSettingsStream : public PDFSettingsObject {
public:
    // Reads the stream from its start. Throws CPDFSettingsError for a text that is refused.
    PDFSettingsStream(BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

    // The settings in a stream. The schema has no part in reading: it is accepted and not looked
    // at.
    static BIB_T_NMT::CPOSDict ConvertJobOptionsToCPOSDict(
        BIB_T_NMT::CBIBPositionableStream const& stream, char const* schema);

private:
    BIB_T_NMT::CBIBPositionableStream fStream;
};

} // namespace PDFSettingsImpl
