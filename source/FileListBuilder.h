// The list of settings files, as it grows, and its records.
//
// A record is a dictionary:
//     SettingsName  16-bit string: the name to show. Missing for an item whose own name is shorter
//                   than the extension
//     FullFilePath  16-bit string: the absolute path
//     ReadOnly      number: 1 for a file that must not be written
//     ModDate       binary data "Apple_UTCDateTime": the UTCDateTime of the file, 8 bytes as in
//     memory ShowHide      the entry of the file in the cloak table itself; only where there is one
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSCollections.h"
#include "platform/FileManager.h"

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

} // namespace PDFSettingsImpl
