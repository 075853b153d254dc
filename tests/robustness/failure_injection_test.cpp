// Every platform call of every validator fails once: what the user is told, what stays open, and
// whether the validator is as good as before afterwards.

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "gpon_vald_trace_itf.h"
#include "tests/robustness/validations.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kConfdUnreadable = "Failed accessing confd data.";
constexpr const char* kTransactionUnreadable = "Failed accessing transaction data.";

const Outcome kAccepted{CONFD_OK, ""};
const Outcome kRejectedSilently{CONFD_ERR, ""};

Outcome rejected(const std::string& text) {
  return {CONFD_ERR, text};
}

/// The answers that the failure of one call may bring, and brings at one place or another.
using Answers = std::set<Outcome>;
using AnswersOfCalls = std::map<PlatformCall, Answers>;

std::string missing_lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "Line profile " + line + " doesn't not exist.";
  return text;
}

std::string missing_gem(int sp, int gem_id) {
  return "Service-port [" + std::to_string(sp) + "] gem [" + std::to_string(gem_id) +
         "] was not configured to onu [1]";
}

/// The whole validation's answer where nothing fails; `answers` has the calls whose failure may
/// change it, of all others none does.
struct Expectation {
  Outcome undisturbed;
  AnswersOfCalls answers;
};

using Call = PlatformCall;

// The model of the line profiles is read three ways: with what it lacks the ONUs of link 1 (on the
// lines fast, slow and, where one was added, fast again) cannot be added up.
const Outcome kNoLines = rejected(missing_lines({"fast", "slow", "fast"}));
const Outcome kNoLinesGlobally = rejected(missing_lines({"fast", "slow"}));
const Outcome kNoSlowLine = rejected(missing_lines({"slow"}));

Expectation profile_in_use(const std::string& kind) {
  const Outcome warning{CONFD_VALIDATION_WARN,
                        "Change in " + kind +
                            " configuration will result in temporary data loss for all ONUs using "
                            "this profile."};
  const Answers unreadable{rejected(kConfdUnreadable)};
  return {warning,
          {{Call::qzconfd_maapi_socket_get, unreadable},
           {Call::qzconfd_config_session_start, unreadable},
           {Call::cdb_exists, unreadable},
           {Call::maapi_xpath_eval_expr, unreadable}}};
}

Expectation vlan_rule(const Answers& existence_unknown, const AnswersOfCalls& more) {
  Expectation expectation{kAccepted,
                          {{Call::maapi_exists, existence_unknown},
                           {Call::maapi_get_list_elem, {rejected(kTransactionUnreadable)}}}};
  expectation.answers.insert(more.begin(), more.end());
  return expectation;
}

