#include "source/OtherNamespaces.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "source/JoboptionsReader.h"

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSObject;

namespace PDFSettingsImpl {

namespace {

// A product whose namespaces are judged. Without versions, all of them are.
struct JudgedProduct {
    char const* fName;
    char const* fVersions[2];
};

constexpr JudgedProduct kJudgedProducts[] = {
    {kPagemint, {"4.0", "5.0"}},
    {kVPandPMPrivate, {}},
    {kVectrapaint, {}},
    {kWebrix, {"8.0"}},
    {kTessellaSuite, {"2.0"}},
};

bool IsJudgedVersion(JudgedProduct const& product, CPOSObject const& version) {
    auto const isIt = [&version](char const* judged) {
        return judged != nullptr && version == GetJOString(judged);
    };
    return product.fVersions[0] == nullptr || std::ranges::any_of(product.fVersions, isIt);
}

bool IsJudged(CPOSArray const& name) {
    CPOSObject const maker = name.GetAt(0, /*quiet=*/false);
    CPOSObject const productName = name.GetAt(1, /*quiet=*/false);
    CPOSObject const version = name.GetAt(2, /*quiet=*/false);
    if (maker != GetJOString(kArdeo)) {
        return false;
    }
    auto const* const product =
        std::ranges::find_if(kJudgedProducts, [&productName](JudgedProduct const& candidate) {
            return productName == GetJOString(candidate.fName);
        });
    return product != std::end(kJudgedProducts) && IsJudgedVersion(*product, version);
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
