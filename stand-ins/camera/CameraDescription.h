#pragma once

#include <QByteArray>

namespace emulated_camera {

/// The device's description in the manner of GenICam, which tells a client what registers there are beyond
/// those of the standard. It is part of the program.
struct CameraDescription {
    QByteArray bytes;
    QByteArray fileName;

    /// @param zipped as an archive of the one file, as the standard allows it.
    static CameraDescription load(bool zipped);
};

} // namespace emulated_camera
