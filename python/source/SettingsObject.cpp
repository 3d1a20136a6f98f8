#include "python/source/Mapping.h"
#include "python/source/Objects.h"

#include <memory>
#include <string>
#include <vector>

namespace pdfsettings::python {

namespace {

// A change of settings. All access is under the lock of the settings.
struct EditObject {
    std::shared_ptr<SettingsObject> fSettings;
    std::optional<Settings::Edit> fEdit; // nothing when it has ended
};

using SettingsClass = py::class_<SettingsObject, std::shared_ptr<SettingsObject>>;
using EditClass = py::class_<EditObject>;

std::shared_ptr<SettingsObject> Shared(Settings settings) {
    return std::make_shared<SettingsObject>(std::move(settings));
}

py::object ToPython(bool flag) {
    return py::bool_(flag);
}
py::object ToPython(std::int64_t number) {
    return py::int_(number);
}
py::object ToPython(double number) {
    return py::float_(number);
}
py::object ToPython(Array const& array) {
    return python::ToPython(Value(array));
}
py::object ToPython(Dictionary const& values) {
    return python::ToPython(values);
}
py::object ToPython(Name const& name) {
    return NameToPython(name.text);
}
py::object ToPython(HexString const& digits) {
    return python::ToPython(Value(digits));
}

FilePath FileOf(SettingsObject& self) {
    return self.Look([](Settings const& settings) { return settings.File(); });
}

// The value at a path as a T, or fallback if it is given and there is no stored value.
template <class T>
std::optional<T> ValueAs(SettingsObject& self, std::string const& path, bool hasFallback) {
    return self.Look([&](Settings const& settings) {
        bool const isMissing = hasFallback && !settings.Has(path);
        return isMissing ? std::nullopt : std::optional<T>(settings.Get<T>(path));
    });
}

template <class T>
py::object GetAs(SettingsObject& self, std::string const& path, py::object const& fallback) {
    auto const value = ValueAs<T>(self, path, !fallback.is(py::ellipsis()));
    return value ? ToPython(*value) : fallback;
}

// Text that is not UTF-8 is no str.
template <>
py::object
GetAs<String>(SettingsObject& self, std::string const& path, py::object const& fallback) {
    auto const value = ValueAs<String>(self, path, !fallback.is(py::ellipsis()));
    py::object text = value ? TextToPython(value->text) : fallback;
    if (value && PyBytes_Check(text.ptr())) {
        throw Error(
            Fault::kKind, path + ": expected text in UTF-8: read it as bytes", FileOf(self));
    }
    return text;
}

py::object GetBytes(SettingsObject& self, std::string const& path, py::object const& fallback) {
    auto const value = ValueAs<String>(self, path, !fallback.is(py::ellipsis()));
    return value ? py::object(py::bytes(value->text)) : fallback;
}

py::object GetAny(SettingsObject& self, std::string const& path, py::object const& fallback) {
    auto const value = ValueAs<Value>(self, path, !fallback.is(py::ellipsis()));
    return value ? python::ToPython(*value) : fallback;
}

py::object
GetOf(SettingsObject& self, std::string const& path, py::handle kind, py::object const& fallback) {
    using Getter = py::object (*)(SettingsObject&, std::string const&, py::object const&);
    struct Row {
        py::handle fKind;
        Getter fGet;
    };
    auto const type = [](PyTypeObject& object) {
        return py::handle(reinterpret_cast<PyObject*>(&object));
    };
    Row const rows[] = {
        {py::none(), &GetAny},
        {type(PyBool_Type), &GetAs<bool>},
        {type(PyLong_Type), &GetAs<std::int64_t>},
        {type(PyFloat_Type), &GetAs<double>},
        {type(PyUnicode_Type), &GetAs<String>},
        {type(PyBytes_Type), &GetBytes},
        {NameType(), &GetAs<Name>},
        {HexStringType(), &GetAs<HexString>},
        {type(PyList_Type), &GetAs<Array>},
        {type(PyDict_Type), &GetAs<Dictionary>}};
    for (Row const& row : rows) {
        if (kind.is(row.fKind)) {
            return row.fGet(self, path, fallback);
        }
    }
    throw py::type_error(
        "the kind is bool, int, float, str, bytes, Name, HexString, list, dict or None");
}

// REQUIRES of functions that use the file of settings.
void RequireFile(Settings const& settings) {
    if (settings.File().empty()) {
        throw py::value_error("the settings are not bound to a file: use save_as");
    }
}

void AddMaking(SettingsClass& type) {
    type.def(
        py::init([](py::object const& values, Bytes const& tail, Schema const* schema) {
            Dictionary const dictionary = ToSettings(values);
            return Shared(Released([&, rules = OrStandard(schema)] {
                return Settings::From(dictionary, tail.fText, rules);
            }));
        }),
        py::arg("values") = py::dict(),
        py::arg("tail") = py::bytes(),
        py::arg("schema") = py::none(),
        "Settings with these values, one per line, and with the text after them. Raises "
        "UnwritableError, with the key, for a value that no file can hold.");
    auto const copy = [](SettingsObject& self) {
        return Shared(self.Look([](Settings const& settings) { return settings; }));
    };
    type.def("__copy__", copy, "A copy, bound to the same file.");
    type.def(
        "__deepcopy__",
        [copy](SettingsObject& self, py::handle) { return copy(self); },
        py::arg("memo"),
        "As __copy__.");
}

void AddText(SettingsClass& type) {
    type.def_property_readonly(
        "text",
        [](SettingsObject& self) { return KeyToPython(self.Source().fDocument.Text()); },
        "The text of the file, or the text that save() will write: a str in which bytes that are "
        "not UTF-8 are surrogates. bytes(settings) are its bytes.");
    type.def("__bytes__", [](SettingsObject& self) {
        return py::bytes(self.Source().fDocument.Text());
    });
    type.def_property_readonly(
        "tail",
        [](SettingsObject& self) { return py::bytes(self.Source().fDocument.Tail()); },
        "The bytes after the settings.");
    type.def_property_readonly(
        "document",
        [](SettingsObject& self) { return self.Source(); },
        "The text with its positions, a Document.");
    type.def(
        "canonical_text",
        [](SettingsObject& self) {
            return KeyToPython(
                self.Examine([](Settings const& settings) { return settings.CanonicalText(); }));
        },
        "The settings in the layout of the component, a str: without comments, and with numbers "
        "rounded to its five decimals. Raises UnwritableError.");
}

void AddState(SettingsClass& type) {
    type.def(
        "value",
        [](SettingsObject& self,
           Key const& path,
           py::object const& kind,
           py::object const& fallback) { return GetOf(self, path.fText, kind, fallback); },
        py::arg("path"),
        py::arg("kind") = py::none(),
        py::arg("default") = py::ellipsis(),
        "The value at a path, or else default, or else the schema's default. kind is the class to "
        "read it as: bool, int, float, str, bytes, Name, HexString, list or dict; a str is a "
        "string of the file, never a name. Raises KindError if the value is of another kind, "
        "NoValueError, with a similar path that exists, if there is none.");
    type.def_property_readonly(
        "schema",
        [](SettingsObject& self) {
            return self.Look([](Settings const& settings) { return settings.Rules(); });
        },
        "The Schema that validates changes.");
    type.def_property_readonly(
        "file",
        [](SettingsObject& self) { return PathToPython(FileOf(self)); },
        "The absolute path of the file, a pathlib.Path; None if the settings have none.");
    type.def_property_readonly(
        "modified",
        [](SettingsObject& self) {
            return self.Look([](Settings const& settings) { return settings.IsModified(); });
        },
        "Whether there are unsaved changes; true for settings made from values.");
    type.def(
        "stale",
        [](SettingsObject& self) {
            return self.Examine([](Settings const& settings) { return settings.IsStale(); });
        },
        "Whether the file has other bytes than were last read from it or written to it, or cannot "
        "be read. False without a file.");
}

py::tuple CheckOf(SettingsObject& self, std::string const& path, py::handle object) {
    FilePath const file = FileOf(self);
    std::optional<Value> value;
    try {
        value = ToValue(object);
    } catch (Error const& error) {
        Finding const finding(Severity::kError, "unwritable", path, error.Message());
        return py::make_tuple(ProblemRecord(finding, file));
    }
    auto const check = [&](Settings const& settings) { return settings.Check(path, *value); };
    return Problems(self.Examine(check), file);
}

void AddValidation(SettingsClass& type) {
    type.def(
        "validate",
        [](SettingsObject& self) {
            return Problems(
                self.Examine([](Settings const& settings) { return settings.Validate(); }),
                FileOf(self));
        },
        "What the schema rejects, a tuple of Problem; empty if the settings are valid. A setting "
        "that the schema does not know is valid.");
    type.def(
        "warnings",
        [](SettingsObject& self) {
            return Problems(
                self.Examine([](Settings const& settings) { return settings.Warnings(); }),
                FileOf(self));
        },
        "What the schema advises against, by its rules between settings, a tuple of Problem.");
    type.def(
        "check",
        [](SettingsObject& self, Key const& path, py::object const& object) {
            return CheckOf(self, path.fText, object);
        },
        py::arg("path"),
        py::arg("value"),
        "What the schema would reject, and does not reject now, if this value were stored at a "
        "path; or why it cannot be stored. A tuple of Problem. Changes nothing.");
}

py::tuple SaveSettings(SettingsObject& self, bool overwrite, double seconds) {
    auto const save = [&](std::chrono::milliseconds time) {
        return self.Alter([&](Settings& settings) {
            RequireFile(settings);
            return settings.Save(ToOnConflict(overwrite), time);
        });
    };
    return SentencesOf(Patiently(ToWait(seconds), save));
}

py::tuple
SaveSettingsAs(SettingsObject& self, PathArgument const& file, bool overwrite, double seconds) {
    auto const save = [&](std::chrono::milliseconds time) {
        return self.Alter([&](Settings& settings) {
            return settings.SaveAs(file.fPath, ToOnConflict(overwrite), time);
        });
    };
    return SentencesOf(Patiently(ToWait(seconds), save));
}

void AddFiles(SettingsClass& type) {
    type.def(
        "reload",
        [](SettingsObject& self) {
            self.Alter([](Settings& settings) {
                RequireFile(settings);
                settings.Reload();
            });
        },
        "Reads the file again; unsaved changes are lost. Raises as open(), with nothing changed, "
        "and ValueError without a file.");
    type.def(
        "save",
        &SaveSettings,
        py::kw_only(),
        py::arg("overwrite") = false,
        py::arg("wait") = 10.0,
        "Saves the text in the file, whether it is valid or not: whatever happens, the file has "
        "the old bytes or the new ones. Waits up to wait seconds for programs that use the file. "
        "A tuple of str: what the save could not do, one sentence each. Raises ConflictError if "
        "another program changed the file, unless overwrite is set; ReadOnlyError, BusyError, "
        "FileError, and Error for a path that another user could have planted; ValueError without "
        "a file.");
    type.def(
        "save_as",
        &SaveSettingsAs,
        py::arg("file"),
        py::kw_only(),
        py::arg("overwrite") = false,
        py::arg("wait") = 10.0,
        "Saves the settings in another file, and binds them to it. As save(); raises ConflictError "
        "if the file exists, unless overwrite is set.");
}

// Work with a change that has not ended.
template <class Work>
auto With(EditObject& self, Work work) {
    return self.fSettings->Alter([&](Settings&) {
        if (!self.fEdit) {
            throw py::value_error("the change has ended");
        }
        return work(*self.fEdit);
    });
}

DocumentObject ResultOf(EditObject& self) {
    Document const document = With(self, [](Settings::Edit& edit) { return edit.Result(); });
    return {document, FileOf(*self.fSettings)};
}

void Commit(EditObject& self) {
    Findings const findings = With(self, [&](Settings::Edit& edit) {
        auto found = edit.Commit();
        if (found.empty()) {
            self.fEdit.reset();
        }
        return found;
    });
    if (!findings.empty()) {
        ThrowRejected(findings, FileOf(*self.fSettings));
    }
}

void Drop(EditObject& self) {
    self.fSettings->Alter([&](Settings&) { self.fEdit.reset(); });
}

Value ValueFor(EditObject& self, std::string const& path, py::handle object) {
    return InFile(FileOf(*self.fSettings), [&] { return ToValueAt(path, object); });
}

void AddContext(EditClass& type) {
    type.def("__enter__", [](py::object self) { return self; });
    type.def(
        "__exit__",
        [](EditObject& self, py::object const& kind, py::handle, py::handle) {
            bool const hasEnded =
                self.fSettings->Alter([&](Settings&) { return !self.fEdit.has_value(); });
            if (hasEnded) {
                return;
            }
            if (!kind.is_none()) {
                Drop(self);
                return;
            }
            try {
                Commit(self);
            } catch (...) {
                Drop(self);
                throw;
            }
        },
        py::arg("kind"),
        py::arg("error"),
        py::arg("trace"),
        "Commits the changes, or drops them if the block raised.");
    type.def(
        "commit",
        &Commit,
        "Makes the changes, all or none, and ends. Raises ValidationError with the problems that "
        "they would add: then nothing has changed, and the change goes on. Raises ConflictError if "
        "the settings were changed since this began.");
    type.def("drop", &Drop, "Ends without changes. May be called twice.");
}

void AddChanges(EditClass& type) {
    type.def(
        "__setitem__",
        [](EditObject& self, Key const& path, py::object const& object) {
            Value const value = ValueFor(self, path.fText, object);
            With(self, [&](Settings::Edit& edit) { edit.Set(path.fText, value); });
        },
        py::arg("path"),
        py::arg("value"),
        "Stores a value at a path; missing dictionaries on the path are made, and a position equal "
        "to the size of an array appends. Raises NoValueError if the path is not possible, "
        "UnwritableError for a key or a value that would not read back as the same, TypeError for "
        "an object that is no value.");
    type.def(
        "__delitem__",
        [](EditObject& self, Key const& path) {
            With(self, [&](Settings::Edit& edit) { edit.Remove(path.fText); });
        },
        py::arg("path"),
        "Removes the value at a path. Raises NoValueError if there is none, UnwritableError if a "
        "collection would be left empty that must not be.");
    type.def(
        "set_text",
        [](EditObject& self, Key const& path, Key const& text) {
            With(self, [&](Settings::Edit& edit) { edit.SetText(path.fText, text.fText); });
        },
        py::arg("path"),
        py::arg("text"),
        "Stores a value in the syntax of a file, whose form is kept: \"<FEFF>\". Raises as a "
        "stored value, and ParseError, with what the schema expects, if text is not a value.");
}

void AddElements(EditClass& type) {
    type.def(
        "append",
        [](EditObject& self, Key const& path, py::object const& object) {
            Value const value = ValueFor(self, path.fText, object);
            With(self, [&](Settings::Edit& edit) { edit.AddElement(path.fText, value); });
        },
        py::arg("path"),
        py::arg("value"),
        "Adds a value to the end of the array at a path, unless an equal one is in it. An array "
        "that is not stored begins as its default, or else empty. Raises as a stored value, and "
        "KindError if there is another value.");
    type.def(
        "remove",
        [](EditObject& self, Key const& path, py::object const& object) {
            Value const value = ValueFor(self, path.fText, object);
            With(self, [&](Settings::Edit& edit) { edit.RemoveElement(path.fText, value); });
        },
        py::arg("path"),
        py::arg("value"),
        "Removes all elements that equal a value from the array at a path. Raises as append(), and "
        "NoValueError if there is none.");
    type.def(
        "copy",
        [](EditObject& self, py::object const& source, Key const& pattern) {
            Document const from = ToReadDocument(source).fDocument;
            return With(
                self, [&](Settings::Edit& edit) { return edit.CopyMatching(from, pattern.fText); });
        },
        py::arg("source"),
        py::arg("pattern"),
        "Copies from Settings, a Document or a file, byte for byte, what is at a path, or all "
        "settings whose keys match a pattern or are of the group of that name. The number of "
        "values copied. Raises as a stored value, ParseError if the source is refused, FileError "
        "and BusyError.");
}

void AddEdit(py::module_& module) {
    EditClass type(
        module,
        "Edit",
        py::is_final(),
        "A set of changes that are made together or not at all, of Settings.edit(). At the end of "
        "a with block they are committed; if the block raises, nothing has changed. Comments and "
        "layout stay. After its end every use but drop() raises ValueError.");
    AddContext(type);
    AddChanges(type);
    AddElements(type);
    type.def_property_readonly(
        "result", &ResultOf, "The text and the values with the changes so far, a Document.");
    type.def(
        "check",
        [](EditObject& self) {
            return Problems(
                With(self, [](Settings::Edit& edit) { return edit.Check(); }),
                FileOf(*self.fSettings));
        },
        "What the schema rejects in the result and did not before, a tuple of Problem.");
    type.def(
        "warnings",
        [](EditObject& self) {
            return Problems(
                With(self, [](Settings::Edit& edit) { return edit.Warnings(); }),
                FileOf(*self.fSettings));
        },
        "What the schema advises against in the result and did not before, a tuple of Problem.");
    Seal(type);
}

} // namespace

void AddSettings(py::module_& module) {
    SettingsClass type(
        module,
        "Settings",
        py::is_final(),
        "A set of settings: a mapping from paths to values, with its text, its comments, its "
        "schema and its file. open() and parse() make one, Settings(values) too. Change it in "
        "\"with settings.edit() as edit\", then save() it. Any thread may use it at any time; a "
        "thread waits while another one changes or saves it.");
    AddMaking(type);
    AddMapping(type, [](SettingsObject& self) { return self.Source(); });
    AddText(type);
    AddState(type);
    AddValidation(type);
    AddFiles(type);
    AddEdit(module);
    type.def(
        "edit",
        [](std::shared_ptr<SettingsObject> const& self) {
            return EditObject{self, self->Alter([](Settings& settings) {
                                  return std::optional(settings.Change());
                              })};
        },
        "Begins a change, an Edit.");
    type.def("__repr__", [](SettingsObject& self) {
        FilePath const file = FileOf(self);
        return MessageToPython(
            "<pdfsettings.Settings" + (file.empty() ? "" : " of " + file.string()) + ">");
    });
    Seal(type);
    module.def(
        "open",
        [](PathArgument const& file, Schema const* schema) {
            return Shared(Released(
                [&, rules = OrStandard(schema)] { return Settings::Open(file.fPath, rules); }));
        },
        py::arg("file"),
        py::arg("schema") = py::none(),
        "The Settings in a file, validated by a Schema or the standard one. Raises ParseError, "
        "with "
        "file and position, if it is not a settings file; MissingFileError, FileError and "
        "BusyError.");
    module.def(
        "parse",
        [](Bytes const& text, Schema const* schema) {
            return Shared(Released(
                [&, rules = OrStandard(schema)] { return Settings::Parse(text.fText, rules); }));
        },
        py::arg("text"),
        py::arg("schema") = py::none(),
        "Settings from a text, any str or bytes. Raises ParseError with the position.");
}

} // namespace pdfsettings::python
