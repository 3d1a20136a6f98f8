// The record of one settings file, as it stands in a list (see FileListBuilder).
#pragma once

#include "bib/BIBStringAtom.h"
#include "bib/POSDict.h"
#include "platform/FileManager.h"

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

// The extension of settings files, 11 units.
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

} // namespace PDFSettingsImpl
