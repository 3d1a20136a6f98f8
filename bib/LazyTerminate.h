// Start and stop of static objects. The objects add themselves to a list when they are constructed;
// the list is initialized and terminated with the binding to the runtime.
#pragma once

#include "bib/BIBClient.h"

// An intrusive doubly linked list whose head may be used before it is constructed.
template <class T, class Parent>
class double_linked_list_element;

// The head of a list. In static storage it is an empty list before any constructor has run, so
// objects of other translation units can add themselves early. Its destructor leaves the elements
// unchanged. Elsewhere it must be value-initialized.
template <class T, class Parent>
class no_construct_double_linked_list {
public:
    using Element = double_linked_list_element<T, Parent>;

    // The first and the last element; null for an empty list. Finding the last one is linear in the
    // length of the list.
    T* GetFirstElement() const noexcept { return static_cast<T*>(fFirst); }
    T* GetLastElement() const noexcept { return static_cast<T*>(LastLink()); }

    unsigned long GetElementCount() const noexcept { return fElementCount; }

    // Deletes every element; each removes itself from the list. REQUIRES: they were allocated with
    // new.
    void DeleteAllElements() {
        while (fFirst != nullptr) {
            delete fFirst;
        }
    }

    // Drops the elements without deleting them: they stay allocated. GetElementCount() keeps its
    // value.
    void ForgetElements() noexcept { fFirst = nullptr; }

private:
    friend Element;

    Element* LastLink() const noexcept {
        Element* last = fFirst;
        while (last != nullptr && last->fNext != nullptr) {
            last = last->fNext;
        }
        return last;
    }

    // No initializers: see the comment of the class.
    Element* fFirst;
    unsigned long fElementCount;
};

// Base of an object that is in one list for its whole lifetime. Parent is a base that provides an
// allocator, or an empty class.
template <class T, class Parent>
class double_linked_list_element : public Parent {
public:
    using List = no_construct_double_linked_list<T, Parent>;

    double_linked_list_element(List& list, bool atEnd) noexcept : fOwnerList(&list) { Add(atEnd); }

    double_linked_list_element(double_linked_list_element const&) = delete;
    double_linked_list_element& operator=(double_linked_list_element const&) = delete;

    virtual ~double_linked_list_element() { Remove(); }

    // The next element; null after the last.
    T* GetNextElement() const noexcept { return static_cast<T*>(fNext); }

    // Adds the element at the end or at the head. REQUIRES: it is not in the list.
    void Add(bool atEnd) noexcept {
        fPrev = atEnd ? fOwnerList->LastLink() : nullptr;
        auto*& link = fPrev != nullptr ? fPrev->fNext : fOwnerList->fFirst;
        fNext = link;
        link = this;
        if (fNext != nullptr) {
            fNext->fPrev = this;
        }
        ++fOwnerList->fElementCount;
    }

    // Removes the element from its list.
    void Remove() noexcept {
        if (fNext != nullptr) {
            fNext->fPrev = fPrev;
        }
        if (fPrev != nullptr) {
            fPrev->fNext = fNext;
        } else if (fOwnerList->fFirst == this) {
            fOwnerList->fFirst = fNext;
        }
        --fOwnerList->fElementCount;
    }

private:
    friend List;

    // Pointers to elements rather than to T: during construction an element is not yet a T.
    double_linked_list_element* fNext = nullptr;
    double_linked_list_element* fPrev = nullptr;
    List* fOwnerList;
};

namespace BIB_T_NMT {

// A static object that is notified of start and stop. It is in one list for its whole lifetime,
// over any number of bindings.
//
// An object is added at the head, so the list runs from the newest to the oldest, and both start
// and stop follow it in that order. Objects are constructed in the order of their definitions in
// BIB.cpp and then POS.cpp. A stop therefore releases first the caches of validators and values,
// then those of streams from the highest level to the lowest, and last those of other data sources.
// BIBClientTerminate purges the static caches before this step. It releases the runtime's errors
// after it, so the memory error is available until then, and clears the lookup last. A stop
// destroys no LazyTerminate object: the destructors run when the library is unloaded and only
// remove the objects from the list.
class LazyTerminate : public double_linked_list_element<LazyTerminate, BIBDLLEParent> {
public:
    using List = no_construct_double_linked_list<LazyTerminate, BIBDLLEParent>;

    LazyTerminate() noexcept : double_linked_list_element(fList, /*atEnd=*/false) {}

    // Called after the client is bound. If it returns false or throws, the start fails.
    virtual bool Initialize() { return true; }

    // Called before the client releases the runtime. Releases everything that was obtained from it.
    virtual void Terminate() {}

    // Drops owned resources without calling the runtime.
    virtual void Kill() {}

    static List& GetList() noexcept { return fList; }

    // Initializes the objects from the head of the list. If one fails, those before it are
    // terminated, and the result is false.
    static bool InitializeAll();

    // Terminates the objects from the head of the list. An exception passes to the caller and ends
    // the traversal.
    static void TerminateAll();

private:
    static List fList;
};

} // namespace BIB_T_NMT
