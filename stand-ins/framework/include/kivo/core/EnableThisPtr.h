#pragma once

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>

namespace kivo::core {

/// Gives an object that a shared pointer holds a pointer to itself.
template <typename T>
class EnableThisPtr : public boost::enable_shared_from_this<T> {
public:
    /// A shared pointer to this object. Throws `boost::bad_weak_ptr` if none holds it.
    boost::shared_ptr<T> thisPtr() { return this->shared_from_this(); }

protected:
    EnableThisPtr() = default;
    EnableThisPtr(const EnableThisPtr&) = default;
    EnableThisPtr& operator=(const EnableThisPtr&) = default;
    ~EnableThisPtr() = default;
};

} // namespace kivo::core
