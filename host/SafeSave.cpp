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

// Puts a new file in the place of an old one without losing a change of another program. The two
// are exchanged in one step, so both names always have a whole file. The old file then has the
// hidden name, where no other program finds it, and can be checked once more: if no program has it
// open for writing and it is as it was read, it is deleted. Otherwise the two are exchanged back,
// and the save waits for the writer or fails with a conflict. If the new file was also changed
// meanwhile, both versions are kept, and the error names the hidden file. Where files cannot be
// exchanged, the old file is checked and then replaced.
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
    // False if a program has the old file open for writing; the old file is then in its place
    // again.
    bool Attempt() {
        if (!fOld.IsAt(fTarget.folder, fTarget.name)) {
            ThrowConflict();
        }
        if (!Move(fTarget, fNew.Name(), RENAME_EXCHANGE)) {
            return ReplaceAtOnce();
        }
        fNew.SetKept(/*isKept=*/true);
        if (IsOldFileWhole()) {
            if (unlinkat(fTarget.folder.Number(), fNew.Name().c_str(), 0) != 0) {
                fWarnings->push_back("its old content is still there as " + fNew.Name());
            }
            return true;
        }
        TakeBack();
        if (!fHasWriter) {
            ThrowConflict();
        }
        return false;
    }

    // Without an exchange, the check just before this is the best possible.
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

    // Checked after the exchange: a program that opened the old file earlier may still write to it.
    bool IsOldFileWhole() {
        try {
            fHasWriter = fOld.HasWriter();
            return !fHasWriter && fOld.IsAt(fTarget.folder, fNew.Name());
        } catch (...) {
            TakeBack();
            throw;
        }
    }

    // Exchanges the two files back. If another program meanwhile wrote to the new file or replaced
    // it, the file under the hidden name is that program's, and stays.
    void TakeBack() {
        bool const isBack = Move(fTarget, fNew.Name(), RENAME_EXCHANGE);
        if (!isBack || fNew.Seen().HasWriter() || !fNew.Seen().IsAt(fTarget.folder, fNew.Name())) {
            throw Error(
                Fault::kConflict,
                "changed since it was read, and again meanwhile: its old content is kept as " +
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

// Renames a new file to the target's name, which must not exist. Some file systems cannot rename
// without replacing, and some have no hard links.
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

// Makes bytes the contents of the target. seen: the bytes that the file must have now (none: no
// file); null to skip this test. REQUIRES: target is not a stream.
//
// The folder is locked, so that programs with this library save one after another. The old file is
// opened once; its bytes, permissions and identity come from this descriptor, and the bytes are
// compared with seen. The new bytes are written to a hidden temporary file in the same folder,
// which gets the old file's owner, permissions and attributes (fewer if need be, never more) and is
// flushed. The two files are then exchanged (Exchange). Without an old file, the temporary file is
// renamed to the target's name, unless this name is now in use. Finally, hidden files of
// interrupted saves are removed and the folder is flushed. Links were resolved before, by
// FindTarget: all steps use the descriptor of the folder, so a link or folder that is replaced on
// the path cannot redirect the save. If a step fails, the target has either the old bytes or the
// new ones.
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
    // Only after the save, since a leftover could have been the only copy of these bytes. Without a
    // full lock, a leftover may belong to a save that is still running, so none is removed.
    std::vector<std::string> ours;
    if (lock.Warning().empty()) {
        ours.emplace_back(bytes);
        if (found) {
            ours.push_back(*found);
        }
    }
    RemoveLeftovers(target.folder, ours, &warnings);
    // A folder that cannot be read has its warning already. Some file systems cannot flush folders.
    if (target.isReadable && fsync(target.folder.Number()) != 0 && !IsUnsupported(errno)) {
        warnings.emplace_back("its folder could not be flushed: a power failure may undo the save");
    }
    return warnings;
}

// A stream has no contents that could be lost, and is never replaced.
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

// Tests the type before opening the file: opening a device may start an operation.
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

// The result of work. Adds the file to its errors.
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
    std::optional<FolderLock> fLock; // unlocks before fTarget closes the folder
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
