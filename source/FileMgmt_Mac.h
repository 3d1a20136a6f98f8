// The listing on the file service.
#pragma once

#include "external/MoreFilesX/FSIterateContainer.h"
#include "source/FileMgmt.h"

namespace PDFSettingsImpl {

// Adds the item that a walk has come to, if it is a settings file, to the FileListBuilder userData.
// Never ends the walk, and never throws: an item that cannot be recorded is left out.
Boolean CallbackIterProc(
    Boolean containerChanged,
    ItemCount level,
    FSCatalogInfo const* info,
    FSRef const* ref,
    FSSpec const* spec,
    HFSUniStr255 const* name,
    void* userData) noexcept;

class FileMgmt_Mac : public FileMgmtBase {
public:
    using FileMgmtBase::FileMgmtBase;

    void GetFilesInDirectory(
        UnicodeEncodingNS::Unicode16 const& directory,
        unsigned long maxLevels,
        FileListBuilder& builder) const override;
};

} // namespace PDFSettingsImpl
