#include "source/SettingsFileInfo.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "api/UnicodeEncoding.h"
#include "bib/BIBMemory.h"
#include "bib/POSBinData.h"
#include "bib/POSNumber.h"
#include "source/ExactString.h"

using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSBinData;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using UnicodeEncodingNS::CreateCPOSUnicodeString;
using UnicodeEncodingNS::CreateUnicode16;

namespace PDFSettingsImpl {

namespace {

constexpr std::string_view kExtension = ".joboptions";

constexpr UInt16 kOwnerMayWrite = 0x80;

// The last dot may stand in the name of a folder. Longer endings pass.
bool HasExtension(std::string_view path) noexcept {
    std::size_t const dot = path.rfind('.');
    return dot != std::string_view::npos && path.substr(dot).starts_with(kExtension);
}

// The name to show: without its extension if that is the exact one. REQUIRES: it is longer.
std::span<unsigned short const> ShownName(HFSUniStr255 const& name) {
    std::span<unsigned short const> const units(name.unicode, name.length);
    auto const extension = units.last(kExtensionLength);
    bool const isExact = std::equal(extension.begin(), extension.end(), unicode_joboptions);
    return isExact ? units.first(units.size() - kExtensionLength) : units;
}

bool IsReadOnly(FSCatalogInfo const& catalogInfo) noexcept {
    if ((catalogInfo.nodeFlags & kFSNodeLockedMask) != 0) {
        return true;
    }
    FSPermissionInfo permissions{};
    std::memcpy(&permissions, catalogInfo.permissions, sizeof permissions);
    return (permissions.mode & kOwnerMayWrite) == 0;
}

CPOSBinData MakeDate(UTCDateTime const& date) {
    return CPOSBinData(
        "Apple_UTCDateTime", reinterpret_cast<unsigned char const*>(&date), sizeof date);
}

// A path that is no UTF-8 has no text.
bool IsEmpty(UnicodeEncodingNS::Unicode16 const& text) {
    return text.GetString(UnicodeEncodingNS::kByteOrderNative, /*terminate=*/false, /*mark=*/false)
               .GetNumElements() == 0;
}

// A record that lost one of its values for want of memory would spoil the list.
void Put(CPOSDict const& info, CBIBStringAtom const& key, CPOSObject const& value) {
    info.Put(key, value);
    if (!info.HasKey(key)) {
        BIB_T_NMT::CBIBMemory::ThrowMemError();
    }
}

} // namespace

bool MakeSettingsFileInfo(
    SettingsFileInfoKeys const& keys,
    char const* path,
    HFSUniStr255 const& name,
    FSCatalogInfo const& catalogInfo,
    CPOSDict* info) {
    // Nothing but the extension is no name to show.
    if (!HasExtension(path) || name.length == kExtensionLength) {
        return false;
    }
    auto const fullPath = CreateUnicode16(UnicodeEncodingNS::Unicode8(path));
    if (IsEmpty(fullPath)) {
        return false;
    }
    if (name.length > kExtensionLength) {
        Put(*info, keys.fSettingsName, UnicodeEncodingNS::ExactString(ShownName(name)));
    }
    Put(*info, keys.fFullFilePath, CreateCPOSUnicodeString(fullPath));
    Put(*info, keys.fReadOnly, CPOSNumber(IsReadOnly(catalogInfo) ? 1 : 0));
    Put(*info, keys.fModDate, MakeDate(catalogInfo.contentModDate));
    return true;
}

} // namespace PDFSettingsImpl
