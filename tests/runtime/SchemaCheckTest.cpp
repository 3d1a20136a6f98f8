#include "ValidatorFixture.h"

namespace runtimetest {
namespace {

// Not called while a schema is checked.
long Refuse(
    POSObject* /*value*/, BIBStringAtom* /*key*/, BIBSharedBuffer* /*m*/, void const* /*data*/) {
    return 0;
}

class SchemaCheckTest : public RuntimeTest {};

struct SchemaCase {
    char const* fSchema;
    char const* fMessages;
};

constexpr SchemaCase kWholeCases[] = {
    {"<>", ""},
    {"< I < optional < Q < type number min 0.00001 max 10 default 0.9 doc (Coarseness) > "
     "H < type array count 4 of < type integer min 1 max 4 > > > > "
     "PDFSettings < Level name optional < Embed boolean Image I > > >",
     ""},
    {"< number <> PDFSettings [] >",
     "number says number, which is a kind and cannot name a structure"
     "|PDFSettings says an array, which is not a structure"},
    {"< S < optional 3 > >", "S/optional says the number 3, which is not a dictionary"},
    {"< S < a T optional < a name optional any > > T <> >",
     "S/optional/a says a, which is also a required setting"},
    {"< T <> PDFSettings < a < type array of < type array of U > > > U < b U > V < b W > W <> >",
     "T cannot be reached from PDFSettings|V cannot be reached from PDFSettings"
     "|W cannot be reached from PDFSettings"},
    {"< S <> T <> >", "T cannot be reached from S"},
    {"< S < optional < a < type number min x > b < type T foo 1 > > > T < (c d) [] > >",
     "S/optional/a/min says the name x, which is not a number"
     "|S/optional/b/foo says foo, which is not a key of a rule"
     "|T/c_d says an array, which is neither a word nor a dictionary"},
    {"< groups [ < label L settings [ a b ] > ] PDFSettings < a any optional < b any > > >", ""},
    {"< PDFSettings < a any optional < b any > > groups [ x < label [ ] settings [ a c a 1 ] > "
     "< label L settings 3 > ] >",
     "groups/0 says a group that is not a dictionary with a label and an array settings"
     "|groups/1/label says an array, which is not a text"
     "|groups/1/settings/1 says the name c, which is not a setting"
     "|groups/1/settings/2 says the name a, which is in a group already"
     "|groups/1/settings/3 says the number 1, which is not a setting"
     "|groups/2 says a group that is not a dictionary with a label and an array settings"},
    {"< groups < a any > PDFSettings < b groups > >", ""}};

// A rule between settings; messages are behind rules/0.
constexpr SchemaCase kSettingRuleCases[] = {
    {"< when < N < min 1 max 2 > M/D (a b) > then < W < in [ a b ] > > doc text severity warning >",
     ""},
    {"< ordered [ N I ] >", ""},
    {"< disjoint [ A B ] severity error >", ""},
    {"3", " says the number 3, which is not a dictionary"},
    {"< when < T true > >", " says not exactly one of then, ordered, disjoint and exclusive"},
    {"< then < T true > exclusive [ T U ] >",
     " says not exactly one of then, ordered, disjoint and exclusive"},
    {"< ordered [ N ] >", "/ordered is not an array of two settings"},
    {"< exclusive [ T ] >", "/exclusive is not an array of settings"},
    {"< ordered [ N W ] >", "/ordered says the name W, which is not a setting of type number"},
    {"< then 3 >", "/then says the number 3, which is not a dictionary"},
    {"< then < X 1 > >", "/then/X says a setting that the schema does not have"},
    {"< then < N a > >", "/then/N says the name a, which is not a value of this setting"},
    {"< then < N < in [ 1 a ] > > >",
     "/then/N/in says the name a, which is not a value of this setting"},
    {"< then < N < min a > > >", "/then/N/min says the name a, which is not a number"},
    {"< then < N < min 2 max 1 > > >", "/then/N has a min that is greater than its max"},
    {"< then < N < least 1 > > >", "/then/N/least says least, which is not a key of a test"},
    {"< then < N/A 1 > >", "/then/N/A says a setting that the schema does not have"},
    {"< then < > >", "/then has no test"},
    {"< then < N < in [ ] > > >", "/then/N/in is not an array of values"},
    {"< then < W < min 1 > > >", "/then/W/min applies only to numbers"},
    {"< exclusive [ T T ] >", "/exclusive says the name T twice"},
    {"< then < N 1 > severity hint >",
     "/severity says the name hint, which is not error or warning"}};

// The rule of S/K; messages are behind that path.
constexpr SchemaCase kRuleCases[] = {
    {"< type C check C default x doc (some help) label (A label) >", ""},
    {"< type integer min 1 max 4 in [ 1 2 ] default 2 >", ""},
    {"< type array count 2 of < type number max 3 default 1 > default [ 1 2 ] >", ""},
    {"< type string in [ a ] default a >", ""},
    {"< type hexstring default (FEFF) >", ""},
    {"< type number check R default 1 >", ""},
    {"3", " says the number 3, which is neither a word nor a dictionary"},
    {"<>", " has no type"},
    {"numbr", " says numbr, which is not a kind, structure or registered check"},
    {"< type name check D >", "/check says D, which is not a registered check"},
    {"< type name min 1 >", "/min says min, which applies only to numbers"},
    {"< type array in [ 1 ] >",
     "/in says in, which applies only to numbers, names, strings and booleans"},
    {"< type number min 3 max 3 >", ""},
    {"< type number min 3 max 2 >", "/min says a min of 3, which is greater than the max of 2"},
    {"< type number in [] >", "/in says an empty array, which allows nothing"},
    {"< type integer in [ 1 1.5 ] >", "/in allows the number 1.5, which is of another type"},
    {"< type array count 1.5 >", "/count says the number 1.5, which is not a whole number from 0"},
    {"< type name doc 3 >", "/doc says the number 3, which is not a text"},
    {"< type number max 3 default 4 >", "/default expected a number of at most 3, found 4"},
    {"< type array of S default [ < K [] > x ] >",
     "/default/1 expected a dictionary, found the name x"},
    {"< type array of < type array of < type nam > > >",
     "/of/of/type says nam, which is not a kind, structure or registered check"}};

// Checks a schema that has the text of each case between a head and an end. The messages are behind
// a place, if there are any.
template <std::size_t kCount>
void ExpectMessages(
    SchemaCase const (&cases)[kCount],
    std::string const& place,
    std::string const& head,
    std::string const& end) {
    for (SchemaCase const& row : cases) {
        SCOPED_TRACE(row.fSchema);
        Validator const validator(std::string(head).append(row.fSchema).append(end));
        validator.Register("C", &Refuse);
        validator.Register("R", &Refuse);
        EXPECT_EQ(validator.CheckSchema(), *row.fMessages ? place + row.fMessages : "");
    }
}

TEST_F(SchemaCheckTest, TellsEachFaultWithItsPlace) {
    ExpectMessages(kWholeCases, "", "", "");
    ExpectMessages(kRuleCases, "S/K", "< S < K ", " > >");
    ExpectMessages(
        kSettingRuleCases,
        "rules/0",
        "< S < N number optional < I integer A < type array of name > B array T boolean "
        "U < type boolean > W name M M > > M < optional < D string > > rules [ ",
        " ] >");
}

TEST_F(SchemaCheckTest, ARuleThatContainsItselfIsReportedAndValidatesWhatEnds) {
    Held const schema(As<POSDict>(NewSettings("< S < K < type array of < type array > > > >")));
    auto* const rule = As<POSDict>(Dicts().DeepGet(schema, Atom("S/K/of")));
    Put(rule, "of", Dicts().DeepGet(schema, Atom("S/K")));
    {
        Validator const validator(schema);
        EXPECT_EQ(validator.CheckSchema(), "S/K says a rule that contains itself");
        EXPECT_EQ(
            validator.Validate(NewSettings("< K [ [ [] 1 ] ] >")),
            "K/0/1 expected an array, found the number 1");
    }
    Dicts().Remove(rule, Atom("of"));
}

} // namespace
} // namespace runtimetest
