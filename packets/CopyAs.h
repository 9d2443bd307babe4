#pragma once

/// @returns a copy of @p packet by the copy constructor of @p Packet, which the caller owns; null if it isn't
/// one: a class of the caller's may use a number of one of the classes here.
template <typename Packet, typename Base>
[[nodiscard]] Base* copyAs(const Base& packet)
{
    const auto* same = dynamic_cast<const Packet*>(&packet);
    return same != nullptr ? new Packet(*same) : nullptr;
}
