#include "platform/CFPropertyList.h"

#include "platform/CFObject.h"

#include <algorithm>
#include <exception>
#include <expat.h>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using platform::CFObject;
using platform::ObjectOf;
using platform::StringObject;

struct ReleaseObject {
    void operator()(CFObject const* object) const noexcept { object->Release(); }
};

// Owns a reference to an object.
using ObjectRef = std::unique_ptr<CFObject const, ReleaseObject>;

bool AreEqual(ObjectRef const& a, ObjectRef const& b) noexcept {
    return CFEqual(a.get(), b.get()) != 0;
}

class ArrayObject : public CFObject {
public:
    CFTypeID TypeID() const noexcept override { return platform::kArrayType; }
    bool Equals(CFObject const& other) const noexcept override {
        auto const& elements = static_cast<ArrayObject const&>(other).fElements;
        return std::equal(
            fElements.begin(), fElements.end(), elements.begin(), elements.end(), &AreEqual);
    }

    std::vector<ObjectRef> fElements;
};

class DictionaryObject : public CFObject {
public:
    CFTypeID TypeID() const noexcept override { return platform::kDictionaryType; }
    bool Equals(CFObject const& other) const noexcept override {
        auto const& dict = static_cast<DictionaryObject const&>(other);
        if (fKeys.size() != dict.fKeys.size()) {
            return false;
        }
        for (std::size_t place = 0; place < fKeys.size(); ++place) {
            if (CFEqual(fValues[place].get(), dict.Find(*fKeys[place])) == 0) {
                return false;
            }
        }
        return true;
    }

    // The value under an equal key; null if there is none. Keys are strings.
    CFObject const* Find(CFObject const& key) const noexcept {
        if (key.TypeID() != platform::kStringType) {
            return nullptr;
        }
        auto const found = fPlaces.find(TextOf(key));
        return found == fPlaces.end() ? nullptr : fValues[found->second].get();
    }

    // Adds an entry. A key that exists keeps its position and gets the new value. Throws
    // std::bad_alloc. REQUIRES: key is a string.
    void Set(ObjectRef key, ObjectRef value) {
        auto const [place, isNew] = fPlaces.emplace(TextOf(*key), fKeys.size());
        if (!isNew) {
            fValues[place->second] = std::move(value);
            return;
        }
        fValues.push_back(std::move(value));
        fKeys.push_back(std::move(key));
    }

    std::vector<ObjectRef> const& Keys() const noexcept { return fKeys; }
    std::vector<ObjectRef> const& Values() const noexcept { return fValues; }

private:
    static std::u16string_view TextOf(CFObject const& string) noexcept {
        return static_cast<StringObject const&>(string).fValue;
    }

    std::vector<ObjectRef> fKeys;
    std::vector<ObjectRef> fValues;
    // The position of each key. The map borrows the key's text from fKeys.
    std::unordered_map<std::u16string_view, std::size_t> fPlaces;
};

void CopyAll(std::vector<ObjectRef> const& objects, void const** target) noexcept {
    if (target != nullptr) {
        std::transform(objects.begin(), objects.end(), target, [](auto const& object) {
            return object.get();
        });
    }
}

// Real property lists have three levels. Nested values are destroyed by recursion, so the depth is
// limited.
constexpr std::size_t kDeepestLevel = 64;

// A value whose contents no caller reads: its element name and its text.
using ScalarObject =
    platform::ValueObject<platform::kScalarType, std::pair<std::string, std::string>>;

constexpr std::string_view kScalars[] = {"integer", "real", "true", "false", "date", "data"};

bool IsScalar(std::string_view element) noexcept {
    return std::find(std::begin(kScalars), std::end(kScalars), element) != std::end(kScalars);
}

bool HoldsText(std::string_view element) noexcept {
    return element == "string" || element == "key" || IsScalar(element);
}

// Thrown if the text is not a property list.
class BadPropertyList : public std::exception {};

void Require(bool condition) {
    if (!condition) {
        throw BadPropertyList();
    }
}

// An array or a dictionary that is not closed yet.
struct OpenCollection {
    std::unique_ptr<ArrayObject> fArray;
    std::unique_ptr<DictionaryObject> fDictionary;
    ObjectRef fKey; // of a dictionary: the key without a value yet
};

// Builds the objects from the parser's events. Each event handler throws BadPropertyList and
// std::bad_alloc.
class Builder {
public:
    void Start(std::string_view element) {
        Require(!fIsInText);
        if (!fIsInList) {
            Require(element == "plist" && fRoot == nullptr);
            fIsInList = true;
        } else {
            OpenValue(element);
        }
    }

    void End(std::string_view element) {
        if (fIsInText) {
            EndText(element);
        } else if (fOpen.empty()) {
            fIsInList = false;
        } else {
            Close();
        }
    }

    void Text(std::string_view text) {
        if (fIsInText) {
            fText.append(text);
        } else {
            Require(text.find_first_not_of(" \t\r\n") == std::string_view::npos);
        }
    }

    ObjectRef TakeRoot() { return std::move(fRoot); }

private:
    void OpenValue(std::string_view element) {
        if (HoldsText(element)) {
            fIsInText = true;
            fText.clear();
            return;
        }
        Require((element == "dict" || element == "array") && fOpen.size() < kDeepestLevel);
        OpenCollection collection;
        if (element == "dict") {
            collection.fDictionary = std::make_unique<DictionaryObject>();
        } else {
            collection.fArray = std::make_unique<ArrayObject>();
        }
        fOpen.push_back(std::move(collection));
    }

    void Close() {
        OpenCollection& top = fOpen.back();
        Require(!top.fKey);
        ObjectRef closed(
            top.fArray ? static_cast<CFObject*>(top.fArray.release()) : top.fDictionary.release());
        fOpen.pop_back();
        Store(std::move(closed));
    }

