#include "host/detail/RulesText.h"

#include "host/detail/RuntimeValues.h"

namespace pdfsettings::detail {

namespace {

class Reduction {
public:
    explicit Reduction(Tables const& tables)
        : fTables(tables),
          fElementRule(MakeAtom(tables, "of")),
          fUnused{MakeAtom(tables, "doc"), MakeAtom(tables, "label"), MakeAtom(tables, "default")} {
    }

    void Reduce(POSDict* schema) const {
        for (char const* const key : {"groups", "rules"}) {
            AtomRef const atom = MakeAtom(fTables, key);
            POSObject* const entry = fTables.dicts.Get(schema, atom.get());
            if (entry != nullptr && fTables.arrays.IsPOSArray(entry) != 0) {
                fTables.dicts.Remove(schema, atom.get());
            }
        }
        ForEachEntry(fTables, schema, [this](std::string const& /*key*/, POSObject* structure) {
            ReduceStructure(structure);
        });
    }

private:
    void ReduceStructure(POSObject* structure) const {
        auto* const settings = reinterpret_cast<POSDict*>(structure);
        ForEachEntry(fTables, settings, [this](std::string const& key, POSObject* value) {
            key == "optional" ? ReduceRules(value) : ReduceRule(value);
        });
    }

    void ReduceRules(POSObject* optional) const {
        auto* const settings = reinterpret_cast<POSDict*>(optional);
        ForEachEntry(fTables, settings, [this](std::string const& /*key*/, POSObject* rule) {
            ReduceRule(rule);
        });
    }

    // Reduces a rule, the rule of its elements, and so on.
    void ReduceRule(POSObject* source) const {
        while (source != nullptr && fTables.dicts.IsPOSDict(source) != 0) {
            auto* const rule = reinterpret_cast<POSDict*>(source);
            for (AtomRef const& key : fUnused) {
                fTables.dicts.Remove(rule, key.get());
            }
            source = fTables.dicts.Get(rule, fElementRule.get());
        }
    }

    Tables const& fTables;
    AtomRef fElementRule;
    AtomRef fUnused[3];
};

} // namespace

std::string RulesText(Tables const& tables, POSDict* schema) {
    Reduction(tables).Reduce(schema);
    BIBPositionableStream* made = nullptr;
    ThrowIfError(tables, tables.streams.NewPositionableMemoryStream(&made));
    Ref<BIBPositionableStream> const stream = Share(tables, made);
    auto* const object = reinterpret_cast<POSObject*>(schema);
    ThrowIfError(tables, tables.objects.DebugDumpRewind(object, stream.get()));
    return ReadStream(tables, stream.get());
}

} // namespace pdfsettings::detail
