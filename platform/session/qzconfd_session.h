#pragma once

/* The daemon's configuration-session service. The handle is the vcb_opaque of the transaction
 * context: what the daemon registered with its validation callback. */

#ifdef __cplusplus
extern "C" {
#endif

/* The MAAPI socket that the service keeps for the handle's transaction; negative where there is
 * none. It stays with the service. */
int qzconfd_maapi_socket_get(void* handle);

/* Opens a read session on the committed configuration. Gives its CDB socket, greater than 0, or a
 * failure, 0 or less. */
int qzconfd_config_session_start(void* handle);

/* Closes the handle's read session; harmless where none is open. */
void qzconfd_config_session_end(void* handle);

#ifdef __cplusplus
}
#endif
