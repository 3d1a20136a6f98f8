// Comparing nested values with a work stack of its own.
#include "runtime/values/PosWalk.h"

namespace bibrt {

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
