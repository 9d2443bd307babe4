#pragma once

#include <stdexcept>

/// An injected property holds a value of another type than its key asks for.
class AnyException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
