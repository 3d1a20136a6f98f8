// Settings validated and changed by their schema.

#include "tests/support/LookupDouble.h"
#include "tests/support/Settings.h"

#include <algorithm>

namespace support {

namespace {

// The text of settings that hold entries.
std::string File(std::string const& entries) {
    return "<<" + entries + " >>setalembicorparams";
}

// A schema whose settings may all be missing.
std::string Optional(std::string const& rules, std::string const& structures = "") {
    return "< PDFSettings < optional < " + rules + " > > " + structures + " >";
}

std::string const kUnusable = "unknown BIB error";

} // namespace

class Validation : public SettingsTest {
protected:
    // Records as "[<<Key /key ErrorMsg /text>>]", or what was reported.
    std::string DescribeErrors(POSArray* errors) {
        if (errors == nullptr) {
            std::string const report = fLog.fMessages.empty() ? "no report" : fLog.fMessages.back();
            fLog.fMessages.clear();
            return report;
        }
        auto const owned = Own(reinterpret_cast<POSObject*>(errors));
        return Describer(fRuntime)(owned);
    }

    // The errors of settings with entries by schema.
    std::string Validate(std::string const& entries, std::string const& schema) {
        auto const settings = NewSettings(File(entries), schema.c_str());
        std::string const before = Describe(settings);
        std::string const errors = DescribeErrors(fIsPDFSettingsValid(settings));
        EXPECT_EQ(before, Describe(settings));
        return errors;
    }

