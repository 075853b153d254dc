#pragma once

#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "confd_maapi.h"

/// "onu_pwd_sn_unique_check": rejects a credential that two ONUs share. With password
/// authentication the passwords within one PON interface must differ, with any other method the
/// serial numbers on the whole card. The keypath is that of a list of ONUs; newval is not used.
/// Returns 0, or -1 with a text; without a text if tctx or keypath is null.
std::int32_t validate_onu_pwd_sn_unique(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                        confd_hkeypath_t* keypath, confd_value_t* newval);

/// The number of the card's ONU authentication method; 0 if none is set or it cannot be read. The
/// first two keys (chassis and slot) of the list entry that contains the keypath's node select the
/// card.
std::int32_t getAuthMethod(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                           confd_hkeypath_t* keypath);

/// Collects the credentials of all ONUs of the PON interfaces in one list. Passwords are compared
/// here, interface by interface: repeated ones are added to the report and set the result to -1.
/// Serial numbers are collected in `serials`, for the caller to compare. listPath ends in a slash,
/// interfacePath is the same without it; firstKeyText becomes the slot of the last interface.
void CheckOnuPwdAndSn(int sock, confd_trans_ctx* tctx, const std::string& listPath,
                      const std::string& interfacePath,
                      std::multimap<std::string, std::string>* serials, std::string& firstKeyText,
                      int authMethod, std::int32_t* result, std::stringstream& passwordReport);

/// Adds one credential of one ONU, with a label that names the ONU's interface, if it is set and
/// the authentication method uses it. leafName is "password" or "serial-number", leafPrefix the
/// path before it with its slash.
void ProfileOnuSerialPassword(int sock, confd_trans_ctx* tctx,
                              std::multimap<std::string, std::string>* credentials,
                              const std::string& interfaceKey, const std::string& onuId,
                              const std::string& leafPrefix, const std::string& leafName,
                              const int& authMethod, std::string interfaceLabel);

/// Adds a line to the report for every ONU whose credential another one has, too, and sets the
/// result to -1 if there is any; otherwise the result stays as it is. An empty credential counts as
/// repeated.
void evaluateOnuSerialPassword(std::stringstream& report,
                               std::multimap<std::string, std::string>& credentials,
                               const std::string& leafName, std::int32_t* result);
