#include "pdfsettings/SafeSave.h"

#include "host/save/HiddenFile.h"
#include "host/save/SeenFile.h"
#include "host/save/Target.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace pdfsettings {

using namespace detail;

namespace {

std::optional<std::string> BytesOf(std::optional<SeenFile> const& file) {
    return file ? std::optional(file->Bytes()) : std::nullopt;
}

[[noreturn]] void ThrowConflict() {
    throw ConflictError("changed since it was read");
}

bool Move(Target const& target, std::string const& name, unsigned flags) {
    int const folder = target.folder.Number();
    return renameat2(folder, name.c_str(), folder, target.name.c_str(), flags) == 0;
}

// Lets a new file take the place of an old one, which is deleted only when nothing can be lost by
// that: the two are exchanged, and then the old one can be looked at where nobody else
// finds it any more.
class Exchange {
public:
    Exchange(
        Target const& target, SeenFile const& oldFile, HiddenFile& newFile, SaveWarnings* warnings)
        : fTarget(target),
          fOld(oldFile),
          fNew(newFile),
          fWarnings(warnings) {}

    void Run(Deadline deadline) {
        while (fOld.HasWriter() || !Attempt()) {
            if (!deadline.Pause()) {
                throw BusyError("another program has it open for writing; try again");
            }
        }
    }

private:
    // False when a program has the old file open for writing, which then is in its place again.
    bool Attempt() {
        if (!fOld.StandsAt(fTarget.folder, fTarget.name)) {
            ThrowConflict();
        }
        if (!Move(fTarget, fNew.Name(), RENAME_EXCHANGE)) {
            return ReplaceAtOnce();
        }
        fNew.SetKept(/*isKept=*/true);
        if (IsOldFileWhole()) {
            if (unlinkat(fTarget.folder.Number(), fNew.Name().c_str(), 0) != 0) {
                fWarnings->push_back("what it held before is still there as " + fNew.Name());
            }
            return true;
        }
        TakeBack();
        if (!fHasWriter) {
            ThrowConflict();
        }
        return false;
    }

    // Where two files cannot be exchanged, what was compared a moment ago must do.
    bool ReplaceAtOnce() {
        if (errno == ENOENT) {
            ThrowConflict();
        }
        if (!IsUnsupported(errno) || !Move(fTarget, fNew.Name(), 0)) {
            ThrowSystemError(errno);
        }
        fNew.SetKept(/*isKept=*/true);
        return true;
    }

    // After the exchange: a program that opened the old file before may still write to it.
    bool IsOldFileWhole() {
        try {
            fHasWriter = fOld.HasWriter();
            return !fHasWriter && fOld.StandsAt(fTarget.folder, fNew.Name());
        } catch (...) {
            TakeBack();
            throw;
        }
    }

    // Puts what was found in the old file's place back there. Somebody may have written to the new
    // file meanwhile, or replaced it: then what came out now is theirs and stays.
    void TakeBack() {
        bool const isBack = Move(fTarget, fNew.Name(), RENAME_EXCHANGE);
        if (!isBack || fNew.Seen().HasWriter() ||
            !fNew.Seen().StandsAt(fTarget.folder, fNew.Name())) {
            throw ConflictError(
                "changed since it was read, and again meanwhile: what it held is kept as " +
                fNew.Name() + " in its folder");
        }
        fNew.SetKept(/*isKept=*/false);
    }

    Target const& fTarget;
    SeenFile const& fOld;
    HiddenFile& fNew;
    SaveWarnings* fWarnings;
    bool fHasWriter = false;
};

// Gives a new file the target's name, which nothing has. Not every file system can refuse to
// replace, and not every one has hard links.
void TakeFreeName(Target const& target, HiddenFile& file) {
    int const folder = target.folder.Number();
    struct stat status {};
    bool isMoved = Move(target, file.Name(), RENAME_NOREPLACE);
    if (!isMoved && IsUnsupported(errno)) {
        if (linkat(folder, file.Name().c_str(), folder, target.name.c_str(), 0) == 0) {
            return;
        }
        if (errno != EEXIST && !Examine(target.folder, target.name, &status)) {
            isMoved = Move(target, file.Name(), 0);
        }
    }
    if (!isMoved) {
        errno == EEXIST ? ThrowConflict() : ThrowSystemError(errno);
    }
    file.SetKept(/*isKept=*/true);
}

// Makes bytes the contents of the target, under the lock on its folder. seen is what is to stand
// there now, or null where that does not matter. REQUIRES: target is no stream.
SaveWarnings Replace(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    SaveOptions const& options) {
    Deadline const deadline(options.timeout);
    FolderLock const lock(target, deadline);
    auto const old = SeenFile::Open(target.folder, target.name, deadline);
    if (old) {
        old->RequireWritable(target.folder, target.name);
    }
    auto const found = old ? std::optional(old->Bytes()) : std::nullopt;
    if (seen != nullptr && !options.overwriteChanged && found != *seen) {
        ThrowConflict();
    }
    SaveWarnings warnings;
    if (!lock.Warning().empty()) {
        warnings.push_back(lock.Warning());
    }
    HiddenFile file(target, bytes, old ? &old->Traits() : nullptr, &warnings);
    if (old) {
        Exchange(target, *old, file, &warnings).Run(deadline);
    } else {
        TakeFreeName(target, file);
    }
    // Only now: before, a leftover could be the only copy of these bytes. Where the lock does not
    // keep all others out, one may belong to a save that goes on.
    std::vector<std::string> ours;
    if (lock.Warning().empty()) {
        ours.emplace_back(bytes);
        if (found) {
            ours.push_back(*found);
        }
    }
    RemoveLeftovers(target.folder, ours, &warnings);
    // A folder that may not be read has its warning already, and not every file system flushes
    // folders.
    if (target.isReadable && fsync(target.folder.Number()) != 0 && !IsUnsupported(errno)) {
        warnings.emplace_back(
            "its folder could not be flushed, so a power failure may undo the save");
    }
    return warnings;
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

// What is no file is not opened at all: a device may start its work.
Descriptor OpenForReading(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !IsNullDevice(status)) {
        RequireRegular(status);
    }
    Descriptor file = OpenWithoutWaiting(Deadline(SaveOptions().timeout), [&] {
        return Descriptor(open(path.c_str(), kReadingAtOnce | O_CLOEXEC));
    });
    ThrowIfNegative(file.Number());
    return file;
}

} // namespace

bool IsReadOnly(std::string const& path) {
    try {
        Target const target = FindTarget(path);
        auto const file =
            target.IsStream() ? std::nullopt : SeenFile::Open(target.folder, target.name);
        if (file) {
            file->RequireWritable(target.folder, target.name);
        }
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
    RequireWhole(path);
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
