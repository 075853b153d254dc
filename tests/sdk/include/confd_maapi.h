#ifndef CONFD_MAAPI_H
#define CONFD_MAAPI_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

struct maapi_cursor {
  int sock;
  int thandle;
  void* prefix;
  confd_value_t keys[MAXKEYLEN];
  char path[512];
  int n;
  int secondary_index;
};

/* The plain reads are one function behind one macro each. */
enum sdk_read_kind {
  SDK_EXISTS,
  SDK_COUNT,
  SDK_ELEM,
  SDK_BOOL,
  SDK_UINT32,
  SDK_ENUM,
  SDK_IPV4,
  SDK_IPV4_PLEN
};
int sdk_read(int sock, int thandle, enum sdk_read_kind what, void* result, const char* fmt, ...);
#define maapi_exists(sock, th, ...) sdk_read((sock), (th), SDK_EXISTS, 0, __VA_ARGS__)
#define maapi_num_instances(sock, th, ...) sdk_read((sock), (th), SDK_COUNT, 0, __VA_ARGS__)
#define maapi_get_elem(sock, th, v, ...) sdk_read((sock), (th), SDK_ELEM, (v), __VA_ARGS__)
#define maapi_get_bool_elem(sock, th, v, ...) sdk_read((sock), (th), SDK_BOOL, (v), __VA_ARGS__)
#define maapi_get_u_int32_elem(sock, th, v, ...) \
  sdk_read((sock), (th), SDK_UINT32, (v), __VA_ARGS__)
#define maapi_get_enum_value_elem(sock, th, v, ...) \
  sdk_read((sock), (th), SDK_ENUM, (v), __VA_ARGS__)
#define maapi_get_ipv4_elem(sock, th, v, ...) sdk_read((sock), (th), SDK_IPV4, (v), __VA_ARGS__)
#define maapi_get_ipv4_and_plen_elem(sock, th, v, ...) \
  sdk_read((sock), (th), SDK_IPV4_PLEN, (v), __VA_ARGS__)
int maapi_get_str_elem(int sock, int thandle, char* buf, int n, const char* fmt, ...);
int maapi_get_list_elem(int sock, int thandle, confd_value_t** values, int* n, const char* fmt,
                        ...);

int sdk_open_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* secondary,
                    const char* fmt, ...);
#define maapi_init_cursor(sock, th, mc, ...) sdk_open_cursor((sock), (th), (mc), 0, __VA_ARGS__)
int maapi_get_next(struct maapi_cursor* mc);
int sdk_close_cursor(struct maapi_cursor* mc);
#define maapi_destroy_cursor(mc) ((void)sdk_close_cursor(mc))
int maapi_get_objects(struct maapi_cursor* mc, confd_value_t* values, int n, int* nobj);

int maapi_get_values(int sock, int thandle, confd_tag_value_t* values, int n, const char* fmt, ...);

int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*trace)(char*),
                          const char* fmtpath, ...);

enum confd_query_result_type {
  CONFD_QUERY_STRING,
  CONFD_QUERY_HKEYPATH,
  CONFD_QUERY_HKEYPATH_VALUE,
  CONFD_QUERY_TAG_VALUE,
  SDK_QUERY_XML
};

struct sdk_keypath_value {
  confd_hkeypath_t hkp;
  confd_value_t val;
};

union sdk_query_row {
  confd_tag_value_t* tv;
  struct sdk_keypath_value* kv;
  confd_hkeypath_t* hkp;
  char** str;
};

struct confd_query_result {
  void* owner;
  union sdk_query_row* results;
  int nelements;
  int nresults;
  int offset;
  enum confd_query_result_type type;
  char* xml;
};

int maapi_query_start(int sock, int thandle, const char* expr, const char* context_node,
                      int chunk_size, int initial_offset, enum confd_query_result_type result_as,
                      int nselect, const char* select[], int nsort, const char* sort[]);
int maapi_query_result(int sock, int qh, struct confd_query_result** qrs);
int maapi_query_free_result(struct confd_query_result* qrs);
int maapi_query_stop(int sock, int qh);

enum maapi_iter_op {
  MOP_NOOP,
  MOP_CREATED,
  MOP_DELETED,
  MOP_MODIFIED,
  MOP_VALUE_SET,
  MOP_MOVED_AFTER,
  MOP_ATTR_SET,
  MOP_SDK_7,
  MOP_SDK_8
};

enum maapi_iter_ret { ITER_STOP = 1, ITER_RECURSE, ITER_CONTINUE, ITER_SDK_4, ITER_SDK_5 };

typedef enum maapi_iter_ret (*sdk_iter_t)(confd_hkeypath_t* kp, enum maapi_iter_op op,
                                          confd_value_t* oldv, confd_value_t* newv, void* state);
int sdk_iterate(int sock, int thandle, sdk_iter_t iter, int flags, void* initstate, int until,
                const char* fmtpath, ...);
#define maapi_keypath_diff_iterate(sock, th, iter, flags, state, ...) \
  sdk_iterate((sock), (th), (iter), (flags), (state), -1, __VA_ARGS__)

int maapi_prio_message(int sock, const char* to, const char* message);
int sdk_install_keys(int sock, int kinds);
#define maapi_install_crypto_keys(sock) sdk_install_keys((sock), ~0)

#ifdef __cplusplus
}
#endif
#endif
