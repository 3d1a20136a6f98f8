#include "bib/BIBSharedBuffer.h"
#include "bib/POSCollections.h"
#include "bib/POSScalars.h"
#include "source/PDFSettingsObject.h"
#include "tests/support/BoundClient.h"

#include <string>

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSNumber;
using namespace std::string_literals;

using ValueCheck = support::BoundClientTest;

TEST_F(ValueCheck, WritesItsMessageOnlyWhereAByteIsToSpare) {
    auto const level = &PDFSettingsObject::CompatibilityLevelValidator;
    auto const depth = &PDFSettingsObject::ImageDepthValidator;
    // Checks and what they leave in a buffer of that size.
    std::pair<decltype(level), std::string> const kCases[] = {
        {level, std::string(27, 'x')},
        {level, "Invalid CompatibilityLevel\0x"s},
        {depth, std::string(19, 'x')},
        {depth, "Invalid ImageDepth\0x"s},
    };
    for (auto const& [check, expected] : kCases) {
        BIB_T_NMT::TBIBSharedBuffer<char> const buffer(expected.size(), nullptr);
        std::fill_n(buffer.GetBuffer(), expected.size(), 'x');
        EXPECT_EQ(0, check(CPOSNumber(99), nullptr, buffer.PeekSharedBuffer(), nullptr));
        EXPECT_EQ(expected, std::string(buffer.GetBuffer(), expected.size()));
    }
    EXPECT_EQ(0, depth(nullptr, nullptr, nullptr, nullptr));
}

TEST_F(ValueCheck, MakesNoRecordOfAMessageWithoutASpace) {
    CPOSArray const errors;
    {
        POSValidatorErrorProc const receiver(errors);
        POSValidatorErrorProc::errproc(" text");
        EXPECT_EQ(
            "out of memory", support::WhatItThrows([] { POSValidatorErrorProc::errproc("Key"); }));
    }
    EXPECT_EQ(nullptr, POSValidatorErrorProc::gPOSValidatorErrorProc);
    EXPECT_EQ(1U, errors.Count());
}

} // namespace PDFSettingsImpl
