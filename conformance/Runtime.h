// What the checks share: the rows of the runtime under test, handles for what they make of it, and
// expectations.
#pragma once

#include "conformance/Tables.h"

#include <any>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace conformance {

// Ends a check: it has failed.
struct Failure {
    std::string fExpected;
    std::string fFound;
};

// Ends a check: a row that it needs is missing, or another condition for it is not met.
struct Skipped {
    std::string fReason;
};

inline std::string Shown(bool value) {
    return value ? "true" : "false";
}
// Bytes that cannot be printed as \xNN.
inline std::string Shown(std::string const& text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string shown = "\"";
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        shown += c >= ' ' && c <= '~'
                     ? std::string(1, c)
                     : std::string{'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
    return shown + "\"";
}
inline std::string Shown(char const* text) {
    return text ? Shown(std::string(text)) : "null";
}
template <class T>
std::string Shown(T* pointer) {
    return pointer ? "a pointer" : "null";
}
inline std::string Shown(std::nullptr_t) {
    return "null";
}
template <class Number>
requires std::is_arithmetic_v<Number> std::string Shown(Number number) {
    return std::to_string(number);
}

// Throws Failure unless found is equal to expected. subject names what was compared.
template <class Expected, class Found>
void Expect(char const* subject, Expected const& expected, Found const& found) {
    if (!(found == expected)) {
        throw Failure{
            std::string(subject) + ": " + Shown(expected),
            std::string(subject) + ": " + Shown(found)};
    }
}
inline void Expect(char const* subject, std::string const& expected, char const* found) {
    Expect(subject, expected, std::string(found ? found : "(null)"));
}

// Throws Failure unless holds is true.
inline void Require(bool holds, char const* expected, std::string const& found = "it is not so") {
    if (!holds) {
        throw Failure{expected, found};
    }
}

template <class To, class From>
To* As(From* object) {
    return reinterpret_cast<To*>(object);
}

class Runtime;

// One reference on an atom.
class Atom {
public:
    Atom(Runtime const& runtime, std::string const& text);
    Atom(_t_BIBStringInterface const& rows, std::string const& text)
        : fRows(rows),
          fAtom(fRows.NewStringAtom(text.c_str())) {
        Require(fAtom != nullptr, "NewStringAtom gives an atom", "null");
    }
    Atom(Atom const&) = delete;
    Atom& operator=(Atom const&) = delete;
    ~Atom() { fRows.DeleteStringAtom(fAtom); }

    operator BIBStringAtom*() const noexcept { return fAtom; }
    char const* Text() const { return fRows.GetCString(fAtom); }

private:
    _t_BIBStringInterface fRows;
    BIBStringAtom* fAtom;
};

// One reference on a container, or on what is one underneath. Fails for null.
template <class T>
class Held {
public:
    Held(_t_BIBContainerInterface const& rows, T* object) : fRows(rows), fObject(object) {
        Require(object != nullptr, "a new object", "null");
        Require(fRows.AddRef(Container()) != 0, "AddRef of a new object gives nonzero", "zero");
    }
    Held(Held const&) = delete;
    Held& operator=(Held const&) = delete;
    ~Held() { fRows.Release(Container()); }

    operator T*() const noexcept { return fObject; }
    BIBContainer* Container() const noexcept { return As<BIBContainer>(fObject); }
    POSObject* Value() const noexcept { return As<POSObject>(fObject); }

private:
    _t_BIBContainerInterface fRows;
    T* fObject;
};

// The runtime under test.
class Runtime {
public:
    // component: the path of the component; empty for none.
    explicit Runtime(BIBLookupProc lookup, std::string component = {})
        : fLookup(lookup),
          fComponent(std::move(component)) {}

    BIBLookupProc Lookup() const noexcept { return fLookup; }
    std::string const& Component() const noexcept { return fComponent; }

    // A procedure of the bootstrap. Throws Skipped if it is missing.
    template <class Proc>
    Proc Bootstrap(char const* name) const {
        void* const proc = fLookup("BIB", name, name);
        if (!proc) {
            throw Skipped{std::string("BIB.") + name + " is missing"};
        }
        return reinterpret_cast<Proc>(proc);
    }

    // A table, as the lookup gave it when it was first asked for. Throws Skipped if a row is
    // missing. Any thread may call it.
    template <class Table>
    Table const& Rows() const {
        std::scoped_lock const lock(fMutex);
        std::any& table = fTables[TableNames<Table>::kInterface];
        if (!table.has_value()) {
            table = LookUp<Table>();
        }
        return *std::any_cast<Table>(&table);
    }

    // The methods of an object, found by its signature. Throws Failure if one is missing.
    template <class Table, class Object>
    Table Methods(Object* object) const {
        auto const table = LoadMethods<Table>(fLookup, object);
        void* procs[sizeof(Table) / sizeof(void*)] = {};
        std::memcpy(procs, &table, sizeof(table));
        for (std::size_t row = 0; row < std::size(procs); ++row) {
            Require(
                procs[row] != nullptr,
                "GetMethod finds every method of its kind under the signature of an object, or "
                "under a parent of it",
                std::string("null for ") + TableNames<Table>::kRows[row].fName + " of " +
                    TableNames<Table>::kInterface);
        }
        return table;
    }

    auto const& Atoms() const { return Rows<_t_BIBStringInterface>(); }
    auto const& Containers() const { return Rows<_t_BIBContainerInterface>(); }
    auto const& Errors() const { return Rows<_t_BIBErrorInterface>(); }
    auto const& Memory() const { return Rows<_t_BIBMemoryInterface>(); }
    auto const& Buffers() const { return Rows<_t_BIBSharedBuffInterface>(); }
    auto const& Streams() const { return Rows<_t_BIBStreamFactoryInterface>(); }
    auto const& Numbers() const { return Rows<_t_POSNumberInterface>(); }
    auto const& Strings() const { return Rows<_t_POSStringInterface>(); }
    auto const& Arrays() const { return Rows<_t_POSArrayInterface>(); }
    auto const& Dicts() const { return Rows<_t_POSDictInterface>(); }
    auto const& Cursors() const { return Rows<_t_POSDictIteratorInterface>(); }
    auto const& Objects() const { return Rows<_t_POSObjectStatics>(); }

    // Takes over a new object, which a row gives unowned.
    template <class T>
    Held<T> Hold(T* object) const {
        long const references = object ? CountOf(As<BIBContainer>(object)) : 0;
        Require(references == 0, "a new object is unowned", std::to_string(references));
        return Held<T>(Containers(), object);
    }

    // New values, not yet owned; null where the runtime gives null.
    POSObject* NewNumber(double value) const {
        return As<POSObject>(Numbers().NewPOSNumber(value));
    }
    POSObject* NewString(char const* text) const {
        return As<POSObject>(Strings().NewPOSString(text));
    }
    // A value in the object notation. Throws Failure with the runtime's message.
    POSObject* Parse(char const* text) const;

    // So many arrays, each in the next one; unowned.
    POSObject* NewNested(int levels) const;

    // The number that object is; nothing for any other value.
    std::optional<double> NumberOf(POSObject* object) const;

    long Put(POSDict* dict, char const* key, POSObject* value) const {
        return Dicts().Put(dict, Atom(*this, key), value);
    }
    POSObject* Get(POSDict* dict, char const* key) const {
        return Dicts().Get(dict, Atom(*this, key));
    }

    // The message of error, whose reference is released; empty for null.
    std::string TakeMessage(BIBError* error) const;

    // Throws Failure for an error, which is released.
    void Succeed(char const* row, BIBError* error) const;

    // Throws Failure for null; releases an error.
    void Fail(char const* row, BIBError* error) const;

    // The reference count of a container.
    long CountOf(BIBContainer* container) const {
        return *Containers().DebugGetRefCountAddr(container);
    }

private:
    template <class Table>
    Table LookUp() const {
        return FillTable<Table>([this](RowName const& row) {
            void* const proc = fLookup(TableNames<Table>::kInterface, row.fName, row.fProcType);
            if (!proc) {
                throw Skipped{
                    std::string(TableNames<Table>::kInterface) + "." + row.fName + " is missing"};
            }
            return proc;
        });
    }

    BIBLookupProc fLookup;
    std::string fComponent;
    mutable std::mutex fMutex;
    mutable std::map<char const*, std::any> fTables; // by interface
};

} // namespace conformance
