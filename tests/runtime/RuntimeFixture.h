// What the tests of the runtime share: the runtime as the conformance kit knows it, and a fixture
// that ends with nothing left alive.
#pragma once

#include "api/BIBRuntime.h"
#include "conformance/Stream.h"
#include "runtime/objects/Diagnostics.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace bibrt {

inline void PrintTo(LiveCounts const& counts, std::ostream* stream) {
    *stream << counts.fContainers << " containers, " << counts.fBlocks << " blocks, "
            << counts.fAtoms << " atoms, " << counts.fErrors << " errors, " << counts.fSharedBuffers
            << " buffers";
}

} // namespace bibrt

namespace runtimetest {

using conformance::As;

inline conformance::Runtime const& Ours() {
    static conformance::Runtime const kRuntime(&BIBRuntimeLookup);
    return kRuntime;
}

// The table, as the lookup gave it when it was first asked for.
template <class Table>
Table const& Rows() {
    static Table const kTable = Ours().Rows<Table>();
    return kTable;
}

inline auto const& Atoms() {
    return Rows<_t_BIBStringInterface>();
}
inline auto const& Containers() {
    return Rows<_t_BIBContainerInterface>();
}
inline auto const& Errors() {
    return Rows<_t_BIBErrorInterface>();
}
inline auto const& Arrays() {
    return Rows<_t_POSArrayInterface>();
}
inline auto const& Dicts() {
    return Rows<_t_POSDictInterface>();
}
inline auto const& Cursors() {
    return Rows<_t_POSDictIteratorInterface>();
}
inline auto const& Objects() {
    return Rows<_t_POSObjectStatics>();
}
// The methods of every value of the runtime's own.
inline auto const& Values() {
    return Rows<_t_POSObjectVirtualInterface>();
}

class Atom : public conformance::Atom {
public:
    explicit Atom(std::string const& text) : conformance::Atom(Atoms(), text) {}
};

template <class T>
class Held : public conformance::Held<T> {
public:
    explicit Held(T* object) : conformance::Held<T>(Containers(), object) {}
};

class MemoryStream : public conformance::Stream {
public:
    MemoryStream() : Stream(Ours(), conformance::NewMemoryStream(Ours())) {}
};

inline long Put(POSDict* dict, std::string const& key, POSObject* value) {
    return Dicts().Put(dict, Atom(key), value);
}

// The message of an error, whose reference is given up; empty for null.
inline std::string TakeMessage(BIBError* error) {
    return Ours().TakeMessage(error);
}

inline bool Discard(void* container) {
    return Containers().DeleteUnownedContainer(static_cast<BIBContainer*>(container)) != 0;
}

// Every test begins with no failure ordered and ends with what was alive when it began.
class RuntimeTest : public ::testing::Test {
protected:
    void TearDown() override {
        bibrt::ResetFailures();
        EXPECT_EQ(bibrt::CountLive(), fBefore);
    }

private:
    // The first lookup starts the runtime, which makes what never goes.
    bibrt::LiveCounts fBefore = (Atoms(), bibrt::CountLive());
};

} // namespace runtimetest
