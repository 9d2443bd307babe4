#pragma once

namespace emulated_camera {

/// Bytes of a file that the build puts into a source, see EmbedFiles.cmake.
struct EmbeddedFile {
    const unsigned char* data;
    int sizeBytes;
};

extern const EmbeddedFile embeddedDescriptionXml;
extern const EmbeddedFile embeddedDescriptionZip;

} // namespace emulated_camera
