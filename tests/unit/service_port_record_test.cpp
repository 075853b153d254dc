#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "confd_get_str.h"
#include "service_port_batches.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"
#include "valid_service_port.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

confd_value_t vlan(std::int32_t vlan) {
  confd_value_t value;
  CONFD_SET_INT32(&value, vlan);
  return value;
}

confd_value_t text(const std::string& characters) {
  confd_value_t value;
  CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(strdup(characters.c_str())),
                static_cast<unsigned int>(characters.size()));
  return value;
}

/// One entry's value array, and the record that service_port_get_leafs reads from it.
struct Object {
  std::array<confd_value_t, SP_CONFD_VALUES_PER_OBJECT> values;
  std::uint32_t sp = 1000;
  std::string interface_name = "untouched";
  std::uint32_t onu = 1001;
  std::uint32_t gem = 1002;
  std::int32_t match_vlan = 1003;
  std::int32_t action_vlan = 1004;

  Object() {
    values.fill(none());
    values[SP_CONFD_VAL_OFFSET_SP] = number(5);
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  ~Object() {
    for (confd_value_t& value : values) {
      confd_free_value(&value);
    }
  }

  Object& xgspon(const std::string& name) {
    values[SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE] = text(name);
    values[SP_CONFD_VAL_OFFSET_XGSPON_ONU] = number(3);
    values[SP_CONFD_VAL_OFFSET_XGSPON_GEM] = number(4);
    return *this;
  }
  Object& gpon(const std::string& name) {
    values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE] = text(name);
    values[SP_CONFD_VAL_OFFSET_GPON_ONU] = number(1);
    values[SP_CONFD_VAL_OFFSET_GPON_GEM] = number(2);
    return *this;
  }

  int get_leafs() {
    return service_port_get_leafs(values.data(), sp, interface_name, onu, gem, match_vlan,
                                  action_vlan);
  }
  std::optional<fm_port_type> type() {
    auto type = static_cast<fm_port_type>(5);
    const int result = get_ponlink_type(values.data(), &type);
    if (result == 0) return type;
    EXPECT_EQ(result, -1);
    EXPECT_EQ(type, static_cast<fm_port_type>(5));
    return std::nullopt;
  }
};

TEST(PonlinkTypeName, OnlyTheTwoKindsOfLinksHaveOne) {
  EXPECT_STREQ(ponlink_type_name(FM_PORT_TYPE_GPON), "gpon");
  EXPECT_STREQ(ponlink_type_name(FM_PORT_TYPE_XGSPON), "xgspon");
  for (int other = 1; other < 7; ++other) {
    EXPECT_STREQ(ponlink_type_name(static_cast<fm_port_type>(other)), "") << other;
  }
}

class ServicePortRecord : public CardFixture {};

TEST_F(ServicePortRecord, TheBranchDeterminesTheKindOfLink) {
  EXPECT_EQ(Object().gpon("1/1/1").type(), FM_PORT_TYPE_GPON);
  EXPECT_EQ(Object().xgspon("1/1/1").type(), FM_PORT_TYPE_XGSPON);
}

TEST_F(ServicePortRecord, TheGponBranchIsLookedAtFirst) {
  Object object;
  object.gpon("1/1/1").xgspon("1/1/2");
  EXPECT_EQ(object.type(), FM_PORT_TYPE_GPON);
  EXPECT_EQ(object.get_leafs(), 0);
  EXPECT_EQ(object.interface_name, "1 1 1");
}

TEST_F(ServicePortRecord, WithoutABranchThereIsNoRecord) {
  TraceCapture trace(TraceLevel::kDetail);
  Object object;
  EXPECT_EQ(object.type(), std::nullopt);
  EXPECT_EQ(object.get_leafs(), -1);
  EXPECT_EQ(object.interface_name, "untouched");
  ASSERT_EQ(trace.records().size(), 1U);
  EXPECT_TRUE(trace.has("FLOW service_port_get_leafs src/validation/valid_service_port.cpp:"));
  EXPECT_TRUE(trace.has("Error: Ponlink of GPON or XGSPON do not exist in confd."));
}

