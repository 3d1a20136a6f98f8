#include "source/RegistryHelper.h"

#include "api/SettingsPlaces.h"
#include "bib/POSScalars.h"
#include "platform/CFString.h"
#include "platform/FileManager.h"
#include "source/PDFSettingsError.h"

#include <cstring>
#include <new>
#include <vector>

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSDictIterator;
using BIB_T_NMT::CPOSNumber;
using UnicodeEncodingNS::Buffer16;
using UnicodeEncodingNS::Unicode16;

namespace PDFSettingsImpl {

namespace {

constexpr unsigned long kPathSize = 1024; // in bytes, including the terminator
constexpr CFIndex kNameSize = 512;        // of an application or a file; the same

constexpr char kMasterKey[] = "/";
constexpr char kHidden[] = "0";

// Mac Roman, the encoding of keys, has a character for every byte, so null only means that memory
// ran out. Throws std::bad_alloc.
AutoCFRelease<CFStringRef> MakeString(char const* text) {
    AutoCFRelease<CFStringRef> string(
        CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman),
        /*retain=*/false);
    if (string.Get() == nullptr) {
        throw std::bad_alloc();
    }
    return string;
}

// value, borrowed, if it is of that type, else null; null for null.
template <class T>
T AsType(void const* value, CFTypeID type) noexcept {
    bool const isOfType = value != nullptr && CFGetTypeID(value) == type;
    return isOfType ? static_cast<T>(value) : nullptr;
}

CFStringRef AsString(void const* value) noexcept {
    return AsType<CFStringRef>(value, CFStringGetTypeID());
}

CFDictionaryRef AsDictionary(void const* value) noexcept {
    return AsType<CFDictionaryRef>(value, CFDictionaryGetTypeID());
}

// The value under a key of dict, borrowed; null if there is none. Throws std::bad_alloc.
void const* Find(CFDictionaryRef dict, char const* key) {
    return CFDictionaryGetValue(dict, MakeString(key).Get());
}

// The string keys of dict in order, borrowed. Throws std::bad_alloc.
std::vector<CFStringRef> KeysOf(CFDictionaryRef dict) {
    std::vector<void const*> keys(static_cast<std::size_t>(CFDictionaryGetCount(dict)));
    CFDictionaryGetKeysAndValues(dict, keys.data(), nullptr);
    std::vector<CFStringRef> strings;
    for (void const* const key : keys) {
        if (AsString(key) != nullptr) {
            strings.push_back(AsString(key));
        }
    }
    return strings;
}

Buffer16 UnitsOf(CFStringRef string) {
    CFIndex const length = CFStringGetLength(string);
    Buffer16 const units(static_cast<unsigned long>(length), nullptr);
    CFStringGetCharacters(string, CFRangeMake(0, length), units.GetBuffer());
    return units;
}

// The path of a file in the preferences folder of a domain; false if there is no such folder.
bool FindPreferences(SInt16 domain, char const* fileName, char (&path)[kPathSize]) {
    FSRef folder;
    if (FSFindFolder(domain, kPreferencesFolderType, kDontCreateFolder, &folder) != noErr) {
        return false;
    }
    // If the folder's path does not fit, path is empty; it must not be mistaken for the root.
    bool const fits = FSRefMakePath(&folder, reinterpret_cast<UInt8*>(path), kPathSize) == noErr;
    std::size_t const length = std::strlen(path);
    std::size_t const nameSize = std::strlen(fileName) + 1;
    ThrowIfFalse(
        fits && length + nameSize <= kPathSize,
        "GenerateDisplayNames path buffer to small"); // sic
    std::memcpy(path + length, fileName, nameSize);
    return true;
}

AutoCFRelease<CFDataRef> ReadFile(char const* path) {
    AutoCFRelease<CFDataRef> data;
    AutoCFRelease<CFStringRef> const text = MakeString(path);
    AutoCFRelease<CFURLRef> const url(
        CFURLCreateWithFileSystemPath(
            kCFAllocatorDefault, text.Get(), kCFURLPOSIXPathStyle, /*isDirectory=*/1),
        /*retain=*/false);
    if (url.Get() != nullptr) {
        SInt32 errorCode = noErr;
        CFURLCreateDataAndPropertiesFromResource(
            kCFAllocatorDefault, url.Get(), data.GetAddr(), nullptr, nullptr, &errorCode);
    }
    return data;
}

AutoCFRelease<CFPropertyListRef> Parse(CFDataRef data) {
    CFStringRef errorText = nullptr;
    return {
        CFPropertyListCreateFromXMLData(
            kCFAllocatorDefault, data, kCFPropertyListImmutable, &errorText),
        /*retain=*/false};
}

// A name in the encoding of the cloak table.
class TableName {
public:
    // Returns false for a name that is too long or cannot be converted.
    bool Take(CFStringRef name) noexcept {
        return CFStringGetCString(name, fBytes, kNameSize, kCFStringEncodingMacRoman) != 0;
    }
    char const* Get() const noexcept { return fBytes; }

private:
    char fBytes[kNameSize] = {};
};

bool IsHidden(void const* value) {
    return CFEqual(value, MakeString(kHidden).Get()) != 0;
}

// Stores for one file whether the application shows it.
void PutEntry(CPOSDict const& table, char const* file, char const* appName, bool isHidden) {
    if (!table.HasKey(file)) {
        table.Put(file, CPOSDict());
    }
    CPOSDict const entry = table.GetDict(file, /*quiet=*/false);
    entry.Put(appName, CPOSNumber(isHidden ? 0 : 1));
    table.Put(file, entry);
}

// Merges one application's files into the table. If the application shows all files, the entries of
// single files are ignored.
void MergeApplication(CPOSDict const& table, char const* appName, CFDictionaryRef files) {
    AutoCFRelease<CFStringRef> const master = MakeString(kMasterKey);
    if (IsHidden(CFDictionaryGetValue(files, master.Get()))) {
        RegistryHelper::RemoveAppFromSettings(table, appName);
        return;
    }
    for (CFStringRef const key : KeysOf(files)) {
        TableName file;
        if (file.Take(key)) {
            PutEntry(table, file.Get(), appName, IsHidden(CFDictionaryGetValue(files, key)));
        }
    }
}

void MergeApplications(CPOSDict const& table, CFDictionaryRef applications) {
    for (CFStringRef const key : KeysOf(applications)) {
        CFDictionaryRef const files = AsDictionary(CFDictionaryGetValue(applications, key));
        TableName appName;
        if (files != nullptr && appName.Take(key) && CFDictionaryGetCount(files) != 0) {
            MergeApplication(table, appName.Get(), files);
        }
    }
}

CPOSArray MakePair(CFStringRef fileName, CFStringRef displayName) {
    CPOSArray pair;
    for (CFStringRef const name : {fileName, displayName}) {
        // A byte order mark at the start is kept.
        Buffer16 const units = UnitsOf(name);
        pair.Append(UnicodeEncodingNS::ExactString({units.GetBuffer(), units.GetNumElements()}));
    }
    return pair;
}

// Stops at the first element that is not a string; a last file name without a display name is
// dropped.
void AppendPairs(CFArrayRef names, CPOSArray const& pairs) {
    CFIndex const count = CFArrayGetCount(names);
    for (CFIndex i = 0; i + 1 < count; i += 2) {
        CFStringRef const fileName = AsString(CFArrayGetValueAtIndex(names, i));
        CFStringRef const displayName = AsString(CFArrayGetValueAtIndex(names, i + 1));
        if (fileName == nullptr || displayName == nullptr) {
            return;
        }
        pairs.Append(MakePair(fileName, displayName));
    }
}

} // namespace

