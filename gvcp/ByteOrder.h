#pragma once

/// Order in which the words of a value or a payload stand as they are handed over.
enum ByteOrder {
    NetworkOrder = 0, ///< as on the wire
    HostOrder =
        1, ///< numbers as they lie in memory, 32-bit words in a payload, to be turned into network order
};
