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

namespace {

struct EqualFrame {
    POSObject* fSource;
    POSObject* fOther;
    std::size_t fPosition;
};

// What stands in other in the place of child, or null.
POSObject* Counterpart(POSObject& other, Child const& child, std::size_t position) noexcept {
    if (child.fKey) {
        return static_cast<POSDict&>(other).fEntries.Get(child.fKey);
    }
    return static_cast<POSArray&>(other).fItems[position];
}

// Pushes two collections to compare, or compares two leaves. False when they differ.
bool CompareOrPush(WalkStack<EqualFrame>& stack, POSObject& a, POSObject& b) {
    if (&a == &b) {
        return true;
    }
    if (!IsCollection(&a)) {
        return AreLeavesEqual(a, b);
    }
    return a.fType == b.fType && CountChildren(a) == CountChildren(b) && stack.Push({&a, &b, 0});
}

bool CompareNext(WalkStack<EqualFrame>& stack) {
    EqualFrame& frame = stack.Top();
    std::size_t const position = frame.fPosition;
    Child const child = NextChild(*frame.fSource, frame.fPosition);
    if (!child.fValue) {
        stack.Pop();
        return true;
    }
    POSObject* const other = Counterpart(*frame.fOther, child, position);
    return other && CompareOrPush(stack, *child.fValue, *other);
}

} // namespace

bool AreValuesEqual(POSObject& a, POSObject& b) {
    WalkStack<EqualFrame> stack;
    if (!CompareOrPush(stack, a, b)) {
        return false;
    }
    while (!stack.IsEmpty()) {
        if (!CompareNext(stack)) {
            return false;
        }
    }
    return true;
}

} // namespace bibrt
