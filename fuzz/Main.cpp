#include "tests/packets/TestBytes.h"

#include <QFile>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {
bool holds(const QByteArray& bytes)
{
    try {
        return LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                      std::size_t(bytes.size())) == 0;
    } catch (const std::exception& broken) {
        std::fprintf(stderr, "doesn't hold: %s, of %s\n", broken.what(), bytes.toHex().constData());
        return false;
    }
}

bool runAll(const fs::path& path)
{
    bool good = !fs::is_empty(path) || fs::is_regular_file(path); // an empty folder tests nothing
    if (fs::is_directory(path)) {
        for (const auto& entry : fs::directory_iterator(path))
            good = runAll(entry.path()) && good;
        return good;
    }
    std::fprintf(stderr, "%s\n", path.c_str()); // where a crash leaves nothing else
    QFile file(QString::fromStdString(path.string()));
    good = file.open(QIODevice::ReadOnly);
    forEachDamage(file.readAll(), [&good](const QByteArray& bytes) { good = good && holds(bytes); });
    return good;
}
} // namespace

/// Runs the target with each of the files and each file in the folders, whole and damaged; fails if there are
/// none.
int main(int count, char** arguments)
{
    bool good = count > 1;
    for (int i = 1; i < count; ++i)
        good = runAll(arguments[i]) && good;
    return good ? 0 : 1;
}
