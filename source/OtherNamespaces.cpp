#include "source/OtherNamespaces.h"

#include "source/JoboptionsReader.h"

#include <algorithm>
#include <cstring>

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;

namespace PDFSettingsImpl {

namespace {

// The namespaces that are judged. Without a version, all of a product are.
struct JudgedNamespace {
    char const* fProduct;
    char const* fVersion;
};

constexpr JudgedNamespace kJudged[] = {
    {kPagemint, "4.0"},
    {kPagemint, "5.0"},
    {kVPandPMPrivate, nullptr},
    {kVectrapaint, nullptr},
    {kWebrix, "8.0"},
    {kTessellaSuite, "2.0"},
};

bool IsJudged(CPOSArray const& name) {
    CPOSObject const maker = name.GetAt(0, /*quiet=*/false);
    CPOSObject const product = name.GetAt(1, /*quiet=*/false);
    CPOSObject const version = name.GetAt(2, /*quiet=*/false);
    return maker == GetJOString(kArdeo) && std::ranges::any_of(kJudged, [&](auto const& judged) {
               return product == GetJOString(judged.fProduct) &&
                      (judged.fVersion == nullptr || version == GetJOString(judged.fVersion));
           });
}

bool MustGo(CPOSObject const& element) {
    CPOSDict const dict(element, /*quiet=*/true);
    if (!dict.IsValid()) {
        return false;
    }
    CPOSArray const name = dict.GetArray("Namespace", /*quiet=*/true);
    return name.IsValid() && name.Count() > 2 && !IsJudged(name);
}

} // namespace

CPOSObject GetJOString(char const* text) {
    return JoboptionsParserUtils::MakeBinData(
        JoboptionsParserUtils::kJoboptionsStringBinType, text, text + std::strlen(text));
}

void PruneOtherNamespaces(CPOSDict const& settings) {
    CPOSArray const namespaces = settings.GetArray("OtherNamespaces", /*quiet=*/true);
    if (!namespaces.IsValid()) {
        return;
    }
    // From the end, so that a removal moves nothing that is still to come.
    for (unsigned long position = namespaces.Count(); position > 0; --position) {
        if (MustGo(namespaces.GetAt(position - 1, /*quiet=*/false))) {
            namespaces.Remove(position - 1);
        }
    }
}

} // namespace PDFSettingsImpl
