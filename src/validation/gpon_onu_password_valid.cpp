#include "gpon_onu_password_valid.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

#include "gpon_vald_trace_itf.h"
#include "pon_link.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

constexpr const char* kPasswordsHead =
    "The ONU password must be unique per PON interface.\n Repeated passwords:\n";
constexpr const char* kSerialsHead =
    "ONU serial number must be unique and as shown on the product label.\n"
    " Repeated serial numbers:\n";

// Users find the ONUs of XGS-PON interfaces under this name too.
constexpr const char* kInterfaceLabel = "interface gpon";

constexpr std::string_view kPassword = "password";
constexpr std::string_view kSerialNumber = "serial-number";
constexpr std::int32_t kPasswordMethod = 2;
// The first characters name the vendor and are compared as they are.
constexpr std::size_t kVendorCharacters = 4;

constexpr const char* kInterfaces = "/config/interface/";

using Credentials = std::multimap<std::string, std::string>;

/// The method decides which of the two credentials counts; the other one is not read.
bool counts(bool is_serial_number, std::int32_t auth_method) {
  return is_serial_number == (auth_method != kPasswordMethod);
}

void upper_case_after_vendor(std::string& serial) {
  for (std::size_t i = kVendorCharacters; i < serial.size(); ++i) {
    serial[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(serial[i])));
  }
}

[[gnu::cold]] std::string report_line(const std::string& label, const std::string& leaf_name,
                                      const std::string& value) {
  return label + " " + leaf_name + ": [" + value + "]\n";
}

// The path up to the leaf, in a text that begins with that of the list and a brace.
void end_credentials_prefix(std::string& prefix, std::size_t brace, const std::string& onu) {
  prefix.resize(brace);
  prefix.append(onu).append("}/auth-method/");
}

std::string onus_path_of(const std::string& list_path, const std::string& slot,
                         const std::string& port) {
  return list_path + "{1 " + slot + " " + port + "}/onu";
}

/// The credentials of all ONUs of one interface.
void collect_onus(int sock, confd_trans_ctx* tctx, const std::string& onus_path,
                  const std::string& interface_key, int auth_method, Credentials& passwords,
                  Credentials& serials) {
  // Made once: a card has thousands of ONUs.
  const std::string password(kPassword);
  const std::string serial_number(kSerialNumber);
  const std::string label = kInterfaceLabel;
  std::string prefix = onus_path + "{";
  const std::size_t brace = prefix.size();
  valid::Cursor onus(sock, tctx, "%s", onus_path.c_str());
  while (onus.next()) {
    const std::string onu = valid::value_text(&onus.entry().keys[0]);
    end_credentials_prefix(prefix, brace, onu);
    ProfileOnuSerialPassword(sock, tctx, &passwords, interface_key, onu, prefix, password,
                             auth_method, label);
    ProfileOnuSerialPassword(sock, tctx, &serials, interface_key, onu, prefix, serial_number,
                             auth_method, label);
  }
}

std::int32_t check_card(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath) {
  std::int32_t result = CONFD_OK;
  std::stringstream message;
  std::stringstream password_report;
  Credentials serials;  // of both kinds of interfaces
  for (const char* const type : {valid::kGponList, valid::kXgsponList}) {
    const std::string interface_path = std::string(kInterfaces) + type;
    const std::int32_t auth_method = getAuthMethod(sock, tctx, keypath);
    std::string slot;
    CheckOnuPwdAndSn(sock, tctx, interface_path + "/", interface_path, &serials, slot, auth_method,
                     &result, password_report);
  }
  if (result == CONFD_ERR) {
    message << kPasswordsHead << password_report.str();
  }

  std::int32_t serial_result = CONFD_OK;
  std::stringstream serial_report;
  evaluateOnuSerialPassword(serial_report, serials, std::string(kSerialNumber), &serial_result);
  if (serial_result == CONFD_ERR) {
    message << kSerialsHead << serial_report.str();
    result = CONFD_ERR;
  }

  return result == CONFD_ERR ? valid::reject(tctx, message.str().c_str()) : result;
}

}  // namespace