    void EndText(std::string_view element) {
        fIsInText = false;
        if (element == "key") {
            Require(!fOpen.empty() && fOpen.back().fDictionary && !fOpen.back().fKey);
            fOpen.back().fKey = MakeString(fText);
        } else if (element == "string") {
            Store(MakeString(fText));
        } else {
            Store(ObjectRef(new ScalarObject({std::string(element), fText})));
        }
    }

    void Store(ObjectRef value) {
        if (fOpen.empty()) {
            Require(fRoot == nullptr);
            fRoot = std::move(value);
        } else if (fOpen.back().fArray) {
            fOpen.back().fArray->fElements.push_back(std::move(value));
        } else {
            Require(fOpen.back().fKey != nullptr);
            fOpen.back().fDictionary->Set(std::move(fOpen.back().fKey), std::move(value));
        }
    }

    static ObjectRef MakeString(std::string_view text) {
        ObjectRef string(platform::NewString(text));
        Require(string != nullptr);
        return string;
    }

    std::vector<OpenCollection> fOpen;
    std::string fText; // of the open element, if that holds text
    bool fIsInText = false;
    bool fIsInList = false; // between <plist> and </plist>
    ObjectRef fRoot;
};

// Runs Expat with a builder. An exception must not pass through Expat, so the handlers catch it and
// stop the parser.
class Parser {
public:
    Parser() : fExpat(XML_ParserCreate(nullptr), &XML_ParserFree) {
        if (!fExpat) {
            throw std::bad_alloc();
        }
        XML_SetUserData(fExpat.get(), this);
        XML_SetElementHandler(fExpat.get(), &OnStart, &OnEnd);
        XML_SetCharacterDataHandler(fExpat.get(), &OnText);
        XML_SetEntityDeclHandler(fExpat.get(), &OnEntity);
        XML_SetSkippedEntityHandler(fExpat.get(), &OnSkippedEntity);
    }

    // The value, or null on failure.
    ObjectRef Parse(UInt8 const* bytes, CFIndex size) {
        auto const* const text = reinterpret_cast<char const*>(bytes);
        bool const isWhole =
            size <= std::numeric_limits<int>::max() &&
            XML_Parse(fExpat.get(), text, static_cast<int>(size), XML_TRUE) == XML_STATUS_OK;
        return isWhole && !fHasFailed ? fBuilder.TakeRoot() : nullptr;
    }

private:
    template <class Event>
    static void Handle(void* userData, Event event) noexcept {
        auto* const self = static_cast<Parser*>(userData);
        if (self->fHasFailed) {
            return;
        }
        try {
            event(self->fBuilder);
        } catch (std::exception const&) {
            self->fHasFailed = true;
            XML_StopParser(self->fExpat.get(), XML_FALSE);
        }
    }

    static void OnStart(void* userData, char const* name, char const** /*attributes*/) {
        Handle(userData, [name](Builder& builder) { builder.Start(name); });
    }
    static void OnEnd(void* userData, char const* name) {
        Handle(userData, [name](Builder& builder) { builder.End(name); });
    }
    static void OnText(void* userData, char const* text, int size) {
        Handle(userData, [=](Builder& builder) {
            builder.Text({text, static_cast<std::size_t>(size)});
        });
    }
    // An entity that is not declared in this text would silently be left out.
    static void OnSkippedEntity(void* userData, char const* /*name*/, int /*isParameter*/) {
        Handle(userData, [](Builder&) { throw BadPropertyList(); });
    }
    static void OnEntity(
        void* userData,
        char const* /*name*/,
        int /*isParameter*/,
        char const* /*value*/,
        int /*length*/,
        char const* /*base*/,
        char const* /*systemId*/,
        char const* /*publicId*/,
        char const* /*notation*/) {
        Handle(userData, [](Builder&) { throw BadPropertyList(); });
    }

    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> fExpat;
    Builder fBuilder;
    bool fHasFailed = false;
};

} // namespace

CFTypeID CFArrayGetTypeID() noexcept {
    return platform::kArrayType;
}

CFIndex CFArrayGetCount(CFArrayRef array) noexcept {
    return static_cast<CFIndex>(ObjectOf<ArrayObject>(array).fElements.size());
}

void const* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) noexcept {
    return ObjectOf<ArrayObject>(array).fElements[static_cast<std::size_t>(index)].get();
}

CFTypeID CFDictionaryGetTypeID() noexcept {
    return platform::kDictionaryType;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dict) noexcept {
    return static_cast<CFIndex>(ObjectOf<DictionaryObject>(dict).Keys().size());
}

void const* CFDictionaryGetValue(CFDictionaryRef dict, void const* key) noexcept {
    return key == nullptr ? nullptr
                          : ObjectOf<DictionaryObject>(dict).Find(*platform::AsObject(key));
}

void CFDictionaryGetKeysAndValues(
    CFDictionaryRef dict, void const** keys, void const** values) noexcept {
    CopyAll(ObjectOf<DictionaryObject>(dict).Keys(), keys);
    CopyAll(ObjectOf<DictionaryObject>(dict).Values(), values);
}

CFPropertyListRef CFPropertyListCreateFromXMLData(
    CFAllocatorRef /*allocator*/,
    CFDataRef xmlData,
    CFOptionFlags /*mutabilityOption*/,
    CFStringRef* errorString) noexcept {
    if (errorString != nullptr) {
        *errorString = nullptr;
    }
    try {
        return Parser().Parse(CFDataGetBytePtr(xmlData), CFDataGetLength(xmlData)).release();
    } catch (std::exception const&) {
        return nullptr;
    }
}
