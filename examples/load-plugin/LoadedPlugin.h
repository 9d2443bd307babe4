#pragma once

#include <kivo/core/PluginDescriptor.h>
#include <kivo/core/mesk/PhysicalNetworkInterface.h>

#include <dlfcn.h>
#include <stdexcept>
#include <string>

/// The plugin between its first and its last use. What came out of it must be gone before: its code goes.
class LoadedPlugin {
public:
    /// @param bin the folder of the plugin and of the libraries that it looks for.
    explicit LoadedPlugin(const std::string& bin)
        : m_library(dlopen((bin + "/kivo-plugin-mesk-phy-gige.so").c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (m_library == nullptr)
            throw std::runtime_error(dlerror());
        data<kivo::core::PluginEntry>("plugin_init")();
    }
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;
    ~LoadedPlugin()
    {
        data<kivo::core::PluginEntry>("plugin_deinit")();
        dlclose(m_library);
    }

    /// A port that is not open yet; its end gives the board back.
    boost::shared_ptr<kivo::core::mesk::PhysicalNetworkInterface> makePort(int board, int port) const
    {
        const auto& descriptor = data<kivo::core::PluginDescriptor>("plugin_descriptor");
        const boost::shared_ptr<kivo::core::Plugin> made(descriptor.create(), descriptor.destroy);
        made->postConstruct();
        made->injectDependency("boardId", board);
        made->injectDependency("portId", port);
        made->injectDependency("resetBoard", std::string("false")); // a reset takes 5 s
        made->injectDependency("id", std::string("board ") + std::to_string(board) + " port " +
                                         std::to_string(port)); // its name in the log
        made->postInjection();
        return boost::static_pointer_cast<kivo::core::mesk::PhysicalNetworkInterface>(made);
    }

private:
    /// All four symbols are data: the entries are pointers to functions.
    template <typename T>
    const T& data(const char* name) const
    {
        return *static_cast<const T*>(dlsym(m_library, name));
    }

    void* const m_library;
};