std::map<std::string, Expectation> link_expectations() {
  const Outcome fec_warning{CONFD_VALIDATION_WARN,
                            "The change in FEC configuration will result in temporary data loss "
                            "for all users of this PON link."};
  const Outcome repeated = rejected(
      "ONU serial number must be unique and as shown on the product label.\n"
      " Repeated serial numbers:\n"
      "interface gpon 1 onu 1 serial-number: [ZQRT00000001]\n"
      "interface gpon 1 onu 2 serial-number: [ZQRT00000001]\n");
  const Outcome mode_refused = rejected(
      "It's not possible to change the operation mode of PON 1 1 2 to combo. Please remove all "
      "ONUs associated with it before.\n");
  const Outcome not_applied{
      CONFD_VALIDATION_WARN,
      "The rg-one-shot-prov configuration will not be applied automatically to all ONUs using "
      "rg-profile. You shall force rg-one-shot-prov provision using the command 'rg-reprovision' "
      "available on the onu configuration tree."};
  const Outcome not_provisioned{
      CONFD_VALIDATION_WARN,
      "The rg-profile will not be provisioned automatically for this onu due to rg-one-shot-prov "
      "feature enabled. You shall force rg-profile reprovision using the command 'rg-reprovision' "
      "available on the onu configuration tree."};
  const Answers silent{kRejectedSilently};
  const Answers unreadable{rejected(kConfdUnreadable)};
  const Answers passes{kAccepted};
  return {
      {"onu_bw_check",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent},
         {Call::maapi_query_start, silent},
         {Call::maapi_query_result, silent},
         {Call::maapi_init_cursor, {kAccepted, kNoLines}},
         {Call::maapi_get_next, {kAccepted, kNoLines, kNoSlowLine}}}}},
      {"onu_pwd_sn_unique_check", {kAccepted, {}}},
      {"onu_pwd_sn_unique_check_passwords", {kAccepted, {}}},
      {"onu_pwd_sn_unique_check_rejected",
       {repeated,
        {{Call::qzconfd_maapi_socket_get, passes},
         {Call::maapi_init_cursor, {kAccepted, repeated}},
         {Call::maapi_get_next, {kAccepted, repeated}},
         {Call::maapi_get_str_elem, {kAccepted, repeated}}}}},
      {"onu_gem_check",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent},
         {Call::maapi_keypath_diff_iterate, silent},
         {Call::qzconfd_config_session_start, {rejected("Internal error validating onu commit")}},
         {Call::maapi_get_elem,
          {rejected(missing_gem(1, 1)), rejected(missing_gem(2, 2)),
           rejected(missing_gem(3, 1))}}}}},
      {"onu_gem_check_deleted",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent}, {Call::maapi_keypath_diff_iterate, silent}}}},
      {"onu_snmp_rt_warn",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, unreadable}, {Call::maapi_xpath_eval_expr, unreadable}}}},
      {"onu_gateway_ip_check",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent},
         {Call::maapi_get_ipv4_and_plen_elem, silent},
         {Call::maapi_get_ipv4_elem, silent}}}},
      {"fec_confirmation_warning",
       {fec_warning,
        {{Call::qzconfd_config_session_start, unreadable},
         {Call::cdb_exists, passes},
         {Call::cdb_get_bool, unreadable}}}},
      {"pon_mode_validation",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, {mode_refused}},
         {Call::maapi_num_instances, {mode_refused}}}}},
      {"interface_gpon_validation",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent}, {Call::maapi_num_instances, silent}}}},
      {"interface_xgs_validation",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent}, {Call::maapi_num_instances, silent}}}},
      {"one_shot_prov_check",
       {not_applied,
        {{Call::qzconfd_maapi_socket_get, passes}, {Call::maapi_keypath_diff_iterate, passes}}}},
      {"rg_prof_one_shot_check_exchanged",
       {not_provisioned,
        {{Call::qzconfd_maapi_socket_get, passes},
         {Call::maapi_exists, passes},
         {Call::qzconfd_config_session_start, unreadable},
         {Call::cdb_exists, unreadable}}}},
      {"rg_prof_one_shot_check_override",
       {not_provisioned,
        {{Call::qzconfd_maapi_socket_get, passes},
         {Call::maapi_exists, passes},
         {Call::maapi_keypath_diff_iterate, passes}}}},
  };
}

std::map<std::string, Expectation> profile_expectations() {
  const Answers silent{kRejectedSilently};
  const Answers transaction_unreadable{rejected(kTransactionUnreadable)};
  const Answers invalid_password{rejected("Invalid password length/size")};
  return {
      {"ponlink_bw_check",
       {kAccepted,
        {{Call::maapi_query_start, silent},
         {Call::maapi_query_result, silent},
         {Call::maapi_init_cursor, {kAccepted, kNoLinesGlobally}},
         {Call::maapi_get_next, {kAccepted, kNoLinesGlobally, kNoSlowLine}}}}},
      // What cannot be looked for is not there: a mapping on Ethernet ports then names no port at
      // all, one on the VEIP is not asked about Ethernet ports.
      {"vlan_match_check", vlan_rule({kAccepted, rejected(kTransactionUnreadable)},
                                     {{Call::maapi_get_elem, transaction_unreadable},
                                      {Call::confd_cs_node_cd, transaction_unreadable},
                                      {Call::confd_val2str, transaction_unreadable}})},
      {"vlan_limit_check", vlan_rule({kAccepted}, {})},
      {"line_confirmation_warning", profile_in_use("line-profile")},
      {"rg_profile_confirmation_warning", profile_in_use("rg-profile")},
      {"tr069_profile_confirmation_warning", profile_in_use("tr069-acs-profile")},
      {"sip_agent_profile_confirmation_warning", profile_in_use("sip-agent-profile")},
      {"voip_media_profile_confirmation_warning", profile_in_use("media-profile")},
      {"rg_profile_ssid_unique_check",
       {kAccepted,
        {{Call::maapi_exists, {kAccepted, rejected("must configure one of: auto, custom")}},
         {Call::maapi_get_str_elem, {kAccepted, rejected(kConfdUnreadable)}}}}},
      {"itf_grp_validation",
       {kAccepted,
        {{Call::maapi_get_u_int32_elem, silent},
         {Call::maapi_get_ipv4_and_plen_elem, silent},
         {Call::maapi_get_bool_elem, silent},
         {Call::maapi_get_ipv4_elem, silent}}}},
      {"tr069_profile_password_length_check",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, invalid_password},
         {Call::maapi_install_crypto_keys, invalid_password},
         {Call::confd_decrypt, invalid_password}}}},
  };
}

