#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "gpon_card_valid.h"
#include "gpon_onu_rg_profile_validation.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Its names are macros and would hit those of the headers above.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kSwitchRequest = "one_shot_prov_check";
constexpr const char* kRgRequest = "rg_prof_one_shot_check";
constexpr const char* kReference = "/config/interface/gpon{1 1 3}/onu{5}/rg-profile";
constexpr const char* kOverride = "/config/interface/gpon{1 1 3}/onu{5}/rg-override";

constexpr const char* kNotApplied =
    "The rg-one-shot-prov configuration will not be applied automatically to all ONUs using "
    "rg-profile. You shall force rg-one-shot-prov provision using the command 'rg-reprovision' "
    "available on the onu configuration tree.";
constexpr const char* kNotProvisioned =
    "The rg-profile will not be provisioned automatically for this onu due to rg-one-shot-prov "
    "feature enabled. You shall force rg-profile reprovision using the command 'rg-reprovision' "
    "available on the onu configuration tree.";
constexpr const char* kAccessFailed = "Failed accessing confd data.";

std::string card(const std::string& content, const std::string& slot = "1/1") {
  return element("gpon", element("slot", slot) + content);
}

std::string one_shot(const std::string& op = "") {
  return element("rg-one-shot-prov", "", op);
}

std::string uses_rg(const std::string& name) {
  return element("rg-profile", name);
}

std::string rg_override(const std::string& ssid) {
  return element("rg-override", element("ssid", ssid));
}

std::string onu_5(const std::string& content) {
  return gpon_link(3, onu(5, content));
}

/// A node's keypath, as far as its last element.
confd_hkeypath_t keypath_to(std::uint32_t last) {
  return keypath({{tag(last)}});
}

confd_hkeypath_t keypath_to_entry() {
  return keypath({{number(1)}, {tag(base_onu)}});
}

// ---- The switch

using OneShotProvCheck = CardFixture;

TEST_F(OneShotProvCheck, SwitchingItWarnsWhileAnOnuUsesAnRgProfile) {
  const std::string in_use = gpon_link(2, onu(1)) + gpon_link(3, onu(4) + onu(5, uses_rg("rg")));
  const std::string unused = gpon_link(3, onu(5, rg_override("home")));
  const std::string switch_on = card(one_shot());
  const std::string switch_off = card(one_shot("delete"));
  struct Row {
    const char* name;
    std::string running;
    std::string change;
    bool warns;
  };
  const std::array<Row, 8> rows{{
      {"on, in use", card("") + in_use, switch_on, true},
      {"off, in use", card(one_shot()) + in_use, switch_off, true},
      {"on with the card, in use", in_use, switch_on, true},
      {"on, unused", card("") + unused, switch_on, false},
      {"off, unused", card(one_shot()) + unused, switch_off, false},
      {"on, no ONU", card(""), switch_on, false},
      {"on, in use from now on", card("") + unused, switch_on + onu_5(uses_rg("rg")), true},
      {"on, in use on XGS-PON only", card("") + xgspon_link(3, onu(5, uses_rg("rg"))), switch_on,
       false},
  }};
  for (const Row& row : rows) {
    running(row.running);
    const Answer answer = answer_of(kSwitchRequest, row.change);
    EXPECT_EQ(answer.result, row.warns ? Verdict::kWarning : Verdict::kOk) << row.name;
    EXPECT_EQ(answer.text, row.warns ? kNotApplied : "") << row.name;
  }
}

TEST_F(OneShotProvCheck, OnlyOnusOfChassis1Slot1AreAsked) {
  const auto link_of = [](const char* chassis, const char* slot) {
    return element("interface",
                   element("gpon", element("chassis-id", chassis) + element("slot-id", slot) +
                                       element("port-id", "3") + onu(5, uses_rg("rg"))));
  };
  running(card("") + link_of("1", "2") + link_of("2", "1"));
  EXPECT_EQ(answer_of(kSwitchRequest, card(one_shot())).result, Verdict::kOk);
}

TEST_F(OneShotProvCheck, AnotherChangeOfTheCardIsNoSwitch) {
  running(card(one_shot()) + onu_5(uses_rg("rg")));
  const Answer answer =
      answer_of(kSwitchRequest, card(element("onu-auth-method", "password")) + card("", "1/2"));
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 0U);
}

