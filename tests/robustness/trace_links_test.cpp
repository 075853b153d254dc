// The records of the validators on PON links, their ONUs and one-shot provisioning, path by path.

#include "gpon_itf_valid.h"
#include "gpon_onu_password_valid.h"
#include "tests/catalogue/expected_trace.h"
#include "tests/support/platform_in_place.h"

namespace tarnd::test {
namespace {

// ---- Addresses

class TraceGateway : public TraceTest {
 protected:
  static constexpr const char* kValidator = "validate_onu_gateway_ip";

  Records after(const std::string& gateway) {
    running(gpon_link(1, onu(1, element("ip-host", element("address", "10.0.0.5/24") +
                                                       element("default-gateway", gateway)))));
    return records_of("onu_gateway_ip_check", "/config/interface/gpon{1 1 1}/onu{1}/ip-host");
  }
};

TEST_F(TraceGateway, HasTheVerdictOnly) {
  struct Row {
    const char* gateway;
    const char* word;
  };
  for (const Row& row :
       {Row{"10.0.0.1", "OK"}, Row{"10.0.0.5", "ERROR"}, Row{"10.0.1.1", "ERROR"}}) {
    expect_records(after(row.gateway), {begin(kValidator), end(kValidator, row.word)});
  }
}

TEST_F(TraceGateway, OfAddressesThatCannotBeReadHasTheVerdictOnly) {
  for (const PlatformCall failing :
       {PlatformCall::maapi_get_ipv4_and_plen_elem, PlatformCall::maapi_get_ipv4_elem}) {
    fail_call(failing);
    expect_records(after("10.0.0.1"), {begin(kValidator), end(kValidator, "ERROR")});
  }
}

// ---- Serial numbers and passwords

class TraceCredentials : public TraceTest {
 protected:
  static constexpr const char* kValidator = "validate_onu_pwd_sn_unique";

  Records of_serials(const std::string& first, const std::string& second) {
    running(gpon_link(1, onu(1, serial_number(first)) + onu(2, serial_number(second))));
    return records_of("onu_pwd_sn_unique_check", "/config/interface/gpon{1 1 1}/onu");
  }
};

TEST_F(TraceCredentials, HasTheVerdictOnly) {
  expect_records(of_serials("ZQRT00000001", "ZQRT00000002"),
                 {begin(kValidator), end(kValidator, "OK")});
  expect_records(of_serials("ZQRT00000001", "ZQRT00000001"),
                 {begin(kValidator), end(kValidator, "ERROR")});
}

TEST_F(TraceCredentials, ReportsANullPointer) {
  const Records written =
      traced(TraceLevel::kDetail, [] { validate_onu_pwd_sn_unique(1, nullptr, nullptr, nullptr); });
  expect_records(
      written,
      {begin(kValidator),
       Source("gpon_onu_password_valid")
           .detail(kValidator, "Error - null pointer passed to validate_onu_pwd_sn_unique."),
       end(kValidator, "ERROR")});
}

// ---- SNMP real-time monitoring

class TraceMonitoring : public TraceTest {
 protected:
  static constexpr const char* kRequest = "onu_snmp_rt_warn";
  static constexpr const char* kValidator = "onu_snmp_rt_confirmation";
  static constexpr const char* kOnus = "/config/interface/gpon{1 1 1}/onu";
  const Source source_{"gpon_onu_snmp_rt_confirm"};

