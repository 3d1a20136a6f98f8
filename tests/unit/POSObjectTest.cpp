#include "bib/POSObject.h"

#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "tests/support/BoundClient.h"

#include <functional>

namespace BIB_T_NMT {

using support::WhatItThrows;

using POSHandles = support::BoundClientTest;

// Expects a downcast of object to fail, with that message or quietly.
template <class Handle>
void ExpectNoDowncast(CPOSObject const& object, std::string const& name) {
    EXPECT_EQ("downcast from CPOSObject to " + name + " failed", WhatItThrows([&object] {
                  Handle const handle(object, /*quiet=*/false);
              }));
    EXPECT_FALSE(Handle(object, /*quiet=*/true).IsValid());
}

TEST_F(POSHandles, SayWhatADowncastWasOf) {
    CPOSNumber const number(1.0);
    for (auto const& object : {CPOSObject(), CPOSObject(number)}) {
        ExpectNoDowncast<CPOSString>(object, "CPOSString");
        ExpectNoDowncast<CPOSUnicodeString>(object, "CPOSUnicodeString");
        ExpectNoDowncast<CPOSBinData>(object, "CPOSBinData");
        ExpectNoDowncast<CPOSArray>(object, "CPOSArray");
        ExpectNoDowncast<CPOSDict>(object, "CPOSDict");
    }
    ExpectNoDowncast<CPOSNumber>(CPOSDict(), "CPOSNumber");
}

TEST_F(POSHandles, ComeFromTextOrACopy) {
    char const* error = nullptr;
    CPOSDict const dict(
        CPOSObject::CreateFromText("< A 1 >", &error, /*quiet=*/false), /*quiet=*/false);
    EXPECT_EQ(nullptr, error);
    EXPECT_TRUE(dict == dict.Clone());
    EXPECT_TRUE(dict != CPOSDict());
    EXPECT_FALSE(CPOSObject::CreateFromText("< A", &error, /*quiet=*/true).IsValid());
    EXPECT_NE(nullptr, error);
    EXPECT_EQ("CreateFromText failed", WhatItThrows([] {
                  CPOSObject::CreateFromText("< A", nullptr, /*quiet=*/false);
              }));
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("CPOSObject::Clone failed", WhatItThrows([&] { dict.Clone(); }));
    bibrt::ResetFailures();
    WithoutRows({"POSObjectStatics.DebugDump"}, [] {
        EXPECT_FALSE(CPOSObject::CreateFromText("< A 1 >", nullptr, /*quiet=*/false).IsValid());
    });
}

TEST_F(POSHandles, ReadCollectionsByTypeQuietlyOrNot) {
    CPOSDict const dict;
    dict.Put("number", CPOSNumber(1.0));
    dict.Put("dict", CPOSDict());
    CPOSArray const array;
    array.Append(CPOSNumber(1.0));
    array.Append(CPOSNumber(2.0));
    array.Remove(0);
    EXPECT_EQ(2.0, CPOSNumber(array[0], /*quiet=*/false).Get());
    dict.Put("array", array);
    CBIBStringAtom const number("number");
    struct {
        char const* fThrows;
        std::function<void(bool)> fRead;
    } const kCases[] = {
        {"CPOSDict::Get failed", [&](bool quiet) { dict.Get("none", quiet); }},
        {"CPOSDict::Get failed", [&](bool quiet) { dict.GetDict("none", quiet); }},
        {"CPOSDict::Get failed", [&](bool quiet) { dict.GetArray("none", quiet); }},
        {"downcast from CPOSObject to CPOSDict failed",
         [&](bool quiet) { dict.GetDict("array", quiet); }},
        {"downcast from CPOSObject to CPOSArray failed",
         [&](bool quiet) { dict.GetArray("number", quiet); }},
        {"downcast from CPOSObject to CPOSUnicodeString failed",
         [&](bool quiet) { dict.GetUnicodeString(number, quiet); }},
        {"CPOSArray::GetAt subscript failed", [&](bool quiet) { array.GetAt(1, quiet); }},
        {"nothing", [&](bool quiet) { dict.GetDict("dict", quiet); }},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fThrows, WhatItThrows([&row] { row.fRead(false); }));
        EXPECT_EQ("nothing", WhatItThrows([&row] { row.fRead(true); })) << row.fThrows;
    }
    EXPECT_EQ(3U, dict.NumKeys());
}

} // namespace BIB_T_NMT
