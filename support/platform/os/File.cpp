#include "support/platform/os/File.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kivo::templates::platform::os {

namespace {

/// What is larger isn't a file of text.
constexpr std::size_t textFileMaxBytes = std::size_t{64} << 20U;

class FileDescriptor {
public:
    // Without blocking, so that a pipe of that name can't hold the caller up.
    explicit FileDescriptor(const std::string& path)
        : m_number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }

    bool isRegularFile() const
    {
        struct stat status {};
        return m_number >= 0 && ::fstat(m_number, &status) == 0 && S_ISREG(status.st_mode);
    }

    /// @returns the bytes read, 0 at the end, negative on an error.
    ssize_t read(char* buffer, std::size_t size) const
    {
        ssize_t count = 0;
        do {
            count = ::read(m_number, buffer, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    const int m_number;
};

} // namespace

bool createDirectory(const std::string& path)
{
    if (::mkdir(path.c_str(), 0777) == 0)
        return true;
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool readTextFile(const std::string& path, std::string& text)
{
    const FileDescriptor file(path);
    if (!file.isRegularFile())
        return false;
    std::string bytes;
    std::array<char, 16384> buffer;
    ssize_t count = 0;
    while ((count = file.read(buffer.data(), buffer.size())) > 0) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        if (bytes.size() > textFileMaxBytes)
            return false;
    }
    if (count < 0)
        return false;
    text.swap(bytes);
    return true;
}

} // namespace kivo::templates::platform::os
