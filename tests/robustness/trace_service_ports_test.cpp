// The records of the validators on service ports, path by path.

#include "gpon_onu_gem_check.h"
#include "tests/catalogue/expected_trace.h"
#include "valid_service_port.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kServicePorts = "/config/service-port";
constexpr const char* kFirst = "/config/service-port{1}";

Records joined(std::initializer_list<Records> parts) {
  Records all;
  for (const Records& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

class TraceServicePorts : public TraceTest {
 protected:
  const Source source_{"valid_service_port"};

  [[nodiscard]] std::string leafs(const std::string& text) const {
    return source_.detail("service_port_get_leafs", text);
  }
};

// ---- All service ports together

class TraceAllServicePorts : public TraceServicePorts {
 protected:
  static constexpr const char* kRequest = "service_port_global_validation";
  static constexpr const char* kWhole = "validate_sp_global_validation";
  static constexpr const char* kChange = "iterate_detect_change_on_sp";
  const Records starts_{
      begin(kRequest),
      source_.detail(kRequest, std::string("Validating keypath: ") + kServicePorts)};
  const std::string first_ = service_port(1, "gpon", "1/1/3", 4, 5, 60);

  /// The change of port 1, after which the iteration goes on or not.
  [[nodiscard]] Records change_seen(const std::string& word) const {
    return {source_.detail(kChange, std::string("Validating keypath: ") + kFirst + "\n"),
            source_.detail(kChange, std::string("service-port ") + kFirst + " " + word + "\n")};
  }

  [[nodiscard]] Records first_validated() const {
    return {leafs("SP 1 (gpon=1 1 3, onu=4, gem=5) get leafs: match-vlan=60, action-vlan=-1"),
            source_.entry("service_port_validate",
                          "Validate SP 1 (gpon=1 1 3, onu=4, gem=5) Match Vlan 60 begin."),
            source_.entry("service_port_validate", "Validate SP 1 end.")};
  }
};

TEST_F(TraceAllServicePorts, OfANewOne) {
  running(service_port(9, "xgspon", "1/1/2", 3, 4));
  expect_records(
      records_of(kRequest, kServicePorts, first_),
      joined(
          {starts_,
           change_seen("created"),
           first_validated(),
           {leafs("SP 9 (xgspon=1 1 2, onu=3, gem=4) get leafs: match-vlan=-1, action-vlan=-1"),
            source_.entry("service_port_validate",
                          "Validate SP 9 (xgspon=1 1 2, onu=3, gem=4) Match Vlan -1 begin."),
            source_.entry("service_port_validate", "Validate SP 9 end."), end(kRequest, "OK")}}));
}

TEST_F(TraceAllServicePorts, OfAModifiedOne) {
  running(service_port(1, "gpon", "1/1/3", 4, 5, 61));
  expect_records(
      records_of(kRequest, kServicePorts, first_),
      joined({starts_, change_seen("modified"), first_validated(), {end(kRequest, "OK")}}));
}

TEST_F(TraceAllServicePorts, OfADeletedOne) {
  running(first_);
  expect_records(records_of(kRequest, kServicePorts, deleted_service_port(1)),
                 joined({starts_, change_seen("deleted"), {end(kRequest, "OK")}}));
}

TEST_F(TraceAllServicePorts, OfAConflict) {
  running(service_port(9, "gpon", "1/1/3", 4, 5, 60));
  expect_records(
      records_of(kRequest, kServicePorts, first_),
      joined({starts_,
              change_seen("created"),
              first_validated(),
              {leafs("SP 9 (gpon=1 1 3, onu=4, gem=5) get leafs: match-vlan=60, action-vlan=-1"),
               source_.entry("service_port_validate",
                             "Validate SP 9 (gpon=1 1 3, onu=4, gem=5) Match Vlan 60 begin."),
               source_.flow(kWhole, "Service Port Validation failed."), end(kRequest, "ERROR")}}));
}

TEST_F(TraceAllServicePorts, OfAnIncompleteOne) {
  const std::string incomplete =
      element("service-port", element("id", "1") + element("gpon", element("id", "1/1/3")));
  expect_records(records_of(kRequest, kServicePorts, incomplete),
                 joined({starts_,
                         change_seen("created"),
                         {source_.flow(kWhole, "Failed to get leafs."), end(kRequest, "ERROR")}}));
}

TEST_F(TraceAllServicePorts, OfTooMany) {
  CardDescription card = CardDescription::standard();
  card.max_service_ports = 1;
  insert(card);
  running(first_);
  const std::string second = service_port(2, "gpon", "1/1/3", 4, 5, 61);
  expect_records(
      records_of(kRequest, kServicePorts, second),
      joined({starts_,
              {source_.detail(kChange, "Validating keypath: /config/service-port{2}\n"),
               source_.detail(kChange, "service-port /config/service-port{2} created\n")},
              first_validated(),
              {leafs("SP 2 (gpon=1 1 3, onu=4, gem=5) get leafs: match-vlan=61, action-vlan=-1"),
               source_.entry("service_port_validate",
                             "Validate SP 2 (gpon=1 1 3, onu=4, gem=5) Match Vlan 61 begin."),
               source_.entry("service_port_validate", "Validate SP 2 end."),
               end(kRequest, "ERROR")}}));
}

TEST_F(TraceAllServicePorts, OfAnIterationThatFails) {
  expect_records(records_of_failed(PlatformCall::maapi_keypath_diff_iterate, 1, kRequest,
                                   kServicePorts, first_),
                 joined({starts_,
                         {source_.detail(kRequest, "Error iterating keypath: /config/service-port"),
                          end(kRequest, "ERROR")}}));
}

TEST_F(TraceAllServicePorts, OfAListThatCannotBeRead) {
  expect_records(
      records_of_failed(PlatformCall::maapi_get_objects, 1, kRequest, kServicePorts, first_),
      joined({starts_, change_seen("created"), {end(kRequest, "ERROR")}}));
}

TEST_F(TraceAllServicePorts, OfAnUnknownOperation) {
  confd_hkeypath_t path = service_port_keypath(1);
  bool changed = false;
  const Records written = traced(TraceLevel::kDetail, [&] {
    iterate_detect_change_on_sp(&path, MOP_MOVED_AFTER, nullptr, nullptr, &changed);
  });
  expect_records(written,
                 {source_.detail(kChange, std::string("Validating keypath: ") + kFirst + "\n"),
                  source_.flow(kChange,
                               "WARNING: Reached default case (service_port_global_validation "
                               "service-port /config/service-port{1})")});
}

TEST_F(TraceAllServicePorts, OfAnObjectWithoutALink) {
  std::vector<confd_value_t> values(SP_CONFD_VALUES_PER_OBJECT, none());
  std::uint32_t sp = 0;
  std::uint32_t onu_id = 0;
  std::uint32_t gem_id = 0;
  std::int32_t match_vlan = 0;
  std::int32_t action_vlan = 0;
  std::string name;
  const Records written = traced(TraceLevel::kDetail, [&] {
    service_port_get_leafs(values.data(), sp, name, onu_id, gem_id, match_vlan, action_vlan);
  });
  expect_records(written,
                 {source_.flow("service_port_get_leafs",
                               "Error: Ponlink of GPON or XGSPON do not exist in confd.")});
}

// ---- The last service ports

class TraceLastServicePorts : public TraceServicePorts {
 protected:
  static constexpr const char* kRequest = "service_port_delete_all_warning_check";
  static constexpr const char* kValidator = "service_port_delete_all_warning";
  const std::string all_go_ = deleted_service_port(1) + deleted_service_port(2);

  void two_ports(const std::string& links) {
    running(links + service_port(1, "gpon", "1/1/3", 4, 5, 60) +
            service_port(2, "gpon", "1/1/3", 4, 5, 61));
  }

  [[nodiscard]] std::string counted(const std::string& running_ports,
                                    const std::string& candidate_ports,
                                    const std::string& factory) const {
    return source_.flow(kValidator, "num_inst_in_running = " + running_ports +
                                        ", num_inst_in_candidate = " + candidate_ports +
                                        ", is_load_factory = " + factory + ".");
  }
};

TEST_F(TraceLastServicePorts, OfOnusThatRemain) {
  two_ports(gpon_link(1, onu(1)));
  expect_records(records_of(kRequest, kServicePorts, all_go_),
                 {begin(kValidator), counted("2", "0", "0"), end(kValidator, "WARNING")});
  expect_records(records_of(kRequest, kServicePorts, deleted_service_port(1)),
                 {begin(kValidator), counted("2", "1", "0"), end(kValidator, "OK")});
}

TEST_F(TraceLastServicePorts, OfACardWithoutOnus) {
  two_ports(gpon_link(1));
  expect_records(records_of(kRequest, kServicePorts, all_go_),
                 {begin(kValidator), counted("2", "0", "1"), end(kValidator, "OK")});
}

TEST_F(TraceLastServicePorts, OfASessionThatDoesNotOpenHasTheVerdictOnly) {
  two_ports(gpon_link(1, onu(1)));
  expect_records(records_of_failed(PlatformCall::qzconfd_config_session_start, 1, kRequest,
                                   kServicePorts, all_go_),
                 {begin(kValidator), end(kValidator, "OK")});
}

TEST_F(TraceLastServicePorts, OfNumbersThatCannotBeRead) {
  two_ports(gpon_link(1, onu(1)));
  expect_records(
      records_of_failed(PlatformCall::cdb_num_instances, 1, kRequest, kServicePorts, all_go_),
      {begin(kValidator), counted("-1", "0", "0"), end(kValidator, "OK")});
  expect_records(
      records_of_failed(PlatformCall::maapi_num_instances, 1, kRequest, kServicePorts, all_go_),
      {begin(kValidator), counted("2", "-1", "0"), end(kValidator, "OK")});
  expect_records(
      records_of_failed(PlatformCall::maapi_num_instances, 2, kRequest, kServicePorts, all_go_),
      {begin(kValidator),
       source_.flow("get_number_onus_in_candidate",
                    "Failed to get number of ONUs. (err: maapi_num_instances is not answered)."),
       counted("2", "0", "1"), end(kValidator, "OK")});
}

// ---- Each service port by itself

class TraceGemCheck : public TraceServicePorts {
 protected:
  static constexpr const char* kRequest = "sp_gem_check";
  static constexpr const char* kValidator = "validate_sp_gem_check";
  static constexpr const char* kEach = "iterate_sp_for_gem_check_validation";
  static constexpr const char* kRetrieving =
      "Retrieving information from service port from confd. Keypath: /config/service-port{1}";
  const std::string first_ = service_port(1, "gpon", "1/1/3", 4, 5);
  const Records starts_{
      begin(kValidator),
      source_.detail(kValidator,
                     "validate_sp_gem_check: Validating keypath: /config/service-port")};

  TraceGemCheck() {
    running(line_profile("line", gem(5)) + gpon_link(3, onu(4, uses_line("line"))));
  }

  [[nodiscard]] Records change_seen(const std::string& word) const {
    return {source_.detail(kEach, std::string("Validating keypath: ") + kFirst),
            source_.detail(kEach, std::string("service-port ") + kFirst + " " + word + "\n")};
  }
  [[nodiscard]] std::string id_read() const { return source_.flow("sp_get_id", kRetrieving); }
  [[nodiscard]] std::string values_read() const {
    return source_.flow("sp_get_values", kRetrieving);
  }
  [[nodiscard]] Records first_checked() const {
    return {id_read(), values_read(),
            source_.detail("sp_get_values",
                           "Took # usecs to get SP 1 (gpon=1 1 3, onu=4, gem=5) from ConfD"),
            source_.detail(kEach, "Validate SP 1 (gpon=1/1/3, onu=4, gem=5)")};
  }
};

TEST_F(TraceGemCheck, OfANewOne) {
  expect_records(
      records_of(kRequest, kServicePorts, first_),
      joined({starts_, change_seen("created"), first_checked(), {end(kValidator, "OK")}}));
}

TEST_F(TraceGemCheck, OfAModifiedOne) {
  running(first_);
  expect_records(
      records_of(kRequest, kServicePorts,
                 element("service-port", element("id", "1") + element("admin-enabled", "true"))),
      joined({starts_, change_seen("modified"), first_checked(), {end(kValidator, "ERROR")}}));
}

TEST_F(TraceGemCheck, OfADeletedOne) {
  running(first_);
  expect_records(records_of(kRequest, kServicePorts, deleted_service_port(1)),
                 joined({starts_, change_seen("deleted"), {end(kValidator, "OK")}}));
}

TEST_F(TraceGemCheck, OfOneWithoutALink) {
  expect_records(records_of(kRequest, kServicePorts, element("service-port", element("id", "1"))),
                 joined({starts_, change_seen("created"), {id_read(), end(kValidator, "OK")}}));
}

TEST_F(TraceGemCheck, OfAnIncompleteOne) {
  open();
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(maapi_exists(sock(), tctx()->thandle, "/config"), CONFD_ERR);  // the last error
  let_calls_pass();
  const std::string incomplete =
      element("service-port", element("id", "1") + element("gpon", element("id", "1/1/3")));
  expect_records(
      records_of(kRequest, kServicePorts, incomplete),
      joined({starts_,
              change_seen("created"),
              {id_read(), values_read(),
               source_.flow("sp_get_values",
                            "Error to get SP 1 values from ConfD (err=maapi_exists is not "
                            "answered)"),
               source_.detail(kEach, "error reading sp values from confd"),
               end(kValidator, "ERROR")}}));
}

TEST_F(TraceGemCheck, OfOneThatCannotBeRead) {
  expect_records(
      records_of_failed(PlatformCall::maapi_get_values, 1, kRequest, kServicePorts, first_),
      joined({starts_,
              change_seen("created"),
              {id_read(),
               source_.flow(kEach,
                            "Error to get SP 1 values from ConfD (err=maapi_get_values is not "
                            "answered)"),
               end(kValidator, "OK")}}));
}

TEST_F(TraceGemCheck, OfAnIterationThatFails) {
  expect_records(records_of_failed(PlatformCall::maapi_keypath_diff_iterate, 1, kRequest,
                                   kServicePorts, first_),
                 joined({starts_, {end(kValidator, "ERROR")}}));
}

TEST_F(TraceGemCheck, OfAKeypathWithoutAnId) {
  open();
  confd_hkeypath_t path = service_ports_keypath();
  sp_gem_check_state state{true, sock(), tctx()};
  const Records written = traced(TraceLevel::kDetail, [&] {
    iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state);
  });
  expect_records(
      written,
      {source_.detail(kEach, "Validating keypath: /config/service-port"),
       source_.detail(kEach, "service-port /config/service-port created\n"),
       source_.flow("sp_get_id",
                    "Retrieving information from service port from confd. Keypath: "
                    "/config/service-port"),
       source_.flow("sp_get_id",
                    "Error reading service-port information from Confd. No supported keypath: "
                    "/config/service-port"),
       source_.flow(kEach, "Error reading sp id from confd")});
}

TEST_F(TraceGemCheck, OfAKeypathElsewhere) {
  confd_hkeypath_t path = keypath({{number(1)}, {tag(base_onu)}, {tag(base_config)}});
  std::uint32_t sp = 0;
  const Records written = traced(TraceLevel::kDetail, [&] { sp_get_id(1, nullptr, &path, sp); });
  expect_records(written, {source_.flow("sp_get_id",
                                        "Retrieving information from service port from confd. "
                                        "Keypath: /config/onu{1}"),
                           source_.flow("sp_get_id", "Invalid keypath received")});
}

TEST_F(TraceGemCheck, OfAnUnknownOperation) {
  confd_hkeypath_t path = service_port_keypath(1);
  sp_gem_check_state state;
  const Records written = traced(TraceLevel::kDetail, [&] {
    iterate_sp_for_gem_check_validation(&path, MOP_NOOP, nullptr, nullptr, &state);
  });
  expect_records(written, {source_.detail(kEach, std::string("Validating keypath: ") + kFirst),
                           source_.flow(kEach,
                                        "WARNING: Reached default case (sp_gem_check service-port "
                                        "/config/service-port{1})")});
}

TEST_F(TraceGemCheck, OfALinkOfNoKind) {
  open();
  confd_hkeypath_t path = service_port_keypath(1);
  std::string name;
  std::uint32_t onu_id = 0;
  std::uint32_t gem_id = 0;
  const Records written = traced(TraceLevel::kDetail, [&] {
    sp_get_values(sock(), tctx(), &path, name, onu_id, gem_id, 1, nullptr, nullptr, 0);
    gem_check_single_sp(sock(), tctx(), 4, 5, 1, "1 1 3", nullptr);
  });
  expect_records(
      written,
      {values_read(),
       source_.flow("sp_get_values", "Invalid limid to get service port values from confd"),
       source_.flow("gem_check_single_sp", "Invalid limid to check gem from service port")});
}

// ---- ONUs with service ports

class TraceOnuGuard : public TraceTest {
 protected:
  static constexpr const char* kRequest = "onu_gem_check";
  static constexpr const char* kValidator = "validate_onu_gem_check";
  static constexpr const char* kEach = "iterate_detect_change_on_onu";
  static constexpr const char* kOnus = "/config/interface/gpon{1 1 3}/onu";
  static constexpr const char* kOnu = "/config/interface/gpon{1 1 3}/onu{4}";
  const Source source_{"gpon_onu_gem_check"};
  const Records starts_{begin(kValidator),
                        source_.detail(kValidator, std::string("Validating keypath: ") + kOnus)};
  const std::string port_read_ =
      Source("valid_service_port")
          .detail("service_port_get_leafs",
                  "SP 1 (gpon=1 1 3, onu=4, gem=5) get leafs: match-vlan=-1, action-vlan=-1");
  const std::string moved_ = gpon_link(3, onu(4, uses_line("slow")));

  TraceOnuGuard() {
    running(line_profile("fast", gem(5)) + line_profile("slow", gem(6)) +
            gpon_link(3, onu(4, uses_line("fast"))) + service_port(1, "gpon", "1/1/3", 4, 5));
  }

  void expect_after_start(const Records& written, const Records& rest) {
    expect_records(written, joined({starts_, rest}));
  }
};

TEST_F(TraceOnuGuard, OfANewOnu) {
  expect_after_start(records_of(kRequest, kOnus, gpon_link(3, onu(9))),
                     {source_.detail(kEach, "Onu created: /config/interface/gpon{1 1 3}/onu{9}"),
                      end(kValidator, "OK")});
}

TEST_F(TraceOnuGuard, OfADeletedOnuInUse) {
  expect_after_start(records_of(kRequest, kOnus, gpon_link(3, onu(4, "", "delete"))),
                     {source_.detail(kEach, std::string("Onu deleted: ") + kOnu + " (1 1 3 4)"),
                      port_read_, end(kValidator, "ERROR")});
}

TEST_F(TraceOnuGuard, OfAnOnuWithItsOldLine) {
  expect_after_start(
      records_of(kRequest, kOnus, gpon_link(3, onu(4, element("description", "Mill")))),
      {source_.detail("is_change_in_line_profile",
                      "old line_profile: fast -- new line_profile: fast -- different: no"),
       end(kValidator, "OK")});
}

TEST_F(TraceOnuGuard, OfAnOnuOnALineWithoutItsGemPort) {
  expect_after_start(
      records_of(kRequest, kOnus, moved_),
      {source_.detail("is_change_in_line_profile",
                      "old line_profile: fast -- new line_profile: slow -- different: yes"),
       source_.detail(kEach, std::string("Onu modified: ") + kOnu + " (1 1 3 4)"), port_read_,
       end(kValidator, "ERROR")});
}

TEST_F(TraceOnuGuard, OfAnOnuOnALineWithItsGemPort) {
  expect_after_start(
      records_of(kRequest, kOnus, moved_ + line_profile("slow", gem(5))),
      {source_.detail("is_change_in_line_profile",
                      "old line_profile: fast -- new line_profile: slow -- different: yes"),
       source_.detail(kEach, std::string("Onu modified: ") + kOnu + " (1 1 3 4)"), port_read_,
       end(kValidator, "OK")});
}

TEST_F(TraceOnuGuard, OfASessionThatDoesNotOpen) {
  expect_after_start(
      records_of_failed(PlatformCall::qzconfd_config_session_start, 1, kRequest, kOnus, moved_),
      {source_.detail("is_change_in_line_profile", "Failed to open qzconfd_config_session socket"),
       end(kValidator, "ERROR")});
}

TEST_F(TraceOnuGuard, OfAnIterationThatFailsHasTheVerdictOnly) {
  expect_after_start(
      records_of_failed(PlatformCall::maapi_keypath_diff_iterate, 1, kRequest, kOnus, moved_),
      {end(kValidator, "ERROR")});
}

TEST_F(TraceOnuGuard, OfAnUnknownOperation) {
  confd_hkeypath_t path =
      keypath({{number(4)}, {tag(base_onu)}, {number(1), number(1), number(3)}, {tag(base_gpon)}});
  validation_state state;
  const Records written = traced(TraceLevel::kDetail, [&] {
    iterate_detect_change_on_onu(&path, MOP_MOVED_AFTER, nullptr, nullptr, &state);
  });
  expect_records(written, {source_.detail(kEach, "Not valid onu operation: /gpon{1 1 3}/onu{4}")});
}

}  // namespace
}  // namespace tarnd::test
