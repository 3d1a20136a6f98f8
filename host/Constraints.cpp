#include "host/detail/Constraints.h"

#include "api/BIBRuntime.h"
#include "format/SettingPath.h"
#include "host/detail/Validation.h"

#include <algorithm>
#include <set>
#include <utility>

namespace pdfsettings {

namespace detail {

namespace {

std::string TextOf(Value const* value) {
    auto const name = value == nullptr ? std::nullopt : value->If<Name>();
    return name ? name->text : std::string();
}

std::string Joined(std::vector<std::string> const& texts, char const* between) {
    std::string all;
    for (std::string const& text : texts) {
        all += (all.empty() ? "" : between) + text;
    }
    return all;
}

// Reads one constraint, and puts it into words.
class ConstraintReader {
public:
    ConstraintReader(Dictionary const& rule, SettingForm const& form) : fRule(rule), fForm(form) {}

    ConstraintData Read() {
        ConstraintData data;
        std::vector<std::string> parts = Tests("then");
        if (auto const paths = Listed("ordered"); !paths.empty()) {
            parts.push_back(paths.front() + " is at most " + paths.back());
        }
        if (auto const paths = Listed("disjoint"); !paths.empty()) {
            parts.push_back(Joined(paths, " and ") + " have no common element");
        }
        if (auto const paths = Listed("exclusive"); !paths.empty()) {
            parts.push_back("at most one of " + Joined(paths, ", ") + " is true");
        }
        data.fText = Joined(parts, ", and ");
        auto const conditions = Tests("when");
        data.fText += conditions.empty() ? "" : " where " + Joined(conditions, " and ");
        data.fLevel =
            TextOf(fRule.FindKey("severity")) == "warning" ? Severity::kWarning : Severity::kError;
        data.fHelp = TextOf(fRule.FindKey("doc"));
        data.fPaths = std::move(fPaths);
        return data;
    }

private:
    void AddPath(std::string const& path) {
        if (std::ranges::find(fPaths, path) == fPaths.end()) {
            fPaths.push_back(path);
        }
    }

    std::vector<std::string> Listed(char const* key) {
        std::vector<std::string> paths;
        Value const* const value = fRule.FindKey(key);
        for (Value const& path : value == nullptr ? Array() : value->As<Array>()) {
            paths.push_back(TextOf(&path));
            AddPath(paths.back());
        }
        return paths;
    }

    std::vector<std::string> Tests(char const* key) {
        std::vector<std::string> texts;
        Value const* const value = fRule.FindKey(key);
        for (auto const& [path, test] : value == nullptr ? Dictionary() : value->As<Dictionary>()) {
            texts.push_back(path + " is " + TestText(path, test));
            AddPath(path);
        }
        return texts;
    }

    std::string TestText(std::string const& path, Value const& test) const {
        auto const parts = test.If<Dictionary>();
        if (!parts) {
            return fForm(path, test).Text();
        }
        std::vector<std::string> texts;
        for (auto const& [key, limit] : *parts) {
            std::string values;
            for (Value const& value : Elements(limit)) {
                values += (values.empty() ? "" : ", ") + fForm(path, value).Text();
            }
            char const* const words = key == "is"    ? ""
                                      : key == "not" ? "not "
                                      : key == "in"  ? "one of "
                                      : key == "min" ? "at least "
                                                     : "at most ";
            texts.push_back(words + values);
        }
        return Joined(texts, " and ");
    }

    // The elements of an array, or else the value itself.
    static Array Elements(Value const& value) {
        Array elements = value.If<Array>().value_or(Array());
        if (value.What() != Kind::kArray) {
            elements.push_back(value);
        }
        return elements;
    }

    Dictionary const& fRule;
    SettingForm const& fForm;
    std::vector<std::string> fPaths;
};

// Values as constraints look at them: scalars, elements of arrays, and dictionaries on the path to
// a setting. What is nested deeper than any path is left out.
class RuntimeValue {
public:
    explicit RuntimeValue(Tables const& tables) : fTables(tables) {}

    // A dictionary, unowned, of the members of values with one of these keys.
    Ref<POSDict> Make(Dictionary const& values, std::set<std::string> const& keys) const {
        Ref<POSDict> made = Share(fTables, fTables.dicts.NewPOSDict());
        for (auto const& [key, value] : values) {
            if (keys.contains(key)) {
                Put(made.get(), key, Make(value, kDeepest));
            }
        }
        return made;
    }

private:
    static constexpr int kDeepest = 10;

