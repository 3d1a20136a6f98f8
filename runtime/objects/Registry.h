// What is registered: procedures under three texts, and which signature is whose parent.
#pragma once

#include "runtime/objects/Tables.h"

#include <array>
#include <map>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace bibrt {

// The names of a procedure; null texts are left to the callers to refuse.
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

// Thread safe. There is one, which is never destroyed.
class Registry {
public:
    enum class ParentResult { kDone, kCircle, kHasOther };

    static Registry& The();

    // Adds a procedure. False when the names are taken. Throws std::bad_alloc.
    bool Add(ProcName const& name, void* proc);

    // Adds the rows of a table that are not there yet. Throws std::bad_alloc.
    void AddTable(BuiltInTable const& table);

    // The procedure, or null.
    void* Find(ProcName const& name) const noexcept;

    // The same, and then under the parents of the interface one after the other.
    void* FindMethod(ProcName const& name) const noexcept;

    // The same, beginning with the parent of the interface.
    void* FindParentMethod(ProcName const& name) const noexcept;

    // Removes the rows of an interface and its parent, and raises the counter. True when there were
    // rows.
    bool Remove(std::string_view interfaceName) noexcept;

    // Declares the parent of signature. Nothing changes unless it answers kDone. Throws
    // std::bad_alloc.
    ParentResult SetParent(std::string_view signature, std::string_view parent);

    // Where the unregister counter stands. It starts at 1 and is never 0.
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
