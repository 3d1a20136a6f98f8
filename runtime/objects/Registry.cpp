#include "runtime/objects/Registry.h"

#include "runtime/objects/Memory.h"

#include <atomic>
#include <cstring>
#include <mutex>

namespace bibrt {

Registry& Registry::The() {
    static auto* const kRegistry = new Registry;
    return *kRegistry;
}

bool Registry::Add(ProcName const& name, void* proc) {
    std::unique_lock const guard(fLock);
    if (FindLocked(name)) {
        return false;
    }
    ExpectMemory();
    fProcs.emplace(
        ProcNames<std::string>{
            std::string(name.fInterface), std::string(name.fName), std::string(name.fProcType)},
        proc);
    return true;
}

void Registry::AddTable(BuiltInTable const& table) {
    for (std::size_t row = 0; row < table.fCount; ++row) {
        void* proc = nullptr;
        std::memcpy(
            &proc, static_cast<char const*>(table.fProcs) + row * sizeof(proc), sizeof(proc));
        Add({table.fInterface, table.fRows[row].fName, table.fRows[row].fProcType}, proc);
    }
}

void* Registry::FindLocked(ProcName const& name) const noexcept {
    auto const found = fProcs.find(name);
    return found == fProcs.end() ? nullptr : found->second;
}

void* Registry::Find(ProcName const& name) const noexcept {
    std::shared_lock const guard(fLock);
    return FindLocked(name);
}

bool Registry::ParentLocked(std::string_view signature, std::string_view& parent) const noexcept {
    auto const found = fParents.find(signature);
    if (found == fParents.end()) {
        return false;
    }
    parent = found->second;
    return true;
}

void* Registry::FindMethodLocked(ProcName name) const noexcept {
    do {
        if (void* const proc = FindLocked(name)) {
            return proc;
        }
    } while (ParentLocked(name.fInterface, name.fInterface));
    return nullptr;
}

void* Registry::FindMethod(ProcName const& name) const noexcept {
    std::shared_lock const guard(fLock);
    return FindMethodLocked(name);
}

void* Registry::FindParentMethod(ProcName const& name) const noexcept {
    std::shared_lock const guard(fLock);
    ProcName inParent = name;
    return ParentLocked(name.fInterface, inParent.fInterface) ? FindMethodLocked(inParent)
                                                              : nullptr;
}

bool Registry::Remove(std::string_view interfaceName) noexcept {
    std::unique_lock const guard(fLock);
    auto const first = fProcs.lower_bound(ProcName{interfaceName, {}, {}});
    auto last = first;
    while (last != fProcs.end() && last->first.fInterface == interfaceName) {
        ++last;
    }
    bool const hadRows = first != last;
    fProcs.erase(first, last);
    if (auto const parent = fParents.find(interfaceName); parent != fParents.end()) {
        fParents.erase(parent);
    }
    // The counter skips 0, which stands for "never read". Clients read it without the lock.
    unsigned long const next = fUnregisterCount + 1;
    std::atomic_ref(fUnregisterCount).store(next == 0 ? 1 : next, std::memory_order_release);
    return hadRows;
}

Registry::ParentResult Registry::SetParent(std::string_view signature, std::string_view parent) {
    std::unique_lock const guard(fLock);
    std::string_view present;
    if (ParentLocked(signature, present)) {
        return present == parent ? ParentResult::kDone : ParentResult::kHasOther;
    }
    std::string_view ancestor = parent;
    do {
        if (ancestor == signature) {
            return ParentResult::kCircle;
        }
    } while (ParentLocked(ancestor, ancestor));
    ExpectMemory();
    fParents.emplace(signature, parent);
    return ParentResult::kDone;
}

} // namespace bibrt
