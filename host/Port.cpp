#include "host/Port.h"

#include "host/CaptureWriter.h"
#include "host/OutgoingFrame.h"
#include "host/PluginHost.h"
#include "packets/EthernetFrame.h"

#include <kivo/core/mesk/PhysicalNetworkInterface.h>

#include <boost/make_shared.hpp>
#include <fmt/format.h>

namespace mesk::host {

using kivo::core::Plugin;
using kivo::core::mesk::PhysicalNetworkInterface;

struct Port::D {
    boost::shared_ptr<Plugin> plugin; ///< held by a shared pointer, so that the object can ask for one
    PhysicalNetworkInterface* port = nullptr;
    CaptureWriter* writer = nullptr;
    int number = 0;
    bool running = false;
};

Port::Port(const PluginHost& plugin, int board, int port, bool resetBoard)
    : d(std::make_unique<D>())
{
    d->number = port;
    const auto& descriptor = plugin.descriptor();
    d->plugin.reset(descriptor.create(), descriptor.destroy);
    d->plugin->postConstruct();
    d->plugin->injectDependency("boardId", board);
    d->plugin->injectDependency("portId", port);
    if (!resetBoard) {
        d->plugin->injectDependency("resetBoard", std::string("false"));
    }
    d->plugin->injectDependency("id", fmt::format("board {} port {}", board, port));
    d->plugin->postInjection();
    // What a plugin of this kind makes is an interface; inheritance is single all the way.
    d->port = static_cast<PhysicalNetworkInterface*>(d->plugin.get());
}

Port::~Port()
{
    stop();
}

bool Port::open()
{
    d->running = d->port->open();
    if (d->running) {
        d->port->startWorkers();
    }
    return d->running;
}

void Port::stop()
{
    if (d->running) {
        d->running = false;
        d->port->requestStop();
        d->port->finish();
    }
}

void Port::send(const OutgoingFrame& frame)
{
    if (d->writer != nullptr) {
        d->writer->write(frame.onWire());
    }
    d->port->sendFrame(boost::make_shared<EthernetFrame>(frame.bytes));
}

std::optional<QByteArray> Port::receive()
{
    const auto frame = d->port->receiveFrame(nullptr);
    if (!frame) {
        return std::nullopt;
    }
    QByteArray bytes = frame->serialize();
    if (d->writer != nullptr) {
        d->writer->write(bytes);
    }
    return bytes;
}

void Port::resetPhy()
{
    d->port->resetPhy();
}

void Port::debugOutput()
{
    d->port->debugOutput();
}

boost::shared_ptr<kivo::core::mesk::PhysicalNetworkInterfaceEventQueue> Port::eventQueue()
{
    return d->port->eventQueue();
}

int Port::number() const
{
    return d->number;
}

const std::string& Port::id() const
{
    return d->port->id();
}

void Port::record(CaptureWriter* writer)
{
    d->writer = writer;
}

} // namespace mesk::host