    Ref<POSObject> Make(Value const& value, int depth) const {
        std::string const bytes(value.Bytes());
        switch (value.What()) {
        case Kind::kNumber:
            return Own(fTables.numbers.NewPOSNumber(value.As<double>()));
        case Kind::kString:
            return Own(NewBytes("JoboptionsString", bytes));
        case Kind::kHexString:
            return Own(NewBytes("JoboptionsUnicodeString", bytes));
        case Kind::kArray:
            return MakeArray(depth > 0 ? value.As<Array>() : Array(), depth);
        case Kind::kDictionary:
            return MakeDict(depth > 0 ? value.As<Dictionary>() : Dictionary(), depth);
        default:
            return Own(fTables.strings.NewPOSString(bytes.c_str()));
        }
    }

    Ref<POSObject> MakeArray(Array const& values, int depth) const {
        Ref<POSObject> made = Own(fTables.arrays.NewPOSArray());
        for (Value const& value : values) {
            Ref<POSObject> const element = Make(value, depth - 1);
            fTables.arrays.Append(reinterpret_cast<POSArray*>(made.get()), element.get());
        }
        return made;
    }

    Ref<POSObject> MakeDict(Dictionary const& values, int depth) const {
        Ref<POSObject> made = Own(fTables.dicts.NewPOSDict());
        for (auto const& [key, value] : values) {
            Put(reinterpret_cast<POSDict*>(made.get()), key, Make(value, depth - 1));
        }
        return made;
    }

    POSBinData* NewBytes(char const* type, std::string const& bytes) const {
        return fTables.binData.NewPOSBinData(
            type, reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size());
    }

    void Put(POSDict* dict, std::string const& key, Ref<POSObject> const& value) const {
        fTables.dicts.Put(dict, MakeAtom(fTables, key).get(), value.get());
    }

    template <class T>
    Ref<POSObject> Own(T* object) const {
        return Share(fTables, reinterpret_cast<POSObject*>(object));
    }

    Tables const& fTables;
};

// The findings of one check.
struct Violations {
    Document const& fDocument;
    std::vector<Finding> fFindings;

    static void
    Add(char const* path,
        char const* text,
        int isWarning,
        char const* const* concerned,
        unsigned long concernedCount,
        void* self) {
        auto& violations = *static_cast<Violations*>(self);
        Document const& document = violations.fDocument;
        std::vector<Finding> related;
        for (unsigned long i = 0; i < concernedCount; ++i) {
            std::string const other = concerned[i];
            if (other != path) {
                related.push_back(violations.Concerned(other));
            }
        }
        Span const span = SpanOf(document, path);
        violations.fFindings.emplace_back(
            isWarning != 0 ? Severity::kWarning : Severity::kError,
            "rule",
            path,
            text,
            span,
            document.PlaceOf(span.begin),
            std::move(related));
    }

    // Without its value, which may be long, or a password.
    Finding Concerned(std::string const& path) const {
        return MakeFinding(
            fDocument, Severity::kWarning, "rule", SpanOf(fDocument, path), path, "");
    }
};

} // namespace

std::vector<std::shared_ptr<ConstraintData const>>
ReadConstraints(Dictionary const& schema, SettingForm const& form) {
    std::vector<std::shared_ptr<ConstraintData const>> constraints;
    Value const* const entry = schema.FindKey("rules");
    auto const rules = entry == nullptr ? std::nullopt : entry->If<Array>();
    for (Value const& rule : rules.value_or(Array())) {
        constraints.push_back(std::make_shared<ConstraintData const>(
            ConstraintReader(rule.As<Dictionary>(), form).Read()));
    }
    return constraints;
}

std::vector<Finding> ViolatedConstraints(Document const& document, Schema const& schema) {
    POSDict* const dict = ConstraintCheck::DictOf(schema);
    if (dict == nullptr) {
        return {};
    }
    std::set<std::string> keys;
    for (Constraint const& constraint : schema.Constraints()) {
        for (std::string const& path : constraint.Paths()) {
            keys.emplace(format::FirstPart(path));
        }
    }
    auto const settings = RuntimeValue(RuntimeTables()).Make(document.Values(), keys);
    Violations violations{document, {}};
    if (BIBRuntimeCheckRules(dict, settings.get(), &Violations::Add, &violations) == 0) {
        throw std::bad_alloc();
    }
    return std::move(violations.fFindings);
}

} // namespace detail

Constraint::Constraint(std::shared_ptr<detail::ConstraintData const> data) noexcept
    : fData(std::move(data)) {}

Severity Constraint::Level() const noexcept {
    return fData->fLevel;
}

std::span<std::string const> Constraint::Paths() const noexcept {
    return fData->fPaths;
}

std::string const& Constraint::Text() const noexcept {
    return fData->fText;
}

std::string const& Constraint::Help() const noexcept {
    return fData->fHelp;
}

} // namespace pdfsettings
