// A second life cycle for static objects, which are in lists from their construction on: set up and
// torn down with the binding to the runtime.
#pragma once

#include "bib/BIBClient.h"

// An intrusive double linked list whose head may be used before its construction.
template <class T, class Parent>
class double_linked_list_element;

// The head of a list. In static storage it is an empty list from the start, before any constructor
// has run, so elements of other units can link themselves in early; and its destructor leaves alone
// what is still linked. Elsewhere it must be value-initialised.
template <class T, class Parent>
class no_construct_double_linked_list {
public:
    using Element = double_linked_list_element<T, Parent>;

    // The head and the tail; null for an empty list. The tail is found by walking.
    T* GetFirstElement() const noexcept { return static_cast<T*>(fFirst); }
    T* GetLastElement() const noexcept { return static_cast<T*>(LastLink()); }

    unsigned long GetElementCount() const noexcept { return fElementCount; }

    // Deletes every element, each of which unlinks itself. REQUIRES: they were made by new.
    void DeleteAllElements() {
        while (fFirst != nullptr) {
            delete fFirst;
        }
    }

    // Walks away from the elements: they stay allocated, and the count keeps its value.
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

    // No initialisers: see above.
    Element* fFirst;
    unsigned long fElementCount;
};

// Base of an object that is in one list for as long as it lives. Parent is a base that gives it an
// allocator, or an empty class.
template <class T, class Parent>
class double_linked_list_element : public Parent {
public:
    using List = no_construct_double_linked_list<T, Parent>;

    double_linked_list_element(List& list, bool atEnd) noexcept : fOwnerList(&list) { Add(atEnd); }

    double_linked_list_element(double_linked_list_element const&) = delete;
    double_linked_list_element& operator=(double_linked_list_element const&) = delete;

    virtual ~double_linked_list_element() { Remove(); }

    // The next element; null at the end.
    T* GetNextElement() const noexcept { return static_cast<T*>(fNext); }

    // Links the element in at the end or at the head. REQUIRES: it is not linked in.
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

    // Unlinks the element from its list.
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

    // Links between elements and not between Ts: an element under construction is no T yet.
    double_linked_list_element* fNext = nullptr;
    double_linked_list_element* fPrev = nullptr;
    List* fOwnerList;
};

namespace BIB_T_NMT {

// A static object that hears of start and stop. It is in one list from its construction on, the
// newest first, and stays there over any number of bindings.
class LazyTerminate : public double_linked_list_element<LazyTerminate, BIBDLLEParent> {
public:
    using List = no_construct_double_linked_list<LazyTerminate, BIBDLLEParent>;

    LazyTerminate() noexcept : double_linked_list_element(fList, /*atEnd=*/false) {}

    // Called when the client has been bound. False, like an exception, makes the start fail.
    virtual bool Initialize() { return true; }

    // Called before the client lets go of the runtime: gives back what was taken from it.
    virtual void Terminate() {}

    // Walks away from what is held, without a call to the runtime.
    virtual void Kill() {}

    static List& GetList() noexcept { return fList; }

    // Initializes the objects from the head of the list on. If one fails, those before it are
    // terminated, and the answer is false.
    static bool InitializeAll();

    // Terminates the objects from the head on. An exception passes out and ends the walk.
    static void TerminateAll();

private:
    static List fList;
};

} // namespace BIB_T_NMT
