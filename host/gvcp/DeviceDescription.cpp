#include "host/gvcp/DeviceDescription.h"

#include "host/gvcp/BootstrapRegister.h"
#include "host/gvcp/ZipArchive.h"

#include <QSet>
#include <QString>
#include <QXmlStreamReader>

#include <fmt/format.h>

namespace mesk::host {

namespace {

constexpr int urlParts = 3;
constexpr int hexadecimal = 16;
constexpr int sizeMaxBytes = 64 << 20; // of a description, also when it is unpacked

} // namespace

std::optional<DescriptionPlace> parseDescriptionUrl(const QByteArray& url)
{
    const QByteArray text(url.constData()); // up to its first zero
    const QByteArray scheme = QByteArrayLiteral("local:");
    const QByteArray withoutQuery = text.split('?').constFirst();
    const QList<QByteArray> parts = withoutQuery.mid(scheme.size()).split(';');
    if (!text.toLower().startsWith(scheme) || parts.size() != urlParts) {
        return std::nullopt;
    }
    bool addressRead = false;
    bool sizeRead = false;
    DescriptionPlace place;
    place.fileName = parts[0].trimmed().toStdString();
    place.address = parts[1].trimmed().toUInt(&addressRead, hexadecimal);
    place.sizeBytes = parts[2].trimmed().toUInt(&sizeRead, hexadecimal);
    return addressRead && sizeRead ? std::make_optional(place) : std::nullopt;
}

DescriptionPlace findDescription(GvcpClient& client)
{
    const QByteArray url = client.readMemory(BootstrapRegister::FirstUrl, urlSizeBytes);
    const auto place = parseDescriptionUrl(url);
    if (!place || place->sizeBytes == 0 || place->sizeBytes > static_cast<quint32>(sizeMaxBytes)) {
        throw Failure(ExitCode::Nothing,
                      fmt::format("no description in the device: its first URL is '{}'", url.constData()));
    }
    return *place;
}

std::optional<DescriptionSummary> summarizeDescription(const QByteArray& file)
{
    const auto xml = isZipArchive(file) ? unzipFirstFile(file, sizeMaxBytes) : file;
    if (!xml) {
        return std::nullopt;
    }
    QXmlStreamReader reader(*xml);
    DescriptionSummary summary;
    QSet<QString> categories;
    QSet<QString> features;
    bool inCategory = false;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (reader.name() == QLatin1String("Category") && token != QXmlStreamReader::Characters) {
            inCategory = token == QXmlStreamReader::StartElement;
        }
        if (token != QXmlStreamReader::StartElement) {
            continue;
        }
        if (inCategory && reader.name() == QLatin1String("Category")) {
            categories.insert(reader.attributes().value(QLatin1String("Name")).toString());
        } else if (inCategory && reader.name() == QLatin1String("pFeature")) {
            features.insert(reader.readElementText().trimmed());
        } else if (reader.name() == QLatin1String("RegisterDescription")) {
            summary.modelName =
                reader.attributes().value(QLatin1String("ModelName")).toString().toStdString();
        }
    }
    if (reader.hasError()) {
        return std::nullopt;
    }
    summary.features = features.subtract(categories).size();
    return summary;
}

} // namespace mesk::host
