#include <string>

#include "bib/BIBSharedBuffer.h"
#include "bib/BIBStringAtom.h"
#include "bib/POSDict.h"
#include "bib/POSDictIterator.h"
#include "bib/POSNumber.h"
#include "bib/POSString.h"
#include "bib/POSValidator.h"
#include "source/PDFSettingsObject.h"
#include "source/POSValidatorErrorProc.h"
#include "tests/support/BoundClient.h"

namespace PDFSettingsImpl {

using BIB_T_NMT::CPOSArray;
using BIB_T_NMT::CPOSDict;
using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::CPOSString;
using support::WhatItThrows;

class ValueCheck : public support::BoundClientTest {
protected:
    using Check = long (*)(POSObject*, BIBStringAtom*, BIBSharedBuffer*, void const*);

    // What a check leaves in a buffer of so many bytes, all 'x' before; "accepted" if it accepts.
    static std::string Ask(Check check, CPOSObject const& value, unsigned long size) {
        BIB_T_NMT::TBIBSharedBuffer<char> const buffer(size, nullptr);
        std::fill_n(buffer.GetBuffer(), size, 'x');
        if (check(value, nullptr, buffer.PeekSharedBuffer(), nullptr) != 0) {
            return "accepted";
        }
        return std::string(buffer.GetBuffer(), size);
    }
};

TEST_F(ValueCheck, AcceptsItsNumbersAlone) {
    auto const level = &PDFSettingsObject::CompatibilityLevelValidator;
    auto const depth = &PDFSettingsObject::ImageDepthValidator;
    struct {
        Check fCheck;
        double fValue;
        bool fIsAccepted;
    } const kCases[] = {
        {level, 1.2, true},
        {level, 1.7, true},
        {level, 1.3000000001, true},
        {level, 1.31, false},
        {level, 1.1, false},
        {level, 1.8, false},
        {level, 2, false},
        {level, 1e300, false},
        {level, std::stod("nan"), false},
        {level, static_cast<double>(1.6F), true},
        {depth, -1, true},
        {depth, 1, true},
        {depth, 2, true},
        {depth, 4, true},
        {depth, 8, true},
        {depth, 16, true},
        {depth, 0, false},
        {depth, 3, false},
        {depth, 32, false},
        {depth, 8.0000001, false},
    };
    for (auto const& row : kCases) {
        CPOSNumber const value(row.fValue);
        EXPECT_EQ(row.fIsAccepted ? 1 : 0, row.fCheck(value, nullptr, nullptr, nullptr))
            << row.fValue;
    }
    EXPECT_EQ(0, level(CPOSString("1.3"), nullptr, nullptr, nullptr));
    EXPECT_EQ(0, depth(nullptr, nullptr, nullptr, nullptr));
}

TEST_F(ValueCheck, WritesItsMessageOnlyWhereAByteIsToSpare) {
    using namespace std::string_literals;
    auto const level = &PDFSettingsObject::CompatibilityLevelValidator;
    auto const depth = &PDFSettingsObject::ImageDepthValidator;
    CPOSNumber const bad(99);
    EXPECT_EQ(std::string(27, 'x'), Ask(level, bad, 27));
    EXPECT_EQ("Invalid CompatibilityLevel\0x"s, Ask(level, bad, 28));
    EXPECT_EQ(std::string(19, 'x'), Ask(depth, bad, 19));
    EXPECT_EQ("Invalid ImageDepth\0x"s, Ask(depth, bad, 20));
    EXPECT_EQ("Invalid ImageDepth\0x"s, Ask(depth, CPOSString("x"), 20));
}

class ValidatorMessages : public support::BoundClientTest {};

TEST_F(ValidatorMessages, SplitAtTheirFirstSpace) {
    struct {
        char const* fMessage;
        char const* fKey;
        char const* fText;
    } const kCases[] = {
        {"Key some text", "Key", "some text"},
        {"Key ", "Key", ""},
        {" text", "", "text"},
        {"Key  text ", "Key", " text "},
    };
    CPOSArray const errors;
    {
        POSValidatorErrorProc const receiver(errors);
        EXPECT_EQ(&receiver, POSValidatorErrorProc::gPOSValidatorErrorProc);
        for (auto const& row : kCases) {
            POSValidatorErrorProc::errproc(row.fMessage);
        }
        EXPECT_EQ("out of memory", WhatItThrows([] { POSValidatorErrorProc::errproc("Key"); }));
    }
    EXPECT_EQ(nullptr, POSValidatorErrorProc::gPOSValidatorErrorProc);
    ASSERT_EQ(std::size(kCases), errors.Count());
    for (unsigned int i = 0; i < std::size(kCases); ++i) {
        CPOSDict const record(errors[i], /*quiet=*/false);
        EXPECT_STREQ(kCases[i].fKey, CPOSString(record.Get("Key", false), false).Get());
        EXPECT_STREQ(kCases[i].fText, CPOSString(record.Get("ErrorMsg", false), false).Get());
    }
}

// A validator's Validate that records what it is given.
std::string gHandedOver;
long gAnswer = 0;
char const* gMessage = nullptr;
long RecordValidate(
    POSValidator* /*self*/,
    POSObject* object,
    BIBStringAtom* key,
    POSValidatorErrorCallback errorProc) {
    CPOSDict const settings(CPOSObject(object), /*quiet=*/false);
    BIB_T_NMT::CPOSDictIterator const cursor(settings);
    for (cursor.Begin(); !cursor.IsDone(); cursor.Next()) {
        gHandedOver += cursor.CurKey() + std::string(" ");
    }
    gHandedOver += BIB_T_NMT::CBIBStringAtom(key, /*adopt=*/false).c_str();
    if (gMessage != nullptr) {
        errorProc(gMessage);
    }
    return gAnswer;
}

TEST_F(ValidatorMessages, AloneTellTheOutcomeOfWhatTheSchemaKnows) {
    CPOSDict const settings(
        CPOSObject::CreateFromText(
            "< A 1 Unknown 2 B 3 optional 4 C 5 >", nullptr, /*quiet=*/false),
        /*quiet=*/false);
    char const* const schema = "< PDFSettings < B any optional < A any > > >";
    PDFSettingsObject const object(settings, schema);
    BIB_T_NMT::CPOSStructValidator const validator(
        CPOSDict(CPOSObject::CreateFromText(schema, nullptr, /*quiet=*/false), /*quiet=*/false));
    auto* const methods = BIB_T_NMT::CPOSValidator::GetVTabList().GetVTab(
        validator, &BIB_T_NMT::ConstructPOSValidatorVirtualInterfaceMethods);
    methods->Validate = &RecordValidate;
    struct {
        long fAnswer;
        char const* fMessage;
        unsigned long fErrors;
    } const kCases[] = {{0, nullptr, 0}, {1, nullptr, 0}, {0, "A b", 1}, {1, "A b", 1}};
    for (auto const& row : kCases) {
        gHandedOver.clear();
        gAnswer = row.fAnswer;
        gMessage = row.fMessage;
        EXPECT_EQ(row.fErrors, object.IsPDFSettingsValid().Count());
        EXPECT_EQ("A B optional PDFSettings", gHandedOver);
    }
    gMessage = "without-a-space";
    EXPECT_EQ("out of memory", WhatItThrows([&] { object.IsPDFSettingsValid(); }));
    EXPECT_EQ(nullptr, POSValidatorErrorProc::gPOSValidatorErrorProc);
    EXPECT_EQ(5U, settings.NumKeys());
}

TEST_F(ValidatorMessages, HaveNoReceiverAfterAnExceptionOnAnyWay) {
    struct {
        char const* fSchema;
        char const* fThrows;
    } const kCases[] = {
        {"<", "downcast from CPOSObject to CPOSDict failed"},
        {"[ ]", "downcast from CPOSObject to CPOSDict failed"},
        {"< PDFSettings < > >", "CPOSDict::Get failed"},
        {"< PDFSettings 1 >", "downcast from CPOSObject to CPOSDict failed"},
        {"< >", "CPOSDict::Get failed"},
    };
    for (auto const& row : kCases) {
        PDFSettingsObject const object((CPOSDict()), row.fSchema);
        EXPECT_EQ(row.fThrows, WhatItThrows([&] { object.IsPDFSettingsValid(); })) << row.fSchema;
        EXPECT_EQ(nullptr, POSValidatorErrorProc::gPOSValidatorErrorProc);
    }
    CPOSDict const settings;
    settings.Put("Itself", settings);
    PDFSettingsObject const object(settings, "< PDFSettings < optional < > > >");
    EXPECT_EQ("CPOSObject::Clone failed", WhatItThrows([&] { object.IsPDFSettingsValid(); }));
    EXPECT_EQ(nullptr, POSValidatorErrorProc::gPOSValidatorErrorProc);
    settings.Remove("Itself");
}

} // namespace PDFSettingsImpl