std::map<std::string, Expectation> service_port_expectations() {
  const Outcome modified = rejected("Changing already committed service port is not allowed.");
  const Outcome all_go{CONFD_VALIDATION_WARN,
                       "All Service Ports are being removed causing traffic stop for all ONUs. Are "
                       "you sure you want to proceed?"};
  const Answers silent{kRejectedSilently};
  const Answers passes{kAccepted};
  return {
      {"config_modified_check", {kAccepted, {}}},
      {"config_modified_check_rejected",
       {modified,
        {{Call::qzconfd_maapi_socket_get, passes}, {Call::maapi_keypath_diff_iterate, passes}}}},
      {"sp_gem_check",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent},
         {Call::maapi_keypath_diff_iterate, silent},
         {Call::maapi_get_elem, {rejected(missing_gem(4, 1)), rejected(missing_gem(5, 2))}}}}},
      {"service_port_global_validation",
       {kAccepted,
        {{Call::qzconfd_maapi_socket_get, silent},
         {Call::maapi_keypath_diff_iterate, silent},
         {Call::maapi_init_cursor, silent},
         {Call::maapi_get_objects, silent}}}},
      {"service_port_delete_all_warning_check",
       {all_go,
        {{Call::qzconfd_maapi_socket_get, passes},
         {Call::qzconfd_config_session_start, passes},
         {Call::cdb_num_instances, passes},
         // The number of service ports; then, link by link, that of ONUs: some remain in any case.
         {Call::maapi_num_instances, {kAccepted, all_go}}}}},
  };
}

const Expectation& expectation_of(const Validation& validation) {
  static const std::map<std::string, Expectation> all = [] {
    std::map<std::string, Expectation> expectations = link_expectations();
    expectations.merge(profile_expectations());
    expectations.merge(service_port_expectations());
    return expectations;
  }();
  return all.at(validation.name);
}

/// Cursors that a failure leaves to the end of the transaction: the interface groupings' on every
/// way out with an error, the WLANs' where one has no SSID.
int cursors_left_open(const Validation& validation, PlatformCall failing, const Outcome& outcome) {
  if (outcome.result != CONFD_ERR) return 0;
  if (outcome.text == "must configure one of: auto, custom") return 1;
  if (validation.request != "itf_grp_validation") return 0;
  return failing == PlatformCall::maapi_get_u_int32_elem ? 2 : 1;
}

/// Objects of another shape end the process, and a shape that cannot be told is another.
bool ends_the_process(const Validation& validation, PlatformCall failing) {
  return failing == PlatformCall::confd_max_object_size ||
         (failing == PlatformCall::confd_cs_node_cd && validation.request != "vlan_match_check");
}

class FailureInjection : public CardFixture, public testing::WithParamInterface<Validation> {
 protected:
  FailureInjection() {
    running(whole_card());
    answer_of_next_one_ = ask_next_one(open_validation());
  }

  ~FailureInjection() override { clear_trace_cat(); }

  /// A new transaction with the change, before the validation's first platform call.
  ValidationSession& open_validation() {
    clear_trace_cat();  // registering the category is a call, too
    return open(GetParam().change);
  }

