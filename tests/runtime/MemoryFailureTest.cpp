// Every operation that needs memory, with each of its allocations failing in turn.
#include "ValidatorFixture.h"

#include <functional>
#include <list>

namespace runtimetest {
namespace {

class MemoryFailureTest : public RuntimeTest {
protected:
    // Runs attempt with its first allocation failing, then its second, until it succeeds untouched;
    // every failure must be reported and leave nothing alive. Answers how many allocations were
    // made to fail.
    static unsigned long FailEach(std::function<bool()> const& attempt) {
        for (unsigned long n = 1;; ++n) {
            bibrt::LiveCounts const before = bibrt::CountLive();
            unsigned long const start = bibrt::CountAllocations();
            bibrt::FailAllocation(n, /*andAllLater=*/true);
            bool const succeeded = attempt();
            bibrt::ResetFailures();
            EXPECT_EQ(bibrt::CountLive(), before) << "allocation " << n;
            if (bibrt::CountAllocations() - start < n) {
                EXPECT_TRUE(succeeded);
                return n - 1;
            }
            EXPECT_FALSE(succeeded) << "allocation " << n;
        }
    }
    static bool Discard(POSObject* value) {
        return Containers().DeleteUnownedContainer(As<BIBContainer>(value)) != 0;
    }
    static constexpr char const* kText =
        "< a 1 b (text) c [ 1 2 [ x ] < k v > ] d <> e 1 f 2 g 3 h 4 i 5 j 6 k 7 >";
};

TEST_F(MemoryFailureTest, NewCollectionsAndCursor) {
    Held const dict(Dicts().NewPOSDict());
    EXPECT_EQ(FailEach([] { return Discard(As<POSObject>(Dicts().NewPOSDict())); }), 1U);
    EXPECT_EQ(FailEach([] { return Discard(As<POSObject>(Arrays().NewPOSArray())); }), 1U);
    EXPECT_EQ(
        FailEach([&] { return Discard(As<POSObject>(Cursors().NewPOSDictIterator(dict))); }), 1U);
}

TEST_F(MemoryFailureTest, NewScalars) {
    unsigned short const units[] = {'a', 0};
    auto const& strings = Rows<_t_POSStringInterface>();
    auto const& unicode = Rows<_t_POSUnicodeStringInterface>();
    EXPECT_EQ(FailEach([] { return Discard(NewNumber(1)); }), 1U);
    EXPECT_EQ(FailEach([&] { return Discard(As<POSObject>(strings.NewPOSString("a"))); }), 1U);
    EXPECT_EQ(
        FailEach([&] { return Discard(As<POSObject>(unicode.NewPOSUnicodeString(units))); }), 1U);
}

TEST_F(MemoryFailureTest, CreateFromTextSaysSo) {
    unsigned long const failed = FailEach([] {
        char const* message = nullptr;
        POSObject* const value = Rows<_t_POSObjectStatics>().CreateFromText(kText, &message);
        EXPECT_STREQ(value ? "out of memory" : message, "out of memory");
        return Discard(value);
    });
    EXPECT_GT(failed, 20U);
}

TEST_F(MemoryFailureTest, Clone) {
    Held const value(Rows<_t_POSObjectStatics>().CreateFromText(kText, nullptr));
    EXPECT_GT(FailEach([&] { return Discard(Values().Clone(value)); }), 20U);
}

TEST_F(MemoryFailureTest, IsEqual) {
    Held const value(Rows<_t_POSObjectStatics>().CreateFromText(kText, nullptr));
    Held const same(Values().Clone(value));
    EXPECT_GT(FailEach([&] { return Values().IsEqual(value, same) != 0; }), 0U);
}

TEST_F(MemoryFailureTest, DebugDumpWritesAllOrNothing) {
    Held const value(Rows<_t_POSObjectStatics>().CreateFromText(kText, nullptr));
    EXPECT_GT(
        FailEach([&] {
            bool isWhole = false;
            Held const stream(NewMemoryStream());
            if (stream) {
                isWhole = TakeMessage(Rows<_t_POSObjectStatics>().DebugDump(value, stream)) == "";
                bibrt::ResetFailures();
                EXPECT_EQ(isWhole, StreamMethods(stream).Seek(1, kBIBSeekFromStart).empty());
            }
            return isWhole;
        }),
        5U);
}

TEST_F(MemoryFailureTest, NewValidatorAndRegisteredCheck) {
    auto const& rows = Rows<_t_POSStructValidatorInterface>();
    Held const schema(NewSettings("< S <> >"));
    EXPECT_EQ(
        FailEach([&] {
            return Discard(As<POSObject>(rows.NewPOSStructValidator(As<POSDict>(schema.Value()))));
        }),
        1U);
    Atom const name("C");
    auto const accept = [](POSObject*, BIBStringAtom*, BIBSharedBuffer*, void const*) -> long {
        return 1;
    };
    Held const validator(rows.NewPOSStructValidator(As<POSDict>(schema.Value())));
    unsigned long const blocks = bibrt::CountLive().fBlocks;
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(rows.RegisterCallbackProc(validator, name, accept, nullptr), 0);
    EXPECT_EQ(bibrt::CountLive().fBlocks, blocks);
    bibrt::ResetFailures();
    EXPECT_NE(rows.RegisterCallbackProc(validator, name, accept, nullptr), 0);
}

// What runs out of memory while it is validated has not passed.
// The last message of a validator.
char const* gLastMessage = nullptr;
void TakeMessage(char const* message) {
    gLastMessage = std::strchr(message, ' ') ? "an error" : "out-of-memory";
}

TEST_F(MemoryFailureTest, ValidateAndValidateSchema) {
    Validator validator(
        "< S < a < type array of S > optional < c C d < type name default x > > > >");
    validator.Register(
        "C", [](POSObject*, BIBStringAtom*, BIBSharedBuffer*, void const*) -> long { return 1; });
    Held const settings(NewSettings("< a [ < a [] > < a [ < a [] c 1 > ] c 1 > ] c 2 >"));
    Atom const name("S");
    auto const validate = [](bool isClean) {
        EXPECT_STREQ(isClean ? "" : "out-of-memory", std::exchange(gLastMessage, ""));
        return isClean;
    };
    gLastMessage = "";
    EXPECT_GT(
        FailEach([&] {
            return validate(
                validator.fMethods.Validate(validator, settings, name, &TakeMessage) != 0);
        }),
        3U);
    EXPECT_GT(
        FailEach([&] {
            auto const& rows = Rows<_t_POSStructValidatorInterface>();
            return validate(rows.ValidateSchema(validator, &TakeMessage) != 0);
        }),
        3U);
}

// A collection that lost a value: no reference, no clone, and neither for what it is put into.
void CheckInvalid(POSObject* collection) {
    auto* const container = As<BIBContainer>(collection);
    EXPECT_EQ(Containers().AddRef(container), 0);
    EXPECT_EQ(Values().Clone(collection), nullptr);
    Held const outer(Arrays().NewPOSArray());
    EXPECT_EQ(Arrays().Append(outer, collection), 0);
    EXPECT_EQ(Containers().AddRef(outer.Container()), 0);
    EXPECT_NE(Containers().DeleteUnownedContainer(container), 0);
}

TEST_F(MemoryFailureTest, ACollectionThatLosesAValueBecomesInvalid) {
    Held const number(NewNumber(1));
    POSDict* const dict = Dicts().NewPOSDict();
    POSArray* const array = Arrays().NewPOSArray();
    Atom const key("key");
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(Dicts().Put(dict, key, number), 0);
    EXPECT_EQ(Arrays().Append(array, number), 0);
    bibrt::ResetFailures();
    CheckInvalid(As<POSObject>(dict));
    CheckInvalid(As<POSObject>(array));
}

TEST_F(MemoryFailureTest, GrowingADictionaryFailsCleanly) {
    Held const number(NewNumber(1));
    std::list<Atom> keys; // they need memory too
    for (char const letter : std::string("abcdefghijklmnop")) {
        keys.emplace_back(std::string(1, letter));
    }
    for (unsigned long n = 1; n <= 10; ++n) {
        POSDict* const dict = Dicts().NewPOSDict();
        bibrt::FailAllocation(n, /*andAllLater=*/true);
        bool hasAll = true;
        for (Atom const& key : keys) {
            bool const isPut = Dicts().Put(dict, key, number) != 0;
            EXPECT_EQ(Dicts().Get(dict, key) != nullptr, isPut);
            hasAll = hasAll && isPut;
        }
        bibrt::ResetFailures();
        EXPECT_EQ(Containers().AddRef(As<BIBContainer>(dict)) != 0, hasAll);
        Containers().DecrementWithoutDelete(As<BIBContainer>(dict));
        Containers().DeleteUnownedContainer(As<BIBContainer>(dict));
    }
}

} // namespace
} // namespace runtimetest
