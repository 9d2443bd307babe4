#pragma once

#include <kivo/core/EnableThisPtr.h>
#include <kivo/core/Export.h>

#include <boost/any.hpp>

#include <string>

namespace kivo::core {

/// Something that the framework runs for a plugin.
class KIVO_EXPORT Command {
public:
    virtual ~Command();
    virtual void execute() = 0;
};

/// Base of all that a plugin makes for the framework. The order of the virtual operations is part of
/// the contract. The framework calls an object from one thread until it is open.
class KIVO_EXPORT Plugin : public EnableThisPtr<Plugin> {
public:
    Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    virtual ~Plugin();

    /// Follows construction.
    virtual void postConstruct();
    /// Hands one property over.
    virtual void injectDependency(const std::string& key, const boost::any& value);
    /// Follows the last injection.
    virtual void postInjection();
    virtual boost::shared_ptr<Command> createInitializationApplicationCommand();
    virtual boost::shared_ptr<Command> createCleanupApplicationCommand();
};

} // namespace kivo::core
