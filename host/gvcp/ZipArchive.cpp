#include "host/gvcp/ZipArchive.h"

#include <memory>
#include <zip.h>

namespace mesk::host {

namespace {

struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct Close {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

std::unique_ptr<zip_t, Discard> openArchive(const QByteArray& bytes)
{
    zip_source_t* const source =
        zip_source_buffer_create(bytes.constData(), static_cast<zip_uint64_t>(bytes.size()), 0, nullptr);
    zip_t* const archive = source != nullptr ? zip_open_from_source(source, ZIP_RDONLY, nullptr) : nullptr;
    if (archive == nullptr) {
        zip_source_free(source); // an archive owns its source, where there is one
    }
    return std::unique_ptr<zip_t, Discard>(archive);
}

} // namespace

bool isZipArchive(const QByteArray& file)
{
    return file.startsWith("PK\3\4");
}

std::optional<QByteArray> unzipFirstFile(const QByteArray& bytes, int sizeMaxBytes)
{
    const auto archive = openArchive(bytes);
    const std::unique_ptr<zip_file_t, Close> file(archive ? zip_fopen_index(archive.get(), 0, 0) : nullptr);
    zip_stat_t about{};
    if (!file || zip_stat_index(archive.get(), 0, 0, &about) != 0 || (about.valid & ZIP_STAT_SIZE) == 0 ||
        about.size > static_cast<zip_uint64_t>(sizeMaxBytes)) {
        return std::nullopt;
    }
    QByteArray unpacked(static_cast<int>(about.size), Qt::Uninitialized);
    // The byte beyond the end makes the library compare the checksum.
    char beyond = 0;
    const bool isWhole = zip_fread(file.get(), unpacked.data(), about.size) == unpacked.size() &&
                         zip_fread(file.get(), &beyond, 1) == 0;
    return isWhole ? std::make_optional(unpacked) : std::nullopt;
}

} // namespace mesk::host
