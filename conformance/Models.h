// Checks that compare the runtime with a model of it over many random operations.
#pragma once

#include "conformance/Runtime.h"

namespace conformance {

void FollowsARegistryModel(Runtime const& runtime);
void FollowsAnAtomModel(Runtime const& runtime);
void FollowsAStreamModel(Runtime const& runtime);
void FollowsAnArrayModel(Runtime const& runtime);
void FollowsADictModel(Runtime const& runtime);
void FollowsAValueModel(Runtime const& runtime);

} // namespace conformance
