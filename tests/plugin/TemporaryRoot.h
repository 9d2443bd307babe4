#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>

namespace mesk::tests {

/// A folder of its own for one test, gone with the object.
class TemporaryRoot {
public:
    TemporaryRoot()
    {
        std::string name = std::filesystem::temp_directory_path() / "mesk-XXXXXX";
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder " + name);
        m_path = std::filesystem::canonical(name);
    }
    TemporaryRoot(const TemporaryRoot&) = delete;
    TemporaryRoot& operator=(const TemporaryRoot&) = delete;
    ~TemporaryRoot() { std::filesystem::remove_all(m_path); }

    const std::filesystem::path& path() const { return m_path; }

    /// Copies a file into the folder. @param to relative, folders are made.
    std::filesystem::path copy(const std::filesystem::path& from, const std::filesystem::path& to) const
    {
        std::filesystem::create_directories((m_path / to).parent_path());
        std::filesystem::copy_file(from, m_path / to);
        return m_path / to;
    }

    void write(const std::filesystem::path& to, const std::string& bytes) const
    {
        std::filesystem::create_directories((m_path / to).parent_path());
        std::ofstream(m_path / to, std::ios::binary) << bytes;
    }

private:
    std::filesystem::path m_path;
};

inline std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace mesk::tests
