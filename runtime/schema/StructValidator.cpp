#include "runtime/schema/Schema.h"

#include "api/POSValidatorInterface.h"
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"
#include "runtime/schema/SchemaText.h"

#include <algorithm>

POSValidator::POSValidator(bibrt::Ref<POSDict> schema) noexcept
    : BIBContainer(bibrt::gStructValidatorType),
      fSchema(std::move(schema)) {}

void POSValidator::SetCheck(BIBStringAtom* name, bibrt::Check const& check) {
    auto const found = std::ranges::find(fChecks, name, &NamedCheck::Name);
    if (found != fChecks.end()) {
        found->fCheck = check;
    } else {
        fChecks.push_back({bibrt::AtomRef::Share(name), check});
    }
}

bibrt::Check POSValidator::FindCheck(BIBStringAtom const* name) const noexcept {
    auto const found = std::ranges::find(fChecks, name, &NamedCheck::Name);
    return found != fChecks.end() ? found->fCheck : bibrt::Check();
}

POSDict* POSValidator::FindStructure(BIBStringAtom const* name) const noexcept {
    POSObject* const entry = fSchema->fIsInvalid ? nullptr : fSchema->fEntries.Get(name);
    bool const isStructure = bibrt::IsOfType(entry, bibrt::gDictType) && !entry->fIsInvalid;
    return isStructure ? static_cast<POSDict*>(entry) : nullptr;
}

BIBStringAtom const* POSValidator::FindMainName() const noexcept {
    BIBStringAtom const* const main = bibrt::FindAtom("PDFSettings");
    if (FindStructure(main)) {
        return main;
    }
    std::size_t position = 0;
    bibrt::DictEntry const* entry = nullptr;
    do {
        entry = fSchema->fEntries.Next(position);
    } while (entry && !FindStructure(entry->fKey));
    return entry ? entry->fKey.Get() : nullptr;
}

namespace bibrt {

constinit ContainerType gStructValidatorType = {
    "POSStructValidator",
    "POSStructValidatorOnSchema",
    "POSValidatorVirtualInterface",
    &DestroyAs<POSValidator>};

void MessageSink::Report(std::string_view path, std::string_view text) {
    fIsClean = false;
    if (fProc) {
        String const message = MessageText(path, text);
        fIsInCaller = true;
        fProc(message.c_str());
        fIsInCaller = false;
    }
}

namespace {

bool IsValidator(POSValidator const* self) noexcept {
    return IsOfType(self, gStructValidatorType);
}

// Keeps a container alive while a caller's procedures run. An unowned container is unowned again
// afterwards, and is not destroyed.
class KeptAlive {
public:
    explicit KeptAlive(BIBContainer& container) noexcept
        : fIsOwned(std::atomic_ref(container.fRefs).load(std::memory_order_relaxed) > 0),
          fContainer(AddContainerRef(&container) ? &container : nullptr) {}
    KeptAlive(KeptAlive const&) = delete;
    KeptAlive& operator=(KeptAlive const&) = delete;
    ~KeptAlive() {
        if (fIsOwned) {
            ReleaseContainer(fContainer);
        } else {
            DropContainerRef(fContainer);
        }
    }

private:
    bool fIsOwned;
    BIBContainer* fContainer;
};

// The message of a validation that ran out of memory. It has no blank, so that it cannot be
// confused with a finding about a setting, and needs no memory.
constexpr char kOutOfMemory[] = "out-of-memory";

// Whether work reports nothing about the schema of self. Returns 0 too if memory ran out.
template <class Work>
long IsClean(POSValidator& self, POSValidatorErrorCallback errorProc, Work work) {
    KeptAlive const keptSelf(self);
    MessageSink sink(errorProc);
    bool isFinished = false;
    auto const run = [&] {
        work(sink);
        isFinished = true;
        return sink.IsClean() ? 1 : 0;
    };
    // A validator that lost a check would report false findings.
    long const isClean = self.fIsInvalid ? 0 : AtRow<long>(0, run, sink.fIsInCaller);
    if (!isFinished && errorProc) {
        errorProc(kOutOfMemory);
    }
    return isClean;
}

long Validate(
    POSValidator* self,
    POSObject* object,
    BIBStringAtom* key,
    POSValidatorErrorCallback errorProc) {
    if (!IsValidator(self) || !object || !key) {
        return 0;
    }
    KeptAlive const keptObject(*object);
    return IsClean(
        *self, errorProc, [&](MessageSink& sink) { ValidateSettings(*self, *object, *key, sink); });
}

POSValidator* NewPOSStructValidator(POSDict* schema) {
    Ref<POSDict> ref(IsOfType(schema, gDictType) ? schema : nullptr);
    if (!ref) {
        return nullptr;
    }
    return AtRow<POSValidator*>(nullptr, [&] { return NewObject<POSValidator>(std::move(ref)); });
}

long RegisterCallbackProc(
    POSValidator* self,
    BIBStringAtom* name,
    POSValidatorCheckCallback check,
    void const* userData) {
    if (!IsValidator(self) || !name || !check) {
        return 0;
    }
    long const isRegistered = AtRow<long>(0, [&] {
        self->SetCheck(name, {check, userData});
        return 1;
    });
    self->fIsInvalid |= isRegistered == 0;
    return isRegistered;
}

long ValidateSchema(POSValidator* self, POSValidatorErrorCallback errorProc) {
    // An incomplete schema cannot be described.
    if (!IsValidator(self) || self->fSchema->fIsInvalid) {
        return 0;
    }
    return IsClean(*self, errorProc, [&](MessageSink& sink) { CheckSchema(*self, sink); });
}

} // namespace

BIBRT_DEFINE_TABLE(POSValidatorVirtualInterface, POS_VALIDATOR_VIRTUAL_INTERFACE_ROWS, 1)

BIBRT_DEFINE_TABLE(POSStructValidatorInterface, POS_STRUCT_VALIDATOR_INTERFACE_ROWS, 3)

} // namespace bibrt
