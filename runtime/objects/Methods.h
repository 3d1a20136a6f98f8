// Finding the methods of a container.
#pragma once

#include "runtime/objects/Container.h"

namespace bibrt {

// The method under the container's signature or a parent of it; null for none and for a container
// without a signature.
void* FindContainerMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept;

// The same with the type that the proc type names.
template <class Proc>
Proc FindTypedMethod(
    BIBContainer const& container, char const* name, char const* procType) noexcept {
    return reinterpret_cast<Proc>(FindContainerMethod(container, name, procType));
}

} // namespace bibrt
