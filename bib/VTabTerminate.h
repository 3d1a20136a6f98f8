// The terminators of the caches that belong to a handle class.
#pragma once

#include "bib/BIBVTab.h"

namespace BIB_T_NMT {

// Empties Cache with the binding.
template <auto& Cache>
class TVTabTerminate : public LazyTerminate {
public:
    void Terminate() override { Cache.DeleteAllElements(); }
};

// The same, and can walk away from the cache's entries.
template <auto& Cache>
class TVTabForgetfulTerminate : public TVTabTerminate<Cache> {
public:
    void Kill() override { Cache.ForgetElements(); }
};

} // namespace BIB_T_NMT
