# What cmake --install gives to users of the packet library: the component "development". The rest, the
# layout of an installation root, is the component "runtime".
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/MeskPackets")
set_target_properties(mesk-packets PROPERTIES EXPORT_NAME Packets)
# A folder of its own, since the include root has folders with common names.
install(
    TARGETS mesk-packets
    EXPORT MeskPackets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/mesk" # for users with a CMake before 3.23
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/mesk" COMPONENT development)
install(
    EXPORT MeskPackets
    NAMESPACE Mesk::
    FILE MeskPacketsTargets.cmake
    DESTINATION "${package_dir}"
    COMPONENT development)
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/cmake/MeskPacketsConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/MeskPacketsConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/MeskPacketsConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(
    FILES "${PROJECT_BINARY_DIR}/MeskPacketsConfig.cmake"
          "${PROJECT_BINARY_DIR}/MeskPacketsConfigVersion.cmake"
    DESTINATION "${package_dir}"
    COMPONENT development)
