#include <array>
#include <string>
#include <vector>

#include "gpon_rg_profile_validation.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

#include "base.h"  // macros, so it comes last

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "rg_profile_ssid_unique_check";
constexpr const char* kWlans = "/config/profile/gpon/rg-profile{home}/wlan";
constexpr const char* kNotUnique =
    "There are two or more WLANs with the same SSID. SSID must be unique within the RG profile.";
constexpr const char* kNotConfigured = "must configure one of: auto, custom";
constexpr const char* kUnreadable = "Failed accessing confd data.";
constexpr const char* kErrorRecord = "checking if SSID is unique in rg-profile.";

std::string wlan(int id, const std::string& ssid) {
  return element("wlan", element("id", std::to_string(id)) + element("ssid", ssid));
}

std::string custom(int id, const std::string& ssid) {
  return wlan(id, element("custom", ssid));
}

std::string automatic(int id, const std::string& prefix = "", const std::string& suffix = "") {
  std::string parts = element("onu-serial-number", "");
  if (!prefix.empty()) parts += element("prefix", prefix);
  if (!suffix.empty()) parts += element("suffix", suffix);
  return wlan(id, element("auto", parts));
}

/// Longer in bytes than an SSID may be, though not in characters.
std::string thirty_two_wide_letters() {
  std::string text;
  for (int i = 0; i < 32; ++i) text += "\u00e9";
  return text;
}

class RgProfileSsidUniqueCheck : public CardFixture {
 protected:
  std::string text_for(const std::string& wlans) {
    const Answer answer = answer_of(kRequest, rg_profile("home", wlans));
    EXPECT_EQ(answer.result, answer.text.empty() ? Verdict::kOk : Verdict::kError);
    return answer.text;
  }

  /// Runs the check alone on a transaction with these WLANs, and closes nothing that it leaves
  /// open.
  std::int32_t check(const std::string& wlans) {
    session_ = &open(rg_profile("home", wlans));
    std::string name = "home";
    confd_hkeypath_t keypath{};
    keypath.len = 6;
    CONFD_SET_XMLTAG(&keypath.v[0][0], base_wlan, base__ns);
    CONFD_SET_BUF(&keypath.v[1][0], reinterpret_cast<unsigned char*>(name.data()),
                  static_cast<unsigned int>(name.size()));
    CONFD_SET_NOEXISTS(&keypath.v[1][1]);
    CONFD_SET_XMLTAG(&keypath.v[2][0], base_rg_profile, base__ns);
    CONFD_SET_XMLTAG(&keypath.v[3][0], base_gpon, base__ns);
    CONFD_SET_XMLTAG(&keypath.v[4][0], base_profile, base__ns);
    CONFD_SET_XMLTAG(&keypath.v[5][0], base_config, base__ns);
    return rg_profile_ssid_unique_check_func(sock(), tctx(), &keypath, nullptr);
  }

  [[nodiscard]] int open_cursors() const { return session_->open_resources().cursors; }

 private:
  ValidationSession* session_ = nullptr;
};

TEST_F(RgProfileSsidUniqueCheck, EveryWlanNeedsAnSsidOfItsOwn) {
  struct Row {
    std::string wlans;
    std::string text;
  };
  const std::array<Row, 11> rows{{
      {custom(1, "home"), ""},
      {custom(1, "home") + custom(2, "guest"), ""},
      {custom(1, "home") + custom(2, "Home"), ""},
      {custom(1, "home") + custom(2, "home"), kNotUnique},
      {custom(1, "home") + custom(2, "guest") + custom(10, "home"), kNotUnique},
      {automatic(1, "A", "B") + automatic(2, "A", "C"), ""},
      {automatic(1, "A", "B") + automatic(2, "A", "B"), kNotUnique},
      {automatic(1, "A", "B") + custom(2, "AZQRT12345678B"), kNotUnique},
      {automatic(1, "A") + custom(2, "AZQRT12345678"), kNotUnique},
      {automatic(1, "", "B") + custom(2, "ZQRT12345678B"), kNotUnique},
      {automatic(1) + custom(2, "ZQRT12345678"), kNotUnique},
  }};
  for (const Row& row : rows) {
    running("");
    EXPECT_EQ(text_for(row.wlans), row.text) << row.wlans;
  }
}