TEST_F(OneShotProvCheck, AFailedIterationFindsNoSwitch) {
  running(card("") + onu_5(uses_rg("rg")));
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_EQ(answer_of(kSwitchRequest, card(one_shot())).result, Verdict::kOk);
}

TEST_F(OneShotProvCheck, AFailedQueryCountsAsUse) {
  running(card(""));
  fail_call(PlatformCall::maapi_query_start);
  const Answer answer = answer_of(kSwitchRequest, card(one_shot()));
  EXPECT_EQ(answer.result, Verdict::kWarning);
  EXPECT_EQ(answer.text, kNotApplied);
  EXPECT_EQ(calls(PlatformCall::maapi_query_stop), 0U);
}

TEST_F(OneShotProvCheck, AQueryThatBreaksOffCountsAsUse) {
  running(card("") + gpon_link(3, onu(1)));
  constexpr int kChunks = 2;  // all ONUs, and the end
  for (int failing = 1; failing <= kChunks; ++failing) {
    TraceCapture trace(TraceLevel::kFlow);
    fail_call(PlatformCall::maapi_query_result, failing);
    const Answer answer = answer_of(kSwitchRequest, card(one_shot()));
    EXPECT_EQ(answer.result, Verdict::kWarning) << failing;
    EXPECT_EQ(answer.text, kNotApplied) << failing;
    EXPECT_TRUE(trace.has("query failed for onu. err=")) << failing;
  }
  EXPECT_EQ(calls(PlatformCall::maapi_query_stop), static_cast<std::uint64_t>(kChunks));
}

TEST_F(OneShotProvCheck, TheQueryEndsWithTheFirstOnuThatUsesOne) {
  running(card("") + gpon_link(3, onu(1, uses_rg("rg")) + onu(2) + onu(3, uses_rg("rg"))));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(answer_of(kSwitchRequest, card(one_shot())).result, Verdict::kWarning);
  EXPECT_TRUE(trace.has("is_rg_profile_in_use"));
  EXPECT_EQ(trace.count("result "), 1);
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), 1U);
  EXPECT_EQ(calls(PlatformCall::maapi_query_free_result), 1U);
  EXPECT_EQ(calls(PlatformCall::maapi_query_stop), 1U);
}

TEST_F(OneShotProvCheck, TheTraceShowsEveryOnuWithoutOne) {
  running(card("") + gpon_link(3, onu(1) + onu(2)));
  TraceCapture trace(TraceLevel::kFlow);
  answer_of(kSwitchRequest, card(one_shot()));
  const std::array<const char*, 6> records{"validate_one_shot_prov begin",
                                           "Validating keypath: /config/gpon",
                                           "rg-one-shot-prov has changed!",
                                           "result 1:",
                                           "result 2:",
                                           " rg-profile: "};
  for (const char* const record : records) {
    EXPECT_TRUE(trace.has_record("FLOW", record)) << record;
  }
  EXPECT_TRUE(trace.has("validate_one_shot_prov end - OK - elapsed time "));
  EXPECT_EQ(trace.count(" rg-profile: "), 2);
  EXPECT_EQ(trace.count("FLOW is_rg_profile_in_use src/validation/gpon_card_valid.cpp:"), 4)
      << "a result and its value for each ONU";
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), 2U) << "all in one chunk, and the end";
}

TEST_F(OneShotProvCheck, TheTraceShowsThatTheQueryFailed) {
  running(card(""));
  TraceCapture trace(TraceLevel::kFlow);
  fail_call(PlatformCall::maapi_query_start);
  answer_of(kSwitchRequest, card(one_shot()));
  EXPECT_TRUE(trace.has("query failed for onu. err="));
  EXPECT_TRUE(trace.has("validate_one_shot_prov end - WARNING - elapsed time "));
}

