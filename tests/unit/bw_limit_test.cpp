#include <array>
#include <string>
#include <vector>

#include "gpon_bw_limit.h"
#include "gpon_capabilities.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kLinkRequest = "onu_bw_check";
constexpr const char* kGlobalRequest = "ponlink_bw_check";
constexpr const char* kOnusOfLink3 = "/config/interface/gpon{1 1 3}/onu";
constexpr const char* kLineProfiles = "/config/profile/gpon/line-profile";

constexpr std::uint32_t kTotalCapacity = 1107504;
constexpr std::uint32_t kFixedCapacity = 442752;
constexpr std::uint32_t kOverhead = 560;

constexpr const char* kTotalExceeds3 =
    "Total bandwidth exceeds GPON interface 1/1/3 capacity (1107504 kbits/s)\n";
constexpr const char* kFixedExceeds3 =
    "Fixed bandwidth exceeds GPON interface 1/1/3 capacity (442752 kbits/s)\n";

std::string kbits(const std::string& name, std::uint32_t value) {
  return element(name, std::to_string(value));
}

std::string fixed(std::uint32_t value) {
  return element("type-1", kbits("fixed", value));
}

std::string assured(std::uint32_t value) {
  return element("type-2", kbits("assured", value));
}

std::string fixed_and_assured(std::uint32_t fixed_part, std::uint32_t assured_part) {
  return element("type-5", kbits("fixed", fixed_part) + kbits("assured", assured_part) +
                               kbits("maximum", assured_part));
}

/// A line profile with one TCONT, and its bandwidth profile of the same name.
std::string line(const std::string& name, const std::string& traffic) {
  return bandwidth_profile(name, traffic) + line_profile(name, tcont(1, name));
}

/// ONUs from 1 on, a line profile each.
std::string onus(const std::vector<std::string>& lines) {
  std::string text;
  int id = 0;
  for (const std::string& name : lines) {
    text += onu(++id, uses_line(name));
  }
  return text;
}

/// A line profile with TCONTs on the profiles "dynamic" and "static".
std::string line_of(const std::string& name, int dynamic_tconts, int static_tconts) {
  std::string tconts;
  int id = 0;
  for (int i = 0; i < dynamic_tconts; ++i) {
    tconts += tcont(++id, "dynamic");
  }
  for (int i = 0; i < static_tconts; ++i) {
    tconts += tcont(++id, "static");
  }
  return line_profile(name, tconts);
}

CardDescription card_without_bw_check() {
  CardDescription card = CardDescription::standard();
  card.bw_check = false;
  return card;
}

CardDescription card_with_onus_per_link(std::optional<std::uint32_t> count) {
  CardDescription card = CardDescription::standard();
  card.onus_per_link = count;
  return card;
}

class BwLimit : public CardFixture {
 protected:
  Answer check_link() { return request(kLinkRequest, kOnusOfLink3); }
  Answer check_all() { return request(kGlobalRequest, kLineProfiles); }
};

// ---- One link

using OnuBwCheck = BwLimit;

TEST_F(OnuBwCheck, ALinkMayBeFilledToTheKbit) {
  struct Row {
    const char* name;
    std::string traffic;
    std::vector<std::string> lines;
    std::string text;
  };
  const std::array<Row, 11> rows{{
      {"total of one ONU", assured(kTotalCapacity - kOverhead), {"l"}, ""},
      {"total of one ONU, one more",
       assured(kTotalCapacity - kOverhead + 1),
       {"l"},
       kTotalExceeds3},
      {"total of two", assured(kTotalCapacity / 2 - kOverhead), {"l", "l"}, ""},
      {"total of two, one more",
       assured(kTotalCapacity / 2 - kOverhead + 1),
       {"l", "l"},
       kTotalExceeds3},
      {"fixed", fixed(kFixedCapacity), {"l"}, ""},
      {"fixed, one more", fixed(kFixedCapacity + 1), {"l"}, kFixedExceeds3},
      {"fixed of two", fixed(kFixedCapacity / 2), {"l", "l"}, ""},
      {"fixed of two, one more", fixed(kFixedCapacity / 2 + 1), {"l", "l"}, kFixedExceeds3},
      {"both", fixed(kTotalCapacity), {"l"}, std::string(kTotalExceeds3) + kFixedExceeds3},
      {"the fixed part of type 5 beside the assured one",
       fixed_and_assured(kFixedCapacity, kTotalCapacity - kOverhead),
       {"l"},
       ""},
      {"no ONU", fixed(kTotalCapacity), {}, ""},
  }};
  for (const Row& row : rows) {
    running(line("l", row.traffic) + gpon_link(3, onus(row.lines)));
    for (const Answer& answer : {check_link(), check_all()}) {
      EXPECT_EQ(answer.result, row.text.empty() ? Verdict::kOk : Verdict::kError) << row.name;
      EXPECT_EQ(answer.text, row.text) << row.name;
    }
  }
}

