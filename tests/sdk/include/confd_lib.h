#ifndef CONFD_LIB_H
#define CONFD_LIB_H

/* The published names of the client library in another shape than platform/confd/ gives them. What
 * the manual leaves open is different here on purpose: fields and their order, sizes, enumerators
 * instead of macros, macros instead of functions and the other way round, error numbers. */

#include <assert.h>
#include <netinet/in.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { CONFD_VALIDATION_WARN = -3, CONFD_EOF = -2, CONFD_ERR = -1, CONFD_OK = 0 };

enum {
  CONFD_ERR_NOEXISTS = 1,
  CONFD_ERR_XPATH = 17,
  CONFD_ERR_UNAVAILABLE = 23,
  CONFD_ERR_BADPATH = 31,
  CONFD_ERR_NOSESSION = 37,
  CONFD_ERR_PROTOUSAGE = 41,
  CONFD_ERR_BADTYPE = 53,
  CONFD_ERR_NOT_WRITABLE = 61,
  CONFD_ERR_ACCESS_DENIED = 67,
  CONFD_ERR_ALREADY_EXISTS = 71
};

struct sdk_failure {
  char text[256];
  int code;
};
struct sdk_failure* sdk_last_failure(void);
#define confd_errno (sdk_last_failure()->code)
#define confd_lasterr() (sdk_last_failure()->text)

enum { MAXKEYLEN = 9, MAXDEPTH = 20 };

enum confd_vtype {
  C_NOEXISTS = 1,
  C_XMLTAG,
  C_SYMBOL,
  C_STR,
  C_BUF,
  C_INT8,
  C_INT16,
  C_INT32,
  C_INT64,
  C_UINT8,
  C_UINT16,
  C_UINT32,
  C_UINT64,
  C_DOUBLE,
  C_IPV4,
  C_IPV6,
  C_BOOL,
  C_SDK_18,
  C_SDK_19,
  C_SDK_20,
  C_SDK_21,
  C_SDK_22,
  C_SDK_23,
  C_SDK_24,
  C_SDK_25,
  C_SDK_26,
  C_SDK_27,
  C_ENUM_VALUE,
  C_SDK_29,
  C_SDK_30,
  C_LIST,
  C_XMLBEGIN,
  C_XMLEND,
  C_SDK_34,
  C_SDK_35,
  C_SDK_36,
  C_SDK_37,
  C_SDK_38,
  C_BINARY,
  C_IPV4PREFIX,
  C_SDK_41,
  C_DEFAULT,
  C_DECIMAL64,
  C_SDK_44,
  C_SDK_45,
  C_SDK_46,
  C_SDK_47,
  C_IPV4_AND_PLEN,
  C_SDK_49,
  C_SDK_50
};

struct xml_tag {
  uint32_t tag;
  uint32_t ns;
};

typedef struct {
  unsigned int size;
  unsigned char* ptr;
} confd_buf_t;

struct confd_list {
  unsigned int size;
  struct confd_value* ptr;
};

struct confd_ipv4_prefix {
  struct in_addr ip;
  uint8_t len;
};

struct sdk_duration {
  int64_t seconds[4];
  uint32_t fraction;
};

/* Larger by the types of value that no other header here knows. */
typedef struct confd_value {
  enum confd_vtype type;
  union {
    struct sdk_duration duration;
    void* opaque[6];
    struct confd_ipv4_prefix ipv4prefix;
    struct confd_list list;
    int32_t enumvalue;
    int boolean;
    struct in6_addr ip6;
    struct in_addr ip;
    double d;
    uint64_t u64;
    uint32_t u32;
    uint16_t u16;
    uint8_t u8;
    int64_t i64;
    int32_t i32;
    int16_t i16;
    int8_t i8;
    char* s;
    confd_buf_t buf;
    struct xml_tag xmltag;
  } val;
} confd_value_t;

typedef struct {
  struct xml_tag tag;
  confd_value_t v;
} confd_tag_value_t;

typedef struct {
  int len;
  confd_value_t v[MAXDEPTH][MAXKEYLEN];
} confd_hkeypath_t;

/* Getters: rvalues, so that nothing can be stored through them. */
#define SDK_GET(p, vtype, member) \
  __extension__({                 \
    assert((p)->type == vtype);   \
    (p)->val.member;              \
  })
#define CONFD_GET_XMLTAG(p) SDK_GET(p, C_XMLTAG, xmltag.tag)
#define CONFD_GET_XMLTAG_NS(p) SDK_GET(p, C_XMLTAG, xmltag.ns)
#define CONFD_GET_BUFPTR(p) SDK_GET(p, C_BUF, buf.ptr)
#define CONFD_GET_BUFSIZE(p) SDK_GET(p, C_BUF, buf.size)
#define CONFD_GET_CBUFPTR(p)         \
  __extension__({                    \
    assert((p)->type == C_BUF);      \
    (const char*)((p)->val.buf.ptr); \
  })