std::int32_t validate_onu_pwd_sn_unique(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                        confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_onu_pwd_sn_unique");
  if (tctx == nullptr || keypath == nullptr) {
    VALID_TRACE_IF(kTraceDetail, "Error - null pointer passed to validate_onu_pwd_sn_unique.");
    return trace.end(CONFD_ERR);
  }
  return trace.end(check_card(maapi_sock, tctx, keypath));
}

std::int32_t getAuthMethod(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                           confd_hkeypath_t* keypath) {
  const std::uint32_t chassis = CONFD_GET_UINT32(&keypath->v[1][0]);
  const std::uint32_t slot = CONFD_GET_UINT32(&keypath->v[1][1]);
  std::int32_t method = 0;
  maapi_get_enum_value_elem(maapi_sock, tctx->thandle, &method,
                            "/config/gpon{%d/%d}/onu-auth-method", static_cast<int>(chassis),
                            static_cast<int>(slot));
  return method;
}

void CheckOnuPwdAndSn(int sock, confd_trans_ctx* tctx, const std::string& listPath,
                      const std::string& interfacePath, Credentials* serials,
                      std::string& firstKeyText, int authMethod, std::int32_t* result,
                      std::stringstream& passwordReport) {
  valid::Cursor interfaces(sock, tctx, "%s", listPath.c_str());
  while (interfaces.next()) {
    // Slot and port are the last two keys. If the list has the chassis as a key, it is 1.
    const maapi_cursor& entry = interfaces.entry();
    const int slot_key = std::max(entry.n - 2, 0);
    firstKeyText = valid::value_text(&entry.keys[slot_key]);
    const std::string port = valid::value_text(&entry.keys[slot_key + 1]);
    const std::string onus_path = onus_path_of(interfacePath, firstKeyText, port);

    Credentials passwords;
    collect_onus(sock, tctx, onus_path, port, authMethod, passwords, *serials);
    evaluateOnuSerialPassword(passwordReport, passwords, std::string(kPassword), result);
  }
}

// The exported signatures of these two functions pass the label by value and the credentials
// without const.
void ProfileOnuSerialPassword(int sock, confd_trans_ctx* tctx, Credentials* credentials,
                              const std::string& interfaceKey, const std::string& onuId,
                              const std::string& leafPrefix, const std::string& leafName,
                              // cppcheck-suppress passedByValue ; NOLINTNEXTLINE(performance-*)
                              const int& authMethod, std::string interfaceLabel) {
  const bool is_serial_number = leafName == kSerialNumber;
  if (!counts(is_serial_number, authMethod)) {
    return;
  }
  std::array<char, valid::kTextSize> text;
  if (maapi_get_str_elem(sock, tctx->thandle, text.data(), static_cast<int>(text.size()), "%s%s",
                         leafPrefix.c_str(), leafName.c_str()) != CONFD_OK) {
    return;
  }
  std::string value = text.data();
  if (is_serial_number) {
    upper_case_after_vendor(value);
  }
  // ONUs are often numbered in order, and then each one belongs at the end.
  credentials->emplace_hint(credentials->end(), std::move(value),
                            std::move(interfaceLabel) + " " + interfaceKey + " onu " + onuId);
}

// cppcheck-suppress constParameter
void evaluateOnuSerialPassword(std::stringstream& report, Credentials& credentials,
                               const std::string& leafName, std::int32_t* result) {
  const Credentials::value_type none;
  const Credentials::value_type* previous = &none;
  bool in_group = false;
  for (const Credentials::value_type& credential : credentials) {
    if (credential.first == previous->first) {
      if (!in_group) {
        report << report_line(previous->second, leafName, previous->first);
      }
      report << report_line(credential.second, leafName, credential.first);
      *result = CONFD_ERR;
      in_group = true;
    } else {
      in_group = false;
    }
    previous = &credential;
  }
}