TEST_F(OneShotProvCheck, TheIterationStopsAtTheSwitchAlone) {
  struct Row {
    const char* name;
    confd_hkeypath_t keypath;
    maapi_iter_op op;
    maapi_iter_ret result;
    int changed;
  };
  const confd_hkeypath_t one_shot_switch = keypath_to(base_rg_one_shot_prov);
  const confd_hkeypath_t other = keypath_to(base_rg_profile);
  const confd_hkeypath_t entry = keypath_to_entry();
  const std::array<Row, 12> rows{{
      {"switch", one_shot_switch, MOP_CREATED, ITER_STOP, 1},
      {"switch", one_shot_switch, MOP_DELETED, ITER_STOP, 1},
      {"switch", one_shot_switch, MOP_NOOP, ITER_CONTINUE, 0},
      {"switch", one_shot_switch, MOP_MODIFIED, ITER_RECURSE, 0},
      {"switch", one_shot_switch, MOP_VALUE_SET, ITER_CONTINUE, 0},
      {"switch", one_shot_switch, MOP_MOVED_AFTER, ITER_CONTINUE, 0},
      {"switch", one_shot_switch, MOP_ATTR_SET, ITER_CONTINUE, 0},
      {"other", other, MOP_CREATED, ITER_CONTINUE, 0},
      {"other", other, MOP_DELETED, ITER_CONTINUE, 0},
      {"entry", entry, MOP_CREATED, ITER_RECURSE, 0},
      {"entry", entry, MOP_DELETED, ITER_RECURSE, 0},
      {"entry", entry, MOP_MODIFIED, ITER_RECURSE, 0},
  }};
  for (const Row& row : rows) {
    confd_hkeypath_t keypath = row.keypath;
    std::uint8_t changed = 0;
    EXPECT_EQ(diff_iter(&keypath, row.op, nullptr, nullptr, &changed), row.result)
        << row.name << " " << row.op;
    EXPECT_EQ(changed, row.changed) << row.name << " " << row.op;
  }
}

TEST_F(OneShotProvCheck, TheIterationWritesNothingButItsByte) {
  confd_hkeypath_t keypath = keypath_to(base_rg_one_shot_prov);
  std::array<std::uint8_t, 3> bytes{0xaa, 0, 0xaa};
  diff_iter(&keypath, MOP_CREATED, nullptr, nullptr, &bytes[1]);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0xaa, 1, 0xaa}));
}

TEST_F(OneShotProvCheck, TheTraceShowsEveryChangeThatIsChecked) {
  confd_hkeypath_t keypath = keypath_to(base_rg_profile);
  confd_value_t old_value;
  confd_value_t new_value;
  std::array<char, 200> text{};
  std::snprintf(text.data(), text.size(), "Validating keypath: %s (op=4, oldv:%p, newv:%p)",
                "/rg-profile", static_cast<void*>(&old_value), static_cast<void*>(&new_value));
  std::uint8_t changed = 0;
  {
    TraceCapture trace(TraceLevel::kFlow);
    diff_iter(&keypath, MOP_VALUE_SET, &old_value, &new_value, &changed);
    EXPECT_TRUE(trace.has_record("FLOW", text.data()));
  }
  TraceCapture trace(TraceLevel::kDetail);
  std::int32_t override_changed = 0;
  diff_iter_rg(&keypath, MOP_VALUE_SET, &old_value, &new_value, &override_changed);
  EXPECT_TRUE(trace.has_record("DETAIL", text.data()));
}

TEST_F(OneShotProvCheck, TheNodesHaveTheNumbersThatTheDaemonKnows) {
  EXPECT_EQ(base_rg_one_shot_prov, 0x4de0ba35);
  EXPECT_EQ(base_rg_profile, 0x31a8c1d5);
}

// ---- The RG settings of an ONU

using RgProfOneShotCheck = CardFixture;

TEST_F(RgProfOneShotCheck, AnExchangedRgProfileOrAChangedOverrideWarns) {
  struct Row {
    const char* name;
    std::string before;
    std::string change;
    bool warns;
  };
  const std::array<Row, 6> rows{{
      {"first profile", "", uses_rg("rg"), false},
      {"exchanged profile", uses_rg("rg"), uses_rg("other"), true},
      {"first override", "", rg_override("home"), true},
      {"changed override", rg_override("home"), rg_override("away"), true},
      {"override taken away", rg_override("home"),
       element("rg-override", element("ssid", "", "delete")), true},
      {"first profile with an override", "", uses_rg("rg") + rg_override("home"), true},
  }};
  for (const Row& row : rows) {
    running(card(one_shot()) + onu_5(row.before));
    const Answer answer = answer_of(kRgRequest, onu_5(row.change));
    EXPECT_EQ(answer.result, row.warns ? Verdict::kWarning : Verdict::kOk) << row.name;
    EXPECT_EQ(answer.text, row.warns ? kNotProvisioned : "") << row.name;

    running(card("") + onu_5(row.before));
    EXPECT_EQ(answer_of(kRgRequest, onu_5(row.change)).result, Verdict::kOk)
        << row.name << " without one-shot provisioning";
  }
}