TEST_F(OnuBwCheck, TheOnuThatNoLongerFitsIsRejected) {
  running(line("half", assured(kTotalCapacity / 2 - kOverhead)) +
          gpon_link(3, onus({"half", "half"})));
  const Answer answer = answer_of(kLinkRequest, gpon_link(3, onu(3, uses_line("half"))));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kTotalExceeds3);
}

TEST_F(OnuBwCheck, EveryOnuCostsItsOverhead) {
  // Best effort reserves nothing, but 1978 ONUs alone cost more than the link has.
  constexpr int kMostOnus = kTotalCapacity / kOverhead;
  running(line("free", element("type-4", kbits("maximum", 1))) +
          gpon_link(3, onus(std::vector<std::string>(kMostOnus, "free"))));
  EXPECT_EQ(check_link().result, Verdict::kOk);
  const Answer answer =
      answer_of(kLinkRequest, gpon_link(3, onu(kMostOnus + 1, uses_line("free"))));
  EXPECT_EQ(answer.text, kTotalExceeds3);
}

TEST_F(OnuBwCheck, TheLastOnuMayGo) {
  running(line("l", fixed(1)) + gpon_link(3, onus({"l"})));
  EXPECT_EQ(answer_of(kLinkRequest, gpon_link(3, onu(1, "", "delete"))).result, Verdict::kOk);
}

TEST_F(OnuBwCheck, OnlyTheLinkOfTheOnuCounts) {
  running(line("l", fixed(kFixedCapacity + 1)) + gpon_link(3) + gpon_link(4, onus({"l"})) +
          xgspon_link(3, onus({"l"})));
  EXPECT_EQ(check_link().result, Verdict::kOk);
}

TEST_F(OnuBwCheck, TheLinkIsSoughtInChassis1) {
  const std::string other_chassis =
      element("interface", element("gpon", element("chassis-id", "2") + element("slot-id", "1") +
                                               element("port-id", "3") + onus({"l"})));
  running(line("l", fixed(kFixedCapacity + 1)) + other_chassis);
  EXPECT_EQ(request(kLinkRequest, "/config/interface/gpon{2 1 3}/onu").result, Verdict::kOk);
}

TEST_F(OnuBwCheck, OverheadAndTotalTogetherWrapAt32Bits) {
  // 4294967295 and the overhead of one ONU are 559.
  running(line("l", assured(4294967295)) + gpon_link(3, onus({"l"})));
  EXPECT_THAT(check_link(), Accepted());
  EXPECT_THAT(check_all(), Accepted());
}

TEST_F(OnuBwCheck, SumsAndComparisonWrapAt32Bits) {
  running(line("l", assured(2147483648)) + gpon_link(3, onus({"l", "l"})));
  EXPECT_EQ(check_link().result, Verdict::kOk);
}

TEST_F(OnuBwCheck, EveryMissingLineProfileOfAChunkIsNamed) {
  running(line("l", fixed(1)) + gpon_link(3, onus({"z", "l", "a"})));
  const Answer answer = check_link();
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "Line profile z doesn't not exist.Line profile a doesn't not exist.");
}

TEST_F(OnuBwCheck, AnOnuWithoutLineProfileIsRejected) {
  running(gpon_link(3, onu(1)));
  const Answer answer = check_link();
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "Line profile  doesn't not exist.");
}