#define CONFD_GET_INT8(p) SDK_GET(p, C_INT8, i8)
#define CONFD_GET_INT16(p) SDK_GET(p, C_INT16, i16)
#define CONFD_GET_INT32(p) SDK_GET(p, C_INT32, i32)
#define CONFD_GET_INT64(p) SDK_GET(p, C_INT64, i64)
#define CONFD_GET_UINT8(p) SDK_GET(p, C_UINT8, u8)
#define CONFD_GET_UINT16(p) SDK_GET(p, C_UINT16, u16)
#define CONFD_GET_UINT32(p) SDK_GET(p, C_UINT32, u32)
#define CONFD_GET_UINT64(p) SDK_GET(p, C_UINT64, u64)
#define CONFD_GET_DOUBLE(p) SDK_GET(p, C_DOUBLE, d)
#define CONFD_GET_IPV4(p) SDK_GET(p, C_IPV4, ip)
#define CONFD_GET_IPV6(p) SDK_GET(p, C_IPV6, ip6)
#define CONFD_GET_BOOL(p) SDK_GET(p, C_BOOL, boolean)
#define CONFD_GET_ENUM_VALUE(p) SDK_GET(p, C_ENUM_VALUE, enumvalue)
#define CONFD_GET_LIST(p) SDK_GET(p, C_LIST, list.ptr)
#define CONFD_GET_LISTSIZE(p) SDK_GET(p, C_LIST, list.size)
#define CONFD_GET_IPV4PREFIX(p) SDK_GET(p, C_IPV4PREFIX, ipv4prefix)
#define CONFD_GET_IPV4_AND_PLEN(p) SDK_GET(p, C_IPV4_AND_PLEN, ipv4prefix)

/* Setters: functions and statements, so that none can stand in an expression. */
static inline void CONFD_SET_NOEXISTS(confd_value_t* p) {
  p->type = C_NOEXISTS;
}
static inline void CONFD_SET_XMLTAG(confd_value_t* p, uint32_t tag, uint32_t ns) {
  p->type = C_XMLTAG;
  p->val.xmltag.tag = tag;
  p->val.xmltag.ns = ns;
}
static inline void CONFD_SET_BUF(confd_value_t* p, unsigned char* ptr, unsigned int size) {
  p->type = C_BUF;
  p->val.buf.ptr = ptr;
  p->val.buf.size = size;
}
#define SDK_SET(p, vtype, member, value) \
  do {                                   \
    (p)->type = vtype;                   \
    (p)->val.member = (value);           \
  } while (0)
#define CONFD_SET_STR(p, value) SDK_SET(p, C_STR, s, (char*)(value))
#define CONFD_SET_INT32(p, value) SDK_SET(p, C_INT32, i32, value)
#define CONFD_SET_UINT8(p, value) SDK_SET(p, C_UINT8, u8, value)
#define CONFD_SET_UINT32(p, value) SDK_SET(p, C_UINT32, u32, value)
#define CONFD_SET_BOOL(p, value) SDK_SET(p, C_BOOL, boolean, value)
#define CONFD_SET_ENUM_VALUE(p, value) SDK_SET(p, C_ENUM_VALUE, enumvalue, value)
#define CONFD_SET_IPV4(p, value) SDK_SET(p, C_IPV4, ip, value)
#define CONFD_SET_IPV4_AND_PLEN(p, value) SDK_SET(p, C_IPV4_AND_PLEN, ipv4prefix, value)

#define CONFD_GET_TAG_TAG(tv) ((tv)->tag.tag + 0U)
#define CONFD_GET_TAG_VALUE(tv) (&((tv)->v))
#define SDK_SET_TAG(tv, vtype, tag_number, ns_number) \
  do {                                                \
    (tv)->tag.ns = (ns_number);                       \
    (tv)->tag.tag = (tag_number);                     \
    (tv)->v.type = vtype;                             \
  } while (0)
#define CONFD_SET_TAG_XMLBEGIN(tv, tag, ns) SDK_SET_TAG(tv, C_XMLBEGIN, tag, ns)
#define CONFD_SET_TAG_XMLEND(tv, tag, ns) SDK_SET_TAG(tv, C_XMLEND, tag, ns)
#define CONFD_SET_TAG_NOEXISTS(tv, tag) SDK_SET_TAG(tv, C_NOEXISTS, tag, 0)
static inline void CONFD_SET_TAG_NS(confd_tag_value_t* tv, uint32_t ns) {
  tv->tag.ns = ns;
}

struct confd_user_info {
  char username[64];
  int lmode;
  int usid;
  struct in6_addr from;
};

struct confd_trans_ctx {
  char* validate_opaque;
  int fd[2];
  void* vcb_opaque;
  struct sdk_failure failure;
  struct confd_user_info* uinfo;
  const void* callbacks;
  int thandle;
  struct confd_trans_ctx* next;
};

void sdk_set_error(struct confd_trans_ctx* tctx, const char* fmt, ...)
    __attribute__((format(printf, 2, 3)));
#define confd_trans_seterr(...) sdk_set_error(__VA_ARGS__)

int sdk_print(const void* what, int is_keypath, char* buf, int size);
#define confd_pp_kpath(buf, size, keypath) sdk_print((keypath), 1, (buf), (size))
#define confd_pp_value(buf, size, value) sdk_print((value), 0, (buf), (size))

void sdk_free_values(confd_value_t* values, unsigned int count);
#define confd_free_value(value) sdk_free_values((value), 1U)

struct confd_type {
  int (*print)(const confd_value_t* value, char* buf, int size);
};

struct confd_cs_node_info {
  unsigned int flags;
  int min_occurs;
  const char* keys[MAXKEYLEN];
  struct confd_type* type;
};

struct confd_cs_node {
  struct confd_cs_node* parent;
  struct confd_cs_node_info info;
  struct xml_tag name;
};

struct confd_cs_node* sdk_find_node(const struct confd_cs_node* start, const char* fmt, ...);
#define confd_cs_node_cd(...) sdk_find_node(__VA_ARGS__)
#define confd_val2str(type, value, buf, size) ((type)->print((value), (buf), (size)))
int confd_max_object_size(struct confd_cs_node* object);
char* confd_hash2str(uint32_t tag);
int confd_decrypt(const char* ciphertext, int len, char* output);

#ifdef __cplusplus
}
#endif
#endif
