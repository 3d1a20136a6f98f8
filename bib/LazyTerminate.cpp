#include "bib/LazyTerminate.h"

namespace BIB_T_NMT {

namespace {

bool InitializeOne(LazyTerminate& object) noexcept {
    try {
        return object.Initialize();
    } catch (...) {
        return false;
    }
}

} // namespace

bool LazyTerminate::InitializeAll() {
    LazyTerminate* object = fList.GetFirstElement();
    while (object != nullptr && InitializeOne(*object)) {
        object = object->GetNextElement();
    }
    if (object == nullptr) {
        return true;
    }
    LazyTerminate const* const failed = object;
    for (object = fList.GetFirstElement(); object != failed; object = object->GetNextElement()) {
        object->Terminate();
    }
    return false;
}

void LazyTerminate::TerminateAll() {
    for (LazyTerminate* object = fList.GetFirstElement(); object != nullptr;
         object = object->GetNextElement()) {
        object->Terminate();
    }
}

} // namespace BIB_T_NMT
