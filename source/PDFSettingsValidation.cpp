// Validation of settings: which parts are validated, and the checks of single values that a schema
// can refer to.
#include "source/PDFSettingsObject.h"

#include "bib/BIBSharedBuffer.h"
#include "bib/POSScalars.h"
#include "bib/POSValidator.h"
#include "source/PDFSettingsError.h"
#include "source/PDFSettingsParser.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>

using BIB_T_NMT::CBIBMemory;
using BIB_T_NMT::CBIBStringAtom;
using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSDictIterator;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSString;
using BIB_T_NMT::CPOSStructValidator;
using BIB_T_NMT::TBIBSharedBuffer;

namespace PDFSettingsImpl {

namespace {

CPOSString MakeKey(char const* begin, char const* end) {
    auto const length = static_cast<unsigned long>(end - begin);
    BIB_T_NMT::TBIBMemoryBuffer<char, CBIBMemory> key(begin, length + 1);
    key[length] = '\0';
    return CPOSString(key.GetBuffer());
}

} // namespace

POSValidatorErrorProc* POSValidatorErrorProc::gPOSValidatorErrorProc = nullptr;

// The results of Append and Put are not reliable, so the record and the list are checked: a list
// without an error would make invalid settings pass.
void POSValidatorErrorProc::Append(CPOSDict const& record) const {
    unsigned long const count = fErrors.Count();
    fErrors.Append(record);
    if (fErrors.Count() != count + 1 || !record.HasKey("Key") || !record.HasKey("ErrorMsg")) {
        CBIBMemory::ThrowMemError();
    }
}

void POSValidatorErrorProc::errproc(char const* message) {
    CPOSDict const record;
    char const* const space = std::strchr(message, ' ');
    if (space == nullptr) {
        // There is no key to report the error under, and a lost error must not look like success.
        CBIBMemory::ThrowMemError();
    }
    record.Put("Key", MakeKey(message, space));
    record.Put("ErrorMsg", CPOSString(space + 1));
    gPOSValidatorErrorProc->Append(record);
}

namespace {

constexpr double kCompatibilityLevels[] = {1.2, 1.3, 1.4, 1.5, 1.6, 1.7};
constexpr double kImageDepths[] = {-1, 1, 2, 4, 8, 16};

// The message with its NUL must leave a byte of the buffer free: hosts rely on this margin.
void WriteMessage(BIBSharedBuffer* message, std::string_view text) {
    if (message == nullptr) {
        return;
    }
    TBIBSharedBuffer<char> const buffer(message, /*adopt=*/false);
    if (buffer.GetSize() > text.size() + 1) {
        std::memcpy(buffer.GetBuffer(), text.data(), text.size());
        buffer[text.size()] = '\0';
    }
}

// The result for the runtime: nothing is thrown, and any failure rejects the value.
template <class Accepts>
long Check(
    POSObject* value,
    BIBSharedBuffer* message,
    std::string_view refusal,
    Accepts accepts) noexcept {
    try {
        if (accepts(CPOSNumber(CPOSObject(value), /*quiet=*/false).Get())) {
            return 1;
        }
    } catch (...) {
        // A value of another type is rejected like a wrong number.
    }
    try {
        WriteMessage(message, refusal);
    } catch (...) {
        // The validator has its own message.
    }
    return 0;
}

// Single precision tolerates the rounding errors of arithmetic.
bool IsCompatibilityLevel(double value) noexcept {
    return std::ranges::any_of(kCompatibilityLevels, [value](double level) {
        // The magnitude is tested first: not every double is in the range of single precision.
        return std::fabs(value) < 2 && static_cast<float>(value) == static_cast<float>(level);
    });
}

bool IsImageDepth(double value) noexcept {
    return std::ranges::find(kImageDepths, value) != std::end(kImageDepths);
}

} // namespace

long PDFSettingsObject::CompatibilityLevelValidator(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* /*userData*/) {
    return Check(value, message, "Invalid CompatibilityLevel", IsCompatibilityLevel);
}

long PDFSettingsObject::ImageDepthValidator(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* /*userData*/) {
    return Check(value, message, "Invalid ImageDepth", IsImageDepth);
}

namespace {

constexpr char kRootStructure[] = "PDFSettings";

// Throws POSException for a text that does not parse to a dictionary.
CPOSDict ReadSchema(char const* text) {
    char const* errorText = nullptr;
    CPOSDict schema(CPOSObject::CreateFromText(text, &errorText, /*quiet=*/true), /*quiet=*/false);
    if (!schema.IsValid()) {
        throw CPDFSettingsError(errorText, kSchemaError);
    }
    return schema;
}

void RegisterChecks(CPOSStructValidator& validator) {
    validator.RegisterExtraValidationProc(
        CBIBStringAtom("CompatibilityLevelParams"),
        &PDFSettingsObject::CompatibilityLevelValidator,
        nullptr);
    validator.RegisterExtraValidationProc(
        CBIBStringAtom("ImageDepthParams"), &PDFSettingsObject::ImageDepthValidator, nullptr);
}

// Removes from copy the keys that the structure known contains neither itself nor in its
// "optional". The cursor is over the original settings, so a removal does not affect it.
void RemoveUnknown(CPOSDictIterator const& cursor, CPOSDict const& known, CPOSDict const& copy) {
    CPOSDict const optional = known.GetDict("optional", /*quiet=*/false);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        CBIBStringAtom const key(cursor.CurKey());
        if (!known.HasKey(key) && optional.IsValid() && !optional.HasKey(key)) {
            copy.Remove(key);
        }
    }
}

// The settings of other products, which a set of settings holds in its array "OtherNamespaces".

// The words in the names of namespaces.
constexpr char kArdeo[] = "Ardeo";
constexpr char kPagemint[] = "Pagemint";
constexpr char kVPandPMPrivate[] = "VPandPMPrivate";
constexpr char kVectrapaint[] = "Vectrapaint";
constexpr char kWebrix[] = "Webrix";
constexpr char kTessellaSuite[] = "TessellaSuite";

// The namespaces that are validated; without a version, all versions of the product.
struct ValidatedNamespace {
    char const* fProduct;
    char const* fVersion;
};

constexpr ValidatedNamespace kValidated[] = {
    {kPagemint, "4.0"},
    {kPagemint, "5.0"},
    {kVPandPMPrivate, nullptr},
    {kVectrapaint, nullptr},
    {kWebrix, "8.0"},
    {kTessellaSuite, "2.0"},
};

// A string as settings store it, for comparisons.
CPOSObject GetJOString(char const* text) {
    return JoboptionsParserUtils::MakeBinData(
        JoboptionsParserUtils::kJoboptionsStringBinType, text, text + std::strlen(text));
}

bool IsValidated(CPOSArray const& name) {
    CPOSObject const maker = name.GetAt(0, /*quiet=*/false);
    CPOSObject const product = name.GetAt(1, /*quiet=*/false);
    CPOSObject const version = name.GetAt(2, /*quiet=*/false);
    return maker == GetJOString(kArdeo) &&
           std::ranges::any_of(kValidated, [&](auto const& validated) {
               return product == GetJOString(validated.fProduct) &&
                      (validated.fVersion == nullptr || version == GetJOString(validated.fVersion));
           });
}

bool MustGo(CPOSObject const& element) {
    CPOSDict const dict(element, /*quiet=*/true);
    if (!dict.IsValid()) {
        return false;
    }
    CPOSArray const name = dict.GetArray("Namespace", /*quiet=*/true);
    return name.IsValid() && name.Count() > 2 && !IsValidated(name);
}

// Removes from the array each namespace that no schema validates: all but those of certain products
// in certain versions. An element that does not name its namespace, with an array of at least three
// elements, stays. settings is the caller's own deep copy. Throws CBIBError and POSException.
void PruneOtherNamespaces(CPOSDict const& settings) {
    CPOSArray const namespaces = settings.GetArray("OtherNamespaces", /*quiet=*/true);
    if (!namespaces.IsValid()) {
        return;
    }
    // From the end, so that a removal does not move the elements still to be visited.
    for (unsigned long position = namespaces.Count(); position > 0; --position) {
        if (MustGo(namespaces.GetAt(position - 1, /*quiet=*/false))) {
            namespaces.Remove(position - 1);
        }
    }
}

} // namespace

CPOSArray PDFSettingsObject::IsPDFSettingsValid(CPOSDict const& settings) const {
    CPOSArray errors;
    CPOSDict const schema = ReadSchema(fSchema.GetBuffer());
    POSValidatorErrorProc const receiver(errors);
    CPOSStructValidator validator(schema);
    RegisterChecks(validator);
    CPOSDict const copy(settings.Clone(), /*quiet=*/false);
    CPOSDictIterator const cursor(settings);
    CPOSDict const known = schema.GetDict(kRootStructure, /*quiet=*/false);
    if (known.IsValid()) {
        RemoveUnknown(cursor, known, copy);
    }
    PruneOtherNamespaces(copy);
    // The result is ignored: the errors decide.
    validator.Validate(copy, CBIBStringAtom(kRootStructure), &POSValidatorErrorProc::errproc);
    return errors;
}

} // namespace PDFSettingsImpl
