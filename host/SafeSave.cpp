#include "pdfsettings/SafeSave.h"

#include "host/save/FolderLock.h"
#include "host/save/Replace.h"
#include "host/save/SeenFile.h"
#include "host/save/Target.h"

#include <cerrno>
#include <unistd.h>

namespace pdfsettings {

using namespace detail;

namespace {

std::optional<std::string> BytesOf(std::optional<SeenFile> const& file) {
    return file ? std::optional(file->Bytes()) : std::nullopt;
}

// What is no file holds nothing that could be lost, and must stay what it is.
SaveWarnings WriteStream(Descriptor const& stream, std::string_view bytes) {
    if (!IsNullDevice(StatusOf(stream))) {
        WriteAll(stream, bytes);
    }
    return {};
}

SaveWarnings Save(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    SaveOptions const& options) {
    return target.IsStream() ? WriteStream(target.stream, bytes)
                             : Replace(target, bytes, seen, options);
}

std::string ReadStream(Descriptor const& file) {
    std::string bytes;
    char buffer[16384];
    ssize_t count = 0;
    do {
        count = read(file.Number(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        ThrowIfNegative(count);
        bytes.append(buffer, static_cast<std::size_t>(count));
        RequireSize(bytes.size());
    } while (count != 0);
    return bytes;
}

// What is no file is not opened at all: a device may start its work. Nor does opening wait for a
// pipe that took the file's place.
Descriptor OpenForReading(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !IsNullDevice(status)) {
        RequireRegular(status);
    }
    Descriptor file = OpenWithoutWaiting(Deadline(SaveOptions().timeout), [&] {
        return Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    });
    ThrowIfNegative(file.Number());
    return file;
}

void RequireReplaceable(Target const& target) {
    if (target.IsStream()) {
        return;
    }
    if (auto const file = SeenFile::Open(target.folder, target.name)) {
        file->RequireWritable(target.folder, target.name);
    }
}

} // namespace

bool IsReadOnly(std::string const& path) {
    try {
        RequireReplaceable(FindTarget(path));
        return false;
    } catch (ReadOnlyError const&) {
        return true;
    } catch (Error const&) {
        return false;
    }
}

bool IsStream(std::string const& path) {
    struct stat status {};
    return NamesDescriptor(path) || (stat(path.c_str(), &status) == 0 && IsNullDevice(status));
}

std::optional<std::string> LookAt(std::string const& path, SaveOptions const& options) {
    Target const target = FindTarget(path);
    return target.IsStream()
               ? std::nullopt
               : BytesOf(SeenFile::Open(target.folder, target.name, Deadline(options.timeout)));
}

std::string ReadFile(std::string const& path) {
    if (path.find('\0') != std::string::npos) {
        throw Error("the path holds a NUL byte");
    }
    if (NamesDescriptor(path)) {
        return ReadStream(DuplicateNamed(path));
    }
    Descriptor const file = OpenForReading(path);
    struct stat const status = StatusOf(file);
    if (IsNullDevice(status)) {
        return {};
    }
    RequireRegular(status);
    return ReadAll(file);
}

SaveWarnings
SaveSafely(std::string const& path, std::string_view bytes, SaveOptions const& options) {
    return Save(FindTarget(path), bytes, nullptr, options);
}

SaveWarnings SaveSafely(
    std::string const& path,
    std::string_view bytes,
    std::optional<std::string> const& seen,
    SaveOptions const& options) {
    return Save(FindTarget(path), bytes, &seen, options);
}

struct EditedFile::State {
    State(std::string const& path, SaveOptions const& options)
        : fTarget(FindTarget(path)),
          fOptions(options) {
        if (!fTarget.IsStream()) {
            Deadline const deadline(options.timeout);
            fLock.emplace(fTarget, deadline);
            fBytes = BytesOf(SeenFile::Open(fTarget.folder, fTarget.name, deadline));
        }
    }

    Target fTarget;
    SaveOptions fOptions;
    std::optional<FolderLock> fLock; // ends before the folder is closed
    std::optional<std::string> fBytes;
};

EditedFile::EditedFile(std::unique_ptr<State> state) : fState(std::move(state)) {}
EditedFile::~EditedFile() = default;

std::optional<std::string> const& EditedFile::Bytes() const noexcept {
    return fState->fBytes;
}

SaveWarnings EditedFile::Save(std::string_view bytes) {
    SaveWarnings warnings =
        pdfsettings::Save(fState->fTarget, bytes, &fState->fBytes, fState->fOptions);
    fState->fBytes = bytes;
    return warnings;
}

void Edit(
    std::string const& path,
    std::function<void(EditedFile&)> const& change,
    SaveOptions const& options) {
    EditedFile file(std::make_unique<EditedFile::State>(path, options));
    change(file);
}

} // namespace pdfsettings
