// A host of the component: the component started on the in-process runtime, and its settings
// objects.
#pragma once

#include "conformance/Stream.h"
#include "runtime/objects/Diagnostics.h"
#include "tests/support/Component.h"
#include "tests/support/Describe.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// A reference to what the runtime counts, for a host to use like the pointer; null for nothing.
template <class T>
class Owned : public std::shared_ptr<T> {
public:
    using std::shared_ptr<T>::shared_ptr;
    operator T*() const noexcept { return this->get(); }
};

// Collects what is reported to the runtime's error channel. At most one lives at a time.
class ErrorLog {
public:
    ErrorLog() { BIBRuntimeSetErrorChannel(&Take, this); }
    ~ErrorLog() { BIBRuntimeSetErrorChannel(nullptr, nullptr); }
    ErrorLog(ErrorLog const&) = delete;
    ErrorLog& operator=(ErrorLog const&) = delete;

    std::vector<std::string> fMessages;

private:
    static void Take(char const* message, void* log) {
        static_cast<ErrorLog*>(log)->fMessages.emplace_back(message);
    }
};

// Each test starts the component, and ends with everything released.
class SettingsTest : public testing::Test {
protected:
    explicit SettingsTest(BIBLookupProc lookup = &BIBRuntimeLookup)
        : fIsStarted(fComponent.IsLoaded() && fComponent.Initialize(lookup) == 1) {
        EXPECT_TRUE(fIsStarted);
    }

    ~SettingsTest() override {
        fComponent.Terminate();
        EXPECT_EQ(fLiveBefore, bibrt::CountLive());
    }

    // A reference of its own to object, if there is one.
    template <class T>
    Owned<T> Own(T* object) const {
        auto* const container = reinterpret_cast<BIBContainer*>(object);
        fRuntime.Containers().AddRef(container);
        return Owned<T>(object, [=, this](T*) { fRuntime.Containers().Release(container); });
    }

    // A stream that reads text.
    Owned<BIBPositionableStream> NewStream(std::string_view text) const {
        conformance::Stream const stream(fRuntime, conformance::NewMemoryStream(fRuntime));
        stream.Write(std::string(text));
        return Own(stream.Self());
    }

    // Settings read from text; null if the component gives none.
    Owned<PDFSettings> NewSettings(std::string_view text, char const* schema = "") const {
        return Own(fNewFromStream(NewStream(text), schema));
    }

    // A value from a text in the object notation.
    template <class T>
    Owned<T> NewValue(std::string const& notation) const {
        POSObject* const value = fRuntime.Objects().CreateFromText(notation.c_str(), nullptr);
        EXPECT_NE(nullptr, value) << notation;
        return Own(reinterpret_cast<T*>(value));
    }

    // Puts a value into dict; a new one lives on in it.
    template <class T>
    void Put(POSDict* dict, char const* key, T* value) const {
        auto const owned = Own(reinterpret_cast<POSObject*>(value));
        fRuntime.Put(dict, key, owned);
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

    // A buffer of the units of a path.
    Owned<BIBSharedBuffer> NewPath(std::u16string const& path) const {
        auto const& buffers = fRuntime.Buffers();
        unsigned long const size = path.size() * sizeof(char16_t);
        Owned<BIBSharedBuffer> buffer(
            buffers.NewBuffer(size, nullptr, nullptr, nullptr, nullptr), buffers.Release);
        std::copy(path.begin(), path.end(), static_cast<char16_t*>(buffers.GetBuffer(buffer)));
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

    // A procedure, whatever its type.
    struct AnyProc {
        void* fProc;
        template <class Proc>
        operator Proc() const {
            return reinterpret_cast<Proc>(fProc);
        }
    };

    // The component's procedure of that name.
    static AnyProc Find(std::string const& name, char const* table = "PDFSettingsInterface") {
        std::string const type = "PDFSettings" + name + "Proc";
        void* const proc = BIBRuntimeLookup(table, name.c_str(), type.c_str());
        EXPECT_NE(nullptr, proc) << name;
        return {proc};
    }

    bibrt::LiveCounts fLiveBefore = bibrt::CountLive();
    ErrorLog fLog;
    Component fComponent;
    bool fIsStarted;
    conformance::Runtime const fRuntime{&BIBRuntimeLookup};
    PDFSettingsNewFromStreamProc const fNewFromStream = Find("NewFromStream");
    PDFSettingsNewFromDictProc const fNewFromDict = Find("NewFromDict");
    PDFSettingsGetJobOptionsDataProc const fGetJobOptionsData = Find("GetJobOptionsData");
    PDFSettingsGetSettingsProc const fGetSettings = Find("GetSettings");
    PDFSettingsSetSettingsProc const fSetSettings = Find("SetSettings");
    PDFSettingsIsPDFSettingsValidProc const fIsPDFSettingsValid = Find("IsPDFSettingsValid");
    PDFSettingsNewFromFileProc const fNewFromFile = Find("NewFromFile");
    PDFSettingsIsDirtyProc const fIsDirty = Find("IsDirty");
    PDFSettingsWriteProc const fWrite = Find("Write");
    PDFSettingsGetDefaultPDFSettingsDirectoryProc const fGetFolder =
        Find("GetDefaultPDFSettingsDirectory", "PDFSettingsStatics");
    PDFSettingsGetListofPDFSettingsProc const fGetList =
        Find("GetListofPDFSettings", "PDFSettingsStatics");
};

} // namespace support
