// The list of settings files: its records, and how they are made from the items of the settings
// folders.
//
// A record is a dictionary:
//     SettingsName  16-bit string: the name to show. Missing for an item whose own name is shorter
//                   than the extension
//     FullFilePath  16-bit string: the absolute path
//     ReadOnly      number: 1 for a file that must not be written
//     ModDate       binary data "Apple_UTCDateTime": the UTCDateTime of the file, 8 bytes as in
//                   memory
//     ShowHide      the file's entry of the cloak table, shared; only if there is one
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
// information: node flags, permissions and content modification date. Returns false if the item is
// not a settings file. Throws CBIBError.
bool MakeSettingsFileInfo(
    SettingsFileInfoKeys const& keys,
    char const* path,
    HFSUniStr255 const& name,
    FSCatalogInfo const& catalogInfo,
    BIB_T_NMT::CPOSDict* info);

enum ForWhichDirectory : int { kAdminSettingsDirectory = 0, kUserSettingsDirectory = 1 };

// Builds one list from the display names and the cloak table of SettingsDataStore.
//
// A record starts with the file's own name, without the extension. (1) If a pair of the display
// names has that name, the record gets the pair's display name and becomes read-only. (2) If the
// list has an entry with the resulting name, the record is dropped; the administrator's files are
// listed first, so they hide the user's files of the same name. (3) The cloak table is searched for
// the file's own name, taken from its path, never for the display name. The key is that name in
// UTF-8, but the table's keys are in Mac Roman, so only ASCII names match reliably. The entry found
// is stored as ShowHide: the file stays in the list, and the host decides by the number for its
// application whether to show it. (4) An administrator's file becomes read-only. An error in (1) or
// (3) leaves the record without that change.
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

    // Sets the folder that the following entries come from.
    void SetForWhichDirectory(ForWhichDirectory which) noexcept { fWhichDirectory = which; }

    // The keys of the list's records.
    SettingsFileInfoKeys const& Keys() const noexcept { return fKeys; }

    // A handle to the list.
    BIB_T_NMT::CPOSArray GetFileList() const { return fFileList; }

    // Completes info and adds it to the list, unless the list has an entry with its name. Throws
    // POSException for a record without a name unless it is the first one, and for every record
    // after such a first one.
    void AppendFileToList(BIB_T_NMT::CPOSDict& info) const;

    // The steps of AppendFileToList, in order. This one replaces the name with the display name of
    // the first pair that has the name, by the runtime's comparison of values, and then makes the
    // record read-only.
    void ConvertToDisplayName(BIB_T_NMT::CPOSDict& info) const;

    // Whether the list has an entry with that name.
    bool SettingAlreadyExists(BIB_T_NMT::CPOSDict const& info) const;

    // Whether two records have exactly the same name. Throws POSException if either has none.
    static bool
    SettingFileInfoHasSameName(BIB_T_NMT::CPOSDict const& a, BIB_T_NMT::CPOSDict const& b);

    // Adds the file's entry of the cloak table, if there is one under the file's own name.
    void AddCloakingInfo(BIB_T_NMT::CPOSDict& info) const;

private:
    void Append(BIB_T_NMT::CPOSDict const& info) const;
    std::string NameIn(BIB_T_NMT::CPOSDict const& info) const;

    BIB_T_NMT::CPOSArray fFileList;
    ForWhichDirectory fWhichDirectory;
    BIB_T_NMT::CPOSArray fDisplayNames;
    BIB_T_NMT::CPOSDict fCloakSettings;
    SettingsFileInfoKeys const fKeys;
    // The names in the list, as bytes, so that a record is not compared with every other one.
    mutable std::unordered_set<std::string> fNames;
};

// The interface of FileMgmt's implementation for one system.
class IFileMgmt : public BIB_T_NMT::CBIBVirtualClientBase {
public:
    // See FileMgmt.
    virtual BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const = 0;

    // Adds the items of one folder to builder, down to maxLevels levels (0 for no limit, 1 for the
    // folder's own items). Never throws: a folder that cannot be read adds nothing, and an item
    // that cannot be recorded is left out.
    virtual void GetFilesInDirectory(
        UnicodeEncodingNS::Unicode16 const& directory,
        unsigned long maxLevels,
        FileListBuilder& builder) const = 0;
};

// The part that is common to all systems.
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

    // A new list: the administrator's files first, and those of one folder in the order of the
    // system. Of equal names, the first is listed. maxLevels as above; appName: the application
    // whose display names apply. Throws CBIBError and POSException if the cloak table or the
    // display names cannot be made.
    BIB_T_NMT::CPOSArray
    GetFilesInWorkingDirectory(unsigned long maxLevels, char const* appName) const {
        return fImplementation->GetFilesInWorkingDirectory(maxLevels, appName);
    }

private:
    // The implementation for this system.
    static IFileMgmt* Construct(SettingsDataStore const* store);

    std::unique_ptr<IFileMgmt> fImplementation;
};

// Adds the current item of a walk, if it is a settings file, to the FileListBuilder userData. Never
// ends the walk, and never throws: an item that cannot be recorded is left out.
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