  static Outcome ask(ValidationSession& session) {
    return dispatch(session, GetParam().request, GetParam().keypath);
  }

  /// Another validator in the same transaction.
  static Outcome ask_next_one(ValidationSession& session) {
    static const std::vector<Validation> all = whole_validations();
    const auto same_request = [](const Validation& one) {
      return one.request == GetParam().request;
    };
    auto next = std::find_if(all.begin(), all.end(), same_request);
    next = std::find_if_not(next, all.end(), same_request);
    if (next == all.end()) next = all.begin();
    return dispatch(session, next->request, next->keypath);
  }

  /// The calls of an undisturbed validation in their order.
  std::vector<PlatformCall> made_calls() {
    ValidationSession& session = open_validation();
    std::vector<PlatformCall> made;
    set_call_hook([&made](PlatformCall call) {
      made.push_back(call);
      return true;
    });
    ask(session);
    set_call_hook({});
    return made;
  }

  static void fail_nth(std::size_t nth) {
    set_call_hook([nth, seen = std::size_t{0}](PlatformCall) mutable { return ++seen != nth; });
  }

  /// Fails the n-th call, which is `failing`, then lets another validator look at the same
  /// transaction, and validates again in it and in a new one.
  Outcome fail_once(std::size_t nth, PlatformCall failing) {
    ValidationSession& session = open_validation();
    fail_nth(nth);
    Outcome outcome = ask(session);
    set_call_hook({});
    const ValidationSession::OpenResources left = session.open_resources();
    EXPECT_EQ(left.configuration_sessions, 0);
    EXPECT_EQ(left.queries, failing == PlatformCall::maapi_query_stop ? 1 : 0);
    EXPECT_EQ(left.cursors, cursors_left_open(GetParam(), failing, outcome));

    EXPECT_EQ(ask_next_one(session), answer_of_next_one_);
    EXPECT_EQ(ask(session), expectation_of(GetParam()).undisturbed);
    EXPECT_EQ(session.open_resources().cursors, left.cursors);
    EXPECT_EQ(session.open_resources().queries, left.queries);
    EXPECT_EQ(session.open_resources().configuration_sessions, 0);
    EXPECT_EQ(ask(open_validation()), expectation_of(GetParam()).undisturbed);
    return outcome;
  }

  /// What the failure of each call led to.
  AnswersOfCalls fail_each() {
    AnswersOfCalls seen;
    const std::vector<PlatformCall> made = made_calls();
    for (std::size_t nth = 1; nth <= made.size(); ++nth) {
      const PlatformCall failing = made[nth - 1];
      if (ends_the_process(GetParam(), failing)) continue;
      SCOPED_TRACE("call " + std::to_string(nth) + ", " + std::string(to_string(failing)));
      seen[failing].insert(fail_once(nth, failing));
    }
    return seen;
  }

  /// The same while the middleware has no category for the trace.
  AnswersOfCalls fail_each_untraced() {
    AnswersOfCalls seen;
    std::vector<PlatformCall> made = made_calls();
    std::erase(made, PlatformCall::qzmw_trace_register_category);
    for (std::size_t nth = 1; nth <= made.size(); ++nth) {
      if (ends_the_process(GetParam(), made[nth - 1])) continue;
      ValidationSession& session = open_validation();
      set_call_hook([nth, others = std::size_t{0}](PlatformCall call) mutable {
        return call != PlatformCall::qzmw_trace_register_category && ++others != nth;
      });
      seen[made[nth - 1]].insert(ask(session));
      set_call_hook({});
    }
    return seen;
  }

  static Answers possible_answers() {
    const Expectation& expectation = expectation_of(GetParam());
    Answers all{expectation.undisturbed};
    for (const auto& [call, answers] : expectation.answers) {
      all.insert(answers.begin(), answers.end());
    }
    return all;
  }

  static void expect_answers(const AnswersOfCalls& seen) {
    const Expectation& expectation = expectation_of(GetParam());
    for (const auto& [call, answers] : seen) {
      const auto row = expectation.answers.find(call);
      const Answers expected =
          row != expectation.answers.end() ? row->second : Answers{expectation.undisturbed};
      EXPECT_EQ(answers, expected) << to_string(call);
    }
    for (const auto& [call, answers] : expectation.answers) {
      EXPECT_TRUE(seen.contains(call)) << to_string(call) << " is not made";
    }
  }

