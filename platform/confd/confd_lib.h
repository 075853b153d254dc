#pragma once

/* Types, value macros and helpers of the ConfD client library, as far as this repository uses them.
 * A build for the card takes the vendor's header of the same name instead. */

#include <arpa/inet.h>
#include <assert.h>
#include <netinet/in.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes. */
#define CONFD_OK 0
#define CONFD_ERR (-1)
#define CONFD_EOF (-2)
#define CONFD_VALIDATION_WARN (-3)

/* What confd_errno tells after CONFD_ERR. Only the value of CONFD_ERR_NOEXISTS may be relied on. */
#define CONFD_ERR_NOEXISTS 1
#define CONFD_ERR_ALREADY_EXISTS 2
#define CONFD_ERR_ACCESS_DENIED 3
#define CONFD_ERR_NOT_WRITABLE 4
#define CONFD_ERR_BADTYPE 5
#define CONFD_ERR_PROTOUSAGE 6
#define CONFD_ERR_BADPATH 7
#define CONFD_ERR_NOSESSION 8
#define CONFD_ERR_XPATH 9
#define CONFD_ERR_UNAVAILABLE 10

/* Meaningful only after a call that failed. */
extern int confd_errno;

/* A text for the last failure; stays with the library, never NULL. */
char* confd_lasterr(void);

/* Limits of a keypath: elements, and keys of one list entry with the closing C_NOEXISTS. */
#define MAXDEPTH 20
#define MAXKEYLEN 9

enum confd_vtype {
  C_NOEXISTS = 1,
  C_XMLTAG = 2,
  C_SYMBOL = 3,
  C_STR = 4,
  C_BUF = 5,
  C_INT8 = 6,
  C_INT16 = 7,
  C_INT32 = 8,
  C_INT64 = 9,
  C_UINT8 = 10,
  C_UINT16 = 11,
  C_UINT32 = 12,
  C_UINT64 = 13,
  C_DOUBLE = 14,
  C_IPV4 = 15,
  C_IPV6 = 16,
  C_BOOL = 17,
  C_ENUM_VALUE = 28,
  C_LIST = 31,
  C_XMLBEGIN = 32,
  C_XMLEND = 33,
  C_BINARY = 39,
  C_IPV4PREFIX = 40,
  C_DEFAULT = 42,
  C_DECIMAL64 = 43,
  C_IPV4_AND_PLEN = 48
};

/* A node name: its number and the number of its namespace. */
struct xml_tag {
  uint32_t tag;
  uint32_t ns;
};

/* Strings given to the application are NUL-terminated; size does not count the NUL. */
typedef struct confd_buf {
  unsigned int size;
  unsigned char* ptr;
} confd_buf_t;

struct confd_value;

struct confd_list {
  unsigned int size;
  struct confd_value* ptr;
};

/* An address in network byte order and a prefix length, 0..32. */
struct confd_ipv4_prefix {
  struct in_addr ip;
  uint8_t len;
};

struct confd_decimal64 {
  int64_t value;
  uint8_t fraction_digits;
};

typedef struct confd_value {
  enum confd_vtype type;
  union {
    struct xml_tag xmltag;
    confd_buf_t buf;
    char* s;
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    double d;
    struct in_addr ip; /* network byte order */
    struct in6_addr ip6;
    int boolean;
    int32_t enumvalue;
    struct confd_list list;
    struct confd_ipv4_prefix ipv4prefix;
    struct confd_decimal64 d64;
  } val;
} confd_value_t;

typedef struct confd_tag_value {
  struct xml_tag tag;
  confd_value_t v;
} confd_tag_value_t;

/* v[0] is the innermost element. A node name is a C_XMLTAG in column 0; a list entry is its key
 * values in columns 0.., ended by C_NOEXISTS. */
typedef struct confd_hkeypath {
  int len;
  confd_value_t v[MAXDEPTH][MAXKEYLEN];
} confd_hkeypath_t;

/* Getters. They assert the value's type; the assertion's text holds the argument as the caller
 * wrote it, and users see it. The argument is evaluated more than once. */