  void monitored(int onus) {
    std::string content;
    for (int id = 1; id <= onus; ++id)
      content += onu(id, element("snmp", element("real-time", "")));
    running(gpon_link(1, content));
  }
};

TEST_F(TraceMonitoring, OfFewOnus) {
  monitored(3);
  expect_records(
      records_of(kRequest, kOnus),
      {begin(kValidator),
       source_.detail(kValidator, "3 ONUs with real-time enabled. Don't show warning message."),
       end(kValidator, "OK")});
}

TEST_F(TraceMonitoring, OfTooManyOnus) {
  monitored(129);
  expect_records(
      records_of(kRequest, kOnus),
      {begin(kValidator),
       source_.flow(kValidator, "129 ONUs with real-time enabled. Show warning message."),
       source_.flow(kValidator,
                    "There are 129 ONUs with real-time SNMP monitoring enabled. Recommended number "
                    "is 128. This might cause performance impacts. Do you want to proceed?"),
       end(kValidator, "WARNING")});
}

TEST_F(TraceMonitoring, OfACountThatFails) {
  monitored(1);
  const std::string failed = source_.flow(
      "get_onu_snmp_rt_count",
      "There was an error (maapi_xpath_eval_expr is not answered) evaluating onus snmp "
      "real-time xpath.");
  const char* const kinds[] = {"GPON", "XGSPON"};
  for (int nth = 1; nth <= 2; ++nth) {
    expect_records(
        records_of_failed(PlatformCall::maapi_xpath_eval_expr, nth, kRequest, kOnus),
        {begin(kValidator), failed,
         source_.flow(kValidator, std::string("There was an error checking how many ") +
                                      kinds[nth - 1] + " ONUs have SNMP real-time enabled."),
         end(kValidator, "ERROR")});
  }
}

TEST_F(TraceMonitoring, OfACountThatIsNoNumber) {
  const InPlace in_place;
  monitored(1);
  fail_call(PlatformCall::maapi_exists);
  open();
  EXPECT_EQ(maapi_exists(sock(), tctx()->thandle, "/config"), CONFD_ERR);  // the last error
  let_calls_pass();
  InPlace::xpath = {CONFD_OK, "many"};
  expect_records(
      records_of(kRequest, kOnus),
      {begin(kValidator),
       source_.flow(
           "get_onu_snmp_rt_count",
           "There was an error (maapi_exists is not answered) (stoi) retrieving the number "
           "of onus with snmp real-time."),
       source_.flow(kValidator,
                    "There was an error checking how many GPON ONUs have SNMP real-time enabled."),
       end(kValidator, "ERROR")});
}

// ---- One-shot provisioning

class TraceOneShot : public TraceTest {
 protected:
  static constexpr const char* kRequest = "one_shot_prov_check";
  static constexpr const char* kValidator = "validate_one_shot_prov";
  static constexpr const char* kInUse = "is_rg_profile_in_use";
  const Source source_{"gpon_card_valid"};

  static std::string slot(const std::string& content) {
    return element("gpon", element("slot", "1/1") + content);
  }

  static std::string uses_rg(const std::string& profile) { return element("rg-profile", profile); }

  Records of_switching_on() {
    return records_of(kRequest, "/config/gpon", slot(element("rg-one-shot-prov", "")));
  }

  /// The records up to the query of the ONUs.
  [[nodiscard]] Records switched_on() const {
    return {
        begin(kValidator), source_.flow(kValidator, "Validating keypath: /config/gpon"),
        source_.flow("diff_iter", "Validating keypath: /config/gpon{1/1} (op=3, oldv:#, newv:#)"),
        source_.flow("diff_iter",
                     "Validating keypath: /config/gpon{1/1}/rg-one-shot-prov (op=1, oldv:#, "
                     "newv:#)"),
        source_.flow(kValidator, "rg-one-shot-prov has changed!")};
  }

  void expect_switched_on_and(const Records& written, const Records& rest) {
    Records expected = switched_on();
    expected.insert(expected.end(), rest.begin(), rest.end());
    expect_records(written, expected);
  }
};

TEST_F(TraceOneShot, OfAnotherChange) {
  running(slot(""));
  expect_records(
      records_of(kRequest, "/config/gpon", slot(element("onu-auth-method", "password"))),
      {begin(kValidator), source_.flow(kValidator, "Validating keypath: /config/gpon"),
       source_.flow("diff_iter", "Validating keypath: /config/gpon{1/1} (op=3, oldv:#, newv:#)"),
       source_.flow("diff_iter",
                    "Validating keypath: /config/gpon{1/1}/onu-auth-method (op=4, oldv:#, "
                    "newv:#)"),
       end(kValidator, "OK")});
}

TEST_F(TraceOneShot, OfOnusWithAProfile) {
  running(slot("") + gpon_link(1, onu(1) + onu(2, uses_rg("rg")) + onu(3)));
  expect_switched_on_and(
      of_switching_on(),
      {source_.flow(kInUse, "result 1:\n"), source_.flow(kInUse, " rg-profile: \n"),
       source_.flow(kInUse, "result 2:\n"), end(kValidator, "WARNING")});
}

TEST_F(TraceOneShot, OfOnusWithoutOne) {
  running(slot("") + gpon_link(1, onu(1)) + xgspon_link(1, onu(1, uses_rg("rg"))));
  expect_switched_on_and(of_switching_on(),
                         {source_.flow(kInUse, "result 1:\n"),
                          source_.flow(kInUse, " rg-profile: \n"), end(kValidator, "OK")});
}

TEST_F(TraceOneShot, OfOnusThatCannotBeQueried) {
  running(slot(""));
  fail_call(PlatformCall::maapi_query_start);
  expect_switched_on_and(
      of_switching_on(),
      {source_.flow(kInUse, "query failed for onu. err=maapi_query_start is not answered"),
       end(kValidator, "WARNING")});
}

// ---- RG profiles under one-shot provisioning

class TraceRgOneShot : public TraceTest {
 protected:
  static constexpr const char* kRequest = "rg_prof_one_shot_check";
  static constexpr const char* kValidator = "validate_rg_prof_one_shot";
  static constexpr const char* kReference = "/config/interface/gpon{1 1 1}/onu{1}/rg-profile";
  static constexpr const char* kOverride = "/config/interface/gpon{1 1 1}/onu{1}/rg-override";
  const Source source_{"gpon_onu_rg_profile_validation"};
  const std::string starts_ = source_.flow(kValidator, "rg-profile one-shot-prov validate.");
  const std::string exchanged_ =
      source_.flow(kValidator, "rg-profile was exchanged or override parameters were changed.");

