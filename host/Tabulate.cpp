#include "pdfsettings/Compare.h"

#include "document/MakeSequence.h"
#include "format/SettingPath.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace pdfsettings {

namespace {

// The settings of all sets by their paths, in the order in which they are met.
class Table {
public:
    explicit Table(std::size_t sets) : fSets(sets) {}

    // Adds the values of one set, with an explicit stack, so that deep nesting uses no more stack.
    void Add(std::size_t set, Dictionary const& values) {
        Push("", values);
        while (!fWaiting.empty()) {
            auto const [path, value] = std::move(fWaiting.back());
            fWaiting.pop_back();
            auto const dictionary = value.If<Dictionary>();
            if (dictionary && dictionary->size() != 0) {
                Push(path + "/", *dictionary);
            } else {
                RowOf(path).values[set] = value;
            }
        }
    }

    std::vector<ComparedSetting> Take() { return std::move(fRows); }

private:
    void Push(std::string const& prefix, Dictionary const& dictionary) {
        std::size_t const begin = fWaiting.size();
        for (auto const& [key, value] : dictionary) {
            fWaiting.emplace_back(prefix + key, value);
        }
        std::reverse(fWaiting.begin() + static_cast<std::ptrdiff_t>(begin), fWaiting.end());
    }

    ComparedSetting& RowOf(std::string const& path) {
        auto const [place, isNew] = fPlaces.emplace(path, fRows.size());
        if (isNew) {
            ComparedSetting row;
            row.path = path;
            row.values.resize(fSets);
            fRows.push_back(std::move(row));
        }
        return fRows[place->second];
    }

    std::size_t fSets;
    std::vector<std::pair<std::string, Value>> fWaiting;
    std::unordered_map<std::string, std::size_t> fPlaces;
    std::vector<ComparedSetting> fRows;
};

// Where a schema has a setting: the positions of its group and of its rule.
class Order {
public:
    explicit Order(Schema const& schema) {
        for (std::string const& group : schema.Groups()) {
            for (Rule const& rule : schema.RulesOf(group)) {
                fPlaces.emplace(rule.Path(), fPlaces.size());
            }
        }
        for (Rule const& rule : schema.Rules()) {
            fPlaces.emplace(rule.Path(), fPlaces.size());
        }
    }

    // Greater than all others for a setting that the schema does not have, but not for one in a
    // setting that it has.
    std::size_t PlaceOf(std::string_view path) const {
        std::size_t place = fPlaces.size();
        std::size_t end = 0;
        while (end < path.size()) {
            std::size_t const begin = end == 0 ? 0 : end + 1;
            end = begin + std::max<std::size_t>(format::FirstPart(path.substr(begin)).size(), 1);
            auto const known = fPlaces.find(std::string(path.substr(0, end)));
            if (known == fPlaces.end()) {
                break;
            }
            place = known->second;
        }
        return place;
    }

private:
    std::unordered_map<std::string, std::size_t> fPlaces;
};

bool Differs(ComparedSetting const& row) {
    return std::ranges::any_of(row.values, [&](std::optional<Value> const& value) {
        return !(value == row.values.front());
    });
}

} // namespace

Sequence<ComparedSetting> Tabulate(std::span<Document const> sets, Schema const& schema) {
    Table table(sets.size());
    for (std::size_t set = 0; set < sets.size(); ++set) {
        table.Add(set, sets[set].Values());
    }
    std::vector<ComparedSetting> rows = table.Take();
    for (ComparedSetting& row : rows) {
        Rule const* const rule = schema.Find(row.path);
        Rule const* const around = schema.Find(format::FirstPart(row.path));
        row.label = rule == nullptr ? "" : rule->Label();
        row.group = around == nullptr ? "" : around->Group();
        row.differs = Differs(row);
    }
    Order const order(schema);
    std::vector<std::pair<std::size_t, std::size_t>> places; // with the position among rows
    places.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        places.emplace_back(order.PlaceOf(rows[i].path), i);
    }
    std::ranges::sort(places);
    std::vector<ComparedSetting> sorted;
    sorted.reserve(rows.size());
    for (auto const& [place, i] : places) {
        sorted.push_back(std::move(rows[i]));
    }
    return detail::MakeSequence::From(std::move(sorted));
}

} // namespace pdfsettings
