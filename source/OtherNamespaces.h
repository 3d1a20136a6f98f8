// The settings of other products that a set carries in its array "OtherNamespaces".
#pragma once

#include "bib/POSCollections.h"

namespace PDFSettingsImpl {

// The words that a namespace is named by.
inline constexpr char kArdeo[] = "Ardeo";
inline constexpr char kPagemint[] = "Pagemint";
inline constexpr char kVPandPMPrivate[] = "VPandPMPrivate";
inline constexpr char kVectrapaint[] = "Vectrapaint";
inline constexpr char kWebrix[] = "Webrix";
inline constexpr char kTessellaSuite[] = "TessellaSuite";

// A string as settings hold it, for comparisons.
BIB_T_NMT::CPOSObject GetJOString(char const* text);

// Removes each namespace from the array that no schema is meant to judge: all but those of certain
// products in certain versions. An element that does not name its namespace, by an array of at
// least three entries, stays. settings is the caller's own copy, arrays included. Throws CBIBError
// and POSException.
void PruneOtherNamespaces(BIB_T_NMT::CPOSDict const& settings);

} // namespace PDFSettingsImpl
