// Method tables: loaded once for each signature and cached, so that a method call costs one
// indirect call.
#pragma once

#include "bib/BIBContainer.h"
#include "bib/BIBInterfaceClient.h"
#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

// Fills methods, one slot for each of the count rows, from the first row to the last, with the
// methods of the container's signature. A missing method makes its slot null. With mustExist
// nonzero the result is then 0 at once; otherwise it is 1 after the last row. Throws the runtime's
// error.
int BIBLoadMethodTable(
    _t_BIBFTabEntry const* table,
    unsigned long count,
    BIBContainer const* container,
    int mustExist,
    void** methods);

// Fills a method table of type T. The result is as for BIBLoadMethodTable.
template <class T>
using TBIBMethodLoader = int (*)(BIBContainer const* container, int mustExist, T* table);

// A loader with its table type erased.
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

// One cached method table: the methods of one signature. Its slots are directly behind it in the
// same allocation and do not move when the table is loaded again, so a pointer to them stays valid.
class BIBVTabGeneric : public double_linked_list_element<BIBVTabGeneric, CBIBClientBasePMT> {
public:
    // A new entry at the head of list, without a signature and not loaded. Throws the memory error.
    static BIBVTabGeneric* NewBIBVTab(unsigned long methodCount, List& list);

    // Loads the methods of the container's signature. The stamp is set first: a load of this entry
    // that fails or throws is not repeated until the runtime's unregister counter changes. If a
    // repeated load throws, the slots that it has not reached keep the methods of the load before.
    void Reload(BIBContainer const* container, BIBMethodLoader loader);

    bool HasSignature(char const* signature) const noexcept {
        return fSignature.c_str() == signature;
    }

    bool IsStale() const noexcept { return fUnregisterCount != *gBIBUnregisterCount; }

    // The slots; null if the last load failed.
    void* GetVTab() noexcept { return fLoaded ? Slots() : nullptr; }

private:
    explicit BIBVTabGeneric(List& list) noexcept
        : double_linked_list_element(list, /*atEnd=*/false) {}

    void** Slots() noexcept { return reinterpret_cast<void**>(this + 1); }

    CBIBStringAtom fSignature;
    unsigned long fUnregisterCount = 0;
    bool fLoaded = false;
};

// The cache of one kind of method table: one entry for each signature, newest first.
//
// A handle gets its table once, in its constructor, by the signature of its container, and keeps a
// pointer to the slots; it never checks the table again. The runtime increases its unregister
// counter whenever an interface is unregistered, and each entry stores the counter's value from its
// last load. When a new handle finds an entry with another value, it loads the methods again, into
// the same slots. Older handles of that signature point to these slots, so they call the new
// methods as well. Between an unregistration and this load they still call the old ones. Entries
// are never removed one by one, because handles point to them: the binding's end deletes them all.
// Not thread-safe.
class BIBVTabListGeneric
    : public no_construct_double_linked_list<BIBVTabGeneric, CBIBClientBasePMT> {
public:
    constexpr explicit BIBVTabListGeneric(unsigned long methodCount) noexcept
        : no_construct_double_linked_list(),
          fMethodCount(methodCount) {}

    // The slots for the container's signature, loaded if necessary. Throws the CBIBErrors "couldn't
    // get signature" and "invalid container" (a required method is missing), or the runtime's
    // error.
    void* GetVTab(BIBContainer const* container, BIBMethodLoader loader);

    // As GetVTab, but returns null instead of throwing "invalid container".
    void* GetVTabDynamic(BIBContainer const* container, BIBMethodLoader loader);

private:
    // Deletes a new entry if its first load throws.
    class AutoRemove;

    BIBVTabGeneric* Find(char const* signature) const noexcept;
    BIBVTabGeneric* AddLoaded(BIBContainer const* container, BIBMethodLoader loader);

    unsigned long fMethodCount;
};

// The same for tables of type T.
template <class T>
class TBIBVTabList : public BIBVTabListGeneric {
public:
    constexpr TBIBVTabList() noexcept : BIBVTabListGeneric(sizeof(T) / sizeof(void*)) {}

    T* GetVTab(BIBContainer* container, TBIBMethodLoader<T> loader) {
        return static_cast<T*>(BIBVTabListGeneric::GetVTab(container, BIBMethodLoader(loader)));
    }
};

// A cache that is emptied when the binding ends, for an interface without a handle class.
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

// Holds the loader of T's tables; specialized where the rows of T are defined.
template <class T>
struct TInterfaceConstructor {
    static int InitProc(BIBContainer const* container, int mustExist, T* table);
};

template <class T>
class TDelVTabList : public DelVTabListGeneric {
public:
    // The argument is ignored.
    explicit TDelVTabList(int) noexcept
        : DelVTabListGeneric(
              sizeof(T) / sizeof(void*), BIBMethodLoader(&TInterfaceConstructor<T>::InitProc)) {}
};

// The cache of an interface without a handle class.
template <class Interface>
struct TBIB2VTabList {
    static TDelVTabList<typename Interface::proctable_type> fVTabList;
};

// Defines loader for the method tables of Interface, whose rows are ROWS.
#define BIB_DEFINE_LOADER(loader, Interface, ROWS, rowCount) \
    int loader(BIBContainer const* container, int mustExist, _t_##Interface* table) { \
        static constexpr _t_BIBFTabEntry kRows[] = {ROWS(BIB_TABLE_NAMES){"", ""}}; \
        static_assert(sizeof kRows / sizeof *kRows == (rowCount) + 1); \
        static_assert(sizeof(_t_##Interface) == (rowCount) * sizeof(void*)); \
        return BIBLoadMethodTable( \
            kRows, rowCount, container, mustExist, reinterpret_cast<void**>(table)); \
    }

// The same for an interface with handle classes, and for one without.
#define BIB_DEFINE_METHOD_LOADER(Interface, ROWS, rowCount) \
    BIB_DEFINE_LOADER(Construct##Interface##Methods, Interface, ROWS, rowCount)
#define BIB_DEFINE_INIT_PROC(Interface, ROWS, rowCount) \
    template <> \
    BIB_DEFINE_LOADER(TInterfaceConstructor<_t_##Interface>::InitProc, Interface, ROWS, rowCount)

// The terminator of a cache: empties it when the binding ends. VTab is the member in which a handle
// stores its method table.
template <class Handle, auto& Cache, auto VTab, auto Loader>
class TVTabTerminate : public LazyTerminate {
public:
    void Terminate() override { Cache.DeleteAllElements(); }

    // Stores the method table in handle, and returns handle.
    Handle* InitVTab(Handle* handle) {
        handle->*VTab = Cache.GetVTab(*handle, Loader);
        return handle;
    }
};

// As TVTabTerminate; Kill() drops the cache's entries without deleting them.
template <class Handle, auto& Cache, auto VTab, auto Loader>
class TVTabForgetfulTerminate : public TVTabTerminate<Handle, Cache, VTab, Loader> {
public:
    void Kill() override { Cache.ForgetElements(); }
};

} // namespace BIB_T_NMT
