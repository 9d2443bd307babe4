#pragma once

#include <cstddef>
#include <new>
#include <utility>

/// Private record of a class, behind one pointer but in the object's own block: an object is made with one
/// allocation less than with a record in a block of its own, and the header still names no field.
/// @tparam Record complete only where the owner's constructors and its destructor are defined.
/// @tparam sizeBytes at least the size of the record.
template <typename Record, std::size_t sizeBytes>
class PlacedRecord {
public:
    template <typename... Arguments>
    explicit PlacedRecord(Arguments&&... arguments)
        : m_record(new (m_place) Record(std::forward<Arguments>(arguments)...))
    {
        static_assert(sizeof(Record) <= sizeBytes && alignof(Record) <= alignment,
                      "the record fits its place");
    }
    PlacedRecord(const PlacedRecord&) = delete;
    PlacedRecord& operator=(const PlacedRecord&) = delete;
    ~PlacedRecord() { m_record->~Record(); }

    Record* operator->() const noexcept { return m_record; }
    Record& operator*() const noexcept { return *m_record; }

private:
    static constexpr std::size_t alignment = alignof(void*);

    Record* const m_record;
    alignas(alignment) std::byte m_place[sizeBytes];
};
