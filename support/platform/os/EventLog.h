#pragma once

namespace kivo::templates::platform::os {

/// Writes one error record (category 0, event id 2) to the system event log under the source
/// `kivo-gige-phy`. [any thread]
///
/// On POSIX systems the event log is syslog: ident `kivo-gige-phy`, facility user, priority err, and
/// the text stands behind "[category 0, event 2] ". A failure is not reported.
/// @param text zero-terminated, the record's one string.
void reportEventLogError(const char* text);

} // namespace kivo::templates::platform::os
