#include "host/watch/FolderEvents.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

constexpr std::uint32_t kNameEvents =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
constexpr std::uint32_t kContentEvents = kNameEvents | IN_CLOSE_WRITE;

// Large enough for an event with a name of maximum length, and for many ordinary ones.
constexpr std::size_t kBufferSize = std::size_t{64} << 10;

bool IsFolderUnwatchable(int error) noexcept {
    return error == ENOENT || error == ENOTDIR || error == EACCES || error == ELOOP ||
           error == ENAMETOOLONG;
}

} // namespace

FolderEvents::FolderEvents() : fEvents(Opened(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))) {}

std::optional<FolderNumber>
FolderEvents::Watch(std::filesystem::path const& folder, Notice notice) {
    std::uint32_t const events = notice == Notice::kNames ? kNameEvents : kContentEvents;
    int const number =
        inotify_add_watch(fEvents.Number(), folder.c_str(), events | IN_ONLYDIR | IN_MASK_ADD);
    if (number < 0 && IsFolderUnwatchable(errno)) {
        return std::nullopt;
    }
    ThrowIfNegative(number);
    return number;
}

void FolderEvents::Forget(FolderNumber folder) noexcept {
    inotify_rm_watch(fEvents.Number(), folder);
}

void FolderEvents::Read(Listener const& listener) {
    alignas(inotify_event) std::array<char, kBufferSize> buffer;
    ssize_t const size = read(fEvents.Number(), buffer.data(), buffer.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    ThrowIfNegative(size);
    for (std::size_t offset = 0; offset < static_cast<std::size_t>(size);) {
        inotify_event event{};
        std::memcpy(&event, buffer.data() + offset, sizeof event);
        char const* const name = buffer.data() + offset + sizeof event;
        offset += sizeof event + event.len;
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            listener(std::nullopt, {});
        } else if (event.len != 0 || (event.mask & (IN_IGNORED | IN_UNMOUNT)) != 0) {
            listener(event.wd, event.len != 0 ? std::string_view(name) : std::string_view());
        }
    }
}

} // namespace pdfsettings::detail
