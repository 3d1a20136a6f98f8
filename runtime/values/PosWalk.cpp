// Copying and comparing values. Nested values are walked with an explicit stack.
#include "runtime/objects/Errors.h"
#include "runtime/objects/Tables.h"
#include "runtime/values/PosCollections.h"

#include <cmath>
#include <cstring>

namespace bibrt {

namespace {

bool AreUnitsEqual(POSUnicodeString const& a, POSUnicodeString const& b) noexcept {
    return a.fLength == b.fLength &&
           std::memcmp(a.Units(), b.Units(), a.fLength * sizeof(unsigned short)) == 0;
}

bool IsBinDataEqual(POSBinData const& a, POSBinData const& b) noexcept {
    return a.fSize == b.fSize && std::memcmp(a.Data(), b.Data(), a.fSize) == 0 &&
           std::strcmp(a.TypeName(), b.TypeName()) == 0;
}

bool AreNumbersEqual(double a, double b) noexcept {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// A copy of a scalar, or of a host's value by the host's own method; null if it has no such method.
POSObject* CloneLeaf(POSObject& source) {
    if (IsOfType(&source, gNumberType)) {
        return NewObject<POSNumber>(static_cast<POSNumber&>(source).fValue);
    }
    if (IsOfType(&source, gStringType)) {
        return MakeString(static_cast<POSString&>(source).View());
    }
    if (IsOfType(&source, gUnicodeStringType)) {
        auto const& string = static_cast<POSUnicodeString&>(source);
        return MakeUnicodeString(string.Units(), string.fLength);
    }
    if (IsOfType(&source, gBinDataType)) {
        auto const& binData = static_cast<POSBinData&>(source);
        return MakeBinData(binData.TypeName(), binData.Data(), binData.fSize);
    }
    auto const clone = FindTypedMethod<POSObjectCloneProc>(source, "Clone", "POSObjectCloneProc");
    return clone ? clone(&source) : nullptr;
}

// Whether two values that are not collections are equal. NaN equals NaN here, so that every value
// equals its clone.
bool AreLeavesEqual(POSObject& a, POSObject& b) {
    if (a.fType != b.fType) {
        return false;
    }
    if (IsOfType(&a, gNumberType)) {
        return AreNumbersEqual(
            static_cast<POSNumber&>(a).fValue, static_cast<POSNumber&>(b).fValue);
    }
    if (IsOfType(&a, gStringType)) {
        return static_cast<POSString&>(a).View() == static_cast<POSString&>(b).View();
    }
    if (IsOfType(&a, gUnicodeStringType)) {
        return AreUnitsEqual(static_cast<POSUnicodeString&>(a), static_cast<POSUnicodeString&>(b));
    }
    if (IsOfType(&a, gBinDataType)) {
        return IsBinDataEqual(static_cast<POSBinData&>(a), static_cast<POSBinData&>(b));
    }
    auto const isEqual =
        FindTypedMethod<POSObjectIsEqualProc>(a, "IsEqual", "POSObjectIsEqualProc");
    return isEqual && isEqual(&a, &b) != 0;
}

struct CloneFrame {
    POSObject* fSource;
    POSObject* fTarget;
    std::size_t fPosition;
};

// An empty collection with memory for the children of source, or the copy of a leaf. Null for an
// invalid value and for a leaf that cannot be copied.
Unowned<POSObject> CloneEmpty(POSObject& source) {
    if (source.fIsInvalid) {
        return nullptr;
    }
    if (!IsCollection(&source)) {
        return Unowned<POSObject>(CloneLeaf(source));
    }
    Unowned<POSObject> copy(
        IsOfType(&source, gDictType) ? static_cast<POSObject*>(NewObject<POSDict>())
                                     : NewObject<POSArray>());
    ReserveChildren(*copy, CountChildren(source));
    return copy;
}

// Copies the next child of the top frame. False if it cannot be copied.
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
    // Now owned by the target.
    POSObject* const target = copy.release();
    return !IsCollection(target) || stack.Push({child.fValue, target, 0});
}

// A deep copy of source, unowned. Null if a part of it cannot be copied, and for a value that
// contains itself. Throws std::bad_alloc.
//
// The copy is iterative. A frame on the stack is a source collection, its still incomplete copy,
// and the next child to copy. A step copies one child and stores the copy in the target at once:
// the root thereby owns everything that is copied so far, and releasing the root on failure frees
// it all. If the child is a collection, the copy is empty at first, and a frame for it is pushed,
// so that its own children are copied before the next sibling. A frame without further children is
// popped. A scalar that occurs twice is copied twice.
POSObject* CloneValue(POSObject& source) {
    Unowned<POSObject> root = CloneEmpty(source);
    if (!root || !IsCollection(root.get())) {
        return root.release();
    }
    WalkStack<CloneFrame> stack;
    stack.Push({&source, root.get(), 0});
    return stack.Walk(&CloneNext) ? root.release() : nullptr;
}

struct EqualFrame {
    POSObject* fSource;
    POSObject* fOther;
    std::size_t fPosition;
};

// The value of other that child is compared with, or null.
POSObject* Counterpart(POSObject& other, Child const& child, std::size_t position) noexcept {
    if (child.fKey) {
        return static_cast<POSDict&>(other).fEntries.Get(child.fKey);
    }
    return static_cast<POSArray&>(other).fItems[position];
}

// Pushes two collections for comparison, or compares two leaves. False if they differ.
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

// Whether types and contents are equal. False for values that contain themselves. Throws
// std::bad_alloc.
bool AreValuesEqual(POSObject& a, POSObject& b) {
    WalkStack<EqualFrame> stack;
    return CompareOrPush(stack, a, b) && stack.Walk(&CompareNext);
}

POSObject* Clone(POSObject* self) {
    return self ? AtRow<POSObject*>(nullptr, [&] { return CloneValue(*self); }) : nullptr;
}

long IsEqual(POSObject* self, POSObject* other) {
    if (!self || !other) {
        return 0;
    }
    return AtRow<long>(0, [&] { return AreValuesEqual(*self, *other) ? 1 : 0; });
}

} // namespace

BIBRT_DEFINE_TABLE(POSObjectVirtualInterface, POS_OBJECT_VIRTUAL_INTERFACE_ROWS, 2)

} // namespace bibrt
