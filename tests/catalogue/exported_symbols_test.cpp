#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/catalogue/requests.h"

namespace tarnd::test {
namespace {

/// The dynamic symbols that the plug-in defines: "-C" for their C++ names.
std::vector<std::string> symbols(const std::string& option = "") {
  const std::string command = "nm -D --defined-only " + option + " '" GPON_VALID_LIBRARY "'";
  struct Close {
    void operator()(std::FILE* pipe) const { pclose(pipe); }
  };
  const std::unique_ptr<std::FILE, Close> pipe(popen(command.c_str(), "r"));
  std::vector<std::string> names;
  if (pipe == nullptr) return names;

  std::string output;
  std::array<char, 4096> part{};
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe.get())) {
    output.append(part.data(), size);
  }
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    // After the address and the kind of the symbol.
    constexpr std::size_t kNameAt = 2 * sizeof(void*) + sizeof(" T ") - 1;
    if (line.size() > kNameAt) names.push_back(line.substr(kNameAt));
  }
  return names;
}

/// The wanted names that are not exported; a name that ends with a bracket means any arguments.
std::vector<std::string> missing(const std::vector<std::string>& wanted,
                                 const std::vector<std::string>& exported) {
  std::vector<std::string> absent;
  for (const std::string& name : wanted) {
    bool found = false;
    for (const std::string& symbol : exported) {
      found = found || symbol == name || (name.back() == '(' && symbol.rfind(name, 0) == 0);
    }
    if (!found) absent.push_back(name);
  }
  return absent;
}

const std::vector<std::string> kNothing;

TEST(ExportedSymbols, WhatTheDaemonLooksUpHasItsPlainName) {
  const std::vector<std::string> names = {
      // entry points
      "lib_init",
      "get_validation_point",
      "validate",
      "lib_finish",
      // capabilities
      "set_do_bw_check",
      "get_do_bw_check",
      "set_num_onus_per_ponlink",
      "get_num_onus_per_ponlink",
      "set_num_ponlinks",
      "get_num_ponlinks",
      "set_num_manageable_ponlinks",
      "get_num_manageable_ponlinks",
      // trace
      "get_trace_cat",
      "clear_trace_cat",
      "trace_validation_begin",
      "trace_validation_end",
      // texts that the daemon may replace
      "LINE_PROF_WARN_MSG",
      "FEC_WARN_MSG",
      "SP_DEL_ALL_WARN_MSG",
      // the bandwidth model
      "bandwidth_prof_to_bandwidth",
      "line_prof_to_bandwidth",
  };
  EXPECT_EQ(missing(names, symbols()), kNothing);
}

TEST(ExportedSymbols, EveryValidatorHasItsNameAndArguments) {
  std::vector<std::string> names;
  for (const Request& request : requests()) {
    names.push_back(request.validator + "(int, confd_trans_ctx*, confd_hkeypath*, confd_value*)");
  }
  EXPECT_EQ(missing(names, symbols("-C")), kNothing);
}

TEST(ExportedSymbols, TheStepsOfTheValidatorsAreThereToo) {
  const std::vector<std::string> names = {
      // frame
      "cl_ElapsedTime::cl_ElapsedTime(",
      "cl_ElapsedTime::start(",
      "cl_ElapsedTime::stop(",
      "cl_ElapsedTime::get_stop_time(",
      "cl_ElapsedTime::get_elapsed_time_sec(",
      "cl_ElapsedTime::get_elapsed_time_msec(",
      "cl_ElapsedTime::get_elapsed_time_usec(",
      "ConfdGetObjsItf::ConfdGetObjsItf(",
      "ConfdGetObjsItf::~ConfdGetObjsItf(",
      "ConfdGetObjsItf::getObjects(",
      // bandwidth
      "loadAllBws(",
      "loadBwProf(",
      "loadAllLines(",
      "loadAllTconts(",
      "validate_ponlink_bw(",
      // service profiles and gateways
      "diffIter(",
      "check_vlan_counter(",
      "check_vlan_match(",
      "chk_same_net(",
      // ONUs
      "getAuthMethod(",
      "ProfileOnuSerialPassword(",
      "evaluateOnuSerialPassword(",
      "CheckOnuPwdAndSn(",
      "get_onu_snmp_rt_count(",
      "diff_iter(",
      "diff_iter_rg(",
      "checkRgProfileChgValue(",
      // service ports
      "ponlink_type_name(",
      "get_ponlink_type(",
      "service_port_get_leafs(",
      "sp_get_id(",
      "sp_get_values(",
      "get_max_service_ports(",
      "GetStrFromConfd(",
      "iterate_detect_change_on_sp(",
      "validate_sp_global_validation(",
      "service_port_validate(",
      "get_number_onus_in_candidate(",
      "MatchOverlapValidation::MatchOverlapValidation(",
      "MatchOverlapValidation::~MatchOverlapValidation(",
      "MatchOverlapValidation::ServicePortMatchOverlaps(",
      "iterate_sp_for_gem_check_validation(",
      "gem_check_single_sp(",
      // ONUs that service ports use
      "iterate_detect_change_on_onu(",
      "is_change_in_line_profile(",
      "validate_onu_removal_and_modification(",
      "validation_state::register_deleted_onu(",
      "validation_state::register_modified_onu(",
      "validation_state::is_deleted_onu(",
      "validation_state::is_modified_onu(",
      // PON links
      "validate_itf_pon(",
      "num_pon_links_ok(",
      "get_interface_path(",
      "get_fec_path(",
      // interface groupings
      "validate_itf_grp_ports(",
      "check_port_vlan(",
      "validate_itf_grp_net(",
      "validate_itf_grp_dhcp(",
  };
  EXPECT_EQ(missing(names, symbols("-C")), kNothing);
}

}  // namespace
}  // namespace tarnd::test
