#include "host/InputFile.h"

#include "host/Interrupt.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mesk::host {

namespace {

constexpr int lookPauseMs = 100;
constexpr std::size_t bufferBytes = 65536;

/// A stream is known by its descriptor, which lives on the heap until it is closed.
int descriptorOf(void* cookie)
{
    return *static_cast<int*>(cookie);
}

ssize_t readUnlessInterrupted(void* cookie, char* buffer, std::size_t size)
{
    pollfd source = {descriptorOf(cookie), POLLIN, 0};
    while (!interruptRequested()) {
        const int ready = poll(&source, 1, lookPauseMs);
        if (ready > 0) {
            return read(source.fd, buffer, size);
        }
        if (ready < 0 && errno != EINTR) {
            return -1;
        }
    }
    return 0;
}

int closeDescriptor(void* cookie)
{
    const std::unique_ptr<int> descriptor(static_cast<int*>(cookie));
    return close(*descriptor);
}

bool isRegular(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

std::FILE* openInput(const std::string& path)
{
    const int descriptor =
        path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = nullptr;
    if (isRegular(descriptor)) {
        file = fdopen(descriptor, "rb");
    } else {
        cookie_io_functions_t functions = {};
        functions.read = readUnlessInterrupted;
        functions.close = closeDescriptor;
        auto cookie = std::make_unique<int>(descriptor);
        file = fopencookie(cookie.get(), "rb", functions);
        if (file != nullptr) {
            (void)cookie.release(); // the stream's now
        }
    }
    if (file == nullptr) {
        close(descriptor);
    } else {
        (void)std::setvbuf(file, nullptr, _IOFBF, bufferBytes);
    }
    return file;
}

} // namespace mesk::host
