#include "source/PDFSettingsFile.h"

#include "source/FileMgmtUtil.h"
#include "source/PDFSettingsError.h"
#include "source/WholeFile.h"

namespace PDFSettingsImpl {

PDFSettingsFile::PDFSettingsFile(UnicodeEncodingNS::Unicode16 const& path, char const* schema)
    : PDFSettingsStream(ConvertFileToBIBStream(path), schema) {
    fPath = path;
    fTimeStamp = FileMgmtUtil::GetTimeStamp(path);
}

BIB_T_NMT::CBIBPositionableStream
PDFSettingsFile::ConvertFileToBIBStream(UnicodeEncodingNS::Unicode16 const& path) {
    return BIB_T_NMT::CBIBPositionableStream(UnicodeEncodingNS::ReadFile<CPDFSettingsError>(path));
}

} // namespace PDFSettingsImpl