  TraceRgOneShot() { card(element("rg-one-shot-prov", ""), ""); }

  void card(const std::string& one_shot, const std::string& onu_content) {
    running(element("gpon", element("slot", "1/1") + one_shot) + gpon_link(1, onu(1, onu_content)));
  }

  static std::string of_onu(const std::string& content) { return gpon_link(1, onu(1, content)); }
  static std::string to_profile(const std::string& name) {
    return of_onu(element("rg-profile", name));
  }
};

TEST_F(TraceRgOneShot, OfADisabledMode) {
  card("", element("rg-profile", "old"));
  expect_records(
      records_of(kRequest, kReference, to_profile("new")),
      {begin(kValidator), starts_, source_.flow(kValidator, "The rg-one-shot-prov is disabled."),
       end(kValidator, "OK")});
}

TEST_F(TraceRgOneShot, OfAFirstProfile) {
  expect_records(records_of(kRequest, kReference, to_profile("first")),
                 {begin(kValidator), starts_, end(kValidator, "OK")});
}

TEST_F(TraceRgOneShot, OfAnExchangedProfile) {
  card(element("rg-one-shot-prov", ""), element("rg-profile", "old"));
  expect_records(records_of(kRequest, kReference, to_profile("new")),
                 {begin(kValidator), starts_, exchanged_, end(kValidator, "WARNING")});
}

TEST_F(TraceRgOneShot, OfACommittedProfileThatCannotBeLookedUp) {
  for (const PlatformCall failing :
       {PlatformCall::qzconfd_config_session_start, PlatformCall::cdb_exists}) {
    expect_records(records_of_failed(failing, 1, kRequest, kReference, to_profile("new")),
                   {begin(kValidator), starts_, end(kValidator, "ERROR")});
  }
}

TEST_F(TraceRgOneShot, OfAChangedOverride) {
  expect_records(
      records_of(kRequest, kOverride, of_onu(element("rg-override", element("ssid", "Mine")))),
      {begin(kValidator), starts_,
       source_.detail("diff_iter_rg",
                      "Validating keypath: /config/interface/gpon{1 1 1}/onu{1}/rg-override/ssid "
                      "(op=4, oldv:#, newv:#)"),
       exchanged_, end(kValidator, "WARNING")});
}

TEST_F(TraceRgOneShot, OfAnOverrideThatDoesNotChange) {
  expect_records(records_of(kRequest, kOverride),
                 {begin(kValidator), starts_, end(kValidator, "OK")});
}

// ---- PON interfaces

class TraceInterfaces : public TraceTest {
 protected:
  static constexpr const char* kValidator = "validate_itf_pon";
  const Source source_{"gpon_itf_valid"};

