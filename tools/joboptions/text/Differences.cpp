#include "tools/joboptions/text/Differences.h"

#include "tools/joboptions/commands/Output.h"
#include "tools/joboptions/text/Utf8.h"
#include "tools/joboptions/text/ValueText.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace joboptions {

using pdfsettings::Array;
using pdfsettings::Dictionary;
using pdfsettings::Value;

namespace {

// Compares from a list of pairs, the last one first, so that no nesting is too deep.
class Comparison {
public:
    std::vector<Difference> Run(Dictionary const& before, Dictionary const& after) {
        PushEntries("", before, after);
        while (!fPending.empty()) {
            Difference const pair = std::move(fPending.back());
            fPending.pop_back();
            CompareValues(pair);
        }
        return std::move(fFound);
    }

private:
    void CompareValues(Difference const& pair) {
        if (pair.before == nullptr || pair.after == nullptr) {
            fFound.push_back(pair);
            return;
        }
        auto const* const before = pair.before->If<Dictionary>();
        auto const* const after = pair.after->If<Dictionary>();
        if (before != nullptr && after != nullptr) {
            PushEntries(pair.path + "/", *before, *after);
        } else if (!PushElements(pair) && !AreSame(*pair.before, *pair.after)) {
            fFound.push_back(pair);
        }
    }

    // Not a number is the same as itself here.
    static bool AreSame(Value const& before, Value const& after) {
        auto const* const left = before.If<double>();
        auto const* const right = after.If<double>();
        bool const areNaN =
            left != nullptr && right != nullptr && std::isnan(*left) && std::isnan(*right);
        return areNaN || before == after;
    }

    // No path is made for what is the same at first sight.
    template <class MakePath>
    void Push(Value const& before, Value const* after, MakePath makePath) {
        if (after == nullptr || IsCollection(before) || !AreSame(before, *after)) {
            fPending.push_back({makePath(), &before, after});
        }
    }

    void PushEntries(std::string const& prefix, Dictionary const& before, Dictionary const& after) {
        std::size_t const begin = fPending.size();
        for (std::size_t place = 0; place < before.Size(); ++place) {
            std::string const& key = before.KeyAt(place);
            Push(before.ValueAt(place), after.Get(key), [&] { return prefix + key; });
        }
        for (std::size_t place = 0; place < after.Size(); ++place) {
            std::string const& key = after.KeyAt(place);
            if (before.Get(key) == nullptr) {
                fPending.push_back({prefix + key, nullptr, &after.ValueAt(place)});
            }
        }
        TurnFrom(begin);
    }

    // False for values that are not compared element by element.
    bool PushElements(Difference const& pair) {
        auto const* const before = pair.before->If<Array>();
        auto const* const after = pair.after->If<Array>();
        if (before == nullptr || after == nullptr || before->Size() != after->Size()) {
            return false;
        }
        std::size_t const begin = fPending.size();
        for (std::size_t index = 0; index < before->Size(); ++index) {
            Push((*before)[index], &(*after)[index], [&] {
                return fmt::format("{}/{}", pair.path, index);
            });
        }
        TurnFrom(begin);
        return true;
    }

    void TurnFrom(std::size_t begin) {
        std::reverse(fPending.begin() + static_cast<std::ptrdiff_t>(begin), fPending.end());
    }

    std::vector<Difference> fPending;
    std::vector<Difference> fFound;
};

} // namespace

bool IsOfNumbers(Difference const& difference) {
    return As<double>(difference.before) != nullptr && As<double>(difference.after) != nullptr;
}

std::vector<Difference> Compare(Dictionary const& before, Dictionary const& after) {
    return Comparison().Run(before, after);
}

std::string DifferencesText(std::vector<Difference> const& differences, bool color) {
    std::string text;
    for (auto const& [path, before, after] : differences) {
        std::string const name = VisibleText(path);
        if (after == nullptr) {
            text += fmt::format("{} {} {}\n", Colored("-", kRed, color), name, OneLine(*before));
        } else if (before == nullptr) {
            text += fmt::format("{} {} {}\n", Colored("+", kGreen, color), name, OneLine(*after));
        } else {
            text += fmt::format(
                "{} {} {} -> {}\n",
                Colored("~", kYellow, color),
                name,
                OneLine(*before),
                OneLine(*after));
        }
    }
    return text;
}

} // namespace joboptions