TEST_F(ServicePortRecord, EachBranchHasItsPositions) {
  Object gpon;
  gpon.gpon("1/1/16").values[SP_CONFD_VAL_OFFSET_MATCH_VLAN] = vlan(10);
  gpon.values[SP_CONFD_VAL_OFFSET_ACTION_VLAN] = vlan(20);
  ASSERT_EQ(gpon.get_leafs(), 0);
  EXPECT_EQ(gpon.sp, 5U);
  EXPECT_EQ(gpon.interface_name, "1 1 16");
  EXPECT_EQ(gpon.onu, 1U);
  EXPECT_EQ(gpon.gem, 2U);
  EXPECT_EQ(gpon.match_vlan, 10);
  EXPECT_EQ(gpon.action_vlan, 20);

  Object xgspon;
  xgspon.xgspon("1/1/3");
  ASSERT_EQ(xgspon.get_leafs(), 0);
  EXPECT_EQ(xgspon.interface_name, "1 1 3");
  EXPECT_EQ(xgspon.onu, 3U);
  EXPECT_EQ(xgspon.gem, 4U);
}

TEST_F(ServicePortRecord, AMissingVlanIsMinusOne) {
  Object object;
  ASSERT_EQ(object.gpon("1/1/1").get_leafs(), 0);
  EXPECT_EQ(object.match_vlan, -1);
  EXPECT_EQ(object.action_vlan, -1);

  Object other_type;
  other_type.gpon("1/1/1").values[SP_CONFD_VAL_OFFSET_MATCH_VLAN] = number(10);
  ASSERT_EQ(other_type.get_leafs(), 0);
  EXPECT_EQ(other_type.match_vlan, -1);
}

TEST_F(ServicePortRecord, EverySlashOfTheInterfaceNameBecomesABlank) {
  struct Row {
    const char* name;
    const char* delivered;
  };
  for (const Row& row : {Row{"1/1/3", "1 1 3"}, Row{"uplink", "uplink"}, Row{"", ""},
                         Row{"/a//b/", " a  b "}, Row{"50%d/\xc3\xa9", "50%d \xc3\xa9"}}) {
    Object object;
    ASSERT_EQ(object.gpon(row.name).get_leafs(), 0) << row.name;
    EXPECT_EQ(object.interface_name, row.delivered);
  }
}

TEST_F(ServicePortRecord, AnAbsentBufferIsAnEmptyName) {
  Object object;
  object.gpon("1/1/1");
  confd_value_t& name = object.values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE];
  confd_free_value(&name);
  CONFD_SET_BUF(&name, nullptr, 0);
  ASSERT_EQ(object.get_leafs(), 0);
  EXPECT_EQ(object.interface_name, "");
}

TEST_F(ServicePortRecord, AValueOfAnotherTypeMakesNoRecordAndNoTrace) {
  for (const int position :
       {SP_CONFD_VAL_OFFSET_SP, SP_CONFD_VAL_OFFSET_GPON_ONU, SP_CONFD_VAL_OFFSET_GPON_GEM}) {
    for (const confd_value_t& other : {none(), vlan(1)}) {
      TraceCapture trace(TraceLevel::kDetail);
      Object object;
      object.gpon("1/1/1").values.at(static_cast<std::size_t>(position)) = other;
      EXPECT_EQ(object.get_leafs(), -1) << position;
      EXPECT_EQ(object.interface_name, "untouched");
      EXPECT_TRUE(trace.records().empty());
    }
  }
  Object object;
  object.gpon("1/1/1");
  confd_free_value(&object.values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE]);
  object.values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE] = number(1);
  EXPECT_EQ(object.get_leafs(), -1);
}

TEST_F(ServicePortRecord, OnlyTheNameThatIsTakenIsFreedAndOnce) {
  const InPlace in_place;
  Object object;
  object.gpon("1/1/1").xgspon("1/1/2");
  ASSERT_EQ(object.get_leafs(), 0);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
  const confd_value_t& other = object.values[SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE];
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&other), "1/1/2");
  valid::free_interface_name(&object.values[SP_CONFD_VAL_OFFSET_GPON_INTERFACE]);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
  EXPECT_EQ(InPlace::freed, std::vector<std::string>{"1/1/1"});

  Object incomplete;
  incomplete.gpon("1/1/1").values[SP_CONFD_VAL_OFFSET_GPON_ONU] = none();
  ASSERT_EQ(incomplete.get_leafs(), -1);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
}

