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
SaveWarnings WriteStream(Target const& target, std::string_view bytes) {
    std::string const path = "/proc/self/fd/" + std::to_string(target.stream.Number());
    Descriptor const file(open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    ThrowIfNegative(file.Number());
    WriteAll(file, bytes);
    return {};
}

SaveWarnings Save(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    SaveOptions const& options) {
    return target.IsStream() ? WriteStream(target, bytes) : Replace(target, bytes, seen, options);
}

std::string ReadStream(Descriptor const& file) {
    std::string bytes;
    char buffer[65536];
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

// Opening a pipe must not wait for its other end. A descriptor of this process has one.
Descriptor OpenForReading(std::string const& path) {
    int const waiting = NamesDescriptor(path) ? 0 : O_NONBLOCK;
    Descriptor file(open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC | waiting));
    ThrowIfNegative(file.Number());
    return file;
}

} // namespace

bool IsReadOnly(std::string const& path) {
    try {
        Target const target = FindTarget(path);
        if (!target.IsStream()) {
            if (auto const file = SeenFile::Open(target.folder, target.name)) {
                file->RequireWritable(target.folder, target.name);
            }
        }
        return false;
    } catch (Error const& error) {
        return dynamic_cast<ReadOnlyError const*>(&error) != nullptr;
    }
}

std::optional<std::string> LookAt(std::string const& path) {
    Target const target = FindTarget(path);
    return target.IsStream() ? std::nullopt : BytesOf(SeenFile::Open(target.folder, target.name));
}

std::string ReadFile(std::string const& path) {
    if (path.find('\0') != std::string::npos) {
        throw Error("the path holds a NUL byte");
    }
    Descriptor const file = OpenForReading(path);
    struct stat const status = StatusOf(file);
    if (NamesDescriptor(path) || IsNullDevice(status)) {
        return ReadStream(file);
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
    State(std::string const& path, SaveOptions const& given)
        : target(FindTarget(path)),
          options(given) {
        if (!target.IsStream()) {
            lock.emplace(target, Deadline(options.timeout));
            bytes = BytesOf(SeenFile::Open(target.folder, target.name));
        }
    }

    Target target;
    SaveOptions options;
    std::optional<FolderLock> lock; // releases before the folder is closed
    std::optional<std::string> bytes;
};

EditedFile::EditedFile(std::unique_ptr<State> state) : fState(std::move(state)) {}
EditedFile::~EditedFile() = default;

std::optional<std::string> const& EditedFile::Bytes() const noexcept {
    return fState->bytes;
}

SaveWarnings EditedFile::Save(std::string_view bytes) {
    SaveWarnings warnings =
        pdfsettings::Save(fState->target, bytes, &fState->bytes, fState->options);
    fState->bytes = bytes;
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
