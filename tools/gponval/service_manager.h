#pragma once

namespace gponval {

/// Reports to the service manager that started this process, if one did and wants to know, that the
/// service is ready (the protocol of sd_notify).
void report_ready();

}  // namespace gponval