TEST_F(ServicePortRecord, TheRecordIsTracedInDetail) {
  TraceCapture trace(TraceLevel::kDetail);
  Object object;
  object.xgspon("1/1/3").values[SP_CONFD_VAL_OFFSET_MATCH_VLAN] = vlan(10);
  ASSERT_EQ(object.get_leafs(), 0);
  EXPECT_TRUE(trace.has("DETAIL service_port_get_leafs "));
  EXPECT_TRUE(
      trace.has("SP 5 (xgspon=1 1 3, onu=3, gem=4) get leafs: match-vlan=10, action-vlan=-1"));

  TraceCapture gpon_trace(TraceLevel::kDetail);
  Object gpon;
  gpon.gpon("1/1/1").values[SP_CONFD_VAL_OFFSET_ACTION_VLAN] = vlan(11);
  ASSERT_EQ(gpon.get_leafs(), 0);
  EXPECT_TRUE(
      gpon_trace.has("SP 5 (gpon=1 1 1, onu=1, gem=2) get leafs: match-vlan=-1, action-vlan=11"));
}

TEST_F(ServicePortRecord, TheModelHasItsEntryInTheseOrders) {
  running(
      service_port(9, "gpon", "1/1/2", 3, 4, 10) + service_port(10, "xgspon", "1/1/5", 6, 7) +
      element("service-port",
              element("id", "10") + element("action", element("vlan", element("vlan-id", "77")))));
  open();
  valid::ServicePortBatches batches(sock(), tctx());
  ASSERT_EQ(batches.next(), 2);
  Object first;
  ASSERT_EQ(service_port_get_leafs(batches.object(0), first.sp, first.interface_name, first.onu,
                                   first.gem, first.match_vlan, first.action_vlan),
            0);
  EXPECT_EQ(first.sp, 9U);
  EXPECT_EQ(first.interface_name, "1 1 2");
  EXPECT_EQ(first.onu, 3U);
  EXPECT_EQ(first.gem, 4U);
  EXPECT_EQ(first.match_vlan, 10);
  EXPECT_EQ(first.action_vlan, -1);
  Object second;
  ASSERT_EQ(service_port_get_leafs(batches.object(1), second.sp, second.interface_name, second.onu,
                                   second.gem, second.match_vlan, second.action_vlan),
            0);
  EXPECT_EQ(second.interface_name, "1 1 5");
  EXPECT_EQ(second.onu, 6U);
  EXPECT_EQ(second.gem, 7U);
  EXPECT_EQ(second.match_vlan, -1);
  EXPECT_EQ(second.action_vlan, 77);
}

class ServicePortBatchesTest : public CardFixture {};

TEST_F(ServicePortBatchesTest, NamesThatNobodyTakesAreFreedWithTheNextBatchAndAtTheEnd) {
  std::string ports;
  for (int id = 1; id <= 301; ++id) {
    ports += service_port(id, id % 2 == 0 ? "gpon" : "xgspon", "1/1/1", 1, id);
  }
  running(ports);
  open();
  {
    valid::ServicePortBatches batches(sock(), tctx());
    ASSERT_EQ(batches.next(), 300);
    EXPECT_EQ(calls(PlatformCall::confd_free_value), 0U);
    ASSERT_EQ(batches.next(), 1);
    EXPECT_EQ(calls(PlatformCall::confd_free_value), 300U);
  }
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 301U);
}

TEST_F(ServicePortBatchesTest, AFailedBatchLeavesNothingToFree) {
  running(service_port(1, "gpon", "1/1/1", 1, 1));
  open();
  fail_call(PlatformCall::maapi_get_objects);
  {
    valid::ServicePortBatches batches(sock(), tctx());
    EXPECT_EQ(batches.next(), -1);
  }
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 0U);
}

class ServicePortId : public CardFixture {
 protected:
  static std::optional<std::uint32_t> id_of(
      const std::vector<std::vector<confd_value_t>>& elements) {
    const confd_hkeypath_t path = keypath(elements);
    std::uint32_t sp = 0;
    const int result = sp_get_id(-1, nullptr, &path, sp);
    if (result == 0) return sp;
    EXPECT_EQ(result, -1);
    return std::nullopt;
  }
};