TEST_F(RgProfileSsidUniqueCheck, AnEmptyListIsAccepted) {
  EXPECT_EQ(request(kRequest, kWlans, rg_profile("home", "")).result, Verdict::kOk);
}

TEST_F(RgProfileSsidUniqueCheck, OtherProfilesMayHaveTheSameSsid) {
  running(rg_profile("work", custom(1, "home")));
  EXPECT_EQ(text_for(custom(1, "home")), "");
}

TEST_F(RgProfileSsidUniqueCheck, AWlanWithoutAnSsidIsRejected) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(element("wlan", element("id", "1"))), kNotConfigured);
  EXPECT_TRUE(trace.has_record("DETAIL", "SSID not configured"));
  EXPECT_EQ(trace.count(" rg_profile_ssid_unique_check_func src/validation/"), 2);
  EXPECT_FALSE(trace.has(kErrorRecord));
}

TEST_F(RgProfileSsidUniqueCheck, PrefixAndSuffixAloneAreNoSsid) {
  EXPECT_EQ(text_for(wlan(1, element("auto", element("prefix", "A") + element("suffix", "B")))),
            kNotConfigured);
}

TEST_F(RgProfileSsidUniqueCheck, TheFirstFaultInKeyOrderDecides) {
  const std::string without_ssid = element("wlan", element("id", "3"));
  EXPECT_EQ(text_for(without_ssid + custom(1, "home") + custom(2, "home")), kNotUnique);
  EXPECT_EQ(calls(PlatformCall::maapi_get_next), 2U);
  EXPECT_EQ(text_for(without_ssid + custom(2, "home") + custom(4, "home")), kNotConfigured);
}

TEST_F(RgProfileSsidUniqueCheck, ACustomSsidIsAskedForFirstAndSettlesIt) {
  EXPECT_EQ(text_for(custom(1, "home")), "");
  EXPECT_EQ(calls(PlatformCall::maapi_exists), 1U);
}

TEST_F(RgProfileSsidUniqueCheck, ThePlatformIsCalledInOrder) {
  const auto calls_for = [this](const std::string& wlans) {
    running("");
    const RecordedCalls recorded;
    answer_of(kRequest, rg_profile("home", wlans));
    return recorded.names();
  };
  using Names = std::vector<std::string>;
  const Names first_wlan = {"qzconfd_maapi_socket_get", "confd_pp_value", "confd_pp_kpath",
                            "maapi_init_cursor", "maapi_get_next"};
  const auto then = [&first_wlan](const Names& others) {
    Names all = first_wlan;
    all.insert(all.end(), others.begin(), others.end());
    return all;
  };
  EXPECT_EQ(calls_for(custom(1, "home")),
            then({"maapi_exists", "maapi_get_str_elem", "maapi_get_next", "maapi_destroy_cursor"}));
  EXPECT_EQ(calls_for(automatic(1, "A", "B")),
            then({"maapi_exists", "maapi_exists", "maapi_exists", "maapi_get_str_elem",
                  "maapi_exists", "maapi_get_str_elem", "maapi_get_next", "maapi_destroy_cursor"}));
  EXPECT_EQ(calls_for(element("wlan", element("id", "1"))),
            then({"maapi_exists", "maapi_exists", "maapi_get_next", "confd_trans_seterr"}));
  EXPECT_EQ(calls_for(custom(1, thirty_two_wide_letters())),
            then({"maapi_exists", "maapi_get_str_elem", "maapi_destroy_cursor", "confd_lasterr",
                  "confd_trans_seterr"}));
  EXPECT_EQ(calls_for(custom(1, "home") + custom(2, "home")),
            then({"maapi_exists", "maapi_get_str_elem", "maapi_get_next", "maapi_exists",
                  "maapi_get_str_elem", "confd_lasterr", "confd_trans_seterr"}));
}