#define CONFD_GET_XMLTAG(p) (assert((p)->type == C_XMLTAG), (p)->val.xmltag.tag)
#define CONFD_GET_XMLTAG_NS(p) (assert((p)->type == C_XMLTAG), (p)->val.xmltag.ns)
#define CONFD_GET_BUFPTR(p) (assert((p)->type == C_BUF), (p)->val.buf.ptr)
#define CONFD_GET_BUFSIZE(p) (assert((p)->type == C_BUF), (p)->val.buf.size)
#define CONFD_GET_CBUFPTR(p) (assert((p)->type == C_BUF), (const char*)(p)->val.buf.ptr)
#define CONFD_GET_INT8(p) (assert((p)->type == C_INT8), (p)->val.i8)
#define CONFD_GET_INT16(p) (assert((p)->type == C_INT16), (p)->val.i16)
#define CONFD_GET_INT32(p) (assert((p)->type == C_INT32), (p)->val.i32)
#define CONFD_GET_INT64(p) (assert((p)->type == C_INT64), (p)->val.i64)
#define CONFD_GET_UINT8(p) (assert((p)->type == C_UINT8), (p)->val.u8)
#define CONFD_GET_UINT16(p) (assert((p)->type == C_UINT16), (p)->val.u16)
#define CONFD_GET_UINT32(p) (assert((p)->type == C_UINT32), (p)->val.u32)
#define CONFD_GET_UINT64(p) (assert((p)->type == C_UINT64), (p)->val.u64)
#define CONFD_GET_DOUBLE(p) (assert((p)->type == C_DOUBLE), (p)->val.d)
#define CONFD_GET_IPV4(p) (assert((p)->type == C_IPV4), (p)->val.ip)
#define CONFD_GET_IPV6(p) (assert((p)->type == C_IPV6), (p)->val.ip6)
#define CONFD_GET_BOOL(p) (assert((p)->type == C_BOOL), (p)->val.boolean)
#define CONFD_GET_ENUM_VALUE(p) (assert((p)->type == C_ENUM_VALUE), (p)->val.enumvalue)
#define CONFD_GET_LIST(p) (assert((p)->type == C_LIST), (p)->val.list.ptr)
#define CONFD_GET_LISTSIZE(p) (assert((p)->type == C_LIST), (p)->val.list.size)
#define CONFD_GET_BINARY_PTR(p) (assert((p)->type == C_BINARY), (p)->val.buf.ptr)
#define CONFD_GET_BINARY_SIZE(p) (assert((p)->type == C_BINARY), (p)->val.buf.size)
#define CONFD_GET_IPV4PREFIX(p) (assert((p)->type == C_IPV4PREFIX), (p)->val.ipv4prefix)
#define CONFD_GET_DECIMAL64(p) (assert((p)->type == C_DECIMAL64), (p)->val.d64)
#define CONFD_GET_IPV4_AND_PLEN(p) (assert((p)->type == C_IPV4_AND_PLEN), (p)->val.ipv4prefix)

/* Setters. They store what they are given: no text and no list is copied. */
#define CONFD_SET_NOEXISTS(p) ((void)((p)->type = C_NOEXISTS))
#define CONFD_SET_XMLTAG(p, tag_, ns_) \
  ((void)((p)->type = C_XMLTAG, (p)->val.xmltag.tag = (tag_), (p)->val.xmltag.ns = (ns_)))
#define CONFD_SET_STR(p, s_) ((void)((p)->type = C_STR, (p)->val.s = (char*)(s_)))
#define CONFD_SET_BUF(p, ptr_, size_) \
  ((void)((p)->type = C_BUF, (p)->val.buf.ptr = (ptr_), (p)->val.buf.size = (size_)))
#define CONFD_SET_INT8(p, v_) ((void)((p)->type = C_INT8, (p)->val.i8 = (v_)))
#define CONFD_SET_INT16(p, v_) ((void)((p)->type = C_INT16, (p)->val.i16 = (v_)))
#define CONFD_SET_INT32(p, v_) ((void)((p)->type = C_INT32, (p)->val.i32 = (v_)))
#define CONFD_SET_INT64(p, v_) ((void)((p)->type = C_INT64, (p)->val.i64 = (v_)))
#define CONFD_SET_UINT8(p, v_) ((void)((p)->type = C_UINT8, (p)->val.u8 = (v_)))
#define CONFD_SET_UINT16(p, v_) ((void)((p)->type = C_UINT16, (p)->val.u16 = (v_)))
#define CONFD_SET_UINT32(p, v_) ((void)((p)->type = C_UINT32, (p)->val.u32 = (v_)))
#define CONFD_SET_UINT64(p, v_) ((void)((p)->type = C_UINT64, (p)->val.u64 = (v_)))
#define CONFD_SET_DOUBLE(p, v_) ((void)((p)->type = C_DOUBLE, (p)->val.d = (v_)))
#define CONFD_SET_IPV4(p, v_) ((void)((p)->type = C_IPV4, (p)->val.ip = (v_)))
#define CONFD_SET_IPV6(p, v_) ((void)((p)->type = C_IPV6, (p)->val.ip6 = (v_)))
#define CONFD_SET_BOOL(p, v_) ((void)((p)->type = C_BOOL, (p)->val.boolean = (v_)))
#define CONFD_SET_ENUM_VALUE(p, v_) ((void)((p)->type = C_ENUM_VALUE, (p)->val.enumvalue = (v_)))
#define CONFD_SET_LIST(p, ptr_, size_) \
  ((void)((p)->type = C_LIST, (p)->val.list.ptr = (ptr_), (p)->val.list.size = (size_)))
