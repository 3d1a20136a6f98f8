// Arrays and dictionaries as values, and walking through them.
#pragma once

#include "api/POSCollectionInterfaces.h"
#include "runtime/values/DictStorage.h"

struct POSArray : POSObject {
    POSArray() noexcept : POSObject(bibrt::gArrayType) {}

    bibrt::Vector<bibrt::Ref<POSObject>> fItems;
};

struct POSDict : POSObject {
    POSDict() noexcept : POSObject(bibrt::gDictType) {}

    bibrt::DictStorage fEntries;
};

namespace bibrt {

// Puts value under key in a dictionary, or adds it to the end of an array, for which key is null.
// False when value is invalid or memory runs out: then the collection becomes invalid, since it
// lacks what it should hold.
bool AddTo(POSObject& collection, BIBStringAtom* key, POSObject& value) noexcept;

// The number of values in a collection.
std::size_t CountChildren(POSObject const& collection) noexcept;

// Makes room for count values. Throws std::bad_alloc.
void ReserveChildren(POSObject& collection, std::size_t count);

// A value in a collection and its key, null in an array.
struct Child {
    BIBStringAtom* fKey;
    POSObject* fValue;
};

// The next child of collection at or behind position, which moves behind it; a null value at the
// end.
Child NextChild(POSObject& collection, std::size_t& position) noexcept;

// The work stack of a walk through nested collections, which so uses no more stack for deeper
// nesting. Frame has a member fSource, the collection that it walks, and fPosition. The stack knows
// when a collection is met again below itself, by comparing each new frame with one that stands
// half as deep or deeper: a walk that goes round in a circle meets it sooner or later.
template <class Frame>
class WalkStack {
public:
    bool IsEmpty() const noexcept { return fFrames.empty(); }
    std::size_t Depth() const noexcept { return fFrames.size(); }
    Frame& Top() noexcept { return fFrames.back(); }
    // The frames from the root to the top.
    Vector<Frame> const& Frames() const noexcept { return fFrames; }

    // False, and nothing is pushed, when the collection contains itself. Throws std::bad_alloc.
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

    // Calls step until nothing is left, or until it gives false: then false.
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
