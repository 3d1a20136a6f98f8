#include "pdfsettings/Review.h"
#include "python/source/Mapping.h"
#include "python/source/Objects.h"

#include <memory>
#include <string>

namespace pdfsettings::python {

namespace {

char const* RefusalWord(Refusal refusal) {
    switch (refusal) {
    case Refusal::kNone:
        return nullptr;
    case Refusal::kInvalidFile:
        return "invalid-file";
    case Refusal::kUnknownValue:
        return "unknown-value";
    case Refusal::kMemory:
        return "memory";
    }
    return "invalid-file";
}

py::object EntryRecord(Document const& document, DocumentEntry const& entry) {
    return Type("Entry")(
        KeyToPython(entry.key.Size() == 0 ? "" : document.KeyOf(entry)),
        SpanRecord(entry.key),
        SpanRecord(entry.value),
        entry.next,
        entry.depth);
}

// An offset of a text of that size.
std::size_t RequireOffset(DocumentObject const& self, std::size_t offset) {
    if (offset > self.fDocument.Text().size()) {
        throw py::index_error("the offset is behind the end of the text");
    }
    return offset;
}

py::bytes BytesOfText(std::string const& text) {
    return py::bytes(text);
}

// The document that make returns, of the same file. Errors have the file.
template <class Make>
DocumentObject Changed(DocumentObject const& self, Make make) {
    try {
        return {Released([&] { return make(self.fDocument); }), self.fFile};
    } catch (Error const& error) {
        throw error.File().empty() ? error.In(self.fFile) : error;
    }
}

using DocumentClass = py::class_<DocumentObject>;

void AddText(DocumentClass& type) {
    type.def_property_readonly(
        "text",
        [](DocumentObject const& self) { return KeyToPython(self.fDocument.Text()); },
        "The text, a str in which bytes that are not UTF-8 are surrogates. bytes(document) are its "
        "bytes.");
    type.def(
        "__bytes__", [](DocumentObject const& self) { return BytesOfText(self.fDocument.Text()); });
    type.def_property_readonly(
        "tail",
        [](DocumentObject const& self) { return BytesOfText(self.fDocument.Tail()); },
        "The bytes after the settings.");
    type.def_property_readonly(
        "file",
        [](DocumentObject const& self) { return PathToPython(self.fFile); },
        "The path that it was read from, as it was given, a pathlib.Path; None if there is none.");
    type.def_property_readonly(
        "refusal",
        [](DocumentObject const& self) {
            char const* const word = RefusalWord(self.fDocument.WhyRefused());
            return word == nullptr ? py::none() : EnumValue("Refusal", word);
        },
        "Why the text is refused, a Refusal, or None. A refused document has no values.");
    type.def(
        "require_read",
        &RequireRead,
        "Raises ParseError, with position and id, if the text is refused.");
    type.def_property_readonly(
        "problems",
        [](DocumentObject const& self) { return Problems(self.fDocument.Findings(), self.fFile); },
        "What is refused, lost, or read otherwise than it looks, in the order of the text, a tuple "
        "of Problem. check() also reports what a schema rejects.");
}

void AddPositions(DocumentClass& type) {
    type.def_property_readonly(
        "entries",
        [](DocumentObject const& self) {
            return TupleOf(self.fDocument.Entries(), [&](DocumentEntry const& entry) {
                return EntryRecord(self.fDocument, entry);
            });
        },
        "The positions of all settings and elements in the order of the text, each before those "
        "nested in it, a tuple of Entry.");
    type.def(
        "find",
        [](DocumentObject const& self, Key const& path) {
            DocumentEntry const* const entry = self.fDocument.Find(path.fText);
            return entry == nullptr ? py::none() : EntryRecord(self.fDocument, *entry);
        },
        py::arg("path"),
        "The Entry at a path; None if there is none.");
    type.def_property_readonly(
        "body",
        [](DocumentObject const& self) -> py::object {
            auto const span = self.fDocument.Body();
            return span ? py::object(SpanRecord(*span)) : py::none();
        },
        "The first byte and the one after the last between << and >>; None without settings.");
    type.def(
        "place_of",
        [](DocumentObject const& self, std::size_t offset) {
            return PlaceRecord(self.fDocument.PlaceOf(RequireOffset(self, offset)), self.fFile);
        },
        py::arg("offset"),
        "The Place of an offset in bytes. Raises IndexError behind the end of the text.");
    type.def(
        "line_at",
        [](DocumentObject const& self, std::size_t offset) {
            return SpanRecord(self.fDocument.LineAt(RequireOffset(self, offset)));
        },
        py::arg("offset"),
        "The first byte of the line of an offset, and the one after its last, without its line "
        "end. Raises as place_of.");
}

void AddChanges(DocumentClass& type) {
    type.def(
        "with_value",
        [](DocumentObject const& self, Key const& path, py::object const& object) {
            Value const value = ToValueAt(path.fText, object);
            return Changed(self, [&](Document const& was) { return was.With(path.fText, value); });
        },
        py::arg("path"),
        py::arg("value"),
        "A document with a value at a path; missing dictionaries on the path are made, and a "
        "position equal to the size of an array appends. All other bytes stay: comments, order, "
        "forms of numbers. Raises NoValueError, UnwritableError, and ParseError if the text is "
        "refused.");
    type.def(
        "with_text",
        [](DocumentObject const& self, Key const& path, Key const& text) {
            Value::Parse(text.fText); // Its errors have positions in text, not in the file.
            return Changed(
                self, [&](Document const& was) { return was.WithText(path.fText, text.fText); });
        },
        py::arg("path"),
        py::arg("text"),
        "As with_value, for a value in the syntax of a file, whose form is kept.");
    type.def(
        "with_copy",
        [](DocumentObject const& self, Key const& path, DocumentObject const& from) {
            return Changed(self, [&](Document const& was) {
                return was.WithCopy(path.fText, from.fDocument);
            });
        },
        py::arg("path"),
        py::arg("source"),
        "As with_value, for the value at the path of another document, copied byte for byte.");
    type.def(
        "without",
        [](DocumentObject const& self, Key const& path) {
            return Changed(self, [&](Document const& was) { return was.Without(path.fText); });
        },
        py::arg("path"),
        "A document without the value at a path. Raises NoValueError if there is none.");
    type.def(
        "formatted",
        [](DocumentObject const& self, bool sort) {
            return Changed(
                self, [&](Document const& was) { return was.Formatted({.isSorted = sort}); });
        },
        py::kw_only(),
        py::arg("sort") = false,
        "A document with the same values and comments in the standard layout; sort puts settings "
        "in the order of their keys. Raises ParseError if the text is refused, UnwritableError if "
        "something in it belongs to no setting.");
}

} // namespace

void AddDocument(py::module_& module) {
    DocumentClass type(
        module,
        "Document",
        py::is_final(),
        "A settings file as text: a mapping from paths to the values that are read from it, with "
        "their positions, and changes that leave all other bytes as they are. Immutable. A text "
        "may be any str or bytes, also one that is refused.");
    type.def(
        py::init([](Bytes const& text) {
            return DocumentObject{Released([&] { return Document(text.fText); }), {}};
        }),
        py::arg("text"));
    type.def_static(
        "open",
        [](PathArgument const& file) {
            return DocumentObject{Released([&] { return OpenDocument(file.fPath); }), file.fPath};
        },
        py::arg("file"),
        "The document in a file, which may be refused. Raises FileError and BusyError.");
    AddMapping(type, [](DocumentObject const& self) { return self; });
    AddCopies(type);
    AddText(type);
    AddPositions(type);
    AddChanges(type);
    type.def("__repr__", [](DocumentObject const& self) {
        return "<pdfsettings.Document with " + std::to_string(self.fDocument.Values().size()) +
               " settings>";
    });
    Seal(type);
}

} // namespace pdfsettings::python
