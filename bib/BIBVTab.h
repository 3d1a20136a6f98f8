// Method tables: found once for each signature and cached, so that a later call costs one jump.
#pragma once

#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

// Fills methods, one slot for each of the count rows, from the first row to the last, with the
// methods of the container's signature. A missing method gives a null slot; with mustExist non-zero
// the answer is then 0 at once, else 1 after the last row. Throws the runtime's error.
int BIBLoadMethodTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    BIBContainer const* container,
    int mustExist,
    void** methods);

// Fills a method table of type T. Result as BIBLoadMethodTable.
template <class T>
using TBIBMethodLoader = int (*)(BIBContainer const* container, int mustExist, T* table);

// A loader whose table type is forgotten.
class BIBMethodLoader {
public:
    template <class T>
    explicit BIBMethodLoader(TBIBMethodLoader<T> loader) noexcept
        : fLoader(reinterpret_cast<AnyProc>(loader)),
          fCall(&Call<T>) {}

    int operator()(BIBContainer const* container, int mustExist, void** methods) const {
        return fCall(fLoader, container, mustExist, methods);
    }

private:
    using AnyProc = void (*)();

    template <class T>
    static int Call(AnyProc loader, BIBContainer const* container, int mustExist, void** methods) {
        return reinterpret_cast<TBIBMethodLoader<T>>(loader)(
            container, mustExist, reinterpret_cast<T*>(methods));
    }

    AnyProc fLoader;
    int (*fCall)(AnyProc, BIBContainer const*, int, void**);
};

// One cached method table: the methods of one signature. Its slots lie directly behind it, in the
// same allocation, and stay there when it is loaded anew, so a pointer to them stays good.
class BIBVTabGeneric : public double_linked_list_element<BIBVTabGeneric, CBIBClientBasePMT> {
public:
    // A new entry at the head of list, without a signature and not loaded. Throws the memory error.
    static BIBVTabGeneric* NewBIBVTab(unsigned long methodCount, List& list);

    // Loads the methods of the container's signature. An exception leaves the entry stamped: it is
    // not tried again until the runtime's unregister counter moves.
    void Reload(BIBContainer const* container, BIBMethodLoader loader);

    bool HasSignature(char const* signature) const noexcept {
        return fSignature.c_str() == signature;
    }

    bool IsStale() const noexcept { return fUnregisterCount != *gBIBUnregisterCount; }

    // The slots; null when the last load failed.
    void* GetVTab() noexcept { return fLoaded ? Slots() : nullptr; }

private:
    explicit BIBVTabGeneric(List& list) noexcept
        : double_linked_list_element(list, /*atEnd=*/false) {}

    void** Slots() noexcept { return reinterpret_cast<void**>(this + 1); }

    CBIBStringAtom fSignature;
    unsigned long fUnregisterCount = 0;
    bool fLoaded = false;
};

// The cache of one kind of method table, the newest signature first. Entries stay until they are
// deleted with the binding. Not safe across threads.
class BIBVTabListGeneric
    : public no_construct_double_linked_list<BIBVTabGeneric, CBIBClientBasePMT> {
public:
    constexpr explicit BIBVTabListGeneric(unsigned long methodCount) noexcept
        : no_construct_double_linked_list(),
          fMethodCount(methodCount) {}

    // The slots for the container's signature, loaded if need be. Throws the CBIBErrors "couldn't
    // get signature" and "invalid container" (a required method is missing), or the runtime's
    // error.
    void* GetVTab(BIBContainer const* container, BIBMethodLoader loader);

    // The same with null in place of "invalid container".
    void* GetVTabDynamic(BIBContainer const* container, BIBMethodLoader loader);

private:
    // Deletes an entry whose load throws.
    class AutoRemove;

    BIBVTabGeneric* Find(char const* signature) const noexcept;
    BIBVTabGeneric* AddLoaded(BIBContainer const* container, BIBMethodLoader loader);

    unsigned long fMethodCount;
};

// The same with the type of the table.
template <class T>
class TBIBVTabList : public BIBVTabListGeneric {
public:
    constexpr TBIBVTabList() noexcept : BIBVTabListGeneric(sizeof(T) / sizeof(void*)) {}

    T* GetVTab(BIBContainer* container, TBIBMethodLoader<T> loader) {
        return static_cast<T*>(BIBVTabListGeneric::GetVTab(container, BIBMethodLoader(loader)));
    }
};

// A cache that empties itself with the binding, for an interface that has no handle class.
class DelVTabListGeneric : public LazyTerminate, public BIBVTabListGeneric {
public:
    DelVTabListGeneric(unsigned long methodCount, BIBMethodLoader initProc) noexcept
        : BIBVTabListGeneric(methodCount),
          fInitProc(initProc) {}

    void Terminate() override { DeleteAllElements(); }
    void Kill() override { ForgetElements(); }

    // The loader of this cache's tables.
    BIBMethodLoader const fInitProc;
};

// Has the loader of T's tables: specialised where the rows of T are.
template <class T>
struct TInterfaceConstructor {
    static int InitProc(BIBContainer const* container, int mustExist, T* table);
};

template <class T>
class TDelVTabList : public DelVTabListGeneric {
public:
    // The argument is not read.
    explicit TDelVTabList(int) noexcept
        : DelVTabListGeneric(
              sizeof(T) / sizeof(void*), BIBMethodLoader(&TInterfaceConstructor<T>::InitProc)) {}
};

// The cache of an interface that has no handle class.
template <class Interface>
struct TBIB2VTabList {
    static TDelVTabList<typename Interface::proctable_type> fVTabList;
};

// Defines loader as the one of the method tables of Interface, whose rows are ROWS.
#define BIB_DEFINE_LOADER(loader, Interface, ROWS, rowCount) \
    int loader(BIBContainer const* container, int mustExist, _t_##Interface* table) { \
        static constexpr _t_BIBFTabEntry kRows[] = {ROWS(BIB_TABLE_NAMES){"", ""}}; \
        static_assert(sizeof kRows / sizeof *kRows == (rowCount) + 1); \
        static_assert(sizeof(_t_##Interface) == (rowCount) * sizeof(void*)); \
        return BIBLoadMethodTable( \
            kRows, rowCount, container, mustExist, reinterpret_cast<void**>(table)); \
    }

// The same of an interface that has handle classes, and of one that has none.
#define BIB_DEFINE_METHOD_LOADER(Interface, ROWS, rowCount) \
    BIB_DEFINE_LOADER(Construct##Interface##Methods, Interface, ROWS, rowCount)
#define BIB_DEFINE_INIT_PROC(Interface, ROWS, rowCount) \
    template <> \
    BIB_DEFINE_LOADER(TInterfaceConstructor<_t_##Interface>::InitProc, Interface, ROWS, rowCount)

// The terminator of a cache: empties it with the binding. VTab is where a handle keeps its method
// table.
template <class Handle, auto& Cache, auto VTab, auto Loader>
class TVTabTerminate : public LazyTerminate {
public:
    void Terminate() override { Cache.DeleteAllElements(); }

    // Gives handle its method table, and returns it.
    Handle* InitVTab(Handle* handle) {
        handle->*VTab = Cache.GetVTab(*handle, Loader);
        return handle;
    }
};

// The same, and can walk away from the cache's entries.
template <class Handle, auto& Cache, auto VTab, auto Loader>
class TVTabForgetfulTerminate : public TVTabTerminate<Handle, Cache, VTab, Loader> {
public:
    void Kill() override { Cache.ForgetElements(); }
};

} // namespace BIB_T_NMT
