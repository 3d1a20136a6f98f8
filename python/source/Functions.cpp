// Functions over settings, documents and files.
#include "pdfsettings/Compare.h"
#include "pdfsettings/Merge.h"
#include "pdfsettings/Repair.h"
#include "pdfsettings/Review.h"
#include "python/source/Objects.h"

#include <string>
#include <vector>

namespace pdfsettings::python {

namespace {

py::object OrNone(std::optional<Value> const& value) {
    return value ? ToPython(*value) : py::none();
}

// A single str would be taken for a sequence of letters.
std::vector<std::string> TextsOf(py::object const& texts) {
    if (PyUnicode_Check(texts.ptr()) || PyBytes_Check(texts.ptr())) {
        throw py::type_error("expected several texts, for example a list");
    }
    std::vector<std::string> all;
    for (py::handle const text : py::iter(texts)) {
        all.push_back(BytesOf(text));
    }
    return all;
}

// The schema of an argument; else that of settings, if source is one.
Schema SchemaFor(py::handle source, Schema const* schema) {
    if (schema == nullptr && py::isinstance<SettingsObject>(source)) {
        return py::cast<SettingsObject&>(source).Look(
            [](Settings const& settings) { return settings.Rules(); });
    }
    return OrStandard(schema);
}

py::tuple Check(
    py::object const& source,
    Schema const* schema,
    bool strict,
    py::object const& known,
    py::object const& ignore) {
    DocumentObject const checked = ToDocument(source);
    Schema const rules = SchemaFor(source, schema);
    ReviewOptions const options{strict, TextsOf(known), TextsOf(ignore)};
    return Problems(
        Gated([&] { return Review(checked.fDocument, rules, options); }), checked.fFile);
}

py::object RepairSource(py::object const& source, Schema const* schema) {
    DocumentObject const broken = ToDocument(source);
    Schema const rules = SchemaFor(source, schema);
    auto const [document, repairs] = Gated([&] { return Repair(broken.fDocument, rules); });
    return Type("Repaired")(
        DocumentObject{document, broken.fFile}, Problems(repairs, broken.fFile));
}

py::tuple CompareSources(py::object const& before, py::object const& after) {
    Document const first = ToReadDocument(before).fDocument;
    Document const second = ToReadDocument(after).fDocument;
    return TupleOf(
        Released([&] { return Compare(first, second); }), [](Difference const& difference) {
            return Type("Difference")(
                KeyToPython(difference.path), OrNone(difference.before), OrNone(difference.after));
        });
}

py::tuple TabulateSources(py::object const& sources, Schema const* schema) {
    PathArgument one;
    if (Load(sources, one) || py::isinstance<SettingsObject>(sources) ||
        py::isinstance<DocumentObject>(sources)) {
        throw py::type_error("expected several sets, for example a list of paths");
    }
    std::vector<Document> sets;
    for (py::handle const source : py::iter(sources)) {
        sets.push_back(ToReadDocument(source).fDocument);
    }
    auto const settings =
        Released([&, rules = OrStandard(schema)] { return Tabulate(sets, rules); });
    return TupleOf(settings, [](ComparedSetting const& setting) {
        return Type("ComparedSetting")(
            KeyToPython(setting.path),
            KeyToPython(setting.label),
            KeyToPython(setting.group),
            TupleOf(setting.values, &OrNone),
            setting.differs);
    });
}

py::object MergeSources(py::object const& base, py::object const& ours, py::object const& theirs) {
    Document const first = ToReadDocument(base).fDocument;
    DocumentObject const second = ToReadDocument(ours);
    Document const third = ToReadDocument(theirs).fDocument;
    auto const merged = Released([&] { return Merge(first, second.fDocument, third); });
    return Type("Merged")(
        DocumentObject{merged.document, second.fFile},
        TupleOf(merged.conflicts, [](MergeConflict const& conflict) {
            return Type("MergeConflict")(
                KeyToPython(conflict.path),
                OrNone(conflict.base),
                OrNone(conflict.ours),
                OrNone(conflict.theirs),
                conflict.isMarked);
        }));
}

py::tuple ExplainSettings(SettingsObject& settings) {
    auto const explained = settings.Examine([](Settings const& read) { return Explain(read); });
    return TupleOf(explained, [](ExplainedSetting const& setting) {
        return Type("ExplainedSetting")(
            RuleRecord(setting.rule), OrNone(setting.value), setting.isStored, setting.isChanged);
    });
}

std::string TextOf(py::handle data) {
    return py::isinstance<DocumentObject>(data) || py::isinstance<SettingsObject>(data)
               ? ToDocument(data).fDocument.Text()
               : BytesOf(data);
}

py::tuple Save(
    PathArgument const& file,
    py::object const& data,
    py::object const& seen,
    bool overwrite,
    double seconds) {
    std::string const bytes = TextOf(data);
    auto const wait = ToWait(seconds);
    bool const mayHaveAny = seen.is(py::ellipsis());
    auto const expected = mayHaveAny || seen.is_none() ? std::nullopt : std::optional(TextOf(seen));
    return SentencesOf(Patiently(wait, [&](std::chrono::milliseconds time) {
        return Gated([&] {
            return mayHaveAny
                       ? SaveSafely(file.fPath, bytes, time)
                       : SaveSafely(file.fPath, bytes, expected, ToOnConflict(overwrite), time);
        });
    }));
}

void AddReviews(py::module_& module) {
    module.def(
        "check",
        &Check,
        py::arg("source"),
        py::arg("schema") = py::none(),
        py::kw_only(),
        py::arg("strict") = false,
        py::arg("known") = py::tuple(),
        py::arg("ignore") = py::tuple(),
        "All problems of Settings, a Document or the file at a path: what is refused, lost or read "
        "otherwise than it looks, what the schema rejects, and what the component would write "
        "otherwise; in the order of the text, a tuple of Problem. strict also reports settings "
        "that the schema does not know, but for those whose paths match the patterns in known. "
        "Problems with the ids in ignore are left out. Raises FileError and BusyError.");
    module.def(
        "repair",
        &RepairSource,
        py::arg("source"),
        py::arg("schema") = py::none(),
        "Repairs the mistakes in a Document, Settings or the file at a path that have only one "
        "meaning. A Repaired, with the new Document; nothing is saved: see save(). Raises "
        "FileError and BusyError.");
}

void AddComparisons(py::module_& module) {
    module.def(
        "compare",
        &CompareSources,
        py::arg("before"),
        py::arg("after"),
        "The differences of two sets by key and value, a tuple of Difference; each set is "
        "Settings, a Document or a path. The text after the settings has the key "
        "\"AlembicorData\". Raises ParseError, with file and position, if one of the texts is "
        "refused; FileError and BusyError.");
    module.def(
        "tabulate",
        &TabulateSources,
        py::arg("sets"),
        py::arg("schema") = py::none(),
        "All settings of several sets side by side, a tuple of ComparedSetting: in the schema's "
        "groups and their order, then those that it does not know. Raises as compare().");
    module.def(
        "merge",
        &MergeSources,
        py::arg("base"),
        py::arg("ours"),
        py::arg("theirs"),
        "Merges, key by key, what two sets changed since the one that both began with, a Merged. "
        "Our comments and layout stay. Raises as compare().");
    module.def(
        "explain",
        &ExplainSettings,
        py::arg("settings"),
        "The settings that the schema knows, with their values, except those inside arrays: group "
        "by group, a tuple of ExplainedSetting.");
}

void AddTexts(py::module_& module) {
    module.def(
        "save",
        &Save,
        py::arg("file"),
        py::arg("data"),
        py::kw_only(),
        py::arg("seen") = py::ellipsis(),
        py::arg("overwrite") = false,
        py::arg("wait") = 10.0,
        "Makes the text of a Document or of Settings, a str or bytes the contents of a file, as "
        "Settings.save() does. seen is what the file holds, or None for no file: if it holds "
        "something else, raises ConflictError, unless overwrite is set.");
    module.def(
        "parse_value",
        [](Key const& text) { return ToPython(Value::Parse(text.fText)); },
        py::arg("text"),
        "The value that text is in a file. Raises ParseError with the position in text.");
    module.def(
        "value_text",
        [](py::object const& value) { return KeyToPython(ToValue(value).WritableText()); },
        py::arg("value"),
        "A value in the syntax of a file, a str: \"[ /Courier ]\". Raises UnwritableError for a "
        "value that no file can hold.");
}

} // namespace

DocumentObject ToDocument(py::handle source) {
    if (py::isinstance<DocumentObject>(source)) {
        return py::cast<DocumentObject const&>(source);
    }
    if (py::isinstance<SettingsObject>(source)) {
        return py::cast<SettingsObject&>(source).Source();
    }
    PathArgument file;
    if (!Load(source, file)) {
        throw py::type_error("expected Settings, a Document or the path of a file");
    }
    return {Released([&] { return OpenDocument(file.fPath); }), file.fPath};
}

DocumentObject ToReadDocument(py::handle source) {
    DocumentObject document = ToDocument(source);
    RequireRead(document);
    return document;
}

void RequireRead(DocumentObject const& document) {
    try {
        document.fDocument.RequireRead();
    } catch (Error const& error) {
        throw error.In(document.fFile);
    }
}

void AddFunctions(py::module_& module) {
    AddReviews(module);
    AddComparisons(module);
    AddTexts(module);
}

} // namespace pdfsettings::python
