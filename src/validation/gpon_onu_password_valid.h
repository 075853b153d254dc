#pragma once

#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "confd_maapi.h"

/// "onu_pwd_sn_unique_check": no two ONUs may prove who they are with the same credential. With
/// password authentication the passwords within one PON interface must differ, with any other
/// method the serial numbers on the whole card. keypath is that of a list of ONUs, newval is not
/// used. 0, or -1 with a text; without one where tctx or keypath is null.
std::int32_t validate_onu_pwd_sn_unique(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                        confd_hkeypath_t* keypath, confd_value_t* newval);

/// The number of the card's ONU authentication method; 0 where none is set or it cannot be read.
/// The card is told by the first two keys (chassis and slot) of the list entry that holds the
/// keypath's node.
std::int32_t getAuthMethod(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                           confd_hkeypath_t* keypath);

/// Collects the credentials of all ONUs of the PON interfaces in one list. Passwords are judged
/// here, interface by interface: repeated ones go to the report and make the result -1. Serial
/// numbers are left to the caller in `serials`. listPath ends in a slash, interfacePath is the same
/// without it; firstKeyText becomes the slot of the last interface.
void CheckOnuPwdAndSn(int sock, confd_trans_ctx* tctx, const std::string& listPath,
                      const std::string& interfacePath,
                      std::multimap<std::string, std::string>* serials, std::string& firstKeyText,
                      int authMethod, std::int32_t* result, std::stringstream& passwordReport);

/// Adds one credential of one ONU, with a label that says where the ONU is, unless it is not set or
/// the authentication method does not use it. leafName is "password" or "serial-number", leafPrefix
/// the path before it with its slash.
void ProfileOnuSerialPassword(int sock, confd_trans_ctx* tctx,
                              std::multimap<std::string, std::string>* credentials,
                              const std::string& interfaceKey, const std::string& onuId,
                              const std::string& leafPrefix, const std::string& leafName,
                              const int& authMethod, std::string interfaceLabel);

/// Reports every ONU whose credential is not the only one of its value, a line each, and then makes
/// the result -1; otherwise leaves it as it is. An empty credential counts as repeated.
void evaluateOnuSerialPassword(std::stringstream& report,
                               std::multimap<std::string, std::string>& credentials,
                               const std::string& leafName, std::int32_t* result);