TEST_F(RgProfOneShotCheck, TheSwitchOfCard11Decides) {
  running(card(one_shot(), "1/2") + onu_5(uses_rg("rg")));
  EXPECT_EQ(answer_of(kRgRequest, onu_5(uses_rg("other"))).result, Verdict::kOk);
  EXPECT_EQ(answer_of(kRgRequest, onu_5(uses_rg("third")) + card(one_shot())).result,
            Verdict::kWarning);
}

TEST_F(RgProfOneShotCheck, AnUnchangedOverrideIsAccepted) {
  running(card(one_shot()) + onu_5(rg_override("home")));
  EXPECT_EQ(request(kRgRequest, kOverride).result, Verdict::kOk);
}

TEST_F(RgProfOneShotCheck, AFailedExistenceTestCountsAsSwitchedOff) {
  running(card(one_shot()) + onu_5(uses_rg("rg")));
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(answer_of(kRgRequest, onu_5(uses_rg("other"))).result, Verdict::kOk);
}

TEST_F(RgProfOneShotCheck, ACommittedConfigurationThatCannotBeReadIsRejected) {
  running(card(one_shot()) + onu_5(uses_rg("rg")));
  struct Row {
    PlatformCall failing;
    std::uint64_t sessions_ended;
  };
  const std::array<Row, 2> rows{{
      {PlatformCall::qzconfd_config_session_start, 0},
      {PlatformCall::cdb_exists, 1},
  }};
  for (const Row& row : rows) {
    const std::uint64_t before = calls(PlatformCall::qzconfd_config_session_end);
    fail_call(row.failing);
    const Answer answer = request(kRgRequest, kReference, onu_5(uses_rg("other")));
    EXPECT_EQ(answer.result, Verdict::kError) << to_string(row.failing);
    EXPECT_EQ(answer.text, kAccessFailed) << to_string(row.failing);
    EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end) - before, row.sessions_ended)
        << to_string(row.failing);
  }
}

TEST_F(RgProfOneShotCheck, ThePlatformIsCalledInOrder) {
  running(card(one_shot()) + onu_5(uses_rg("rg")));
  const auto calls_for = [this](const char* request, const std::string& change,
                                std::optional<PlatformCall> failing = std::nullopt) {
    const RecordedCalls recorded(failing);
    answer_of(request, change);
    return recorded.names();
  };
  using Names = std::vector<std::string>;
  EXPECT_EQ(calls_for(kSwitchRequest, card(one_shot("delete"))),
            (Names{"qzconfd_maapi_socket_get", "maapi_keypath_diff_iterate", "maapi_query_start",
                   "maapi_query_result", "maapi_query_free_result", "maapi_query_stop",
                   "confd_trans_seterr"}));
  EXPECT_EQ(calls_for(kRgRequest, onu_5(rg_override("away"))),
            (Names{"qzconfd_maapi_socket_get", "maapi_exists", "maapi_keypath_diff_iterate",
                   "confd_trans_seterr"}));
  const Names exchanged = {"qzconfd_maapi_socket_get",
                           "maapi_exists",
                           "confd_pp_kpath",
                           "qzconfd_config_session_start",
                           "cdb_exists",
                           "qzconfd_config_session_end",
                           "confd_trans_seterr"};
  EXPECT_EQ(calls_for(kRgRequest, onu_5(uses_rg("other"))), exchanged);
  EXPECT_EQ(calls_for(kRgRequest, onu_5(uses_rg("other")), PlatformCall::cdb_exists), exchanged);
}

TEST_F(RgProfOneShotCheck, TheTraceShowsAnRgChange) {
  running(card(one_shot()) + onu_5(uses_rg("rg") + rg_override("home")));
  {
    TraceCapture trace(TraceLevel::kDetail);
    request(kRgRequest, kOverride, onu_5(rg_override("away")));
    const std::array<const char*, 3> records{
        "validate_rg_prof_one_shot begin", "rg-profile one-shot-prov validate.",
        "rg-profile was exchanged or override parameters were changed."};
    for (const char* const record : records) {
      EXPECT_TRUE(trace.has_record("FLOW", record)) << record;
    }
    EXPECT_TRUE(trace.has(
        "Validating keypath: /config/interface/gpon{1 1 3}/onu{5}/rg-override/ssid (op=4, oldv:"));
    EXPECT_TRUE(trace.has("validate_rg_prof_one_shot end - WARNING - elapsed time "));
  }
  running(card("") + onu_5(uses_rg("rg")));
  TraceCapture trace(TraceLevel::kFlow);
  request(kRgRequest, kReference, onu_5(uses_rg("other")));
  EXPECT_TRUE(trace.has_record("FLOW", "The rg-one-shot-prov is disabled."));
}

