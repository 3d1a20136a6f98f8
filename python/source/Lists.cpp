// What an administrator and a user have.
#include "pdfsettings/SettingsList.h"

#include "python/source/Objects.h"

namespace pdfsettings::python {

namespace {

py::object ListedRecord(ListedSettings const& listed) {
    py::dict applications;
    for (Visibility const& visibility : listed.Applications()) {
        applications[KeyToPython(visibility.application)] = visibility.isShown;
    }
    return Type("ListedSettings")(
        KeyToPython(listed.Name()),
        PathToPython(listed.Path()),
        EnumValue("Origin", listed.From() == Origin::kAdministrator ? "administrator" : "user"),
        listed.IsReadOnly(),
        listed.IsHidden(),
        listed.Modified().time_since_epoch().count(),
        applications,
        TupleOf(
            listed.ReadOnlyReasons(), [](std::string const& text) { return KeyToPython(text); }),
        TupleOf(listed.Shadowed(), &PathToPython));
}

// Defines a function without arguments that returns a path.
void DefPath(py::module_& module, char const* name, FilePath (*find)(), char const* doc) {
    module.def(
        name, [find] { return PathToPython(Gated([&] { return find(); })); }, doc);
}

} // namespace

void AddLists(py::module_& module) {
    module.def(
        "list_settings",
        [](Key const& application, bool hidden, bool details) {
            ListOptions const options{application.fText, hidden, details};
            return TupleOf(Gated([&] { return List(options); }), &ListedRecord);
        },
        py::arg("application") = "",
        py::kw_only(),
        py::arg("hidden") = false,
        py::arg("details") = false,
        "The settings files of the administrator's and the user's folder, sorted by name, a tuple "
        "of ListedSettings: under the display names of an application, or under those of the "
        "files. hidden lists those too that the application hides; details also finds out why "
        "files are read-only, and takes longer.");
    DefPath(
        module,
        "user_folder",
        &UserFolder,
        "The user's settings folder, which is created if it is missing, a pathlib.Path; None if "
        "the system has none.");
    DefPath(
        module,
        "administrator_folder",
        &AdministratorFolder,
        "The administrator's settings folder, which may not exist; None if it is disabled.");
    DefPath(
        module,
        "administrator_preferences",
        &AdministratorPreferences,
        "The administrator's preferences, a property list that may not exist.");
    DefPath(
        module,
        "unusable_preferences",
        &UnusablePreferences,
        "The administrator's preferences if they exist but cannot be used; else None.");
    module.def(
        "check_preferences",
        [] {
            return TupleOf(
                Gated([] { return CheckPreferences(); }), [](PreferencesProblem const& problem) {
                    return Type("PreferencesProblem")(
                        PathToPython(problem.file),
                        KeyToPython(problem.key),
                        MessageToPython(problem.message));
                });
        },
        "Entries without an effect, or with another one than they seem to have, in the preferences "
        "of administrator and user, and folders that cannot be read: a tuple of "
        "PreferencesProblem.");
    module.def(
        "is_read_only",
        [](PathArgument const& file) { return Released([&] { return IsReadOnly(file.fPath); }); },
        py::arg("file"),
        "Whether a save would raise ReadOnlyError. False if there is no file.");
}

} // namespace pdfsettings::python
