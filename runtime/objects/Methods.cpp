#include "runtime/objects/Methods.h"

#include "runtime/objects/Registry.h"

namespace bibrt {

void* FindContainerMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept {
    char const* const signature = container.fPrimary.signature;
    return signature ? Registry::The().FindMethod({signature, name, procType}) : nullptr;
}

} // namespace bibrt