TEST_F(RgProfOneShotCheck, AnyChangeEndsTheIterationOverAnOverride) {
  struct Row {
    maapi_iter_op op;
    maapi_iter_ret result;
    std::int32_t changed;
  };
  const std::array<Row, 7> rows{{
      {MOP_NOOP, ITER_CONTINUE, 0},
      {MOP_CREATED, ITER_STOP, 1},
      {MOP_DELETED, ITER_STOP, 1},
      {MOP_MODIFIED, ITER_STOP, 1},
      {MOP_VALUE_SET, ITER_STOP, 1},
      {MOP_MOVED_AFTER, ITER_CONTINUE, 0},
      {MOP_ATTR_SET, ITER_CONTINUE, 0},
  }};
  confd_hkeypath_t keypath = keypath_to(base_rg_override);
  for (const Row& row : rows) {
    for (const std::int32_t before : {0, 1}) {
      std::int32_t changed = before;
      EXPECT_EQ(diff_iter_rg(&keypath, row.op, nullptr, nullptr, &changed), row.result) << row.op;
      EXPECT_EQ(changed, row.changed) << row.op;
    }
  }
}

TEST_F(RgProfOneShotCheck, OnlyTheLowestByteOfTheFlagIsWritten) {
  confd_hkeypath_t keypath = keypath_to(base_rg_override);
  std::int32_t changed = 0x01020304;
  diff_iter_rg(&keypath, MOP_NOOP, nullptr, nullptr, &changed);
  EXPECT_EQ(changed, 0x01020300);
  diff_iter_rg(&keypath, MOP_CREATED, nullptr, nullptr, &changed);
  EXPECT_EQ(changed, 0x01020301);
}

TEST_F(RgProfOneShotCheck, AChangeOfAnOverrideIsTracedIfBothLevelsAreOn) {
  const InPlace in_place;
  confd_hkeypath_t keypath = keypath_to(base_rg_override);
  for (const bool flow : {false, true}) {
    for (const bool detail : {false, true}) {
      TraceCapture trace(TraceLevel::kDetail);
      InPlace::takes_level = [flow, detail](int level) { return level == 12 ? flow : detail; };
      std::int32_t changed = 0;
      diff_iter_rg(&keypath, MOP_NOOP, nullptr, nullptr, &changed);
      EXPECT_EQ(trace.count("DETAIL diff_iter_rg "), flow && detail ? 1 : 0) << flow << detail;
      InPlace::takes_level = nullptr;
    }
  }
}

TEST_F(RgProfOneShotCheck, TheChangesAreIteratedOverWithoutFlags) {
  const InPlace in_place;
  running(card(one_shot()) + onu_5(uses_rg("rg")));
  answer_of(kSwitchRequest, card(one_shot("delete")));
  EXPECT_EQ(InPlace::iteration_flags, 0);
  InPlace::iteration_flags.reset();
  answer_of(kRgRequest, onu_5(rg_override("away")));
  EXPECT_EQ(InPlace::iteration_flags, 0);
}

using RgProfOneShotCheckDeathTest = CardFixture;

TEST_F(RgProfOneShotCheckDeathTest, AnEntryHasNoRgSettings) {
  running(card(one_shot()));
  open();
  confd_hkeypath_t keypath = keypath_to_entry();
  EXPECT_DEATH(validate_rg_prof_one_shot(sock(), tctx(), &keypath, nullptr),
               "\\(&keypath->v\\[0\\]\\[0\\]\\)->type == C_XMLTAG");
}

TEST_F(RgProfOneShotCheck, WithoutOneShotProvisioningTheKeypathIsNotLookedAt) {
  running(card(""));
  open();
  confd_hkeypath_t keypath = keypath_to_entry();
  EXPECT_EQ(validate_rg_prof_one_shot(sock(), tctx(), &keypath, nullptr), 0);
}

}  // namespace
}  // namespace tarnd::test
