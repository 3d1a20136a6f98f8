// Arrays and dictionaries, and iterating through nested ones.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "runtime/values/DictStorage.h"

// Destroying a collection does not recurse into nested ones: see Container.cpp.
struct POSArray : POSObject {
    POSArray() noexcept : POSObject(bibrt::gArrayType) {}

    bibrt::Vector<bibrt::Ref<POSObject>> fItems;
};

struct POSDict : POSObject {
    POSDict() noexcept : POSObject(bibrt::gDictType) {}

    bibrt::DictStorage fEntries;
};

namespace bibrt {

// Puts value under key in a dictionary, or appends it to an array, for which key is null. False if
// value is invalid or memory runs out: the collection then becomes invalid, since it is incomplete.
bool AddTo(POSObject& collection, BIBStringAtom* key, POSObject& value) noexcept;

// The number of values in a collection.
std::size_t CountChildren(POSObject const& collection) noexcept;

// Reserves memory for count values. Throws std::bad_alloc.
void ReserveChildren(POSObject& collection, std::size_t count);

// A value in a collection and its key; the key is null in an array. Both are borrowed.
struct Child {
    BIBStringAtom* fKey;
    POSObject* fValue;
};

// The first child of collection at position or later; moves position past it. The value is null at
// the end.
Child NextChild(POSObject& collection, std::size_t& position) noexcept;

// The explicit stack of a walk through nested collections: a walk uses no more stack of its thread
// for deeper nesting. A Frame has the members fSource, the collection that it walks, and fPosition,
// the next child.
//
// Push detects a collection that contains itself. The frames are the path from the root, so a cycle
// repeats the same collections on it for ever. Push compares each new collection with one marked
// frame only, and moves the mark to the top whenever the depth has doubled. Sooner or later the
// mark is inside the cycle and the stack deep enough to meet its collection again. So detection
// costs one comparison for each frame, and no memory.
template <class Frame>
class WalkStack {
public:
    bool IsEmpty() const noexcept { return fFrames.empty(); }
    std::size_t Depth() const noexcept { return fFrames.size(); }
    Frame& Top() noexcept { return fFrames.back(); }
    // The frames from the root to the top.
    Vector<Frame> const& Frames() const noexcept { return fFrames; }

    // False, with nothing pushed, if the collection is found to contain itself. Throws
    // std::bad_alloc.
    bool Push(Frame const& frame) {
        if (!fFrames.empty() && fFrames[fMark].fSource == frame.fSource) {
            return false;
        }
        fFrames.push_back(frame);
        if (fFrames.size() > 2 * (fMark + 1)) {
            fMark = fFrames.size() - 1;
        }
        return true;
    }

    // Calls step until the stack is empty. Returns false as soon as step does.
    template <class Step>
    bool Walk(Step step) {
        while (!IsEmpty()) {
            if (!step(*this)) {
                return false;
            }
        }
        return true;
    }

    void Pop() noexcept {
        fFrames.pop_back();
        if (fMark >= fFrames.size()) {
            fMark /= 2;
        }
    }

private:
    Vector<Frame> fFrames;
    std::size_t fMark = 0;
};

} // namespace bibrt
