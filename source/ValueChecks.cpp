// The checks of single values that a schema can name.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>

#include "bib/BIBSharedBuffer.h"
#include "bib/POSNumber.h"
#include "source/PDFSettingsObject.h"

using BIB_T_NMT::CPOSNumber;
using BIB_T_NMT::CPOSObject;
using BIB_T_NMT::TBIBSharedBuffer;

namespace PDFSettingsImpl {

namespace {

constexpr double kCompatibilityLevels[] = {1.2, 1.3, 1.4, 1.5, 1.6, 1.7};
constexpr double kImageDepths[] = {-1, 1, 2, 4, 8, 16};

// The message with its NUL must leave a byte of the buffer free: hosts count on this margin.
void WriteMessage(BIBSharedBuffer* message, std::string_view text) {
    if (message == nullptr) {
        return;
    }
    TBIBSharedBuffer<char> const buffer(message, /*adopt=*/false);
    if (buffer.GetSize() > text.size() + 1) {
        std::memcpy(buffer.GetBuffer(), text.data(), text.size());
        buffer[text.size()] = '\0';
    }
}

// Whether the value is a number that is accepted.
template <class Accepts>
bool IsAccepted(POSObject* value, Accepts accepts) noexcept {
    try {
        return accepts(CPOSNumber(CPOSObject(value), /*quiet=*/false).Get());
    } catch (...) {
        return false;
    }
}

// What the runtime gets to hear: nothing is thrown, and whatever fails is a refusal.
template <class Accepts>
long Check(
    POSObject* value,
    BIBSharedBuffer* message,
    std::string_view refusal,
    Accepts accepts) noexcept {
    if (IsAccepted(value, accepts)) {
        return 1;
    }
    try {
        WriteMessage(message, refusal);
    } catch (...) {
        // The validator has words of its own.
        return 0;
    }
    return 0;
}

// Single precision makes the check tolerant of what arithmetic leaves of a level.
bool IsCompatibilityLevel(double value) noexcept {
    auto const isSameInSinglePrecision = [value](double level) {
        // The magnitude first: not every double has a single-precision value.
        return std::fabs(value) < 2 && static_cast<float>(value) == static_cast<float>(level);
    };
    return std::ranges::any_of(kCompatibilityLevels, isSameInSinglePrecision) ||
           std::ranges::find(kCompatibilityLevels, value) != std::end(kCompatibilityLevels);
}

bool IsImageDepth(double value) noexcept {
    return std::ranges::find(kImageDepths, value) != std::end(kImageDepths);
}

} // namespace

long PDFSettingsObject::CompatibilityLevelValidator(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* /*userData*/) {
    return Check(value, message, "Invalid CompatibilityLevel", IsCompatibilityLevel);
}

long PDFSettingsObject::ImageDepthValidator(
    POSObject* value, BIBStringAtom* /*key*/, BIBSharedBuffer* message, void const* /*userData*/) {
    return Check(value, message, "Invalid ImageDepth", IsImageDepth);
}

} // namespace PDFSettingsImpl