TEST_F(OnuBwCheck, AMissingLineProfileOfALaterChunkIsNotReached) {
  insert(card_with_onus_per_link(2));
  running(line("l", fixed(1)) + gpon_link(3, onus({"a", "l", "b"})));
  EXPECT_EQ(check_link().text, "Line profile a doesn't not exist.");
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), 1U);
}

TEST_F(OnuBwCheck, AMissingLineProfileHidesAnOverload) {
  running(line("l", fixed(kTotalCapacity)) + gpon_link(3, onus({"l", "a"})));
  EXPECT_EQ(check_link().text, "Line profile a doesn't not exist.");
}

TEST_F(OnuBwCheck, AChunkHasAsManyOnusAsTheCardHasPerLink) {
  insert(card_with_onus_per_link(2));
  running(line("l", fixed(1)) + gpon_link(3, onus({"l", "l", "l", "l", "l"})));
  EXPECT_EQ(check_link().result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), 4U);  // 2, 2, 1 and the end
}

TEST_F(OnuBwCheck, ABoardWithoutThatNumberIsCheckedInTheSameWay) {
  insert(card_with_onus_per_link(std::nullopt));
  ASSERT_EQ(get_num_onus_per_ponlink(), 0U);
  running(line("l", fixed(kFixedCapacity / 2 + 1)) + gpon_link(3, onus({"l", "l"})));
  EXPECT_EQ(check_link().text, kFixedExceeds3);
}

TEST_F(OnuBwCheck, AFailedQueryIsRejectedWithoutText) {
  running(line("l", fixed(1)) + gpon_link(3, onus({"l"})));
  fail_call(PlatformCall::maapi_query_start);
  const Answer of_link = check_link();
  fail_call(PlatformCall::maapi_query_start);
  const Answer of_all = check_all();
  for (const Answer& answer : {of_link, of_all}) {
    EXPECT_EQ(answer.result, Verdict::kError) << answer.request;
    EXPECT_EQ(answer.text, "") << answer.request;
  }
  EXPECT_EQ(calls(PlatformCall::maapi_query_stop), 0U);
}

TEST_F(OnuBwCheck, AQueryThatBreaksOffIsRejectedWithoutText) {
  insert(card_with_onus_per_link(1));
  running(line("l", fixed(1)) + gpon_link(3, onus({"l", "l"})));
  constexpr int kChunks = 3;  // one for each ONU, and the end
  for (int failing = 1; failing <= kChunks; ++failing) {
    TraceCapture trace(TraceLevel::kFlow);
    fail_call(PlatformCall::maapi_query_result, failing);
    const Answer of_link = check_link();
    fail_call(PlatformCall::maapi_query_result, failing);
    const Answer of_all = check_all();
    for (const Answer& answer : {of_link, of_all}) {
      EXPECT_EQ(answer.result, Verdict::kError) << answer.request << failing;
      EXPECT_EQ(answer.text, "") << answer.request << failing;
    }
    EXPECT_EQ(trace.count("FLOW validate_ponlink_bw src/validation/gpon_bw_limit.cpp:"), 2);
    EXPECT_EQ(trace.count("query failed for onu. err="), 2);
  }
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), calls(PlatformCall::maapi_query_stop));
}

TEST_F(OnuBwCheck, NothingStaysOpen) {
  running(line("l", fixed(1)) + gpon_link(3, onus({"l", "a"})) + gpon_link(4, onus({"l"})));
  ValidationSession& session = open();
  line_prof_to_bandwidth = {{"l", {1, 1, 1, 0}}};
  EXPECT_EQ(validate_ponlink_bw(sock(), tctx(), "1", "3"), -1);
  EXPECT_EQ(validate_ponlink_bw(sock(), tctx(), "1", "4"), 0);
  EXPECT_EQ(validate_max_bandwidth_global(sock(), tctx(), nullptr, nullptr), -1);
  EXPECT_EQ(session.open_resources().queries, 0);
  EXPECT_EQ(session.open_resources().cursors, 0);
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), calls(PlatformCall::maapi_query_free_result));
}

