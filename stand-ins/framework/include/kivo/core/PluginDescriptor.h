#pragma once

#include <kivo/core/Plugin.h>

#include <cstdint>

namespace kivo::core {

/// One record that a plugin library shows under the name `plugin_descriptor`, a word of 8 bytes for
/// each field.
struct PluginDescriptor {
    Plugin* (*create)();
    void (*destroy)(Plugin*);
    const char* name;
    const char* title;
    const char* vendor;
    const char* date;
    std::int64_t firstNumber;
    std::int64_t secondNumber;
    std::int64_t reserved[8];
};
static_assert(sizeof(PluginDescriptor) == 16 * sizeof(std::int64_t), "sixteen words");

/// What `plugin_init` and `plugin_deinit` point to.
using PluginEntry = void (*)();

} // namespace kivo::core
