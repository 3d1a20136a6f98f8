// The work stack of a walk through nested collections.
#pragma once

#include "runtime/values/PosCollections.h"

namespace bibrt {

// Frame has a member fSource, the collection that it walks, and fPosition. The stack knows when a
// collection is met again below itself, by comparing each new frame with one that stands half as
// deep or deeper: a walk that goes round in a circle meets it sooner or later.
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
