// What the tests of the runtime share: its tables, handles for what they make, and a fixture that
// ends with nothing left alive.
#pragma once

#include "api/BIBRuntime.h"
#include "conformance/Tables.h"
#include "runtime/objects/Diagnostics.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace runtimetest {

// The table, as the lookup gave it when it was first asked for.
template <class Table>
Table const& Rows() {
    static Table const kTable = conformance::LoadTable<Table>(&BIBRuntimeLookup);
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
inline auto const& Numbers() {
    return Rows<_t_POSNumberInterface>();
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
inline auto const& Factory() {
    return Rows<_t_BIBStreamFactoryInterface>();
}
// The methods of every value of the runtime's own.
inline auto const& Values() {
    return Rows<_t_POSObjectVirtualInterface>();
}

template <class To, class From>
To* As(From* object) {
    return reinterpret_cast<To*>(object);
}

// One reference on a new atom.
class Atom {
public:
    explicit Atom(char const* text) : fAtom(Atoms().NewStringAtom(text)) {}
    explicit Atom(std::string const& text) : Atom(text.c_str()) {}
    Atom(Atom const&) = delete;
    Atom& operator=(Atom const&) = delete;
    ~Atom() { Atoms().DeleteStringAtom(fAtom); }

    operator BIBStringAtom*() const { return fAtom; }
    char const* Text() const { return Atoms().GetCString(fAtom); }

private:
    BIBStringAtom* fAtom;
};

// One reference on any runtime object that is a container underneath, or none.
template <class T>
class Held {
public:
    explicit Held(T* object) : fObject(object) { Containers().AddRef(As<BIBContainer>(object)); }
    Held(Held const&) = delete;
    Held& operator=(Held const&) = delete;
    ~Held() { Containers().Release(Container()); }

    operator T*() const { return fObject; }
    BIBContainer* Container() const { return As<BIBContainer>(fObject); }
    POSObject* Value() const { return As<POSObject>(fObject); }

private:
    T* fObject;
};

inline POSObject* NewNumber(double value) {
    return As<POSObject>(Numbers().NewPOSNumber(value));
}

inline double NumberAt(POSObject* object) {
    return Numbers().IsPOSNumber(object) ? Numbers().Get(As<POSNumber>(object)) : -1;
}

inline long Put(POSDict* dict, std::string const& key, POSObject* value) {
    return Dicts().Put(dict, Atom(key), value);
}

// The message of an error, whose reference is given up; empty for null.
inline std::string TakeMessage(BIBError* error) {
    if (!error) {
        return {};
    }
    std::string message = Atoms().GetCString(Errors().GetErrorMessage(error));
    Errors().Release(error);
    return message;
}

inline BIBPositionableStream* NewMemoryStream() {
    BIBPositionableStream* stream = nullptr;
    TakeMessage(Factory().NewPositionableMemoryStream(&stream));
    return stream;
}

// The methods of a stream of the third level.
struct StreamMethods {
    explicit StreamMethods(BIBPositionableStream* stream)
        : fSimple(conformance::LoadMethods<_t_BIBSimpleStreamInterface>(&BIBRuntimeLookup, stream)),
          fRewindable(
              conformance::LoadMethods<_t_BIBRewindableStreamInterface>(&BIBRuntimeLookup, stream)),
          fPositionable(conformance::LoadMethods<_t_BIBPositionableStreamInterface>(
              &BIBRuntimeLookup, stream)),
          fStream(stream) {}

    std::string Write(std::string const& text) const {
        auto const* const bytes = reinterpret_cast<unsigned char const*>(text.data());
        return TakeMessage(fSimple.Write(As<BIBSimpleStream>(fStream), bytes, text.size()));
    }
    // Up to size bytes, or the message of the error.
    std::string Read(unsigned long size) const {
        std::string bytes(size, '\0');
        unsigned long count = 0;
        std::string message = TakeMessage(fSimple.Read(
            As<BIBSimpleStream>(fStream),
            &count,
            reinterpret_cast<unsigned char*>(bytes.data()),
            size));
        return message.empty() ? bytes.substr(0, count) : message;
    }
    std::string Seek(long offset, int origin) const {
        return TakeMessage(fPositionable.Seek(
            fStream, offset, static_cast<BIBPositionableStream_SeekOrigin>(origin)));
    }
    unsigned long Mark() const {
        unsigned long position = 0;
        TakeMessage(fPositionable.Mark(fStream, &position));
        return position;
    }

    _t_BIBSimpleStreamInterface fSimple;
    _t_BIBRewindableStreamInterface fRewindable;
    _t_BIBPositionableStreamInterface fPositionable;
    BIBPositionableStream* fStream;
};

// Every test begins with no failure ordered and ends with what was alive when it began.
class RuntimeTest : public ::testing::Test {
protected:
    void SetUp() override {
        Rows<_t_BIBMemoryInterface>();
        fBefore = bibrt::CountLive();
    }
    void TearDown() override {
        bibrt::ResetFailures();
        bibrt::LiveCounts const now = bibrt::CountLive();
        EXPECT_EQ(now.fContainers, fBefore.fContainers);
        EXPECT_EQ(now.fBlocks, fBefore.fBlocks);
        EXPECT_EQ(now.fAtoms, fBefore.fAtoms);
        EXPECT_EQ(now.fErrors, fBefore.fErrors);
        EXPECT_EQ(now.fSharedBuffers, fBefore.fSharedBuffers);
    }

private:
    bibrt::LiveCounts fBefore = {};
};

} // namespace runtimetest
