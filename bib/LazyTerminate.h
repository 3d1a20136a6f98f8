// A second life cycle for static objects: set up and torn down with the binding to the runtime.
#pragma once

#include "bib/BIBClient.h"
#include "bib/DoubleLinkedList.h"

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