TEST_F(OnuBwCheck, TheModelIsLoadedAnewForEveryCheck) {
  running(line("l", fixed(1)) + gpon_link(3, onus({"l"})));
  bandwidth_prof_to_bandwidth["l"] = {kTotalCapacity, 0, 0, 0};
  line_prof_to_bandwidth["l"] = {kTotalCapacity, 0, 0, 0};
  line_prof_to_bandwidth["old"] = {0, 0, 9, 9};
  EXPECT_EQ(check_link().result, Verdict::kOk);
  line_prof_to_bandwidth["old"] = {0, 0, 9, 9};
  EXPECT_EQ(check_all().result, Verdict::kOk);
}

TEST_F(OnuBwCheck, WithoutTheCheckTheLinkIsNotRead) {
  insert(card_without_bw_check());
  running(line("l", fixed(kTotalCapacity)) + gpon_link(3, onus({"l", "a"})));
  EXPECT_EQ(check_link().result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_init_cursor), 0U);
}

TEST_F(OnuBwCheck, TheTraceOfALinkHasTheFigures) {
  running(line("l", fixed(1000)) + gpon_link(3, onus({"l", "l"})) + gpon_link(4, onus({"a"})));
  TraceCapture trace(TraceLevel::kFlow);
  check_link();
  check_all();
  fail_call(PlatformCall::maapi_query_start);
  check_link();
  const std::array<const char*, 7> records{
      "validate_max_bandwidth_ponlink begin",
      "Bandwidth check enabled for this platform. Do check now...",
      "BW check: pl 3, fxd=2000, total=2000, overhead=1120 (num_onus=2)",
      "Line profile a not found.",
      "There was some error during line-profile iteration (err=-1)",
      "Bandwidth check enabled for this platform. Do check now (all ponlinks)...",
      "query failed for onu. err="};
  for (const char* const record : records) {
    EXPECT_TRUE(trace.has(record)) << record;
  }
  EXPECT_EQ(trace.count("validate_max_bandwidth_ponlink end - OK - elapsed time "), 1);
  EXPECT_EQ(trace.count("validate_max_bandwidth_ponlink end - ERROR - elapsed time "), 1);
  EXPECT_EQ(trace.count("validate_max_bandwidth_global end - ERROR - elapsed time "), 1);
}

TEST_F(OnuBwCheck, TheTraceShowsWhichLinksAreChecked) {
  running(gpon_link(3) + gpon_link(4));
  TraceCapture trace(TraceLevel::kDetail);
  check_all();
  EXPECT_EQ(trace.count("DETAIL validate_max_bandwidth_global src/validation/gpon_bw_limit.cpp:"),
            2);
  EXPECT_TRUE(trace.has(" Check ponlink 1/3 bandwidth"));
  EXPECT_TRUE(trace.has(" Check ponlink 1/4 bandwidth"));
  EXPECT_TRUE(trace.has("validate_max_bandwidth_global begin"));
  EXPECT_TRUE(trace.has("validate_max_bandwidth_global end - OK - elapsed time "));
}

TEST_F(OnuBwCheck, TheTraceShowsThatTheTcontsAreRejected) {
  running(line_of("l", 4, 0));
  TraceCapture trace(TraceLevel::kFlow);
  check_all();
  EXPECT_TRUE(trace.has("validate_max_bandwidth_global end - ERROR - elapsed time "));
  EXPECT_FALSE(trace.has("Bandwidth check"));
}

TEST_F(OnuBwCheck, TheTraceShowsThatTheCheckIsOff) {
  insert(card_without_bw_check());
  running(gpon_link(3));
  TraceCapture trace(TraceLevel::kFlow);
  check_link();
  check_all();
  EXPECT_TRUE(trace.has("Bandwidth check disabled for this platform. PONLINK 1/3"));
  EXPECT_EQ(trace.count("Bandwidth check disabled for this platform."), 2);
  EXPECT_TRUE(trace.has("validate_max_bandwidth_ponlink end - OK - elapsed time "));
  EXPECT_TRUE(trace.has("validate_max_bandwidth_global end - OK - elapsed time "));
}

