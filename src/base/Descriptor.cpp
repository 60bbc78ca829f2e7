#include "base/Descriptor.h"

std::error_code Descriptor::Write(std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t written = write(number, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return LastError();
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

ssize_t Descriptor::Read(char* to, std::size_t size) const
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(number, to + done, size - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}
