#include "source/FileListBuilder.h"

#include "api/UnicodeEncoding.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSNumber.h"
#include "bib/POSUnicodeString.h"
#include "source/ExactText.h"
#include "source/PDFSettingsError.h"
#include "source/SettingsFileInfo.h"

using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSUnicodeString;
using UnicodeEncodingNS::Buffer16;
using UnicodeEncodingNS::Buffer8;

namespace PDFSettingsImpl {

namespace {

constexpr unsigned short kDirSeparatorW = 0x002F;

CPOSUnicodeString TextIn(CPOSDict const& info, char const* key) {
    return info.GetUnicodeString(CBIBStringAtom(key), /*quiet=*/false);
}

// The units of a string, for comparison.
std::u16string UnitsOf(CPOSUnicodeString const& text) {
    return std::u16string(text.Get(), text.Get() + text.GetLength());
}

// The key of a file in the cloak table: its name without as many units as the extension has,
// whatever they are. False for a shorter name.
bool MakeCloakKey(CPOSUnicodeString const& path, Buffer8* key) {
    Buffer16 const text = UnicodeEncodingNS::Unicode16FromCPOSUnicodeString(path).GetString(
        UnicodeEncodingNS::kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false);
    unsigned short const* const begin = text.GetBuffer();
    unsigned short const* const end = begin + text.GetNumElements();
    unsigned short const* name = end;
    while (name != begin && name[-1] != kDirSeparatorW) {
        --name;
    }
    ThrowIfFalse(name != begin, "FileMgmt::AppendCloakSettings invalid path");
    if (end - name < static_cast<std::ptrdiff_t>(kExtensionLength)) {
        return false;
    }
    *key =
        UnicodeEncodingNS::ExactText8({name, end - kExtensionLength})
            .GetString(UnicodeEncodingNS::kByteOrderBigEndian, /*terminate=*/true, /*mark=*/false);
    return true;
}

} // namespace

FileListBuilder::FileListBuilder(
    ForWhichDirectory which, CPOSArray const& displayNames, CPOSDict const& cloakSettings)
    : fWhichDirectory(which),
      fDisplayNames(displayNames),
      fCloakSettings(cloakSettings) {
    NotePairs();
}

void FileListBuilder::AppendFileToList(CPOSDict& info) const {
    ConvertToDisplayName(info);
    if (SettingAlreadyExists(info)) {
        return;
    }
    AddCloakingInfo(info);
    if (fWhichDirectory == kAdminSettingsDirectory) {
        info.Put(kReadOnly, CPOSNumber(1));
    }
    std::u16string const name =
        info.HasKey(kSettingsName) ? UnitsOf(TextIn(info, kSettingsName)) : std::u16string();
    auto const place = fNames.insert(name).first;
    if (fFileList.Append(info) == 0) {
        fNames.erase(place);
    }
}

void FileListBuilder::ConvertToDisplayName(CPOSDict& info) const {
    try {
        auto const found = fPairs.find(UnitsOf(TextIn(info, kSettingsName)));
        if (found == fPairs.end()) {
            return;
        }
        CPOSArray const pair(fDisplayNames[found->second], /*quiet=*/false);
        CPOSObject const displayName = pair[1];
        if (displayName.IsValid()) {
            // Before the name changes: a failure must not leave half of the two.
            CPOSNumber const readOnly(1);
            info.Put(kSettingsName, displayName);
            info.Put(kReadOnly, readOnly);
        }
    } catch (...) {
        // The record goes on as it is.
    }
}

void FileListBuilder::NotePair(CPOSUnicodeString const& fileName, unsigned int place) {
    if (fileName.IsValid()) {
        fPairs.emplace(UnitsOf(fileName), place);
    }
}

void FileListBuilder::NotePairs() {
    try {
        auto const count = static_cast<unsigned int>(fDisplayNames.Count());
        for (unsigned int i = 0; i < count; ++i) {
            CPOSArray const pair(fDisplayNames[i], /*quiet=*/false);
            NotePair(CPOSUnicodeString(pair[0], /*quiet=*/true), i);
        }
    } catch (...) {
        // Files of pairs that could not be looked at keep their names.
    }
}

// Only the first entry can be without a name, since a record without one throws here as soon as
// there is an entry to compare it with; and so does every record that meets such an entry.
bool FileListBuilder::SettingAlreadyExists(CPOSDict const& info) const {
    if (fFileList.Count() == 0) {
        return false;
    }
    CPOSDict const first(fFileList[0], /*quiet=*/false);
    return SettingFileInfoHasSameName(first, info) ||
           fNames.contains(UnitsOf(TextIn(info, kSettingsName)));
}

bool FileListBuilder::SettingFileInfoHasSameName(CPOSDict const& a, CPOSDict const& b) {
    return UnitsOf(TextIn(a, kSettingsName)) == UnitsOf(TextIn(b, kSettingsName));
}

void FileListBuilder::AddCloakingInfo(CPOSDict& info) const {
    try {
        Buffer8 bytes;
        if (!MakeCloakKey(TextIn(info, kFullFilePath), &bytes)) {
            return;
        }
        CBIBStringAtom const key(reinterpret_cast<char const*>(bytes.GetBuffer()));
        if (fCloakSettings.HasKey(key)) {
            info.Put(kShowHide, fCloakSettings.Get(key, /*quiet=*/false));
        }
    } catch (...) {
        // The record goes on without.
    }
}

} // namespace PDFSettingsImpl
