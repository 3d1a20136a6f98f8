#include "source/PDFSettingsStream.h"

#include "source/PDFSettingsParser.h"

using BIB_T_NMT::CBIBPositionableStream;

namespace PDFSettingsImpl {

// The text is read before the base is built, so a refusal leaves nothing to destroy.
PDFSettingsStream::PDFSettingsStream(CBIBPositionableStream const& stream, char const* schema)
    : PDFSettingsObject(ConvertJobOptionsToCPOSDict(stream, schema), schema),
      fStream(stream) {}

BIB_T_NMT::CPOSDict PDFSettingsStream::ConvertJobOptionsToCPOSDict(
    CBIBPositionableStream const& stream, char const* /*schema*/) {
    return PDFSettingsParser(stream).GetPDFSettings();
}

} // namespace PDFSettingsImpl