    std::string Set(PDFSettings* settings, std::string const& changes) {
        auto const dict = NewValue<POSDict>(changes);
        return DescribeErrors(fSetSettings(settings, dict));
    }
};

TEST_F(Validation, GivesARecordForEachMessage) {
    std::string const schema = "< PDFSettings < Must number optional < A number B boolean > > >";
    std::pair<char const*, char const*> const kCases[] = {
        {"/Must 1 /A 2 /B true", "[]"},
        {"", "[<<Key /Must ErrorMsg /expected a number, found nothing>>]"},
        {"/Must 1 /B 3 /A /x",
         "[<<Key /A ErrorMsg /expected a number, found the name x>> "
         "<<Key /B ErrorMsg /expected a boolean, found the number 3>>]"},
        {"/Must 1 /NotInTheSchema (anything)", "[]"},
    };
    for (auto const& [entries, errors] : kCases) {
        EXPECT_EQ(errors, Validate(entries, schema)) << "of: " << entries;
    }
}

TEST_F(Validation, AcceptsCertainLevelsAndDepthsAlone) {
    std::string const schema =
        Optional("CompatibilityLevel CompatibilityLevelParams ColorImageDepth ImageDepthParams");
    std::string const level = "[<<Key /CompatibilityLevel ErrorMsg /Invalid CompatibilityLevel>>]";
    std::string const depth = "[<<Key /ColorImageDepth ErrorMsg /Invalid ImageDepth>>]";
    struct {
        char const* fKey;
        std::initializer_list<char const*> fNumbers;
        std::string fErrors; // of each
    } const kCases[] = {
        {"/CompatibilityLevel ",
         {"1.2", "1.3", "1.4", "1.5", "1.6", "1.7", "1.3000000001", "1.60000002384185791"},
         "[]"},
        {"/CompatibilityLevel ", {"1.1", "1.8", "1.31", "2", "-1.3", "(1.3)"}, level},
        {"/ColorImageDepth ", {"-1", "1", "2", "4", "8", "16"}, "[]"},
        {"/ColorImageDepth ", {"0", "3", "32", "-2", "8.0000001", "/8"}, depth},
    };
    for (auto const& [key, numbers, errors] : kCases) {
        for (char const* const number : numbers) {
            EXPECT_EQ(errors, Validate(std::string(key) + number, schema)) << number;
        }
    }
}

// A namespace that is validated has an error here: it lacks a required setting.
TEST_F(Validation, ValidatesTheNamespacesOfCertainProductsAlone) {
    std::string const schema = Optional(
        "OtherNamespaces < type array of Validated >", "Validated < Must number optional < > >");
    std::string const missing = " ErrorMsg /expected a number, found nothing>>";
    // With the number of errors.
    std::pair<char const*, long> const kCases[] = {
        {"<< /Namespace [ (Ardeo) (Pagemint) (4.0) ] >>", 1},
        {"<< /Namespace [ (Ardeo) (Pagemint) (6.0) ] >>", 0},
        {"<< /Namespace [ (Ardeo) (Pagemint) 4.0 ] >>", 0},
        {"<< /Namespace [ (Ardeo) (VPandPMPrivate) (x) ] >>", 1},
        {"<< /Namespace [ (Ardeo) (Vectrapaint) /x ] >>", 1},
        {"<< /Namespace [ (Ardeo) (Webrix) (8.0) ] >>", 1},
        {"<< /Namespace [ (Ardeo) (TessellaSuite) (2.0) ] >>", 1},
        {"<< /Namespace [ (Ardeo) /Pagemint (4.0) ] >>", 0},
        {"<< /Namespace [ /Ardeo (Pagemint) (4.0) ] >>", 0},
        {"<< /Namespace [ (Ardeo) (Pagemint) (4.0) (more) ] >>", 1},
        {"<< /Namespace [ (x) (x) (x) (more) ] >>", 0},
        {"<< /Namespace [ (x) (x) ] >>", 1},
        {"<< /Namespace (x) >>", 1},
        {"<< /Other [ (x) (x) (x) ] >>", 1},
        {"12 [ ]", 2},
    };
    for (auto const& [namespaces, count] : kCases) {
        std::string const errors =
            Validate(std::string("/OtherNamespaces [ ") + namespaces + " ]", schema);
        // Each record begins with <<.
        EXPECT_EQ(2 * count, std::ranges::count(errors, '<')) << namespaces << ": " << errors;
    }
    EXPECT_EQ(
        "[<<Key /OtherNamespaces/0/Must" + missing + " <<Key /OtherNamespaces/1/Must" + missing +
            "]",
        Validate(
            "/OtherNamespaces [ << /Namespace [ (x) (x) (x) ] >> << /A 1 >> "
            "<< /Namespace [ (Ardeo) (x) (x) ] >> << /Namespace [ (Ardeo) (Webrix) (8.0) ] >> "
            "<< /Namespace [ (x) (x) (x) ] >> ]",
            schema));
    EXPECT_EQ(
        "[<<Key /OtherNamespaces ErrorMsg /expected an array, found the number 1>>]",
        Validate("/OtherNamespaces 1", schema));
}

TEST_F(Validation, NeedsAUsableSchemaAndChangesNothingWithoutOne) {
    for (char const* const schema :
         {"",
          "not closed <",
          "12",
          "< >",
          "< Other < optional < > > >",
          "< PDFSettings < A number > >",
          "< PDFSettings 1 >",
          "< PDFSettings < optional 1 > >"}) {
        auto const settings = NewSettings(File("/A 1"), schema);
        EXPECT_EQ(kUnusable, DescribeErrors(fIsPDFSettingsValid(settings))) << schema;
        EXPECT_EQ(kUnusable, Set(settings, "< A 2 >")) << schema;
        EXPECT_EQ("<<A 1>>", Describe(settings)) << schema;
    }
}

TEST_F(Validation, FailsForSettingsThatCannotBeCopied) {
    auto const dict = NewValue<POSDict>("< A 1 >");
    auto const settings = Own(fNewFromDict(dict, Optional("").c_str()));
    Put(dict, "Itself", dict.get());
    EXPECT_EQ(kUnusable, DescribeErrors(fIsPDFSettingsValid(settings)));
    EXPECT_EQ(kUnusable, Set(settings, "< A 2 >"));
    Remove(dict, "Itself");
    EXPECT_EQ("<<A 1>>", Describe(settings));
}

TEST_F(Validation, ChangesAllSettingsOrNone) {
    std::string const schema = Optional("A number B boolean C any");
    auto const settings = NewSettings(File("/A 1 /Unknown /x /B true"), schema.c_str());
    struct {
        char const* fChanges;
        char const* fErrors;
        char const* fSettings;
    } const kCases[] = {
        {"< C [ 1 ] A 2 New 3 >", "[]", "<<A 2 Unknown /x B /true C [1] New 3>>"},
        {"< >", "[]", "<<A 2 Unknown /x B /true C [1] New 3>>"},
        {"< A 3 B 4 >",
         "[<<Key /B ErrorMsg /expected a boolean, found the number 4>>]",
         "<<A 2 Unknown /x B /true C [1] New 3>>"},
        {"< B false >", "[]", "<<A 2 Unknown /x B /false C [1] New 3>>"},
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(row.fErrors, Set(settings, row.fChanges)) << row.fChanges;
        EXPECT_EQ(row.fSettings, Describe(settings)) << row.fChanges;
    }
    EXPECT_EQ("invalid container", DescribeErrors(fSetSettings(settings, nullptr)));
}

TEST_F(Validation, ValidatesTheWholeSetWhateverIsChanged) {
    auto const settings = NewSettings(File("/A /x"), Optional("A number").c_str());
    EXPECT_EQ(
        "[<<Key /A ErrorMsg /expected a number, found the name x>>]", Set(settings, "< B 1 >"));
    EXPECT_EQ("<<A /x>>", Describe(settings));
    EXPECT_EQ("[]", Set(settings, "< A 1 >"));
    EXPECT_EQ("<<A 1>>", Describe(settings));
}

TEST_F(Validation, SharesTheValuesOfAChangeAndReplacesTheDictionary) {
    auto const settings = NewSettings(File("/A 1"), Optional("C any").c_str());
    auto const before = Own(fGetSettings(settings));
    auto const changes = NewValue<POSDict>("< C [ 1 ] >");
    EXPECT_EQ("[]", DescribeErrors(fSetSettings(settings, changes)));
    EXPECT_NE(before, fGetSettings(settings));
    EXPECT_EQ("<<A 1>>", Describe(before));
    auto const valueOf = [&](POSDict* dict) { return fRuntime.Get(dict, "C"); };
    EXPECT_EQ(valueOf(changes), valueOf(fGetSettings(settings)));
    EXPECT_NE(std::string::npos, Text(settings).find("/C [\r\n    1\r\n  ]\r\n"));
}

// A runtime with a validator of its own, which keeps what it is given, and with cursors that show
// which dictionary is walked to find what the validator is not to see. It is there before the
// component starts on it.
class ObservedRuntime {
protected:
    ObservedRuntime() {
        fLookup.Replace("BIBContainerInterface.GetMethod", &GetMethod);
        fLookup.Replace(
            "POSDictIteratorInterface.NewPOSDictIterator", +[](POSDict* dict) {
                fWalked = dict;
                return Real().Cursors().NewPOSDictIterator(dict);
            });
    }

