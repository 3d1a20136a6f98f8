// The part of a schema that validation needs.
#pragma once

#include "host/detail/Bindings.h"

#include <string>

namespace pdfsettings::detail {

// Removes labels, descriptions, defaults, groups and rules between settings from schema, which must
// be valid, and returns its text: the component reads its schema at each validation. Throws
// std::bad_alloc.
std::string RulesText(Tables const& tables, POSDict* schema);

} // namespace pdfsettings::detail