TEST_F(OnuBwCheck, TheOnusOfTheKeypathsSlotAreRead) {
  const std::string slot_2 =
      element("interface", element("gpon", element("chassis-id", "1") + element("slot-id", "2") +
                                               element("port-id", "3") + onus({"l"})));
  running(line("l", fixed(kFixedCapacity + 1)) + gpon_link(3) + slot_2);
  EXPECT_THAT(request(kLinkRequest, "/config/interface/gpon{1 2 3}/onu"),
              Rejected("Fixed bandwidth exceeds GPON interface 1/2/3 capacity (442752 kbits/s)\n"));
}

TEST_F(OnuBwCheck, ThePlatformIsCalledInOrder) {
  running(line("l", fixed(kTotalCapacity)) + gpon_link(3, onus({"l"})));
  using Names = std::vector<std::string>;
  const Names model{// bandwidth profiles
                    "maapi_init_cursor", "confd_cs_node_cd", "confd_max_object_size",
                    "maapi_get_objects", "confd_free_value", "maapi_destroy_cursor",
                    // line profiles, and the TCONTs of one
                    "maapi_init_cursor", "maapi_get_next", "confd_pp_value", "maapi_init_cursor",
                    "confd_cs_node_cd", "confd_max_object_size", "maapi_get_objects",
                    "confd_free_value", "maapi_destroy_cursor", "maapi_get_next",
                    "maapi_destroy_cursor"};
  const Names link{"maapi_query_start",       "maapi_query_result", "confd_pp_value",
                   "maapi_query_free_result", "maapi_query_result", "maapi_query_free_result",
                   "maapi_query_stop",        "confd_trans_seterr"};
  const auto joined = [](const std::vector<Names>& parts) {
    Names all;
    for (const Names& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  {
    const RecordedCalls recorded;
    check_link();
    EXPECT_EQ(
        recorded.names(),
        joined({{"qzconfd_maapi_socket_get", "confd_pp_value", "confd_pp_value"}, model, link}));
  }
  const RecordedCalls recorded;
  check_all();
  EXPECT_EQ(recorded.names(),
            joined({{"qzconfd_maapi_socket_get"},
                    model,
                    {"maapi_init_cursor", "maapi_get_next", "confd_pp_value", "confd_pp_value"},
                    link,
                    {"maapi_destroy_cursor"}}));
}

// ---- The whole card

using PonlinkBwCheck = BwLimit;

TEST_F(PonlinkBwCheck, TheFirstLinkThatIsFullEndsTheWalk) {
  running(line("small", fixed(1)) + line("big", fixed(kFixedCapacity + 1)) +
          gpon_link(1, onus({"small"})) + gpon_link(2, onus({"big"})) +
          gpon_link(3, onus({"big"})));
  EXPECT_EQ(check_all().text,
            "Fixed bandwidth exceeds GPON interface 1/1/2 capacity (442752 kbits/s)\n");
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 2U);
}

TEST_F(PonlinkBwCheck, EveryLinkIsCheckedBySlotAndPort) {
  const auto link = [](const char* chassis, const char* slot, const std::string& content) {
    return element("interface",
                   element("gpon", element("chassis-id", chassis) + element("slot-id", slot) +
                                       element("port-id", "3") + content));
  };
  const std::string profiles = line("small", fixed(1)) + line("big", fixed(kFixedCapacity + 1));
  running(profiles + link("1", "1", onus({"small"})) + link("1", "2", onus({"big"})));
  EXPECT_THAT(check_all(),
              Rejected("Fixed bandwidth exceeds GPON interface 1/2/3 capacity (442752 kbits/s)\n"));
  // For a link of another chassis, the one of chassis 1 with the same slot and port is checked.
  running(profiles + link("1", "2", onus({"small"})) + link("2", "2", onus({"big"})));
  EXPECT_THAT(check_all(), Accepted());
}

TEST_F(PonlinkBwCheck, XgsPonLinksAreNotChecked) {
  running(line("big", fixed(kTotalCapacity)) + xgspon_link(3, onus({"big", "missing"})));
  EXPECT_EQ(check_all().result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 0U);
}

TEST_F(PonlinkBwCheck, ACardWithoutLinksIsAccepted) {
  running(line("l", fixed(1)));
  EXPECT_EQ(check_all().result, Verdict::kOk);
}

TEST_F(PonlinkBwCheck, AProfileThatGrowsIsCheckedOnEveryLink) {
  running(line("l", fixed(kFixedCapacity / 2)) + gpon_link(1, onus({"l"})) +
          gpon_link(3, onus({"l", "l"})));
  const Answer answer =
      answer_of(kGlobalRequest, bandwidth_profile("l", fixed(kFixedCapacity / 2 + 1)));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kFixedExceeds3);
}