  TraceInterfaces() {
    CardDescription card = CardDescription::standard();
    card.pon_links = 1;
    insert(card);
  }
};

TEST_F(TraceInterfaces, HasTheVerdictOnly) {
  running(gpon_link(1));
  expect_records(records_of("interface_gpon_validation", "/config/interface/gpon"),
                 {begin(kValidator), end(kValidator, "OK")});
  expect_records(records_of("interface_xgs_validation", "/config/interface/xgspon"),
                 {begin(kValidator), end(kValidator, "ERROR")});
}

TEST_F(TraceInterfaces, OfACountThatFails) {
  for (const std::string list : {"gpon", "xgspon"}) {
    const std::string request =
        list == "gpon" ? "interface_gpon_validation" : "interface_xgs_validation";
    expect_records(records_of_failed(PlatformCall::maapi_num_instances, 1, request,
                                     "/config/interface/" + list),
                   {begin(kValidator),
                    source_.flow(kValidator, "Failed getting " + list +
                                                 " ports (maapi_num_instances is not answered)"),
                    end(kValidator, "ERROR")});
  }
}

TEST_F(TraceInterfaces, OfAnUnknownTypeEndsWithOk) {
  open();
  const Records written =
      traced(TraceLevel::kDetail, [this] { validate_itf_pon(sock(), tctx(), nullptr); });
  expect_records(
      written,
      {begin(kValidator),
       source_.flow(kValidator,
                    "Error: Trying to execute validation for a non expected type of PON port"),
       end(kValidator, "OK")});
}

class TraceMode : public TraceTest {
 protected:
  static constexpr const char* kValidator = "pon_mode_validation";

  static void expect_count(const Records& written, const std::string& count) {
    const Source source("gpon_link_mode_validation");
    expect_records(
        written,
        {source.detail(kValidator, "Keypath: /config/interface/xgspon{1 1 2}/operation-mode"),
         source.detail(kValidator, "There are " + count + " ONUS associated with Pon Link 1 1 2")});
  }

  Records of_mode() {
    return records_of("pon_mode_validation", "/config/interface/xgspon{1 1 2}/operation-mode",
                      xgspon_link(2, element("operation-mode", "combo")));
  }
};

TEST_F(TraceMode, HasNoBracket) {
  running(xgspon_link(2));
  expect_count(of_mode(), "0");
  running(xgspon_link(2, onu(1) + onu(2)));
  expect_count(of_mode(), "2");
  fail_call(PlatformCall::maapi_num_instances);
  expect_count(of_mode(), "-1");
}

// ---- FEC

class TraceFec : public TraceTest {
 protected:
  static constexpr const char* kRequest = "fec_confirmation_warning";
  static constexpr const char* kValidator = "ponlink_fec_confirmation";
  static constexpr const char* kLeaf = "/config/interface/gpon{1 1 3}/downstream-fec";
  const Source source_{"gpon_ponlink_fec_confirm"};
  const std::string off_ = gpon_link(3, element("downstream-fec", "false"));

  TraceFec() { running(gpon_link(3)); }
};

TEST_F(TraceFec, OfAChange) {
  expect_records(
      records_of(kRequest, kLeaf, off_),
      {begin(kValidator), source_.detail(kValidator, std::string(kLeaf) + " FEC did change."),
       end(kValidator, "WARNING")});
}

TEST_F(TraceFec, OfNoChange) {
  expect_records(
      records_of(kRequest, kLeaf),
      {begin(kValidator), source_.detail(kValidator, std::string(kLeaf) + " FEC didn't change."),
       end(kValidator, "OK")});
}

TEST_F(TraceFec, OfANewInterface) {
  const std::string leaf = "/config/interface/xgspon{1 1 4}/upstream-fec";
  expect_records(
      records_of(kRequest, leaf, xgspon_link(4, element("upstream-fec", "false"))),
      {begin(kValidator), source_.detail(kValidator, leaf + " doesn't exist. FEC didn't change."),
       end(kValidator, "OK")});
}

TEST_F(TraceFec, OfASessionThatDoesNotOpenHasTheVerdictOnly) {
  expect_records(
      records_of_failed(PlatformCall::qzconfd_config_session_start, 1, kRequest, kLeaf, off_),
      {begin(kValidator), end(kValidator, "ERROR")});
}

TEST_F(TraceFec, OfACommittedValueThatCannotBeRead) {
  expect_records(records_of_failed(PlatformCall::cdb_get_bool, 1, kRequest, kLeaf, off_),
                 {begin(kValidator), source_.flow(kValidator, "cdb_sock=# ret = -1"),
                  end(kValidator, "ERROR")});
}

}  // namespace
}  // namespace tarnd::test
