// What validation needs of a schema.
#pragma once

#include "host/detail/Bindings.h"

#include <string>

namespace pdfsettings::detail {

// The text of schema, a sound one, without labels, descriptions, defaults and groups, which are
// removed from it: the component reads its schema at each validation. Throws std::bad_alloc.
std::string RulesText(Tables const& tables, POSDict* schema);

} // namespace pdfsettings::detail
