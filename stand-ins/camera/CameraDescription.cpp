#include "stand-ins/camera/CameraDescription.h"

#include "stand-ins/camera/EmbeddedDescription.h"

namespace emulated_camera {

CameraDescription CameraDescription::load(bool zipped)
{
    const EmbeddedFile& file = zipped ? embeddedDescriptionZip : embeddedDescriptionXml;
    return {QByteArray(reinterpret_cast<const char*>(file.data), file.sizeBytes),
            zipped ? "emulated-camera.zip" : "emulated-camera.xml"};
}

} // namespace emulated_camera
