#include <kivo/core/mesk/PhysicalNetworkInterface.h>

namespace kivo::core::mesk {

struct PhysicalNetworkInterface::D {
    std::string id;
};

PhysicalNetworkInterface::PhysicalNetworkInterface()
    : d(std::make_unique<D>())
{
}

PhysicalNetworkInterface::~PhysicalNetworkInterface() = default;

void PhysicalNetworkInterface::injectDependency(const std::string& key, const boost::any& value)
{
    Plugin::injectDependency(key, value);
    if (key != "id")
        return;
    // A value of another type is no name, and the one that is there stays.
    if (const std::string* id = boost::any_cast<std::string>(&value))
        d->id = *id;
}

const std::string& PhysicalNetworkInterface::id() const
{
    return d->id;
}

// What an interface can do without saying so itself: nothing.

void PhysicalNetworkInterface::emptyOperation() {}

void PhysicalNetworkInterface::resetPhy() {}

bool PhysicalNetworkInterface::startCableDiagnostic()
{
    return false;
}

bool PhysicalNetworkInterface::enablePowerOverEthernet(bool /*enable*/)
{
    return false;
}

bool PhysicalNetworkInterface::getPoeRegister(int /*registerNumber*/, unsigned char* /*value*/)
{
    return false;
}

bool PhysicalNetworkInterface::supportsCrcGenerationControl()
{
    return false;
}

bool PhysicalNetworkInterface::isCrcGenerationDisabled()
{
    return false;
}

void PhysicalNetworkInterface::setCrcGenerationDisabled(bool /*disable*/) {}

bool PhysicalNetworkInterface::supportsCrcErrorInjection() const
{
    return false;
}

void PhysicalNetworkInterface::enablePhyEvents() {}

bool PhysicalNetworkInterface::isLinkUp()
{
    return false;
}

unsigned int PhysicalNetworkInterface::getConnectionState()
{
    return 0;
}

unsigned short PhysicalNetworkInterface::getRxerCounter()
{
    return 0;
}

unsigned short PhysicalNetworkInterface::getIdleErrorCounter()
{
    return 0;
}

unsigned short PhysicalNetworkInterface::getFaultFlags()
{
    return 0;
}

void PhysicalNetworkInterface::debugOutput() {}

const std::string PhysicalNetworkInterface::getInfo(const std::string& /*key*/) const
{
    return {};
}

} // namespace kivo::core::mesk