TEST_F(ServicePortId, IsReadFromAnEntryAndFromTwoLevelsBelow) {
  EXPECT_EQ(id_of({{number(7)}, {tag(base_service_port)}, {tag(base_config)}}), 7U);
  EXPECT_EQ(id_of({{tag(base_onu)},
                   {tag(base_gpon)},
                   {number(8)},
                   {tag(base_service_port)},
                   {tag(base_config)}}),
            8U);
  EXPECT_EQ(id_of({{tag(base_gem_id)},
                   {tag(base_gem)},
                   {tag(base_onu)},
                   {tag(base_gpon)},
                   {number(9)},
                   {tag(base_service_port)},
                   {tag(base_config)}}),
            9U);
}

TEST_F(ServicePortId, ALeafOfTheEntryAndTheListAreNotSupported) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(id_of({{tag(base_id)}, {number(7)}, {tag(base_service_port)}, {tag(base_config)}}),
            std::nullopt);
  EXPECT_EQ(id_of({{tag(base_service_port)}, {tag(base_config)}}), std::nullopt);
  EXPECT_EQ(id_of({{tag(base_config)}}), std::nullopt);
  EXPECT_EQ(trace.count("FLOW sp_get_id "), 6);
  EXPECT_TRUE(
      trace.has("Error reading service-port information from Confd. No supported "
                "keypath: /config/service-port{7}/id"));
}

TEST_F(ServicePortId, AnotherListIsInvalid) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(id_of({{number(7)}, {tag(base_gpon)}, {tag(base_config)}}), std::nullopt);
  ASSERT_EQ(trace.records().size(), 2U);
  EXPECT_NE(trace.records()[0].find("Retrieving information from service port from confd. "
                                    "Keypath: /config/gpon{7}"),
            std::string::npos);
  EXPECT_NE(trace.records()[1].find("Invalid keypath received"), std::string::npos);
}

TEST_F(ServicePortId, TheKeypathIsNotPrintedWithoutATrace) {
  EXPECT_EQ(id_of({{number(7)}, {tag(base_service_port)}, {tag(base_config)}}), 7U);
  EXPECT_EQ(calls(PlatformCall::confd_pp_kpath), 0U);
}

using ServicePortIdDeathTest = ServicePortId;

TEST_F(ServicePortIdDeathTest, AKeyThatIsNoNumberIsImpossible) {
  EXPECT_DEATH(id_of({{vlan(7)}, {tag(base_service_port)}, {tag(base_config)}}),
               "src/validation/valid_service_port\\.cpp.*int sp_get_id\\(.*"
               "\\(&keypath->v\\[sp_index\\]\\[0\\]\\)->type == C_UINT32");
}

TEST_F(ServicePortIdDeathTest, AListThatIsNoTagIsImpossible) {
  EXPECT_DEATH(id_of({{tag(base_id)}, {tag(base_onu)}, {number(7)}, {tag(base_config)}}),
               "\\(&keypath->v\\[sp_index \\+ 1\\]\\[0\\]\\)->type == C_XMLTAG");
}

constexpr std::size_t kRequestSize = 18;

/// A filled request, and what sp_get_values reads from it.
struct Request {
  std::array<confd_tag_value_t, kRequestSize> tv{};
  std::string interface_name = "untouched";
  std::uint32_t onu = 1001;
  std::uint32_t gem = 1002;

