#pragma once

/* The middleware's trace and fault service. */

#include <zlog.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The log category of that name, or NULL where the trace service has none to give. It stays with
 * the service. Its levels 10, 11 and 12 lie below zlog's DEBUG. */
zlog_category_t* qzmw_trace_register_category(const char* name);

/* Writes the caller's stack for whoever looks after the daemon. */
void qzmw_print_backtrace(void);

/* Raises a fault of the given kind. The texts are read before it returns. */
void qzmw_gen_fault(int kind, const char* module, const char* file, int line, const char* text);

#ifdef __cplusplus
}
#endif
