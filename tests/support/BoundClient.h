// The client layer, bound to the in-process runtime through a lookup that can hide rows.
#pragma once

#include "bib/BIBClient.h"
#include "bib/BIBError.h"
#include "bib/POSObject.h"
#include "runtime/objects/Diagnostics.h"
#include "source/EncodingConverter.h"
#include "tests/support/Describe.h"
#include "tests/support/LookupDouble.h"

#include <gtest/gtest.h>
#include <string>

namespace support {

// Each test starts with a fresh binding and ends with everything released.
class BoundClientTest : public testing::Test {
protected:
    BoundClientTest() { EXPECT_TRUE(BIB_T_NMT::BIBClientInit(&LookupDouble::Lookup)); }

    ~BoundClientTest() override {
        MoveCounter(); // the next test binds the rows anew
        BIB_T_NMT::BIBClientTerminate();
        EXPECT_EQ(fLiveBefore, bibrt::CountLive());
    }

    // A value in one line.
    static std::string Describe(BIB_T_NMT::CPOSObject const& value) {
        static conformance::Runtime const kRuntime(&BIBRuntimeLookup);
        return Describer(kRuntime)(value);
    }

    // Makes every bound table stale.
    static void MoveCounter() { ++*BIB_T_NMT::gBIBUnregisterCount; }

    bibrt::LiveCounts fLiveBefore = bibrt::CountLive();
    LookupDouble fLookup;
};

// What work throws: the text of a CBIBError or POSException, "nothing", or "something else".
template <class Work>
std::string WhatItThrows(Work work) {
    try {
        work();
    } catch (BIB_T_NMT::CBIBError const& error) {
        return error.what();
    } catch (BIB_T_NMT::POSException const& exception) {
        return exception.fMessage;
    } catch (...) {
        return "something else";
    }
    return "nothing";
}

// The bytes of a path.
inline std::string TextOf(UnicodeEncodingNS::Unicode16 const& path) {
    auto const bytes = UnicodeEncodingNS::CreateUnicode8(path).GetString(
        UnicodeEncodingNS::kByteOrderNative, /*terminate=*/false, /*mark=*/false);
    return std::string(reinterpret_cast<char const*>(bytes.GetBuffer()), bytes.GetSize());
}

inline UnicodeEncodingNS::Unicode16 PathOf(std::string const& text) {
    return UnicodeEncodingNS::CreateUnicode16(UnicodeEncodingNS::Unicode8(text.c_str()));
}

} // namespace support
