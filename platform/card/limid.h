#pragma once

/* Handles of interface types. */

#ifdef __cplusplus
extern "C" {
#endif

/* A handle; NULL is no type. Compare with limid_type_compare only. */
typedef const struct limid_type* limid_type_t;

extern const limid_type_t limid_type_gpon;
extern const limid_type_t limid_type_xgspon;

/* Not 0 where both are the same interface type. */
int limid_type_compare(limid_type_t left, limid_type_t right);

#ifdef __cplusplus
}
#endif
