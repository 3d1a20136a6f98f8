#include "runtime/schema/StructValidator.h"

#include <algorithm>

#include "runtime/objects/Boundary.h"
#include "runtime/schema/SchemaText.h"

namespace bibrt {

constinit ContainerType gStructValidatorType = {
    "POSStructValidator",
    "POSStructValidatorOnSchema",
    "POSValidatorVirtualInterface",
    &DestroyAs<POSValidator>};

POSValidator* MakeStructValidator(Ref<POSDict> schema) {
    return NewObject<POSValidator>(std::move(schema));
}

void MessageSink::Report(std::string_view path, std::string_view text) {
    fIsClean = false;
    if (fProc) {
        String const message = MessageText(path, text);
        CallCaller([&] { fProc(message.c_str()); });
    }
}

} // namespace bibrt

POSValidator::POSValidator(bibrt::Ref<POSDict> schema) noexcept
    : BIBContainer(bibrt::gStructValidatorType),
      fSchema(std::move(schema)) {}

void POSValidator::SetCheck(BIBStringAtom* name, bibrt::Check const& check) {
    auto const found = std::find_if(fChecks.begin(), fChecks.end(), [&](NamedCheck const& entry) {
        return entry.fName.Get() == name;
    });
    if (found != fChecks.end()) {
        found->fCheck = check;
    } else {
        fChecks.push_back({bibrt::AtomRef::Share(name), check});
    }
}

bibrt::Check POSValidator::FindCheck(BIBStringAtom const* name) const noexcept {
    auto const found = std::find_if(fChecks.begin(), fChecks.end(), [&](NamedCheck const& entry) {
        return entry.fName.Get() == name;
    });
    return found != fChecks.end() ? found->fCheck : bibrt::Check();
}

POSDict* POSValidator::FindStructure(BIBStringAtom const* name) const noexcept {
    POSObject* const entry = fSchema->fIsInvalid ? nullptr : fSchema->fEntries.Get(name);
    bool const isStructure = bibrt::IsOfType(entry, bibrt::gDictType) && !entry->fIsInvalid;
    return isStructure ? static_cast<POSDict*>(entry) : nullptr;
}