RegistryHelper* RegistryHelper::CreateUserHelper() {
    return new MacRegistryHelper(
        kUserDomain, SettingsPlaces::kUserPreferences, /*prefixedKeys=*/false);
}

RegistryHelper* RegistryHelper::CreateAdminHelper() {
    return new MacRegistryHelper(
        kLocalDomain, SettingsPlaces::kAdminPreferences, /*prefixedKeys=*/false);
}

void RegistryHelper::RemoveAppFromSettings(CPOSDict const& table, char const* appName) {
    CPOSDictIterator const cursor(table);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        CPOSDict const entry = table.GetDict(cursor.CurKey(), /*quiet=*/true);
        if (!entry.IsValid() || !entry.HasKey(appName)) {
            continue;
        }
        entry.Remove(appName);
        if (entry.IsEmpty()) {
            table.Remove(cursor.CurKey());
            // The Next() that follows skips the first key: hosts rely on the resulting table.
            cursor.Begin();
        }
    }
}

MacRegistryHelper::MacRegistryHelper(int domain, char const* fileName, bool prefixedKeys)
    : fSettings(GetSystemSettings(static_cast<unsigned int>(domain), fileName)),
      fPrefixedKeys(prefixedKeys) {}

void MacRegistryHelper::SetDirectory(Unicode16 const& /*directory*/) {}

bool MacRegistryHelper::GetDirectory(Unicode16& directory) const {
    try {
        CFStringRef const path =
            IsValid() ? AsString(Find(
                            fSettings.Get(),
                            fPrefixedKeys ? "ArdeoPDFSettingsPath" : SettingsPlaces::kPathKey))
                      : nullptr;
        if (path != nullptr) {
            // A byte order mark is applied and removed.
            directory = UnicodeEncodingNS::CreateUnicode16(UnitsOf(path));
        }
        return path != nullptr;
    } catch (...) {
        return false;
    }
}

void MacRegistryHelper::GenerateCloakSettings(CPOSDict const& table) const {
    try {
        CFDictionaryRef const applications =
            IsValid() ? AsDictionary(Find(fSettings.Get(), "ShowHide")) : nullptr;
        if (applications != nullptr) {
            MergeApplications(table, applications);
        }
    } catch (...) {
        // The table keeps what was merged so far.
    }
}

CPOSArray MacRegistryHelper::GenerateDisplayNames(char const* appName) const {
    CPOSArray pairs;
    try {
        CFDictionaryRef const applications =
            IsValid() ? AsDictionary(Find(
                            fSettings.Get(), fPrefixedKeys ? "ArdeoPDFSettings" : "PDFSettings"))
                      : nullptr;
        CFArrayRef const names =
            applications != nullptr && appName != nullptr
                ? AsType<CFArrayRef>(Find(applications, appName), CFArrayGetTypeID())
                : nullptr;
        if (names != nullptr) {
            AppendPairs(names, pairs);
        }
    } catch (...) {
        // The pairs made so far are returned.
    }
    return pairs;
}

AutoCFRelease<CFDictionaryRef>
MacRegistryHelper::GetSystemSettings(unsigned int domain, char const* fileName) const {
    try {
        char path[kPathSize] = {};
        if (!FindPreferences(static_cast<SInt16>(domain), fileName, path)) {
            return {};
        }
        AutoCFRelease<CFDataRef> const data = ReadFile(path);
        if (data.Get() == nullptr) {
            return {};
        }
        AutoCFRelease<CFPropertyListRef> const root = Parse(data.Get());
        return {AsDictionary(root.Get()), /*retain=*/true};
    } catch (...) {
        return {};
    }
}

} // namespace PDFSettingsImpl