  Request() {
    for (confd_tag_value_t& value : tv) value.v = none();
    tv[1].v = text("1/1/1");
    tv[3].v = number(2);
    tv[5].v = number(3);
    tv[10].v = text("1/1/4");
    tv[12].v = number(5);
    tv[14].v = number(6);
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() {
    for (confd_tag_value_t& value : tv) confd_free_value(&value.v);
  }

  void set(std::size_t index, const confd_value_t& value) {
    confd_free_value(&tv.at(index).v);
    tv.at(index).v = value;
  }
  int get(limid_type_t type) {
    const confd_hkeypath_t path = service_port_keypath(7);
    return sp_get_values(-1, nullptr, &path, interface_name, onu, gem, 7, type, tv.data(),
                         static_cast<int>(tv.size()));
  }
};

class ServicePortValues : public CardFixture {};

TEST_F(ServicePortValues, AreTakenFromTheBranchOfTheLink) {
  Request gpon;
  ASSERT_EQ(gpon.get(limid_type_gpon), 0);
  EXPECT_EQ(gpon.interface_name, "1 1 1");
  EXPECT_EQ(gpon.onu, 2U);
  EXPECT_EQ(gpon.gem, 3U);

  Request xgspon;
  ASSERT_EQ(xgspon.get(limid_type_xgspon), 0);
  EXPECT_EQ(xgspon.interface_name, "1 1 4");
  EXPECT_EQ(xgspon.onu, 5U);
  EXPECT_EQ(xgspon.gem, 6U);
}

TEST_F(ServicePortValues, TheTimeIsTracedInMicroseconds) {
  TraceCapture trace(TraceLevel::kDetail);
  const SlowCalls printing(PlatformCall::confd_pp_kpath, 3);
  Request request;
  ASSERT_EQ(request.get(limid_type_xgspon), 0);
  EXPECT_GE(trace.figure("Took "), 3000);
  EXPECT_TRUE(trace.has(" usecs to get SP 7 (xgspon=1 1 4, onu=5, gem=6) from ConfD"));
}

TEST_F(ServicePortValues, TheKeypathIsTracedFirstAndTheValuesLast) {
  Request request;
  TraceCapture trace(TraceLevel::kDetail);
  const CallsAmongRecords recorded;
  ASSERT_EQ(request.get(limid_type_gpon), 0);
  EXPECT_THAT(trace.records(),
              testing::ElementsAre(
                  "CALL confd_pp_kpath",
                  testing::HasSubstr(" Retrieving information from service port from confd. "),
                  "CALL limid_type_compare", "CALL confd_free_value",
                  testing::HasSubstr(" usecs to get SP 7 (gpon=1 1 1, onu=2, gem=3) from ConfD")));
}

TEST_F(ServicePortValues, OnlyTheNameThatIsTakenIsFreed) {
  Request request;
  ASSERT_EQ(request.get(limid_type_gpon), 0);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
  EXPECT_STREQ(CONFD_GET_CBUFPTR(CONFD_GET_TAG_VALUE(&request.tv[10])), "1/1/4");
}

TEST_F(ServicePortValues, AnUnknownKindOfLinkHasNone) {
  TraceCapture trace(TraceLevel::kFlow);
  Request request;
  EXPECT_EQ(request.get(nullptr), -1);
  EXPECT_EQ(request.interface_name, "untouched");
  ASSERT_EQ(trace.records().size(), 2U);
  EXPECT_TRUE(
      trace.has("Retrieving information from service port from confd. Keypath: "
                "/config/service-port{7}"));
  EXPECT_TRUE(trace.has("Invalid limid to get service port values from confd"));
}

TEST_F(ServicePortValues, AMissingValueFails) {
  struct Row {
    limid_type_t type;
    std::vector<std::size_t> indices;
  };
  for (const Row& row : {Row{limid_type_gpon, {1, 3, 5}}, Row{limid_type_xgspon, {10, 12, 14}}}) {
    for (const std::size_t index : row.indices) {
      TraceCapture trace(TraceLevel::kFlow);
      Request request;
      request.set(index, none());
      EXPECT_EQ(request.get(row.type), -1) << index;
      EXPECT_TRUE(trace.has(std::string("Error to get SP 7 values from ConfD (err=") +
                            confd_lasterr() + ")"));
    }
  }
}

TEST_F(ServicePortValues, AreTracedInDetail) {
  TraceCapture trace(TraceLevel::kDetail);
  Request request;
  ASSERT_EQ(request.get(limid_type_xgspon), 0);
  EXPECT_TRUE(trace.has("DETAIL sp_get_values "));
  EXPECT_TRUE(trace.has(" usecs to get SP 7 (xgspon=1 1 4, onu=5, gem=6) from ConfD"));

  TraceCapture gpon_trace(TraceLevel::kDetail);
  Request gpon;
  ASSERT_EQ(gpon.get(limid_type_gpon), 0);
  EXPECT_TRUE(gpon_trace.has(" usecs to get SP 7 (gpon=1 1 1, onu=2, gem=3) from ConfD"));
}

using ServicePortValuesDeathTest = ServicePortValues;

TEST_F(ServicePortValuesDeathTest, AValueOfAnotherTypeIsImpossible) {
  struct Row {
    std::size_t index;
    const char* assertion;
  };
  for (const Row& row : {Row{1, R"(\(\(&\(&tv\[idx_svc_port\]\)->v\)\)->type == C_BUF)"},
                         Row{3, R"(\(\(&\(&tv\[idx_onu\]\)->v\)\)->type == C_UINT32)"},
                         Row{5, R"(\(\(&\(&tv\[idx_gem\]\)->v\)\)->type == C_UINT32)"}}) {
    Request request;
    request.set(row.index, vlan(1));
    EXPECT_DEATH(request.get(limid_type_gpon), row.assertion);
  }
}

class MaxServicePorts : public CardFixture {
 protected:
  std::uint32_t with_card(std::optional<std::uint32_t> max_service_ports) {
    CardDescription card = CardDescription::standard();
    card.max_service_ports = max_service_ports;
    insert(card);
    return get_max_service_ports();
  }
};

TEST_F(MaxServicePorts, AreThoseOfTheCardOr4096) {
  EXPECT_EQ(with_card(std::nullopt), 4096U);
  EXPECT_EQ(with_card(0), 4096U);
  EXPECT_EQ(with_card(1), 1U);
  EXPECT_EQ(with_card(16384), 16384U);
}

TEST_F(MaxServicePorts, ResultsOfThePlatformAreNotLookedAt) {
  with_card(17);
  fail_call(PlatformCall::fm_init);
  EXPECT_EQ(get_max_service_ports(), 17U);
  fail_call(PlatformCall::fm_local_slot);
  EXPECT_EQ(get_max_service_ports(), 17U);
  fail_call(PlatformCall::fm_scalar_card_tarnd_max_service_ports);
  EXPECT_EQ(get_max_service_ports(), 4096U);
}

class TextFromConfd : public CardFixture {
 protected:
  std::string text_of(const std::string& prefix, const std::string& suffix) {
    std::string read = "as before";
    GetStrFromConfd(sock(), tctx()->thandle, prefix, suffix, read);
    return read;
  }
};

TEST_F(TextFromConfd, IsTheLeafAtPrefixAndSuffix) {
  running(gpon_link(1, onu(7, uses_line("50%d"))) + xgspon_link(2));
  open();
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}", "/onu{7}/profile-references/line-profile"),
            "50%d");
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}/onu{7}/id", ""), "7");
  EXPECT_EQ(text_of("/config/interface/xgspon{1 1 2}/operation-mode", ""), "enum<1>");
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}/upstream-fec", ""), "true");
}

