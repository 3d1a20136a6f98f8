// Every operation that needs memory, with each of its allocations failing in turn.
#include "ValidatorFixture.h"

#include <functional>

namespace runtimetest {
namespace {

class MemoryFailureTest : public RuntimeTest {
protected:
    // Runs attempt with its first allocation failing, then its second, until it succeeds untouched;
    // every failure must be reported and leave nothing alive. At least so many must fail.
    static void FailEach(std::function<bool()> const& attempt, unsigned long atLeast = 1) {
        for (unsigned long n = 1;; ++n) {
            bibrt::LiveCounts const before = bibrt::CountLive();
            unsigned long const start = bibrt::CountAllocations();
            bibrt::FailAllocation(n, /*andAllLater=*/true);
            bool const succeeded = attempt();
            bibrt::ResetFailures();
            EXPECT_EQ(bibrt::CountLive(), before) << "allocation " << n;
            if (bibrt::CountAllocations() - start < n) {
                EXPECT_TRUE(succeeded);
                EXPECT_GE(n - 1, atLeast);
                return;
            }
            EXPECT_FALSE(succeeded) << "allocation " << n;
        }
    }
    static constexpr char const* kText =
        "< a 1 b (text) c [ 1 2 [ x ] < k v > ] d <> e 1 f 2 g 3 h 4 i 5 j 6 k 7 >";
};

template <class Make, class Release>
std::function<bool()> Maker(Make make, Release release) {
    return [=] {
        auto* const made = make();
        release(made);
        return made != nullptr;
    };
}

TEST_F(MemoryFailureTest, NewValuesAndCachesAreNone) {
    Held const dict(Dicts().NewPOSDict());
    auto const& strings = Rows<_t_POSUnicodeStringInterface>();
    auto const& binary = Rows<_t_POSBinDataInterface>();
    auto const& validators = Rows<_t_POSStructValidatorInterface>();
    std::function<void*()> const makers[] = {
        [] { return Dicts().NewPOSDict(); },
        [] { return Arrays().NewPOSArray(); },
        [&] { return Cursors().NewPOSDictIterator(dict); },
        [] { return Ours().NewNumber(1); },
        [] { return Ours().NewString("some text that is longer than a small one"); },
        [&] { return strings.NewPOSUnicodeString(nullptr); },
        [&] { return binary.NewPOSBinData("type", nullptr, 0); },
        [&] { return validators.NewPOSStructValidator(dict); }};
    for (auto const& make : makers) {
        SCOPED_TRACE(&make - makers);
        FailEach([&] { return Discard(make()); });
    }
    auto const& caches = Rows<_t_BIBCacheInterface>();
    FailEach(Maker(caches.NewCacheID, caches.Release));
    FailEach(Maker(caches.NewCacheSet, caches.DeleteCacheSet));
    FailEach(Maker(caches.NewCachePurge, caches.DeleteCachePurge));
}

void Increment(void* counter) {
    ++*static_cast<int*>(counter);
}

// What the caller gave stays the caller's, and a result is null.
TEST_F(MemoryFailureTest, WhatIsGivenStaysTheCallers) {
    int freed = 0;
    int round = 0;
    auto const& buffers = Rows<_t_BIBSharedBuffInterface>();
    BIBClientStreamProcs const procs = {nullptr, nullptr, nullptr, nullptr, nullptr, &Increment};
    Atom const name("HostThing");
    std::function<bool()> const attempts[] = {
        Maker(
            [&] {
                std::string const text = "message " + std::to_string(++round);
                return Errors().NewError(text.c_str(), text.c_str() + 1, 0, &freed, &Increment);
            },
            Errors().Release),
        Maker(
            [&] { return buffers.NewBuffer(4, &freed, &Increment, nullptr, nullptr); },
            buffers.Release),
        [&] {
            BIBContainer* container = As<BIBContainer>(&freed);
            auto* const error = Containers().NewFullContainer(
                &container, &freed, name, &Increment, name, nullptr, nullptr, nullptr);
            EXPECT_EQ(TakeMessage(error), container ? "" : "out of memory");
            return Discard(container);
        },
        [&] {
            BIBContainer* container = nullptr;
            TakeMessage(Containers().NewContainer(&container, name));
            bool const isRegistered =
                container &&
                TakeMessage(Containers().RegisterInstance(container, &freed, name, &Increment))
                    .empty();
            return Discard(container) && isRegistered;
        },
        [&] {
            BIBPositionableStream* stream = nullptr;
            TakeMessage(Ours().Streams().NewClientPositionableStream(&stream, &procs, &freed));
            return Discard(stream);
        }};
    for (auto const& attempt : attempts) {
        FailEach(attempt);
        EXPECT_EQ(std::exchange(freed, 0), 1) << &attempt - attempts;
    }
}

TEST_F(MemoryFailureTest, AMethodIsNotFound) {
    Held const number(Ours().NewNumber(1));
    Atom const name("NoSuchMethodAtAll");
    void* method = &method;
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    BIBError* const error = Containers().GetMethod(&method, number.Container(), name, name, 0);
    EXPECT_EQ(error, Errors().GetCoreError(kBRVMemoryError));
    EXPECT_EQ(method, nullptr);
}

TEST_F(MemoryFailureTest, ReadingCloningAndComparing) {
    auto const read = [] {
        char const* message = nullptr;
        POSObject* const value = Objects().CreateFromText(kText, &message);
        EXPECT_STREQ(value ? "out of memory" : message, "out of memory");
        return Discard(value);
    };
    FailEach(read, 21);
    Held const value(Ours().Parse(kText));
    FailEach([&] { return Discard(Values().Clone(value)); }, 21);
    Held const same(Values().Clone(value));
    FailEach([&] { return Values().IsEqual(value, same) != 0; });
}

TEST_F(MemoryFailureTest, DebugDumpWritesAllOrNothing) {
    Held const value(Ours().Parse(kText));
    MemoryStream const stream;
    stream.Write(std::string(100, 'x'));
    auto const dump = [&] {
        unsigned long const before = stream.Mark();
        bool const isWhole = TakeMessage(Objects().DebugDump(value, stream.Self())).empty();
        EXPECT_EQ(isWhole, stream.Mark() > before);
        return isWhole;
    };
    FailEach(dump, 3);
}

// The last message of a validator.
char const* gLastMessage = nullptr;
void KeepMessage(char const* message) {
    gLastMessage = std::strchr(message, ' ') ? "an error" : "out-of-memory";
}

// What runs out of memory while it is validated has not passed.
TEST_F(MemoryFailureTest, ValidateAndValidateSchema) {
    auto const& rows = Rows<_t_POSStructValidatorInterface>();
    Validator const validator(
        "< S < a < type array of S > optional < c C d < type name default x > > > >");
    Held const settings(NewSettings("< a [ < a [] > < a [ < a [] c 1 > ] c 1 > ] c 2 >"));
    Atom const name("S");
    Atom const check("C");
    auto const accept = [](POSObject*, BIBStringAtom*, BIBSharedBuffer*, void const*) -> long {
        return 1;
    };
    EXPECT_NE(rows.RegisterCallbackProc(validator.Self(), check, accept, nullptr), 0);
    gLastMessage = "";
    auto const isClean = [](long result) {
        EXPECT_STREQ(result != 0 ? "" : "out-of-memory", std::exchange(gLastMessage, ""));
        return result != 0;
    };
    auto const validate = [&] {
        auto const& methods = validator.Methods();
        return isClean(methods.Validate(validator.Self(), settings, name, &KeepMessage));
    };
    auto const validateSchema = [&] {
        return isClean(rows.ValidateSchema(validator.Self(), &KeepMessage));
    };
    FailEach(validate, 3);
    FailEach(validateSchema, 3);
    // One that lost a check passes nothing any more.
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(rows.RegisterCallbackProc(validator.Self(), name, accept, nullptr), 0);
    bibrt::ResetFailures();
    EXPECT_FALSE(validateSchema());
}

// A collection that lost a value: no reference, no clone, and neither for what it is put into.
void CheckInvalid(POSObject* collection) {
    auto* const container = As<BIBContainer>(collection);
    EXPECT_EQ(Containers().AddRef(container), 0);
    EXPECT_EQ(Values().Clone(collection), nullptr);
    POSArray* const outer = Arrays().NewPOSArray();
    EXPECT_EQ(Arrays().Append(outer, collection), 0);
    EXPECT_EQ(Containers().AddRef(As<BIBContainer>(outer)), 0);
    EXPECT_TRUE(Discard(outer));
    EXPECT_TRUE(Discard(collection));
}

TEST_F(MemoryFailureTest, ACollectionThatLosesAValueBecomesInvalidAndTheValueStays) {
    POSObject* const unowned = Ours().NewNumber(1);
    POSDict* const dict = Dicts().NewPOSDict();
    POSArray* const array = Arrays().NewPOSArray();
    Atom const key("key");
    unsigned long const containers = bibrt::CountLive().fContainers;
    bibrt::FailAllocation(1, /*andAllLater=*/true);
    EXPECT_EQ(Dicts().Put(dict, key, unowned), 0);
    ASSERT_EQ(bibrt::CountLive().fContainers, containers);
    EXPECT_EQ(Arrays().Append(array, unowned), 0);
    bibrt::ResetFailures();
    EXPECT_TRUE(Discard(unowned));
    CheckInvalid(As<POSObject>(dict));
    CheckInvalid(As<POSObject>(array));
}

TEST_F(MemoryFailureTest, RemovingAndPuttingAKeyNeedsNoMemory) {
    Held const dict(Dicts().NewPOSDict());
    Held const number(Ours().NewNumber(-5));
    Atom const key("0");
    for (int const size : {1, 6, 8, 40}) {
        for (int i = 0; i < size; ++i) {
            Put(dict, std::to_string(i), number);
        }
        bibrt::FailAllocation(1, /*andAllLater=*/true);
        for (int i = 0; i < 3 * size; ++i) {
            ASSERT_NE(Dicts().Remove(dict, key), 0);
            ASSERT_NE(Dicts().Put(dict, key, number), 0) << size << " keys, turn " << i;
        }
        bibrt::ResetFailures();
    }
}

} // namespace
} // namespace runtimetest
