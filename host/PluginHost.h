#pragma once

#include <kivo/core/PluginDescriptor.h>

#include <memory>
#include <string>

namespace mesk::host {

/// The plugin's library between its init entry and its deinit entry. What it made must be gone before
/// this object goes, since that unloads the code.
class PluginHost {
public:
    /// @throws Failure if the library or one of its four symbols is missing.
    explicit PluginHost(const std::string& binFolder);
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    const kivo::core::PluginDescriptor& descriptor() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
