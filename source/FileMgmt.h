// Which settings files there are: the listing, its records, and its way over the file service.
//
// A record is a dictionary:
//     SettingsName  16-bit string: the name to show. Missing for an item whose own name is shorter
//                   than the extension
//     FullFilePath  16-bit string: the absolute path
//     ReadOnly      number: 1 for a file that must not be written
//     ModDate       binary data "Apple_UTCDateTime": the UTCDateTime of the file, 8 bytes as in
//                   memory
//     ShowHide      the entry of the file in the cloak table itself; only where there is one
#pragma once

#include "api/UnicodeEncoding.h"
#include "bib/BIBClient.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSCollections.h"
#include "external/MoreFilesX/FSIterateContainer.h"
#include "platform/FileManager.h"
#include "source/SettingsDataStore.h"

#include <memory>
#include <string>
#include <unordered_set>

namespace PDFSettingsImpl {

inline constexpr char kSettingsName[] = "SettingsName";

// The keys of a record, made once for all records of a list. Throws CBIBError.
struct SettingsFileInfoKeys {
    BIB_T_NMT::CBIBStringAtom const fSettingsName{kSettingsName};
    BIB_T_NMT::CBIBStringAtom const fFullFilePath{"FullFilePath"};
    BIB_T_NMT::CBIBStringAtom const fReadOnly{"ReadOnly"};
    BIB_T_NMT::CBIBStringAtom const fModDate{"ModDate"};
    BIB_T_NMT::CBIBStringAtom const fShowHide{"ShowHide"};
};

// format::kExtension in 16-bit units.
// NOLINTNEXTLINE(readability-identifier-naming): the name that it has always had
inline constexpr unsigned short unicode_joboptions[] = {
    '.', 'j', 'o', 'b', 'o', 'p', 't', 'i', 'o', 'n', 's'};
inline constexpr unsigned long kExtensionLength = 11;
static_assert(sizeof unicode_joboptions == kExtensionLength * sizeof(unsigned short));

// Makes the record of an item from its path (NUL-terminated UTF-8), its name and its catalog
// information: node flags, permissions and content modification. False for what is no settings
// file. Throws CBIBError.
bool MakeSettingsFileInfo(
    SettingsFileInfoKeys const& keys,
    char const* path,
    HFSUniStr255 const& name,
    FSCatalogInfo const& catalogInfo,
    BIB_T_NMT::CPOSDict* info);

enum ForWhichDirectory : int { kAdminSettingsDirectory = 0, kUserSettingsDirectory = 1 };

// Builds one list. Displayed names and cloak table are as SettingsDataStore gives them.
class FileListBuilder : public BIB_T_NMT::CBIBClientBase {
public:
    // An empty list. Throws CBIBError.
    FileListBuilder(
        ForWhichDirectory which,
        BIB_T_NMT::CPOSArray const& displayNames,
        BIB_T_NMT::CPOSDict const& cloakSettings);
    FileListBuilder(FileListBuilder const&) = delete;
    FileListBuilder& operator=(FileListBuilder const&) = delete;
    ~FileListBuilder() = default;

    // Which folder the entries come from, from now on.
    void SetForWhichDirectory(ForWhichDirectory which) noexcept { fWhichDirectory = which; }

    // The keys of the list's records.
    SettingsFileInfoKeys const& Keys() const noexcept { return fKeys; }

    // A handle on the list.
    BIB_T_NMT::CPOSArray GetFileList() const { return fFileList; }

    // Completes info and adds it to the list, unless its name is there already. Throws POSException
    // for a record without a name, except for the first one, and for every record behind that.
    void AppendFileToList(BIB_T_NMT::CPOSDict& info) const;

    // The steps of that, in their order. Gives the file the display name of the first pair that has
    // its name, by the runtime's comparison of values, and makes it read-only then.
    void ConvertToDisplayName(BIB_T_NMT::CPOSDict& info) const;

    // Whether the list has an entry of that name.
    bool SettingAlreadyExists(BIB_T_NMT::CPOSDict const& info) const;

    // Whether two records have the same name, exactly. Throws POSException when either has none.
    static bool
    SettingFileInfoHasSameName(BIB_T_NMT::CPOSDict const& a, BIB_T_NMT::CPOSDict const& b);

    // Gives the file its entry in the cloak table, if it has one there under its own name.
    void AddCloakingInfo(BIB_T_NMT::CPOSDict& info) const;

private:
    void Append(BIB_T_NMT::CPOSDict const& info) const;
    std::string NameIn(BIB_T_NMT::CPOSDict const& info) const;

    BIB_T_NMT::CPOSArray fFileList;
    ForWhichDirectory fWhichDirectory;
    BIB_T_NMT::CPOSArray fDisplayNames;
    BIB_T_NMT::CPOSDict fCloakSettings;
    SettingsFileInfoKeys const fKeys;
    // The names in the list, as bytes, so that no record is compared with every other one.
    mutable std::unordered_set<std::string> fNames;
};

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
    explicit FileMgmt(SettingsDataStore const* store) : fImplementation(Construct(store)) {}

    // The list, made anew: the administrator's files first, those of one folder in the order that
    // the system gives. Of equal names the first one counts. maxLevels as above; appName: the
    // application whose display names apply. Throws CBIBError and POSException when the cloak table
    // or the display names cannot be made.
    BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const {
        return fImplementation->GetFilesInWorkingDirectory(maxLevels, appName);
    }

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
