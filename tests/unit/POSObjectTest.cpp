#include "bib/POSObject.h"

#include <functional>

#include "bib/POSArray.h"
#include "bib/POSBinData.h"
#include "bib/POSDict.h"
#include "bib/POSDictIterator.h"
#include "bib/POSNumber.h"
#include "bib/POSString.h"
#include "bib/POSUnicodeString.h"
#include "tests/support/BoundClient.h"

namespace BIB_T_NMT {

using support::WhatItThrows;

using POSHandles = support::BoundClientTest;

namespace {

// Downcasts object to each class in turn: the class's letter if the handle is valid.
std::string Kinds(CPOSObject const& object) {
    std::string kinds;
    kinds += CPOSNumber(object, /*quiet=*/true).IsValid() ? "n" : "";
    kinds += CPOSString(object, /*quiet=*/true).IsValid() ? "s" : "";
    kinds += CPOSUnicodeString(object, /*quiet=*/true).IsValid() ? "u" : "";
    kinds += CPOSBinData(object, /*quiet=*/true).IsValid() ? "b" : "";
    kinds += CPOSArray(object, /*quiet=*/true).IsValid() ? "a" : "";
    kinds += CPOSDict(object, /*quiet=*/true).IsValid() ? "d" : "";
    return kinds;
}

template <class Handle>
std::string WhatADowncastThrows(CPOSObject const& object) {
    return WhatItThrows([&object] { Handle const handle(object, /*quiet=*/false); });
}

} // namespace

TEST_F(POSHandles, AreOfOneKindEach) {
    unsigned short const units[] = {0x41, 0};
    unsigned char const bytes[] = {0, 1};
    EXPECT_EQ("n", Kinds(CPOSNumber(1.5)));
    EXPECT_EQ("s", Kinds(CPOSString("text")));
    EXPECT_EQ("u", Kinds(CPOSUnicodeString(units)));
    EXPECT_EQ("b", Kinds(CPOSBinData("Type", bytes, 2)));
    EXPECT_EQ("a", Kinds(CPOSArray()));
    EXPECT_EQ("d", Kinds(CPOSDict()));
    EXPECT_EQ("", Kinds(CPOSObject()));
}

TEST_F(POSHandles, SayWhatADowncastWasOf) {
    for (auto const& object : {CPOSObject(), CPOSObject(CPOSNumber(1.0)).Clone()}) {
        auto const message = [](char const* name) {
            return std::string("downcast from CPOSObject to ") + name + " failed";
        };
        if (!object.IsValid()) {
            EXPECT_EQ(message("CPOSNumber"), WhatADowncastThrows<CPOSNumber>(object));
        }
        EXPECT_EQ(message("CPOSString"), WhatADowncastThrows<CPOSString>(object));
        EXPECT_EQ(message("CPOSUnicodeString"), WhatADowncastThrows<CPOSUnicodeString>(object));
        EXPECT_EQ(message("CPOSBinData"), WhatADowncastThrows<CPOSBinData>(object));
        EXPECT_EQ(message("CPOSArray"), WhatADowncastThrows<CPOSArray>(object));
        EXPECT_EQ(message("CPOSDict"), WhatADowncastThrows<CPOSDict>(object));
    }
}

TEST_F(POSHandles, CloneAndCompare) {
    CPOSDict const dict;
    dict.Put("A", CPOSNumber(1.0));
    CPOSDict const clone(dict.Clone(), /*quiet=*/false);
    EXPECT_TRUE(dict == clone);
    clone.Put("B", CPOSNumber(2.0));
    EXPECT_TRUE(dict != clone);
    EXPECT_EQ(1U, dict.NumKeys());
    bibrt::FailAllocation(1, /*andAllLater=*/false);
    EXPECT_EQ("CPOSObject::Clone failed", WhatItThrows([&] { dict.Clone(); }));
    bibrt::ResetFailures();
}

TEST_F(POSHandles, ComeFromText) {
    char const* error = nullptr;
    CPOSDict const dict(
        CPOSObject::CreateFromText("< A 1 >", &error, /*quiet=*/false), /*quiet=*/false);
    EXPECT_TRUE(dict.HasKey("A"));
    EXPECT_EQ(nullptr, error);
    EXPECT_FALSE(CPOSObject::CreateFromText("< A", &error, /*quiet=*/true).IsValid());
    EXPECT_NE(nullptr, error);
    EXPECT_FALSE(CPOSObject::CreateFromText("< A", nullptr, /*quiet=*/true).IsValid());
    EXPECT_EQ("CreateFromText failed", WhatItThrows([] {
                  CPOSObject::CreateFromText("< A", nullptr, /*quiet=*/false);
              }));
    fLookup.Hide("POSObjectStatics.DebugDump");
    MoveCounter();
    gFinishedInit = false;
    EXPECT_FALSE(CPOSObject::CreateFromText("< A 1 >", nullptr, /*quiet=*/false).IsValid());
    gFinishedInit = true;
    fLookup.Show("POSObjectStatics.DebugDump");
}

TEST_F(POSHandles, ReadArraysWithinTheirRange) {
    CPOSArray const array;
    array.Append(CPOSNumber(1.0));
    array.Append(CPOSNumber(2.0));
    array.Remove(0);
    EXPECT_EQ(1U, array.Count());
    EXPECT_EQ(2.0, CPOSNumber(array[0], /*quiet=*/false).Get());
    EXPECT_FALSE(array.GetAt(1, /*quiet=*/true).IsValid());
    EXPECT_EQ("CPOSArray::GetAt subscript failed", WhatItThrows([&] { array[1]; }));
}

TEST_F(POSHandles, ReadDictionariesByTypeQuietlyOrNot) {
    CPOSDict const dict;
    dict.Put("number", CPOSNumber(1.0));
    dict.Put("dict", CPOSDict());
    dict.Put("array", CPOSArray());
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
        {"nothing", [&](bool quiet) { dict.GetDict("dict", quiet); }},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fThrows, WhatItThrows([&row] { row.fRead(false); }));
        EXPECT_EQ("nothing", WhatItThrows([&row] { row.fRead(true); })) << row.fThrows;
    }
    EXPECT_FALSE(dict.GetArray("number", /*quiet=*/true).IsValid());
}

TEST_F(POSHandles, KeepValuesAliveAndReplaceThem) {
    CPOSDict const dict;
    EXPECT_TRUE(dict.IsValid());
    EXPECT_TRUE(dict.IsEmpty());
    dict.Put("A", CPOSNumber(1.0));
    dict.Put("B", CPOSNumber(2.0));
    dict.Put("A", CPOSNumber(3.0));
    EXPECT_EQ(2U, dict.NumKeys());
    EXPECT_EQ(3.0, CPOSNumber(dict.Get("A", /*quiet=*/false), /*quiet=*/false).Get());
    dict.Remove("A");
    EXPECT_FALSE(dict.HasKey("A"));
    CPOSDictIterator const iterator(dict);
    iterator.Begin();
    EXPECT_STREQ("B", iterator.CurKey());
    iterator.Next();
    EXPECT_TRUE(iterator.IsDone());
}

} // namespace BIB_T_NMT
