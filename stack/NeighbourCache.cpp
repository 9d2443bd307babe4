#include "stack/NeighbourCache.h"

#include <algorithm>

namespace mesk::stack {

NeighbourCache::NeighbourCache(std::size_t sizeMax, Duration lifetime)
    : m_sizeMax(sizeMax)
    , m_lifetime(lifetime)
{
}

std::optional<MacAddress> NeighbourCache::find(const IpAddress& address, TimePoint now)
{
    const auto found = m_neighbours.find(address.toUInt32());
    if (found == m_neighbours.end())
        return {};
    if (now >= after(found->second.heard, m_lifetime)) {
        m_neighbours.erase(found);
        return {};
    }
    return found->second.mac;
}

void NeighbourCache::add(const IpAddress& address, const MacAddress& mac, TimePoint now)
{
    if (m_neighbours.count(address.toUInt32()) == 0)
        makeRoom();
    m_neighbours[address.toUInt32()] = {mac, now};
}

void NeighbourCache::update(const IpAddress& address, const MacAddress& mac, TimePoint now)
{
    const auto found = m_neighbours.find(address.toUInt32());
    if (found != m_neighbours.end())
        found->second = {mac, now};
}

void NeighbourCache::makeRoom()
{
    if (m_neighbours.size() < m_sizeMax)
        return;
    m_neighbours.erase(
        std::min_element(m_neighbours.begin(), m_neighbours.end(),
                         [](const auto& a, const auto& b) { return a.second.heard < b.second.heard; }));
}

} // namespace mesk::stack