TEST_F(PonlinkBwCheck, ALineProfileHasItsLimitsOfTconts) {
  constexpr const char* kDynamic3 =
      "Line Profile l cannot have more than 3 TCONTs with bandwidth traffic type 2 to 5.";
  constexpr const char* kDynamic4 =
      "Line Profile l cannot have more than 4 TCONTs with bandwidth traffic type 2 to 5.";
  constexpr const char* kStatic3 =
      "Line Profile l cannot have more than 3 TCONTs with bandwidth traffic type 1.";
  struct Row {
    bool bw_check;
    int dynamic_tconts;
    int static_tconts;
    std::string text;
  };
  const std::array<Row, 9> rows{{
      {true, 3, 3, ""},
      {true, 4, 3, kDynamic3},
      {true, 3, 4, kStatic3},
      {true, 4, 4, kDynamic3},
      {false, 3, 3, ""},
      {false, 4, 3, ""},
      {false, 5, 3, kDynamic4},
      {false, 4, 4, kStatic3},
      {false, 5, 4, kDynamic4},
  }};
  for (const Row& row : rows) {
    insert(row.bw_check ? CardDescription::standard() : card_without_bw_check());
    running(bandwidth_profile("dynamic", assured(10)) + bandwidth_profile("static", fixed(10)) +
            line_of("l", row.dynamic_tconts, row.static_tconts));
    const Answer answer = check_all();
    EXPECT_EQ(answer.result, row.text.empty() ? Verdict::kOk : Verdict::kError);
    EXPECT_EQ(answer.text, row.text)
        << row.bw_check << " " << row.dynamic_tconts << " " << row.static_tconts;
  }
}

TEST_F(PonlinkBwCheck, OneOfSeveralViolatingLineProfilesIsNamed) {
  running(bandwidth_profile("dynamic", assured(10)) + line_of("a", 4, 0) + line_of("b", 3, 0) +
          line_of("c", 4, 0));
  const std::string text = check_all().text;
  const auto named = [](const std::string& name) {
    return "Line Profile " + name +
           " cannot have more than 3 TCONTs with bandwidth traffic type 2 to 5.";
  };
  EXPECT_TRUE(text == named("a") || text == named("c")) << text;
}

TEST_F(PonlinkBwCheck, TooManyTcontsComeBeforeAFullLink) {
  running(bandwidth_profile("dynamic", assured(kTotalCapacity)) + line_of("l", 4, 0) +
          gpon_link(3, onus({"l"})));
  EXPECT_EQ(check_all().text,
            "Line Profile l cannot have more than 3 TCONTs with bandwidth traffic type 2 to 5.");
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 0U);
}

TEST_F(PonlinkBwCheck, TcontsWithoutBandwidthProfileCountAsDynamic) {
  running(line_of("l", 4, 0));
  EXPECT_EQ(check_all().text,
            "Line Profile l cannot have more than 3 TCONTs with bandwidth traffic type 2 to 5.");
}

TEST_F(PonlinkBwCheck, WithoutTheCheckFullLinksAreAccepted) {
  insert(card_without_bw_check());
  running(line("l", fixed(kTotalCapacity)) + gpon_link(3, onus({"l"})));
  EXPECT_EQ(check_all().result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_query_start), 0U);
}

TEST_F(PonlinkBwCheck, APercentSignInANameStaysOne) {
  running(bandwidth_profile("dynamic", assured(10)) + line_of("50%d", 4, 0));
  EXPECT_EQ(check_all().text,
            "Line Profile 50%d cannot have more than 3 TCONTs with bandwidth traffic type 2 to 5.");
}

}  // namespace
}  // namespace tarnd::test
