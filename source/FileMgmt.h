// Which settings files there are: the listing, and its way over the file service.
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/POSCollections.h"
#include "external/MoreFilesX/FSIterateContainer.h"
#include "source/FileListBuilder.h"
#include "source/SettingsDataStore.h"

#include <memory>

namespace PDFSettingsImpl {

// What a FileMgmt does, on some system.
class IFileMgmt : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // See FileMgmt.
    virtual BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const = 0;

    // Adds the items of one folder to builder, as far down as maxLevels (0 for no limit, 1 for the
    // folder's own items). Never throws: a folder that cannot be read adds nothing, and an item
    // that cannot be recorded is left out.
    virtual void GetFilesInDirectory(
        UnicodeEncodingNS::Unicode16 const& directory,
        unsigned long maxLevels,
        FileListBuilder& builder) const = 0;
};

// The part that is the same on every system.
class FileMgmtBase : public IFileMgmt {
public:
    // REQUIRES: store is not null and outlives this.
    explicit FileMgmtBase(SettingsDataStore const* store) noexcept : fDataStore(store) {}

    BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const override;

private:
    SettingsDataStore const* fDataStore;
};

// Lists the settings files of the administrator's folder and of the user's.
class FileMgmt : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // REQUIRES: store is not null and outlives this. Throws CBIBError.
    explicit FileMgmt(SettingsDataStore const* store);

    // The list, made anew: the administrator's files first, those of one folder in the order that
    // the system gives. Of equal names the first one counts. maxLevels as above; appName: the
    // application whose display names apply. Throws CBIBError and POSException when the cloak table
    // or the display names cannot be made.
    BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const;

private:
    // The implementation for this system.
    static IFileMgmt* Construct(SettingsDataStore const* store);

    std::unique_ptr<IFileMgmt> fImplementation;
};

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
