// Copying nested values with a work stack of its own.
#include "runtime/values/PosWalk.h"

namespace bibrt {

namespace {

struct CloneFrame {
    POSObject* fSource;
    POSObject* fTarget;
    std::size_t fPosition;
};

// An empty collection with room for what source holds, or a copy of a leaf; null when there is
// none.
Unowned<POSObject> CloneEmpty(POSObject& source) {
    if (source.fIsInvalid) {
        return nullptr;
    }
    if (!IsCollection(&source)) {
        return Unowned<POSObject>(CloneLeaf(source));
    }
    Unowned<POSObject> copy(
        IsOfType(&source, gDictType) ? static_cast<POSObject*>(MakeDict()) : MakeArray());
    ReserveChildren(*copy, CountChildren(source));
    return copy;
}

// Copies the next child of the top frame. False when that cannot be done.
bool CloneNext(WalkStack<CloneFrame>& stack) {
    CloneFrame& frame = stack.Top();
    Child const child = NextChild(*frame.fSource, frame.fPosition);
    if (!child.fValue) {
        stack.Pop();
        return true;
    }
    Unowned<POSObject> copy = CloneEmpty(*child.fValue);
    if (!copy || !AddTo(*frame.fTarget, child.fKey, *copy)) {
        return false;
    }
    // The target keeps it alive from here on.
    POSObject* const target = copy.release();
    return !IsCollection(target) || stack.Push({child.fValue, target, 0});
}

} // namespace

POSObject* CloneValue(POSObject& source) {
    Unowned<POSObject> root = CloneEmpty(source);
    if (!root || !IsCollection(root.get())) {
        return root.release();
    }
    WalkStack<CloneFrame> stack;
    stack.Push({&source, root.get(), 0});
    while (!stack.IsEmpty()) {
        if (!CloneNext(stack)) {
            return nullptr;
        }
    }
    return root.release();
}

} // namespace bibrt
