#include "source/FileListBuilder.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

#include "bib/BIBStringAtom.h"
#include "bib/POSDictIterator.h"
#include "bib/POSNumber.h"
#include "platform/Utf8.h"
#include "source/PDFSettingsError.h"

using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSDictIterator;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSUnicodeString;

namespace PDFSettingsImpl {

namespace {

constexpr unsigned short kDirSeparatorW = 0x002F;

CPOSUnicodeString TextIn(CPOSDict const& info, CBIBStringAtom const& key) {
    return info.GetUnicodeString(key, /*quiet=*/false);
}

std::string_view BytesOf(CPOSUnicodeString const& text) {
    unsigned short const* const units = text.Get();
    return {
        reinterpret_cast<char const*>(units), CPOSUnicodeString::GetLength(units) * sizeof *units};
}

// The key of a file in the cloak table: its name in UTF-8 without as many units as the extension
// has, whatever they are; empty where that leaves half a character. None for a shorter name.
std::optional<std::string> CloakKey(CPOSUnicodeString const& path) {
    std::span<unsigned short const> const text(path.Get(), path.GetLength());
    auto const separator = std::find(text.rbegin(), text.rend(), kDirSeparatorW);
    ThrowIfFalse(separator != text.rend(), "FileMgmt::AppendCloakSettings invalid path");
    auto const name = text.last(static_cast<std::size_t>(separator - text.rbegin()));
    if (name.size() < kExtensionLength) {
        return std::nullopt;
    }
    return platform::EncodeUtf8(name.first(name.size() - kExtensionLength)).value_or("");
}

} // namespace

FileListBuilder::FileListBuilder(
    ForWhichDirectory which, CPOSArray const& displayNames, CPOSDict const& cloakSettings)
    : fWhichDirectory(which),
      fDisplayNames(displayNames),
      fCloakSettings(cloakSettings) {
    NotePairs();
    NoteCloaked();
}

void FileListBuilder::AppendFileToList(CPOSDict& info) const {
    ConvertToDisplayName(info);
    if (SettingAlreadyExists(info)) {
        return;
    }
    AddCloakingInfo(info);
    if (fWhichDirectory == kAdminSettingsDirectory) {
        info.Put(fKeys.fReadOnly, CPOSNumber(1));
    }
    if (!info.HasKey(fKeys.fSettingsName)) {
        fFileList.Append(info);
        return;
    }
    auto const place = fNames.insert(NameIn(info)).first;
    if (fFileList.Append(info) == 0) {
        fNames.erase(place);
    }
}

void FileListBuilder::ConvertToDisplayName(CPOSDict& info) const {
    if (fPairs.empty()) {
        return;
    }
    try {
        auto const found = fPairs.find(NameIn(info));
        if (found == fPairs.end()) {
            return;
        }
        CPOSArray const pair(fDisplayNames[found->second], /*quiet=*/false);
        CPOSObject const displayName = pair[1];
        if (displayName.IsValid()) {
            // Before the name changes: a failure must not leave half of the two.
            CPOSNumber const readOnly(1);
            info.Put(fKeys.fSettingsName, displayName);
            info.Put(fKeys.fReadOnly, readOnly);
        }
    } catch (...) {
        // The record goes on as it is.
    }
}

void FileListBuilder::NotePair(CPOSUnicodeString const& fileName, unsigned int place) {
    if (fileName.IsValid()) {
        fPairs.emplace(fileName, place);
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

// A list without this would look whole and show what is to be hidden: a failure ends its making.
void FileListBuilder::NoteCloaked() {
    CPOSDictIterator const files(fCloakSettings);
    for (files.Begin(); !files.IsDone(); files.Next()) {
        fCloaked.emplace(files.CurKey());
    }
}

CPOSUnicodeString FileListBuilder::NameIn(CPOSDict const& info) const {
    return TextIn(info, fKeys.fSettingsName);
}

std::size_t FileListBuilder::TextHash::operator()(CPOSUnicodeString const& text) const {
    return std::hash<std::string_view>()(BytesOf(text));
}

bool FileListBuilder::SameText::operator()(
    CPOSUnicodeString const& a, CPOSUnicodeString const& b) const {
    return BytesOf(a) == BytesOf(b);
}

bool FileListBuilder::SettingAlreadyExists(CPOSDict const& info) const {
    if (!fNames.empty()) {
        return fNames.contains(NameIn(info));
    }
    // Only the first entry can be without a name, since a record without one throws as soon as
    // there is an entry to compare it with; and so does every record that meets such an entry.
    return fFileList.Count() != 0 &&
           SettingFileInfoHasSameName(CPOSDict(fFileList[0], /*quiet=*/false), info);
}

bool FileListBuilder::SettingFileInfoHasSameName(CPOSDict const& a, CPOSDict const& b) {
    CBIBStringAtom const settingsName(kSettingsName);
    return BytesOf(TextIn(a, settingsName)) == BytesOf(TextIn(b, settingsName));
}

void FileListBuilder::AddCloakingInfo(CPOSDict& info) const {
    try {
        auto const key = CloakKey(TextIn(info, fKeys.fFullFilePath));
        if (key && fCloaked.contains(*key)) {
            info.Put(fKeys.fShowHide, fCloakSettings.Get(key->c_str(), /*quiet=*/false));
        }
    } catch (...) {
        // The record goes on without.
    }
}

} // namespace PDFSettingsImpl
