#ifndef CONFD_CDB_H
#define CONFD_CDB_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

enum sdk_cdb { SDK_CDB_EXISTS, SDK_CDB_BOOL, SDK_CDB_COUNT };
int sdk_cdb_read(int sock, enum sdk_cdb what, int* result, const char* fmt, ...);
#define cdb_exists(sock, ...) sdk_cdb_read((sock), SDK_CDB_EXISTS, 0, __VA_ARGS__)
#define cdb_get_bool(sock, result, ...) sdk_cdb_read((sock), SDK_CDB_BOOL, (result), __VA_ARGS__)
#define cdb_num_instances(sock, ...) sdk_cdb_read((sock), SDK_CDB_COUNT, 0, __VA_ARGS__)
int cdb_get_str(int sock, char* buf, int n, const char* fmt, ...);

#ifdef __cplusplus
}
#endif
#endif