TEST_F(TextFromConfd, AMissingLeafLeavesTheTextAsItWas) {
  running(gpon_link(1, onu(7)) + line_profile("50%d", ""));
  open();
  const std::string onu_path = "/config/interface/gpon{1 1 1}/onu{7}";
  EXPECT_EQ(text_of(onu_path, "/profile-references/line-profile"), "as before");
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 2}/onu{7}", "/id"), "as before");
  EXPECT_EQ(text_of(onu_path, "/no-such-leaf"), "as before");
  EXPECT_EQ(text_of("/config/profile/gpon/line-profile{%s}", "/name"), "as before");
}

TEST_F(TextFromConfd, AFailedExistenceTestStillReads) {
  running(gpon_link(1, onu(7)));
  open();
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}/onu{7}/id", ""), "7");
}

TEST_F(TextFromConfd, AFailedReadLeavesTheTextAsItWas) {
  running(gpon_link(1, onu(7)));
  open();
  fail_call(PlatformCall::maapi_get_elem);
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}/onu{7}/id", ""), "as before");
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 0U);
}

TEST_F(TextFromConfd, TheValueIsFreedAndALongOneCut) {
  const std::string long_text(9000, 'x');
  running(gpon_link(1, onu(7, element("description", long_text))));
  open();
  EXPECT_EQ(text_of("/config/interface/gpon{1 1 1}/onu{7}", "/description"),
            long_text.substr(0, 8191));
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
}

}  // namespace
}  // namespace tarnd::test
