// A host of the component: the component started on the in-process runtime, and its settings
// objects.
#pragma once

#include "conformance/Stream.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/Component.h"
#include "tests/support/Describe.h"
#include "tests/support/ErrorLog.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace support {

// Each test starts the component, and ends with everything released.
class SettingsTest : public testing::Test {
protected:
    explicit SettingsTest(BIBLookupProc lookup = &BIBRuntimeLookup) {
        EXPECT_TRUE(fComponent.IsLoaded());
        EXPECT_EQ(1, fComponent.Initialize(lookup));
        Find(fNewFromStream, "NewFromStream");
        Find(fNewFromDict, "NewFromDict");
        Find(fNewFromFile, "NewFromFile");
        Find(fGetJobOptionsData, "GetJobOptionsData");
        Find(fGetSettings, "GetSettings");
        Find(fSetSettings, "SetSettings");
        Find(fIsPDFSettingsValid, "IsPDFSettingsValid");
        Find(fIsDirty, "IsDirty");
        Find(fWrite, "Write");
        Find(fGetFolder, "GetDefaultPDFSettingsDirectory", "PDFSettingsStatics");
        Find(fGetList, "GetListofPDFSettings", "PDFSettingsStatics");
    }

    ~SettingsTest() override {
        fComponent.Terminate();
        EXPECT_EQ(fLiveBefore, bibrt::CountLive());
    }

    // A stream that reads text, with a reference for the caller.
    BIBPositionableStream* NewStream(std::string_view text) const {
        BIBPositionableStream* const stream = conformance::NewMemoryStream(fRuntime);
        conformance::Stream const held(fRuntime, stream);
        held.Write(std::string(text));
        AddRef(stream);
        return stream;
    }

    // Settings read from text, with a reference for the caller; null if the component gives none.
    PDFSettings* NewSettings(std::string_view text, char const* schema = "") const {
        BIBPositionableStream* const stream = NewStream(text);
        PDFSettings* const settings = fNewFromStream(stream, schema);
        AddRef(settings);
        Release(stream);
        return settings;
    }

    // A value from a text in the object notation, with a reference for the caller.
    template <class T>
    T* NewValue(std::string const& notation) const {
        POSObject* const value = fRuntime.Objects().CreateFromText(notation.c_str(), nullptr);
        EXPECT_NE(nullptr, value) << notation;
        AddRef(value);
        return reinterpret_cast<T*>(value);
    }

    // Puts a value into dict; a new one lives on in it.
    template <class T>
    void Put(POSDict* dict, char const* key, T* value) const {
        AddRef(value);
        fRuntime.Put(dict, key, reinterpret_cast<POSObject*>(value));
        Release(value);
    }

    void Remove(POSDict* dict, char const* key) const {
        fRuntime.Dicts().Remove(dict, conformance::Atom(fRuntime, key));
    }

    std::string Describe(POSDict* dict) const { return Describer(fRuntime).Dict(dict); }
    std::string Describe(PDFSettings* settings) const { return Describe(fGetSettings(settings)); }

    // What the component writes of settings, or "(null)".
    std::string Text(PDFSettings* settings) const {
        BIBPositionableStream* const stream = fGetJobOptionsData(settings);
        return stream == nullptr ? "(null)" : ReadAll(stream);
    }

    // What an unowned stream holds from its position on. The stream goes.
    std::string ReadAll(BIBPositionableStream* stream) const {
        conformance::Stream const held(fRuntime, stream);
        std::string text;
        for (std::string part; !(part = held.Read(65536)).empty();) {
            text += part;
        }
        return text;
    }

    template <class T>
    void AddRef(T* container) const {
        fRuntime.Containers().AddRef(reinterpret_cast<BIBContainer*>(container));
    }

    template <class T>
    void Release(T* container) const {
        fRuntime.Containers().Release(reinterpret_cast<BIBContainer*>(container));
    }

    // A buffer of the units of a path.
    BIBSharedBuffer* NewPath(std::u16string const& path) const {
        unsigned long const size = path.size() * sizeof(char16_t);
        BIBSharedBuffer* const buffer =
            fRuntime.Buffers().NewBuffer(size, nullptr, nullptr, nullptr, nullptr);
        std::copy(
            path.begin(), path.end(), static_cast<char16_t*>(fRuntime.Buffers().GetBuffer(buffer)));
        return buffer;
    }

    // The units of a path, and no buffer any more. Empty for null.
    std::u16string TakePath(BIBSharedBuffer* buffer) const {
        std::u16string path;
        if (buffer != nullptr) {
            path.assign(
                static_cast<char16_t const*>(fRuntime.Buffers().GetBuffer(buffer)),
                fRuntime.Buffers().GetSize(buffer) / sizeof(char16_t));
        }
        fRuntime.Buffers().Release(buffer);
        return path;
    }

    // Stores the component's procedure of that name.
    template <class Proc>
    static void
    Find(Proc& proc, std::string const& name, char const* table = "PDFSettingsInterface") {
        std::string const type = "PDFSettings" + name + "Proc";
        proc = reinterpret_cast<Proc>(BIBRuntimeLookup(table, name.c_str(), type.c_str()));
        EXPECT_NE(nullptr, proc) << name;
    }

    bibrt::LiveCounts fLiveBefore = bibrt::CountLive();
    ErrorLog fLog;
    Component fComponent;
    conformance::Runtime const fRuntime{&BIBRuntimeLookup};
    PDFSettingsNewFromStreamProc fNewFromStream = nullptr;
    PDFSettingsNewFromDictProc fNewFromDict = nullptr;
    PDFSettingsGetJobOptionsDataProc fGetJobOptionsData = nullptr;
    PDFSettingsGetSettingsProc fGetSettings = nullptr;
    PDFSettingsSetSettingsProc fSetSettings = nullptr;
    PDFSettingsIsPDFSettingsValidProc fIsPDFSettingsValid = nullptr;
    PDFSettingsNewFromFileProc fNewFromFile = nullptr;
    PDFSettingsIsDirtyProc fIsDirty = nullptr;
    PDFSettingsWriteProc fWrite = nullptr;
    PDFSettingsGetDefaultPDFSettingsDirectoryProc fGetFolder = nullptr;
    PDFSettingsGetListofPDFSettingsProc fGetList = nullptr;
};

} // namespace support
