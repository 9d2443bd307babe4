#pragma once

#include <kivo/core/Plugin.h>

#include <cstdint>
#include <memory>

class EthernetFrame;
namespace kivo::tools::logging {
class Logger;
}

namespace kivo::core::mesk {

class PhysicalNetworkInterfaceEventQueue;

/// One port that sends and receives raw Ethernet frames. The order of the virtual operations is part
/// of the contract.
class KIVO_EXPORT PhysicalNetworkInterface : public Plugin {
public:
    PhysicalNetworkInterface();
    ~PhysicalNetworkInterface() override;

    /// Keeps the value of the key `id` (a `std::string`) as the interface's name.
    void injectDependency(const std::string& key, const boost::any& value) override;

    virtual tools::logging::Logger* logger() = 0;
    virtual boost::shared_ptr<EthernetFrame> receiveFrame(bool* ok) = 0;
    virtual void sendFrame(boost::shared_ptr<EthernetFrame> frame) = 0;
    virtual void emptyOperation();
    virtual bool open() = 0;
    virtual void startWorkers() = 0;
    virtual void requestStop() = 0;
    virtual void finish() = 0;
    virtual bool reinitialize(std::uint32_t mode) = 0;
    virtual void resetPhy();
    virtual bool startCableDiagnostic();
    virtual bool enablePowerOverEthernet(bool enable);
    virtual bool getPoeRegister(int registerNumber, unsigned char* value);
    virtual bool supportsCrcGenerationControl();
    virtual bool isCrcGenerationDisabled();
    virtual void setCrcGenerationDisabled(bool disable);
    virtual bool supportsCrcErrorInjection() const;
    virtual void enablePhyEvents();
    virtual boost::shared_ptr<PhysicalNetworkInterfaceEventQueue> eventQueue() = 0;
    virtual bool isLinkUp();
    virtual unsigned int getConnectionState();
    virtual unsigned short getRxerCounter();
    virtual unsigned short getIdleErrorCounter();
    virtual unsigned short getFaultFlags();
    virtual void debugOutput();
    virtual const std::string getInfo(const std::string& key) const;

    /// The interface's name; valid on any thread from `open` until the object dies.
    const std::string& id() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace kivo::core::mesk
