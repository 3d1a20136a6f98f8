// The objects behind the classes of the module, and what defines these classes.
#pragma once

#include "pdfsettings/ChangeWatcher.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"
#include "python/source/Conversion.h"
#include "python/source/Interpreter.h"
#include "python/source/Records.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <pybind11/pybind11.h>
#include <shared_mutex>
#include <string>
#include <utility>

namespace pdfsettings::python {

// A document and the file that it was read from, if any. Immutable.
struct DocumentObject {
    Document fDocument;
    FilePath fFile;
};

// The result of work on what a file holds. Its errors name the file, but for those about a position
// in another text or about another file.
template <class Work>
auto InFile(FilePath const& file, Work work) {
    try {
        return work();
    } catch (Error const& error) {
        bool const isOfOther = error.Where() || error.Code() == Fault::kSystem;
        throw error.File().empty() && !isOfOther ? error.In(file) : error;
    }
}

// Settings that any thread may use at any time.
class SettingsObject {
public:
    explicit SettingsObject(Settings settings) : fSettings(std::move(settings)) {}

    // The result of read(settings), a quick look that uses no Python object. The interpreter's lock
    // is only released where another thread is changing the settings. REQUIRES, here and below:
    // the caller has the interpreter's lock.
    template <class Read>
    auto Look(Read read) {
        std::shared_lock lock(fMutex, std::try_to_lock);
        if (lock) {
            return InFile(fSettings.File(), [&] { return read(std::as_const(fSettings)); });
        }
        return Examine(std::move(read));
    }

    // The same for long work, without the interpreter's lock.
    template <class Read>
    auto Examine(Read read) {
        return Gated([&] {
            std::shared_lock const lock(fMutex);
            return InFile(fSettings.File(), [&] { return read(std::as_const(fSettings)); });
        });
    }

    // The result of change(settings), which is alone with the settings and uses no Python object.
    template <class Change>
    auto Alter(Change change) {
        return Gated([&] {
            std::unique_lock const lock(fMutex);
            return InFile(fSettings.File(), [&] { return change(fSettings); });
        });
    }

    DocumentObject Source() {
        return Look([](Settings const& settings) {
            return DocumentObject{settings.Source(), settings.File()};
        });
    }

private:
    std::shared_mutex fMutex;
    Settings fSettings;
};

// The text of Settings, of a Document, or of the file at a path, which is read. Throws TypeError
// for other objects, and Error as OpenDocument.
DocumentObject ToDocument(py::handle source);

// The same for a text that is not refused. Throws Error (kSyntax), with file and position.
DocumentObject ToReadDocument(py::handle source);

// Throws Error (kSyntax), with file and position, if the text is refused.
void RequireRead(DocumentObject const& document);

// The schema of an argument, or the standard one for null.
inline Schema OrStandard(Schema const* schema) {
    return schema == nullptr ? Schema::Standard() : *schema;
}

inline OnConflict ToOnConflict(bool overwrite) {
    return overwrite ? OnConflict::kOverwrite : OnConflict::kRefuse;
}

// The result of attempt; nothing where a file is busy, unless this is the last attempt.
template <class Attempt>
auto Try(Attempt attempt, bool isLast) -> std::optional<decltype(attempt())> {
    try {
        return attempt();
    } catch (Error const& error) {
        if (error.Code() != Fault::kBusy || isLast) {
            throw;
        }
        return std::nullopt;
    }
}

// The result of attempt(time), which waits for a file no longer than time and then throws Error
// (kBusy). Attempts take turns with the handlers of signals: Ctrl-C ends the wait.
template <class Attempt>
auto Patiently(std::chrono::milliseconds wait, Attempt attempt) {
    using std::chrono::milliseconds;
    using std::chrono::steady_clock;
    constexpr milliseconds kTurn{200};
    auto const end = steady_clock::now() + wait;
    for (;;) {
        auto const left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
        auto const turn = std::clamp(left, milliseconds(), kTurn);
        if (auto result = Try([&] { return attempt(turn); }, left <= kTurn)) {
            return std::move(*result);
        }
        if (PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
    }
}

inline py::tuple SentencesOf(SaveWarnings const& warnings) {
    return TupleOf(warnings, [](std::string const& sentence) { return MessageToPython(sentence); });
}

// Makes an object of a class its own copy: it never changes.
template <class T, class... Options>
void AddCopies(py::class_<T, Options...>& type) {
    type.def("__copy__", [](py::object self) { return self; });
    type.def(
        "__deepcopy__", [](py::object self, py::handle) { return self; }, py::arg("memo"));
}

// To be called when a class is complete. From then on Python cannot change it, give its objects
// another class, or make objects without contents by unpickling. The class must be final: a
// subclass could use an object before it has contents.
template <class T, class... Options>
void Seal(py::class_<T, Options...>& type) {
    type.def(
        "__reduce_ex__",
        [](py::handle, py::handle) -> py::object {
            throw py::type_error("this object cannot be pickled: use its text");
        },
        py::arg("protocol"));
    auto* const raw = reinterpret_cast<PyTypeObject*>(type.ptr());
    raw->tp_flags |= Py_TPFLAGS_IMMUTABLETYPE;
    PyType_Modified(raw);
}

// Each adds classes or functions to the module.
void AddSchema(py::module_& module);
void AddDocument(py::module_& module);
void AddSettings(py::module_& module);
void AddFunctions(py::module_& module);
void AddLists(py::module_& module);
void AddWatcher(py::module_& module);

} // namespace pdfsettings::python
