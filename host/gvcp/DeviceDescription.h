#pragma once

#include "host/gvcp/GvcpClient.h"

#include <optional>
#include <string>

namespace mesk::host {

/// Where a device keeps its description: "Local:NAME;ADDRESS;SIZE", numbers in hexadecimal digits
/// (GigE Vision, first URL).
struct DescriptionPlace {
    std::string fileName;
    quint32 address = 0;
    quint32 sizeBytes = 0;
};

/// @returns nothing for a description that isn't in the device, or a text of another form.
std::optional<DescriptionPlace> parseDescriptionUrl(const QByteArray& url);

/// Reads the first URL and takes it apart.
/// @throws Failure for one that is of no use, and as the client does.
DescriptionPlace findDescription(GvcpClient& client);

/// What a description in XML (GenICam) has to say.
struct DescriptionSummary {
    std::string modelName;
    int features = 0; ///< that its categories list, each once
};

/// @param file the document, or a ZIP archive of it.
/// @returns nothing if it isn't a whole XML document.
std::optional<DescriptionSummary> summarizeDescription(const QByteArray& file);

} // namespace mesk::host
