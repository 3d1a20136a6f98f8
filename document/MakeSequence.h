// Making sequences, for this library only.
#pragma once

#include "pdfsettings/Sequence.h"

#include <memory>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

struct MakeSequence {
    template <class T>
    static Sequence<T> From(std::vector<T> values) {
        auto const owner = std::make_shared<std::vector<T> const>(std::move(values));
        Sequence<T> sequence;
        sequence.fFirst = owner->data();
        sequence.fSize = owner->size();
        sequence.fOwner = owner;
        return sequence;
    }
};

} // namespace pdfsettings::detail
