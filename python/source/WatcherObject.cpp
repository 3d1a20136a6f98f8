#include "python/source/Objects.h"

#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace pdfsettings::python {

namespace {

// A watcher that any thread may use and close.
class WatcherObject {
public:
    // The result of work with the watcher. Throws ValueError if it is closed, and in another
    // process: the system's events go to the one that reads them first.
    template <class Work>
    auto Use(Work work) {
        return Gated([&] {
            std::lock_guard const lock(fMutex);
            if (!fWatcher) {
                throw py::value_error("the watcher is closed");
            }
            if (getpid() != fProcess) {
                throw py::value_error("the watcher belongs to the process that made it");
            }
            return work(*fWatcher);
        });
    }

    void Close() {
        Gated([&] {
            std::lock_guard const lock(fMutex);
            fWatcher.reset();
        });
    }

    bool IsClosed() {
        return Gated([&] {
            std::lock_guard const lock(fMutex);
            return !fWatcher;
        });
    }

private:
    std::mutex fMutex;
    std::unique_ptr<ChangeWatcher> fWatcher = std::make_unique<ChangeWatcher>();
    pid_t fProcess = getpid();
};

// In the order of ChangeKind.
constexpr char const* kKinds[] = {
    "added", "changed", "removed", "hidden", "shown", "read-only", "writable", "look-again"};
static_assert(std::size(kKinds) == static_cast<std::size_t>(ChangeKind::kLookAgain) + 1);

py::object ChangeRecord(SettingsChange const& change) {
    return Type("Change")(
        EnumValue("ChangeKind", kKinds[static_cast<std::size_t>(change.kind)]),
        PathToPython(change.file),
        KeyToPython(change.name));
}

// A descriptor that the caller closes.
int Duplicate(ChangeWatcher& watcher) {
    int const descriptor = fcntl(watcher.Descriptor(), F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) {
        std::error_code const failure(errno, std::generic_category());
        throw Error(Fault::kSystem, failure.message(), {}, {}, failure);
    }
    return descriptor;
}

void AddDescriptors(py::class_<WatcherObject>& type) {
    type.def(
        "fileno",
        [](WatcherObject& self) {
            return self.Use([](ChangeWatcher& watcher) { return watcher.Descriptor(); });
        },
        "A descriptor for select() and the like, readable while there may be something to read; "
        "the watcher owns it. Raises ValueError after close().");
    type.def(
        "duplicate",
        [](WatcherObject& self) { return self.Use(&Duplicate); },
        "Another descriptor for the same, which the caller closes. Raises as fileno(), and "
        "FileError.");
}

} // namespace

void AddWatcher(py::module_& module) {
    py::class_<WatcherObject> type(
        module, "ChangeWatcher", py::is_final(), "The watcher below Watcher.");
    type.def(py::init<>());
    type.def(
        "add",
        [](WatcherObject& self, PathArgument const& file) {
            self.Use([&](ChangeWatcher& watcher) { watcher.Add(file.fPath); });
        },
        py::arg("file"),
        "Watches a file, which need not exist. Raises FileError, ValueError after close().");
    type.def(
        "add_folder",
        [](WatcherObject& self, PathArgument const& folder) {
            self.Use([&](ChangeWatcher& watcher) { watcher.AddFolder(folder.fPath); });
        },
        py::arg("folder"),
        "Watches the settings files in a folder, which need not exist. Raises as add().");
    type.def(
        "add_listed",
        [](WatcherObject& self, Key const& application) {
            self.Use([&](ChangeWatcher& watcher) { watcher.AddListed(application.fText); });
        },
        py::arg("application") = "",
        "Watches everything that list_settings(application) shows. Raises as add().");
    AddDescriptors(type);
    type.def(
        "read",
        [](WatcherObject& self) {
            return TupleOf(
                self.Use([](ChangeWatcher& watcher) { return watcher.Read(); }), &ChangeRecord);
        },
        "What has changed since the last call, a tuple of Change, by file; empty if nothing has. "
        "Never blocks. Raises FileError; the next call then reports what this one would have.");
    type.def(
        "close",
        [](WatcherObject& self) { self.Close(); },
        "Ends the watcher. May be called twice.");
    type.def_property_readonly(
        "closed", [](WatcherObject& self) { return self.IsClosed(); }, "Whether it is closed.");
    Seal(type);
    module.def(
        "may_miss_changes",
        [](PathArgument const& file) {
            return Released([&] { return MayMissChanges(file.fPath); });
        },
        py::arg("file"),
        "Whether changes at a path may go unreported: other machines make them, or the system "
        "itself, as in a network file system.");
}

} // namespace pdfsettings::python
