#pragma once

#include <QtGlobal>

#include <string>
#include <string_view>

namespace mesk::host {

/// What a message code stands for, as "read-register command"; "message" for an unknown one.
std::string_view gvcpMessageName(quint16 code);

/// What is wrong with a message's size, empty for nothing.
std::string gvcpLengthProblem(std::string_view bytes);

} // namespace mesk::host
