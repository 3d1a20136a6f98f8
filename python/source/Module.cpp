#include "python/source/Objects.h"

#include <pybind11/pybind11.h>

namespace pdfsettings::python {

namespace {

bool IsMainInterpreter() {
    return PyInterpreterState_Get() == PyInterpreterState_Main();
}

char const kOnlyMain[] =
    "pdfsettings works in the main interpreter only: use a process in place of a sub-interpreter";

void SetErrorOf(std::exception_ptr failure) {
    try {
        std::rethrow_exception(std::move(failure));
    } catch (Error const& error) {
        SetError(error);
    } catch (std::filesystem::filesystem_error const& error) {
        SetError(Error(Fault::kSystem, error.code().message(), error.path1(), {}, error.code()));
    }
}

// The base of all classes of pybind11 has no contents: making one would end the program.
newfunc gMakeObject = nullptr;

PyObject* MakeUnlessBase(PyTypeObject* type, PyObject* arguments, PyObject* named) {
    PyObject* const base = py::detail::get_internals().instance_base;
    if (reinterpret_cast<PyObject*>(type) == base) {
        PyErr_SetString(PyExc_TypeError, "pybind11_object: no constructor defined");
        return nullptr;
    }
    return gMakeObject(type, arguments, named);
}

// To be called when all classes are defined. With another procedure than theirs in the base, Python
// also refuses Settings.__new__(Settings), whose contents would be missing.
void GuardBase() {
    auto* const base = reinterpret_cast<PyTypeObject*>(py::detail::get_internals().instance_base);
    gMakeObject = std::exchange(base->tp_new, &MakeUnlessBase);
}

void Fill(py::module_& module) {
    ImportTypes();
    py::register_exception_translator(&SetErrorOf);
    module.attr("__version__") = PDFSETTINGS_VERSION;
    // The module that users import has the classes: messages and pickles name it.
    module.attr("__name__") = "pdfsettings";
    module.def(
        "require_main_interpreter",
        [] {
            if (!IsMainInterpreter()) {
                throw py::import_error(kOnlyMain);
            }
        },
        "Raises ImportError in a sub-interpreter.");
    // Made while one thread is here: no fork can come between.
    Schema::Standard();
    AddSchema(module);
    AddDocument(module);
    AddSettings(module);
    AddFunctions(module);
    AddLists(module);
    AddWatcher(module);
    module.attr("__name__") = "pdfsettings._core";
    module.attr("_types") = py::module_::import("pdfsettings._types");
    ForkGate::AddToForks();
    GuardBase();
}

} // namespace

} // namespace pdfsettings::python

// As PYBIND11_MODULE makes it, but nothing of pybind11 comes to be in a sub-interpreter: its types
// would die with that.
extern "C" PYBIND11_EXPORT PyObject* PyInit__core() {
    namespace py = pybind11;
    if (!pdfsettings::python::IsMainInterpreter()) {
        PyErr_SetString(PyExc_ImportError, pdfsettings::python::kOnlyMain);
        return nullptr;
    }
    PYBIND11_CHECK_PYTHON_VERSION
    PYBIND11_ENSURE_INTERNALS_READY
    static py::module_::module_def definition;
    auto module = py::module_::create_extension_module("_core", nullptr, &definition);
    try {
        pdfsettings::python::Fill(module);
        return module.release().ptr();
    }
    PYBIND11_CATCH_INIT_EXCEPTIONS
}