TEST_F(RgProfileSsidUniqueCheck, RecordsAndCallsComeInThisOrder) {
  using testing::EndsWith;
  TraceCapture trace(TraceLevel::kDetail);
  const CallsAmongRecords recorded;
  answer_of(kRequest, rg_profile("home", custom(1, "home") + element("wlan", element("id", "2"))));
  EXPECT_THAT(
      trace.records(),
      testing::ElementsAre("CALL qzconfd_maapi_socket_get", "CALL confd_pp_value",
                           EndsWith(" Checking if SSID is unique for (home) RG-Profile"),
                           "CALL confd_pp_kpath", "CALL maapi_init_cursor", "CALL maapi_get_next",
                           "CALL maapi_exists", "CALL maapi_get_str_elem", EndsWith(" wlan."),
                           "CALL maapi_get_next", "CALL maapi_exists", "CALL maapi_exists",
                           EndsWith(" SSID not configured"), "CALL maapi_get_next",
                           "CALL confd_trans_seterr"));
}

TEST_F(RgProfileSsidUniqueCheck, ACustomSsidThatCannotBeReadIsRejected) {
  EXPECT_EQ(text_for(custom(1, thirty_two_wide_letters())), kUnreadable);

  fail_call(PlatformCall::maapi_get_str_elem);
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(text_for(custom(1, "home")), kUnreadable);
  EXPECT_TRUE(trace.has("FLOW rg_profile_ssid_unique_check_func"));
  EXPECT_TRUE(trace.has("There was an error ("));
  EXPECT_TRUE(trace.has(kErrorRecord));
}

TEST_F(RgProfileSsidUniqueCheck, AnSsidHasThirtyTwoBytesAtMost) {
  EXPECT_EQ(text_for(custom(1, std::string(32, 'a'))), "");
  EXPECT_EQ(text_for(custom(1, std::string(31, 'a') + "\u00e9")), kUnreadable);
}

TEST_F(RgProfileSsidUniqueCheck, PrefixAndSuffixThatCannotBeReadAreLeftOut) {
  const std::string wide = thirty_two_wide_letters();
  EXPECT_EQ(text_for(automatic(1, wide) + custom(2, "ZQRT12345678")), kNotUnique);
  EXPECT_EQ(text_for(automatic(1, "A", wide) + custom(2, "AZQRT12345678")), kNotUnique);
}

TEST_F(RgProfileSsidUniqueCheck, TheTraceNamesTheProfileFirstAndThenTheList) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(automatic(1, "A", "B") + automatic(2, "A", "B")), kNotUnique);
  EXPECT_EQ(trace.count("Checking if SSID is unique for (home) RG-Profile"), 1);
  EXPECT_EQ(trace.count("SSID is (AZQRT12345678B) RG-Profile "
                        "(/config/profile/gpon/rg-profile{home}/wlan) wlan."),
            2);
  EXPECT_EQ(trace.count("FLOW "), 3);
  EXPECT_EQ(trace.count(" rg_profile_ssid_unique_check_func src/validation/"), 4);
  EXPECT_TRUE(trace.has(kErrorRecord));
  EXPECT_FALSE(trace.has(" begin"));
  EXPECT_FALSE(trace.has(" end - "));
}

TEST_F(RgProfileSsidUniqueCheck, TheCursorStaysOpenWithoutAnSsidAndAtARepeatedOne) {
  EXPECT_EQ(check(custom(1, "home") + custom(2, "guest")), CONFD_OK);
  EXPECT_EQ(open_cursors(), 0);

  EXPECT_EQ(check(custom(1, thirty_two_wide_letters())), CONFD_ERR);
  EXPECT_EQ(open_cursors(), 0);

  EXPECT_EQ(check(custom(1, "home") + custom(2, "home")), CONFD_ERR);
  EXPECT_EQ(open_cursors(), 1);

  const std::uint64_t steps = calls(PlatformCall::maapi_get_next);
  EXPECT_EQ(check(element("wlan", element("id", "1"))), CONFD_ERR);
  EXPECT_EQ(open_cursors(), 1);
  EXPECT_EQ(calls(PlatformCall::maapi_get_next), steps + 2);
}

}  // namespace
}  // namespace tarnd::test
