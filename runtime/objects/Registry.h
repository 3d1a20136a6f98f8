// The registry of procedures, and of the parents of signatures.
#pragma once

#include "runtime/objects/Tables.h"

#include <array>
#include <map>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace bibrt {

// The three names that a procedure is registered under. Callers reject null texts before this.
template <class Text>
struct ProcNames {
    Text fInterface;
    Text fName;
    Text fProcType;

    std::array<std::string_view, 3> Views() const noexcept {
        return {fInterface, fName, fProcType};
    }
};
using ProcName = ProcNames<std::string_view>;

template <class A, class B>
bool operator<(ProcNames<A> const& a, ProcNames<B> const& b) noexcept {
    return a.Views() < b.Views();
}

// The registry of the process, which is never destroyed. It maps three names (interface, procedure,
// procedure type) to a procedure. Names are registered once: a second registration fails until the
// whole interface is removed. A signature is an interface whose procedures are the methods of
// containers; it may have one parent. FindMethod searches the signature and then its parents, so
// that a child inherits and overrides methods. Parents never form a cycle. Clients keep the
// procedures that they looked up, together with the value of the unregister counter; Remove
// increments the counter, and a client that finds another value looks its procedures up again.
// Reading the counter needs no lock. All functions are thread safe.
class Registry {
public:
    enum class ParentResult { kDone, kCircle, kHasOther };

    static Registry& The();

    // Registers a procedure. False if the names are in use. Throws std::bad_alloc.
    bool Add(ProcName const& name, void* proc);

    // Registers the rows of a table whose names are not in use. Throws std::bad_alloc.
    void AddTable(BuiltInTable const& table);

    // The procedure under these names, or null.
    void* Find(ProcName const& name) const noexcept;

    // As Find; then searches under the parents of the interface, the nearest first.
    void* FindMethod(ProcName const& name) const noexcept;

    // As FindMethod, starting at the parent of the interface.
    void* FindParentMethod(ProcName const& name) const noexcept;

    // Removes all procedures of an interface and its parent, and increments the unregister counter,
    // even if there was nothing to remove. True if there were procedures.
    bool Remove(std::string_view interfaceName) noexcept;

    // Declares the parent of signature. kDone also if this parent was declared before. kCircle (a
    // cycle of parents) and kHasOther (another parent is declared) change nothing. Throws
    // std::bad_alloc.
    ParentResult SetParent(std::string_view signature, std::string_view parent);

    // The address of the unregister counter, valid until the process ends. The counter starts at 1
    // and is never 0.
    unsigned long* CounterAddress() noexcept { return &fUnregisterCount; }

private:
    void* FindLocked(ProcName const& name) const noexcept;
    void* FindMethodLocked(ProcName name) const noexcept;
    bool ParentLocked(std::string_view signature, std::string_view& parent) const noexcept;

    mutable std::shared_mutex fLock;
    std::map<ProcNames<std::string>, void*, std::less<>> fProcs;
    std::map<std::string, std::string, std::less<>> fParents;
    unsigned long fUnregisterCount = 1;
};

} // namespace bibrt
