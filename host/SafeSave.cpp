#include "pdfsettings/SafeSave.h"

#include "document/MakeSequence.h"
#include "host/save/HiddenFile.h"
#include "host/save/SeenFile.h"
#include "host/save/Target.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>
#include <vector>

namespace pdfsettings {

using namespace detail;

namespace {

using Warnings = std::vector<std::string>;

struct Saving {
    std::chrono::milliseconds fWait;
    OnConflict fOnConflict;
};

std::optional<std::string> BytesOf(std::optional<SeenFile> const& file) {
    return file ? std::optional(file->Bytes()) : std::nullopt;
}

[[noreturn]] void ThrowConflict() {
    throw Error(Fault::kConflict, "changed since it was read");
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
    Exchange(Target const& target, SeenFile const& oldFile, HiddenFile& newFile, Warnings* warnings)
        : fTarget(target),
          fOld(oldFile),
          fNew(newFile),
          fWarnings(warnings) {}

    void Run(Deadline deadline) {
        while (fOld.HasWriter() || !Attempt()) {
            if (!deadline.Pause()) {
                throw Error(Fault::kBusy, "another program has it open for writing; try again");
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
            throw Error(
                Fault::kConflict,
                "changed since it was read, and again meanwhile: what it held is kept as " +
                    fNew.Name() + " in its folder");
        }
        fNew.SetKept(/*isKept=*/false);
    }

    Target const& fTarget;
    SeenFile const& fOld;
    HiddenFile& fNew;
    Warnings* fWarnings;
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
Warnings Replace(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    Saving const& saving) {
    Deadline const deadline(saving.fWait);
    FolderLock const lock(target, deadline);
    auto const old = SeenFile::Open(target.folder, target.name, deadline);
    if (old) {
        old->RequireWritable(target.folder, target.name);
    }
    auto const found = old ? std::optional(old->Bytes()) : std::nullopt;
    if (seen != nullptr && saving.fOnConflict == OnConflict::kRefuse && found != *seen) {
        ThrowConflict();
    }
    Warnings warnings;
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
Warnings WriteStream(Descriptor const& stream, std::string_view bytes) {
    if (!IsNullDevice(StatusOf(stream))) {
        WriteAll(stream, bytes);
    }
    return {};
}

SaveWarnings SaveAt(
    Target const& target,
    std::string_view bytes,
    std::optional<std::string> const* seen,
    Saving const& saving) {
    return MakeSequence::From(
        target.IsStream() ? WriteStream(target.stream, bytes)
                          : Replace(target, bytes, seen, saving));
}

// What is no file is not opened at all: a device may start its work.
Descriptor OpenForReading(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !IsNullDevice(status)) {
        RequireRegular(status);
    }
    Descriptor file = OpenWithoutWaiting(Deadline(kUsualWait), [&] {
        return Descriptor(open(path.c_str(), kReadingAtOnce | O_CLOEXEC));
    });
    ThrowIfNegative(file.Number());
    return file;
}

std::string ReadWhole(std::string const& path) {
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

// What work gives. Its errors name the file.
template <class Work>
auto On(FilePath const& path, Work work) {
    try {
        return work();
    } catch (Error const& error) {
        throw error.In(path);
    }
}

} // namespace

bool IsReadOnly(FilePath const& path) {
    try {
        Target const target = FindTarget(path.native());
        auto const file =
            target.IsStream() ? std::nullopt : SeenFile::Open(target.folder, target.name);
        if (file) {
            file->RequireWritable(target.folder, target.name);
        }
        return false;
    } catch (Error const& error) {
        return error.Code() == Fault::kReadOnly;
    }
}

bool IsStream(FilePath const& path) {
    struct stat status {};
    return NamesDescriptor(path.native()) ||
           (stat(path.c_str(), &status) == 0 && IsNullDevice(status));
}

std::optional<std::string> LookAt(FilePath const& path, std::chrono::milliseconds wait) {
    return On(path, [&] {
        Target const target = FindTarget(path.native());
        return target.IsStream()
                   ? std::nullopt
                   : BytesOf(SeenFile::Open(target.folder, target.name, Deadline(wait)));
    });
}

std::string ReadFile(FilePath const& path) {
    return On(path, [&] { return ReadWhole(path.native()); });
}

SaveWarnings
SaveSafely(FilePath const& path, std::string_view bytes, std::chrono::milliseconds wait) {
    return On(path, [&] {
        return SaveAt(FindTarget(path.native()), bytes, nullptr, {wait, OnConflict::kRefuse});
    });
}

SaveWarnings SaveSafely(
    FilePath const& path,
    std::string_view bytes,
    std::optional<std::string> const& seen,
    OnConflict onConflict,
    std::chrono::milliseconds wait) {
    return On(path, [&] {
        return SaveAt(FindTarget(path.native()), bytes, &seen, {wait, onConflict});
    });
}

struct FileLock::State {
    State(FilePath const& path, std::chrono::milliseconds wait)
        : fPath(path.empty() ? path : std::filesystem::absolute(path)),
          fWait(wait),
          fTarget(FindTarget(path.native())) {
        if (!fTarget.IsStream()) {
            Deadline const deadline(wait);
            fLock.emplace(fTarget, deadline);
            fBytes = BytesOf(SeenFile::Open(fTarget.folder, fTarget.name, deadline));
        }
    }

    FilePath fPath;
    std::chrono::milliseconds fWait;
    Target fTarget;
    std::optional<FolderLock> fLock; // ends before the folder is closed
    std::optional<std::string> fBytes;
};

FileLock::FileLock(FilePath const& path, std::chrono::milliseconds wait)
    : fState(On(path, [&] { return std::make_unique<State>(path, wait); })) {}
FileLock::~FileLock() = default;

FilePath const& FileLock::File() const noexcept {
    return fState->fPath;
}

std::optional<std::string> const& FileLock::Bytes() const noexcept {
    return fState->fBytes;
}

SaveWarnings FileLock::Save(std::string_view bytes, OnConflict onConflict) {
    auto warnings = On(fState->fPath, [&] {
        return SaveAt(fState->fTarget, bytes, &fState->fBytes, {fState->fWait, onConflict});
    });
    fState->fBytes = bytes;
    return warnings;
}

} // namespace pdfsettings
