#pragma once

#include "packets/IpAddress.h"
#include "packets/MacAddress.h"
#include "stack/Time.h"

#include <cstddef>
#include <map>
#include <optional>

namespace mesk::stack {

/// Who has which address, for a while after it was heard. [one thread at a time]
class NeighbourCache {
public:
    /// @param sizeMax with more, who was heard longest ago makes room.
    NeighbourCache(std::size_t sizeMax, Duration lifetime);

    /// Nothing for an address that was never heard, or too long ago.
    std::optional<MacAddress> find(const IpAddress& address, TimePoint now);
    void add(const IpAddress& address, const MacAddress& mac, TimePoint now);
    /// As add(), but only for an address that is there.
    void update(const IpAddress& address, const MacAddress& mac, TimePoint now);

private:
    struct Neighbour {
        MacAddress mac;
        TimePoint heard;
    };

    void makeRoom();

    const std::size_t m_sizeMax;
    const Duration m_lifetime;
    std::map<quint32, Neighbour> m_neighbours;
};

} // namespace mesk::stack
