#pragma once

/* The configuration database of ConfD: reads what is committed. sock is the socket of a read
 * session. Paths as in confd_maapi.h. */

#include "confd_maapi.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 where the node is, 0 where it is not, negative on failure. */
int cdb_exists(int sock, const char* fmt, ...);

/* Read one leaf. CONFD_OK or CONFD_ERR; a missing leaf is CONFD_ERR with CONFD_ERR_NOEXISTS. */
int cdb_get_bool(int sock, int* rval, const char* fmt, ...);
/* A text that does not fit into n bytes with its NUL is CONFD_ERR and leaves the buffer as it was.
 */
int cdb_get_str(int sock, char* rval, int n, const char* fmt, ...);

/* The number of entries of a list, or CONFD_ERR. */
int cdb_num_instances(int sock, const char* fmt, ...);

#ifdef __cplusplus
}
#endif
