#pragma once

#include <QByteArray>

#include <optional>

namespace mesk::host {

/// @returns whether a file starts as a ZIP archive does.
bool isZipArchive(const QByteArray& file);

/// Unpacks the first file of an archive, which is all that a device's description is made of.
/// @returns nothing if the archive or its first file is damaged, or if that is larger than sizeMaxBytes.
std::optional<QByteArray> unzipFirstFile(const QByteArray& archive, int sizeMaxBytes);

} // namespace mesk::host