  Outcome answer_of_next_one_;
};

TEST_P(FailureInjection, GivesTheAnswerOfTheFailingCallAndNoMore) {
  EXPECT_EQ(ask(open_validation()), expectation_of(GetParam()).undisturbed);
  expect_answers(fail_each());
}

// With the trace on there are more calls, those that print for it.
TEST_P(FailureInjection, GivesTheSameAnswersUnderFullTrace) {
  TraceCapture trace(TraceLevel::kDetail);
  expect_answers(fail_each());
}

TEST_P(FailureInjection, GivesTheSameAnswersWithoutACategoryForTheTrace) {
  expect_answers(fail_each_untraced());
}

// The platform goes away in the middle: the validator ends with one of its answers, whichever.
TEST_P(FailureInjection, EndsWithAnAnswerWhenNoCallIsAnsweredAnyMore) {
  const std::size_t made = made_calls().size();
  const Answers possible = possible_answers();
  for (std::size_t nth = 1; nth <= made; ++nth) {
    SCOPED_TRACE("from call " + std::to_string(nth) + " on");
    ValidationSession& session = open_validation();
    set_call_hook([nth, seen = std::size_t{0}](PlatformCall call) mutable {
      return ++seen < nth || ends_the_process(GetParam(), call);
    });
    const Outcome outcome = ask(session);
    set_call_hook({});
    EXPECT_TRUE(possible.contains(outcome)) << outcome;
    EXPECT_EQ(session.open_resources().configuration_sessions, 0);
    EXPECT_LE(session.open_resources().queries, 1);
    EXPECT_EQ(ask(session), expectation_of(GetParam()).undisturbed);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, FailureInjection, testing::ValuesIn(whole_validations()), test_name);

using FailureInjectionDeathTest = FailureInjection;

TEST_P(FailureInjectionDeathTest, EndsTheProcessWhereTheShapeOfObjectsIsUnknown) {
  const std::vector<PlatformCall> made = made_calls();
  int fatal = 0;
  for (std::size_t nth = 1; nth <= made.size(); ++nth) {
    if (!ends_the_process(GetParam(), made[nth - 1])) continue;
    ++fatal;
    ValidationSession& session = open_validation();
    EXPECT_EXIT(
        {
          fail_nth(nth);
          ask(session);
        },
        testing::ExitedWithCode(1),
        "Backtrace:\n(.|\n)*Fault 1 raised by ConfdGetObjsItf at "
        "src/validation/confd_get_objects_itf\\.cpp:[0-9]+: \\[/config/[^]]*\\] object size "
        "\\((0|-1)\\) differs from expected \\((15|2|26)\\)\\.\n$")
        << "call " << nth << ", " << to_string(made[nth - 1]);
  }
  EXPECT_GT(fatal, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, FailureInjectionDeathTest,
                         testing::Values(validation("onu_bw_check"), validation("ponlink_bw_check"),
                                         validation("onu_gem_check"),
                                         validation("onu_gem_check_deleted"),
                                         validation("service_port_global_validation")),
                         test_name);

// The list above is complete: no other validator reads objects.
TEST_P(FailureInjection, ReadsObjectsOnlyWhereTheProcessMayEnd) {
  const std::vector<PlatformCall> made = made_calls();
  const bool reads_objects =
      std::find(made.begin(), made.end(), PlatformCall::maapi_get_objects) != made.end();
  const std::set<std::string> readers{"onu_bw_check", "ponlink_bw_check", "onu_gem_check",
                                      "service_port_global_validation"};
  EXPECT_EQ(reads_objects, readers.contains(GetParam().request));
}

// Twenty-six requests, none of them forgotten.
TEST(FailureInjections, CoverEveryRequest) {
  std::set<std::string> requests;
  for (const Validation& one : whole_validations()) requests.insert(one.request);
  EXPECT_EQ(requests.size(), 26U);
}

}  // namespace
}  // namespace tarnd::test
