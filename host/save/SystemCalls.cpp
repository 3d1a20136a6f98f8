#include "host/detail/SystemCalls.h"

#include "pdfsettings/Error.h"
#include "platform/FileSizeSignal.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace pdfsettings::detail {

void ThrowSystemError(int error) {
    throw Error(std::generic_category().message(error));
}

void ThrowIfNegative(long result) {
    if (result < 0) {
        ThrowSystemError(errno);
    }
}

Descriptor::~Descriptor() {
    if (IsOpen()) {
        close(fNumber);
    }
}

void WriteAll(Descriptor const& file, std::string_view bytes) {
    platform::FileSizeSignalGuard const guard;
    while (!bytes.empty()) {
        ssize_t const written = write(file.Number(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        ThrowIfNegative(written);
        if (written == 0) {
            ThrowSystemError(EIO);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace pdfsettings::detail
