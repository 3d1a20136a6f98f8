#include "pdfsettings/Compare.h"

#include "document/MakeSequence.h"
#include "format/Tokens.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace pdfsettings {

namespace {

bool IsCollection(Value const& value) {
    return value.What() == Kind::kArray || value.What() == Kind::kDictionary;
}

// Compares with an explicit stack of pairs, so that deep nesting uses no more stack.
class Comparison {
public:
    std::vector<Difference> Run(Dictionary const& before, Dictionary const& after) {
        PushEntries("", before, after);
        while (!fPending.empty()) {
            Difference pair = std::move(fPending.back());
            fPending.pop_back();
            CompareValues(std::move(pair));
        }
        return std::move(fFound);
    }

private:
    void CompareValues(Difference pair) {
        if (!pair.before || !pair.after) {
            fFound.push_back(std::move(pair));
            return;
        }
        auto const before = pair.before->If<Dictionary>();
        auto const after = pair.after->If<Dictionary>();
        if (before && after) {
            PushEntries(pair.path + "/", *before, *after);
        } else if (!PushElements(pair) && !(*pair.before == *pair.after)) {
            fFound.push_back(std::move(pair));
        }
    }

    // Makes no path for scalars that are equal.
    template <class MakePath>
    void Push(Value const& before, Value const* after, MakePath makePath) {
        if (after == nullptr || IsCollection(before) || !(before == *after)) {
            fPending.push_back(
                {makePath(), before, after == nullptr ? std::nullopt : std::optional(*after)});
        }
    }

    void PushEntries(std::string const& prefix, Dictionary const& before, Dictionary const& after) {
        std::size_t const begin = fPending.size();
        for (auto const& [key, value] : before) {
            Push(value, after.FindKey(key), [&prefix, &name = key] { return prefix + name; });
        }
        for (auto const& [key, value] : after) {
            if (before.FindKey(key) == nullptr) {
                fPending.push_back({prefix + key, std::nullopt, value});
            }
        }
        ReverseFrom(begin);
    }

    // False for values that cannot be compared element by element.
    bool PushElements(Difference const& pair) {
        auto const before = pair.before->If<Array>();
        auto const after = pair.after->If<Array>();
        if (!before || !after || before->size() != after->size()) {
            return false;
        }
        std::size_t const begin = fPending.size();
        for (std::size_t index = 0; index < before->size(); ++index) {
            Push((*before)[index], &(*after)[index], [&pair, index] {
                return pair.path + "/" + std::to_string(index);
            });
        }
        ReverseFrom(begin);
        return true;
    }

    void ReverseFrom(std::size_t begin) {
        std::reverse(fPending.begin() + static_cast<std::ptrdiff_t>(begin), fPending.end());
    }

    std::vector<Difference> fPending;
    std::vector<Difference> fFound;
};

std::optional<Value> TailValue(Document const& document) {
    return document.Tail().empty() ? std::nullopt
                                   : std::optional<Value>(RawString{document.Tail()});
}

} // namespace

Sequence<Difference> Compare(Dictionary const& before, Dictionary const& after) {
    return detail::MakeSequence::From(Comparison().Run(before, after));
}

Sequence<Difference> Compare(Document const& before, Document const& after) {
    auto differences = Comparison().Run(before.Values(), after.Values());
    if (before.Tail() != after.Tail()) {
        differences.push_back({std::string(format::kTailKey), TailValue(before), TailValue(after)});
    }
    return detail::MakeSequence::From(std::move(differences));
}

} // namespace pdfsettings