    static conformance::Runtime const& Real() {
        static conformance::Runtime const kRuntime(&BIBRuntimeLookup);
        return kRuntime;
    }

    static BIBError* GetMethod(
        void** result,
        BIBContainer const* container,
        BIBStringAtom* name,
        BIBStringAtom* procType,
        long optional) {
        if (std::string(Real().Atoms().GetCString(name)) == "Validate") {
            *result = reinterpret_cast<void*>(&Validate);
            return nullptr;
        }
        return Real().Containers().GetMethod(result, container, name, procType, optional);
    }

    static long
    Validate(POSValidator*, POSObject* object, BIBStringAtom* key, POSValidatorErrorCallback) {
        fSeen = Real().Atoms().GetCString(key) + (" " + Describer(Real())(object));
        return 1;
    }

    static inline std::string fSeen;
    static inline POSDict* fWalked = nullptr;

private:
    LookupDouble fLookup;
};

class ValidatorOfARuntime : protected ObservedRuntime, public SettingsTest {
protected:
    ValidatorOfARuntime() : SettingsTest(&LookupDouble::Lookup) {}
};

TEST_F(ValidatorOfARuntime, SeesKnownSettingsAloneInACopy) {
    auto const settings = NewSettings(
        File("/No 1 /A 2 /Nor 3 /B 4 /optional 5 /OtherNamespaces [ << /Namespace [ 1 2 3 ] >> ]"),
        "< PDFSettings < B any optional < A any OtherNamespaces any > > >");
    auto const errors = Own(fIsPDFSettingsValid(settings));
    EXPECT_EQ("PDFSettings <<A 2 B 4 optional 5 OtherNamespaces []>>", fSeen);
    EXPECT_EQ(fGetSettings(settings), fWalked);
}

} // namespace support
