#include "ValidatorFixture.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace runtimetest {
namespace {

long Refuse(
    POSObject* /*value*/, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* data) {
    auto const& buffers = Rows<_t_BIBSharedBuffInterface>();
    auto const* const text = static_cast<char const*>(data);
    std::strncpy(
        static_cast<char*>(buffers.GetBuffer(message)), text ? text : "", buffers.GetSize(message));
    return 0;
}

// Accepts the number that is at data.
long AcceptOnly(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* /*message*/, void const* data) {
    return Ours().NumberOf(value) == *static_cast<double const*>(data) ? 1 : 0;
}

class ValidatorTest : public RuntimeTest {};

struct Case {
    char const* fRule;
    char const* fSettings;
    char const* fMessages;
};

// Rules of a setting K, its values, or nothing for none, and the messages.
constexpr Case kRuleCases[] = {
    {"boolean", "", "K expected a boolean, found nothing"},
    {"name", "true", "K expected a name, found the boolean true"},
    {"name", "$text", "K expected a name, found the string (text)"},
    {"string", "text", "K expected a string, found the name text"},
    {"string", "#FEFF", "K expected a string, found the hexadecimal string <FEFF>"},
    {"hexstring", "#FEFF", ""},
    {"hexstring", "[]", "K expected a hexadecimal string, found an array"},
    {"array", "<>", "K expected an array, found a dictionary"},
    {"any", "", "K expected a value, found nothing"},
    {"T", "< n 1 o 1 unknown x >", "K/o expected a boolean, found the number 1"},
    {"< type number max 10 >", "10.5", "K expected a number of at most 10, found 10.5"},
    {"< type number max 0.1 >", "0.100000001490116", ""},
    {"< type number in [ 1.2 1.3 ] >", "1.29999995231628", ""},
    {"< type name in [ a b ] >", "B", "K /B is not one of /a, /b"},
    {"< type string in [ a (b c) ] >", "($b c)", ""},
    {"< type string in [ a (b c) ] >", "$b", "K (b) is not one of (a), (b c)"},
    {"< type boolean in [ true ] >", "false", "K false is not one of true"},
    {"< type number in [ 5 ] min 7 >", "6", "K 6 is not one of 5"},
    {"< type array count 1 check Six >", "[ 1 2 ]", "K expected 1 element, found 2"},
    {"< type array count 1 of T >",
     "[ <> 1 ]",
     "K expected 1 element, found 2|K/0/n expected a number, found nothing"
     "|K/1 expected a dictionary, found the number 1"},
    {"< type array of < type array of integer > >",
     "[ [ 1 ] [ 2 x ] ]",
     "K/1/1 expected an integer, found the name x"},
    {"Six", "6", ""},
    {"Six", "Foo", "K expected a value that the check Six allows, found the name Foo"},
    {"Speaks", "5", "K says so"},
    {"< typ number >",
     "1",
     "K cannot be validated: the schema says typ, which is not a key of a rule"},
    {"U", "<>", "K cannot be validated: the schema says an array, which is not a dictionary"}};

TEST_F(ValidatorTest, EachKindOfRuleHasItsMessage) {
    double const six = 6;
    for (Case const& row : kRuleCases) {
        SCOPED_TRACE(std::string(row.fRule) + " on " + row.fSettings);
        Validator const validator(
            std::string("< S < K ") + row.fRule +
            " > T < n number optional < o boolean n name > > U < optional [] > >");
        validator.Register("Six", &Refuse);
        validator.Register("Six", &AcceptOnly, &six);
        validator.Register("Speaks", &Refuse, "says so");
        std::string const entry = *row.fSettings ? std::string("K ") + row.fSettings : "";
        EXPECT_EQ(validator.Validate(NewSettings("< " + entry + " >")), row.fMessages);
    }
}

constexpr Case kSettingRuleCases[] = {
    {"when < T true > then < N < min 2 > > doc (why not)",
     "T true N 1",
     "N expected a number of at least 2, found 1 where T is true: why not"},
    {"when < T true > then < N < min 2 > >", "T false N 1", ""},
    {"when < T true > then < N < min 2 > > severity warning", "T true N 1", ""},
    // A missing setting counts as its default.
    {"when < D b > then < N 1 >", "N 2", "N expected 1, found 2"},
    {"when < D b > then < D a >", "", ""},
    {"when < N < in [ 1 2 ] > W (a b) > then < M/Q x >",
     "N 2 W (a b) M < Q y >",
     "M/Q expected /x, found /y where N is 2 and W is /a b"},
    {"when < W < not x > > then < P x >",
     "W secret P $y",
     "P expected (x), found (y) where W is not /x"},
    {"ordered [ N I ]", "N 2.00000001 I 2", ""},
    {"ordered [ N I ] when < I < min 0 > >", "N 3 I -1", ""},
    {"ordered [ N I ] when < I < min 0 > W a >",
     "N 3 I 2 W a",
     "N expected at most 2, the value of I, found 3 where W is /a"},
    {"disjoint [ A B ]", "A [ a b ] B [ c b ]", "A/1 expected no element of B, found /b"},
    {"disjoint [ A B ]", "A [ 1 ] B [ 2 ]", ""},
    {"then < N 1 > doc (\303\251\n!)", "N 2", "N expected 1, found 2: \xC3\xA9 !"},
    {"exclusive [ T U ]", "T true U true", "T expected at most one to be true, found T and U"},
    // What is wrong by itself is reported once.
    {"then < N < min 1 max 2 > >", "N 3", "N expected a number from 1 to 2, found 3"},
    // A schema that was not checked does no harm.
    {"then < N < min a in 3 > X 1 > ordered [ N ] disjoint 3 when 3", "N 3", ""},
    {"then < W < min 1 > A [ 1 ] >", "W a A [ 2 ]", ""}};

TEST_F(ValidatorTest, RulesBetweenSettingsRejectWhatCannotStandTogether) {
    for (Case const& row : kSettingRuleCases) {
        SCOPED_TRACE(std::string(row.fRule) + " on " + row.fSettings);
        Validator const validator(
            "< PDFSettings < optional < N number I integer A array B array T boolean U boolean W "
            "name D < type name default b > M M P string > > M < optional < Q name > > rules [ < " +
            std::string(row.fRule) + " > ] >");
        EXPECT_EQ(
            validator.Validate(
                NewSettings(std::string("< ") + row.fSettings + " >"), "PDFSettings"),
            row.fMessages);
    }
}

// A host's procedure may change what is validated.
POSDict* gEmptied = nullptr;
void RemoveLists(char const* message) {
    Validator::Keep(message);
    for (char const* const key : {"A", "B"}) {
        Dicts().Remove(gEmptied, Atom(key));
    }
}

TEST_F(ValidatorTest, RulesBetweenSettingsSurviveChangesByTheHost) {
    Validator const validator(
        "< PDFSettings < optional < A array B array > > rules [ < disjoint [ A B ] > ] >");
    Held const settings(As<POSDict>(NewSettings("< A [ one two ] B [ one two ] >")));
    gEmptied = settings;
    EXPECT_EQ(
        validator.Methods().Validate(
            validator.Self(), settings.Value(), Atom("PDFSettings"), &RemoveLists),
        0);
    EXPECT_EQ(
        Validator::Joined(Validator::TakeMessages()),
        "A/0 expected no element of B, found /one|A/1 expected no element of B, found /two");
}

TEST_F(ValidatorTest, RulesBetweenSettingsAreOfTheMainStructureAlone) {
    Validator const validator(
        "< Other < optional < N number P PDFSettings > > PDFSettings < optional "
        "< N number > > rules [ < then < N 1 > > ] >");
    EXPECT_EQ(validator.Validate(NewSettings("< N 2 P < N 2 > >"), "Other"), "");
    EXPECT_EQ(validator.Validate(NewSettings("< N 2 >"), "PDFSettings"), "N expected 1, found 2");
}

TEST_F(ValidatorTest, ACheckHasSpaceForAMessageThatItNeedNotEnd) {
    std::string const text(300, 'm');
    Validator const validator("< S < L D > >");
    validator.Register("D", &Refuse, text.c_str());
    EXPECT_EQ(validator.Validate(NewSettings("< L 1 >")), "L " + std::string(256, 'm'));
}

TEST_F(ValidatorTest, TheValueItselfStandsUnderTheStructuresName) {
    Validator const validator("< S <> (a b) < k number > >");
    EXPECT_EQ(validator.Validate(NewSettings("3")), "S expected a dictionary, found the number 3");
    EXPECT_EQ(
        validator.Validate(NewSettings("<>"), "T"),
        "T cannot be validated: the schema has no such structure");
    EXPECT_EQ(validator.Validate(NewSettings("<>"), "a b"), "k expected a number, found nothing");
}

TEST_F(ValidatorTest, LongWordsAreCutShort) {
    EXPECT_EQ(
        Validator("< S < K number > >")
            .Validate(NewSettings("< K " + std::string(100, 'w') + " >")),
        "K expected a number, found the name " + std::string(60, 'w') + "...");
}

TEST_F(ValidatorTest, ValuesThatNoTextHasAreRefused) {
    Validator const validator("< S < K < type number min -1 max 1 > > I < K integer > >");
    Held const settings(Dicts().NewPOSDict());
    auto const messagesOf = [&](POSObject* value, char const* structure = "S") {
        Put(settings, "K", value);
        return validator.Validate(settings.Value(), structure);
    };
    for (POSObject* const value :
         {As<POSObject>(conformance::NewMemoryStream(Ours())),
          As<POSObject>(Rows<_t_POSUnicodeStringInterface>().NewPOSUnicodeString(nullptr)),
          As<POSObject>(Rows<_t_POSBinDataInterface>().NewPOSBinData("other", nullptr, 0))}) {
        EXPECT_EQ(
            messagesOf(value), "K expected a number from -1 to 1, found another kind of value");
    }
    auto const number = [](double value) { return Ours().NewNumber(value); };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(messagesOf(number(std::nan(""))), "K expected a number from -1 to 1, found nan");
    EXPECT_EQ(messagesOf(number(kInfinity)), "K expected a number from -1 to 1, found inf");
    EXPECT_EQ(messagesOf(number(kInfinity), "I"), "K expected an integer, found the number inf");
}

// Gives up all that the host holds.
POSDict* gSettings = nullptr;
POSValidator* gValidator = nullptr;
int gDestroyed = 0;
void DropAll(char const* message) {
    Validator::Keep(message);
    Containers().Release(As<BIBContainer>(std::exchange(gSettings, nullptr)));
    Containers().Release(As<BIBContainer>(std::exchange(gValidator, nullptr)));
    EXPECT_EQ(gDestroyed, 0);
}

TEST_F(ValidatorTest, EverythingIsAliveUntilTheEnd) {
    auto* const schema = As<POSDict>(Ours().Parse("< S < a number b number > >"));
    gValidator = Rows<_t_POSStructValidatorInterface>().NewPOSStructValidator(schema);
    auto const methods = Ours().Methods<_t_POSValidatorVirtualInterface>(gValidator);
    gSettings = Dicts().NewPOSDict();
    TakeMessage(Containers().RegisterInstance(
        As<BIBContainer>(gSettings), &gDestroyed, Atom("HostThing"), [](void*) { ++gDestroyed; }));
    Containers().AddRef(As<BIBContainer>(gSettings));
    Containers().AddRef(As<BIBContainer>(gValidator));
    EXPECT_EQ(methods.Validate(gValidator, As<POSObject>(gSettings), Atom("S"), &DropAll), 0);
    EXPECT_EQ(std::exchange(gDestroyed, 0), 1);
    EXPECT_EQ(
        Validator::Joined(Validator::TakeMessages()),
        "a expected a number, found nothing|b expected a number, found nothing");
}

TEST_F(ValidatorTest, AnArrayThatLostAnElementIsNoArray) {
    Validator const validator("< S < K array > >");
    Held const settings(As<POSDict>(NewSettings("< K [ 1 ] >")));
    Held const number(Ours().NewNumber(1));
    auto* const array = As<POSArray>(Dicts().Get(settings, Atom("K")));
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    for (int i = 0; i < 1000; ++i) {
        Arrays().Append(array, number);
    }
    bibrt::ResetFailures();
    EXPECT_EQ(
        validator.Validate(settings.Value()), "K expected an array, found another kind of value");
}

TEST_F(ValidatorTest, AStructureThatIsItsOwnOptionalPartEnds) {
    Held const schema(As<POSDict>(Ours().Parse("< S < a number > >")));
    Held const structure(As<POSDict>(Dicts().Get(schema, Atom("S"))));
    Put(structure, "optional", structure.Value());
    {
        Validator const validator(static_cast<POSDict*>(schema));
        EXPECT_EQ(validator.Validate(NewSettings("< a 1 >")), "");
        EXPECT_NE(validator.CheckSchema(), "");
    }
    Dicts().Remove(structure, Atom("optional"));
}

TEST_F(ValidatorTest, AValueThatContainsItselfEndsTheValidation) {
    Validator const validator("< S < optional < a S b S n number > > >");
    Held const settings(As<POSDict>(NewSettings("< n x >")));
    Put(settings, "a", settings.Value());
    Put(settings, "b", settings.Value());
    EXPECT_EQ(validator.Validate(settings.Value()), "a cannot be validated: it contains itself");
    Dicts().Remove(settings, Atom("a"));
    Dicts().Remove(settings, Atom("b"));
}

} // namespace
} // namespace runtimetest
