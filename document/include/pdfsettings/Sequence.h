// A read-only sequence of values, as functions return it.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace pdfsettings {

namespace detail {
struct MakeSequence;
}

// Immutable; copies share the values. Used in place of std::vector, whose layout depends on how a
// program is compiled.
template <class T>
class Sequence {
public:
    Sequence() noexcept = default;
    // Not movable: a moved-from sequence would have a size without values.
    Sequence(Sequence const&) noexcept = default;
    Sequence& operator=(Sequence const&) noexcept = default;
    ~Sequence() = default;

    T const* begin() const noexcept { return fFirst; }
    T const* end() const noexcept { return fFirst + fSize; }
    std::size_t size() const noexcept { return fSize; }
    bool empty() const noexcept { return fSize == 0; }

    // REQUIRES: index < size(), or the sequence is not empty.
    T const& operator[](std::size_t index) const noexcept { return fFirst[index]; }
    T const& front() const noexcept { return fFirst[0]; }
    T const& back() const noexcept { return fFirst[fSize - 1]; }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

    // Whether sizes and values are equal.
    friend bool operator==(Sequence const& left, Sequence const& right) {
        bool areEqual = left.fSize == right.fSize;
        for (std::size_t index = 0; areEqual && index < left.fSize; ++index) {
            areEqual = left[index] == right[index];
        }
        return areEqual;
    }

private:
    friend struct detail::MakeSequence;

    std::shared_ptr<void const> fOwner;
    T const* fFirst = nullptr;
    std::size_t fSize = 0;
};

} // namespace pdfsettings