#define CONFD_SET_BINARY(p, ptr_, size_) \
  ((void)((p)->type = C_BINARY, (p)->val.buf.ptr = (ptr_), (p)->val.buf.size = (size_)))
#define CONFD_SET_IPV4PREFIX(p, v_) ((void)((p)->type = C_IPV4PREFIX, (p)->val.ipv4prefix = (v_)))
#define CONFD_SET_DECIMAL64(p, v_) ((void)((p)->type = C_DECIMAL64, (p)->val.d64 = (v_)))
#define CONFD_SET_IPV4_AND_PLEN(p, v_) \
  ((void)((p)->type = C_IPV4_AND_PLEN, (p)->val.ipv4prefix = (v_)))

/* Tagged values. */
#define CONFD_GET_TAG_VALUE(tv) (&(tv)->v)
#define CONFD_GET_TAG_TAG(tv) ((tv)->tag.tag)
#define CONFD_GET_TAG_NS(tv) ((tv)->tag.ns)
#define CONFD_SET_TAG_NS(tv, ns_) ((void)((tv)->tag.ns = (ns_)))
#define CONFD_SET_TAG_XMLBEGIN(tv, tag_, ns_) \
  ((void)((tv)->tag.tag = (tag_), (tv)->tag.ns = (ns_), (tv)->v.type = C_XMLBEGIN))
#define CONFD_SET_TAG_XMLEND(tv, tag_, ns_) \
  ((void)((tv)->tag.tag = (tag_), (tv)->tag.ns = (ns_), (tv)->v.type = C_XMLEND))
#define CONFD_SET_TAG_NOEXISTS(tv, tag_) \
  ((void)((tv)->tag.tag = (tag_), (tv)->tag.ns = 0, (tv)->v.type = C_NOEXISTS))

/* The user behind a transaction. */
struct confd_user_info {
  int usid; /* number of the user's session */
};

/* The transaction that a callback is called for. Lives as long as the callback runs. */
struct confd_trans_ctx {
  int thandle;                   /* transaction handle of every maapi_* call */
  struct confd_user_info* uinfo; /* never NULL */
  void* vcb_opaque;              /* what the daemon registered with the validation callback */
  char* validate_opaque;         /* tailf:opaque of the validation point's use in the model */
};

/* Sets the text of the answer from a printf format; a later call replaces an earlier text. */
void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/* Print a value, or a keypath such as "/config/interface/gpon{1 1 3}/onu". At most bufsiz bytes
 * with the NUL are written; the result is the length that the whole text has, as snprintf gives it.
 * An enumeration prints as "enum<N>", a tag as its name, an address dotted, with a length
 * "a.b.c.d/n". */
int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v);
int confd_pp_kpath(char* buf, int bufsiz, const confd_hkeypath_t* hkeypath);

/* Frees what a C_BUF, C_LIST or C_BINARY value points to; does nothing for a value of fixed size.
 */
void confd_free_value(confd_value_t* v);

/* A leaf's type in the schema. */
struct confd_type;

struct confd_cs_node_info {
  struct confd_type* type; /* of a leaf or leaf-list, else NULL */
};

/* A node of the schema; stays with the library for the life of the process. */
struct confd_cs_node {
  uint32_t tag;
  uint32_t ns;
  struct confd_cs_node_info info;
  struct confd_cs_node* parent;
  struct confd_cs_node* children;
  struct confd_cs_node* next;
  void* opaque;
};

/* The schema node at a path; keys in the path are ignored. start NULL means an absolute path. NULL
 * where the schema has no such node. */
struct confd_cs_node* confd_cs_node_cd(const struct confd_cs_node* start, const char* fmt, ...);

/* The highest number of values that one entry of the list or container yields in a value array. */
int confd_max_object_size(struct confd_cs_node* object);

/* Prints a value by its leaf's type: like confd_pp_value, but an enumeration or a union by the name
 * as the model has it. Gives the length of the whole text, or CONFD_ERR where the type does not
 * fit. */
int confd_val2str(struct confd_type* type, const confd_value_t* v, char* buf, int bufsiz);

/* The node name behind a number, NULL for an unknown one; stays with the library. */
char* confd_hash2str(uint32_t hash);

/* Decrypts len characters of an encrypted leaf's text into output, NUL-terminated; output needs at
 * least len bytes. CONFD_OK or CONFD_ERR. Needs maapi_install_crypto_keys first. */
int confd_decrypt(const char* ciphertext, int len, char* output);

#ifdef __cplusplus
}
#endif
