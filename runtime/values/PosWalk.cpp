// Copying and comparing values, nested ones with a work stack of its own.
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

// A copy of a scalar, or of a value of a host's kind through its own method; null when it has none.
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

// Whether two values that are no collections are equal. A NaN equals a NaN, so that every value
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
        IsOfType(&source, gDictType) ? static_cast<POSObject*>(NewObject<POSDict>())
                                     : NewObject<POSArray>());
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

// A deep copy, unowned; null when a part of source has no copy, and for a value that contains
// itself.
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

// Whether type and contents are equal; false for values that contain themselves. Throws
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
