#pragma once

#include <cstdint>
#include <string>

#include "confd_maapi.h"

/// "onu_snmp_rt_warn": warns if more ONUs of the card than recommended are monitored in real time
/// through SNMP. Counts in the whole configuration; keypath and newval are not used. Returns 0, -3
/// with a text, or -1 with a text if the ONUs cannot be counted.
std::int32_t onu_snmp_rt_confirmation(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval);

/// Evaluates an XPath expression that counts. Returns 0, or -1 with count 0. Throws
/// std::out_of_range if the number is out of the range of an int.
int get_onu_snmp_rt_count(int sock, confd_trans_ctx* tctx, std::string xpath, int& count);
