#pragma once

/* The management agent interface of ConfD: reads a transaction as it will be after the commit.
 *
 * sock is the transaction's MAAPI socket, thandle its handle. A path is a format with its
 * arguments: %d %u %s as in printf, %x a confd_value_t*, %*x a count and a confd_value_t array, %h
 * a confd_hkeypath_t* (only at the start), %*h a length and one. Keys stand in braces, separated by
 * blanks. It is no printf format, so compilers cannot check it. Never build a path from a text of
 * the user and pass it as the format: pass "%s" and the text.
 *
 * Calls give CONFD_OK and CONFD_ERR unless told otherwise. A call that fails sets confd_errno and
 * leaves the result variable as it was. What a transaction leaves open is released when it ends. */

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 where the node is, 0 where it is not, or CONFD_ERR. A default in effect counts as a leaf. */
int maapi_exists(int sock, int thandle, const char* fmt, ...);

/* The number of entries of a list, or CONFD_ERR. */
int maapi_num_instances(int sock, int thandle, const char* fmt, ...);

/* Read one leaf. A missing one is CONFD_ERR with CONFD_ERR_NOEXISTS. What a C_BUF, C_LIST or
 * C_BINARY value points to goes to the caller, who gives it to confd_free_value. */
int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...);
int maapi_get_bool_elem(int sock, int thandle, int* rval, const char* fmt, ...);
int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...);
int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...);
/* Network byte order, both. */
int maapi_get_ipv4_elem(int sock, int thandle, struct in_addr* rval, const char* fmt, ...);
int maapi_get_ipv4_and_plen_elem(int sock, int thandle, struct confd_ipv4_prefix* rval,
                                 const char* fmt, ...);
/* Copies at most n-1 characters and a NUL; a longer text is CONFD_ERR with CONFD_ERR_PROTOUSAGE. */
int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...);
/* *values becomes a malloc'd array of *n values; the caller gives each to confd_free_value and the
 * array to free. */
int maapi_get_list_elem(int sock, int thandle, confd_value_t** values, int* n, const char* fmt,
                        ...);

/* A walk over the entries of a list, in key order. */
struct maapi_cursor {
  int n; /* number of keys of the current entry; 0: no more entries.
            Not 0 between init and the first step. */
  confd_value_t
      keys[MAXKEYLEN]; /* of the current entry; the library's, valid until the next step */
  void* impl;          /* the library's own */
};

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...);
int maapi_get_next(struct maapi_cursor* mc);
void maapi_destroy_cursor(struct maapi_cursor* mc);

/* Reads the next entries, at most *nobj of them, each as a value array of n values: depth first, a
 * missing leaf as C_NOEXISTS, a container as C_XMLTAG before its children, a list as C_NOEXISTS, a
 * leaf-list as C_LIST, an empty leaf as C_XMLTAG; choices take no place. *nobj becomes the number
 * read; when that is fewer than asked, the cursor's n becomes 0. Gives the highest number of values
 * in an entry, or CONFD_ERR. C_BUF values go to the caller, see confd_free_value. */
int maapi_get_objects(struct maapi_cursor* mc, confd_value_t* values, int n, int* nobj);

/* Fills an array of tagged values below the path. C_XMLBEGIN and C_XMLEND give the structure, each
 * C_NOEXISTS is a leaf to read; every element keeps its place and a missing leaf stays C_NOEXISTS.
 * C_BUF values go to the caller, see confd_free_value. */
int maapi_get_values(int sock, int thandle, confd_tag_value_t* values, int n, const char* fmt, ...);

/* Evaluates an XPath expression. *res becomes its string value, for the caller to free, or NULL on
 * failure. trace and fmtpath may be NULL; fmtpath is the context node. */
int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*trace)(char*),
                          const char* fmtpath, ...);

enum confd_query_result_type {
  CONFD_QUERY_STRING = 0,
  CONFD_QUERY_HKEYPATH = 1,
  CONFD_QUERY_HKEYPATH_VALUE = 2,
  CONFD_QUERY_TAG_VALUE = 3
};

/* One chunk of a query's results. Result i is results[i], an array of nelements selected values in
 * the member that the type names; a selected node that does not exist is a C_NOEXISTS value. A
 * chunk with nresults 0 is the end. */
struct confd_query_result {
  enum confd_query_result_type type;
  int offset; /* number of the chunk's first result, from 1 on */
  int nresults;
  int nelements;
  union {
    char** str;
    confd_hkeypath_t* hkp;
    struct {
      confd_hkeypath_t hkp;
      confd_value_t val;
    } * kv;
    confd_tag_value_t* tv;
  } * results;
};

/* Starts a query over the nodes that expr names and gives its handle, or CONFD_ERR. context_node
 * may be NULL; chunk_size 0 means the library's default; initial_offset counts from 1. select is
 * relative to each node found. */
int maapi_query_start(int sock, int thandle, const char* expr, const char* context_node,
                      int chunk_size, int initial_offset, enum confd_query_result_type result_as,
                      int nselect, const char* select[], int nsort, const char* sort[]);
/* *qrs becomes the next chunk, for maapi_query_free_result. */
int maapi_query_result(int sock, int qh, struct confd_query_result** qrs);
int maapi_query_free_result(struct confd_query_result* qrs);
int maapi_query_stop(int sock, int qh);

enum maapi_iter_op {
  MOP_NOOP = 0,
  MOP_CREATED = 1,
  MOP_DELETED = 2,
  MOP_MODIFIED = 3,
  MOP_VALUE_SET = 4,
  MOP_MOVED_AFTER = 5,
  MOP_ATTR_SET = 6
};

/* STOP ends the iteration with CONFD_OK, RECURSE goes into the node's children, CONTINUE passes
 * them over. */
enum maapi_iter_ret { ITER_STOP = 1, ITER_RECURSE = 2, ITER_CONTINUE = 3 };

/* Reports the transaction's changes at and below the path, in the order of the model and of the
 * keys. oldv is always NULL; newv is the new value of MOP_VALUE_SET. kp and newv live until iter
 * returns. */
int maapi_keypath_diff_iterate(int sock, int thandle,
                               enum maapi_iter_ret (*iter)(confd_hkeypath_t* kp,
                                                           enum maapi_iter_op op,
                                                           confd_value_t* oldv, confd_value_t* newv,
                                                           void* state),
                               int flags, void* initstate, const char* fmtpath, ...);

/* Shows a message to a user; a number in `to` is the number of a user session. */
int maapi_prio_message(int sock, const char* to, const char* message);

/* Makes the keys of encrypted leaves known to confd_decrypt. */
int maapi_install_crypto_keys(int sock);

#ifdef __cplusplus
}
#endif
