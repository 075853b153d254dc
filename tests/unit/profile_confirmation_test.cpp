#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "gpon_line_profile_confirm.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/suite_name.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kReadFailure = "Failed accessing confd data.";

/// One kind of profile, and the texts of its confirmation.
struct Kind {
  std::string word;       ///< the profile's list and its word in the trace
  std::string request;    //
  std::string validator;  ///< the function, which the trace names
  std::string source;
  std::string property;  ///< a leaf to change
  std::string used_by;   ///< what of the ONU names the profile: "onu", "references", "pots"
  std::string users;     ///< the expression that counts them
  std::string warning;
  std::string not_a_number;  ///< the user's text if the count is no number
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.word;
}

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {"line-profile", "line_confirmation_warning", "line_profile_confirmation",
       "gpon_line_profile_confirm", "gem", "references",
       "count(/config/interface/gpon/onu/profile-references[line-profile='gold'])",
       "Change in line-profile configuration will result in temporary data loss for all ONUs using "
       "this profile.",
       kReadFailure},
      {"rg-profile", "rg_profile_confirmation_warning", "rg_profile_confirmation",
       "gpon_rg_profile_validation", "wlan", "onu",
       "count(/config/interface/gpon/onu[rg-profile='gold'])",
       "Change in rg-profile configuration will result in temporary data loss for all ONUs using "
       "this profile.",
       kReadFailure},
      {"tr069-acs-profile", "tr069_profile_confirmation_warning", "tr069_profile_confirmation",
       "gpon_tr069_profile_validation", "url", "onu",
       "count(/config/interface/gpon/onu[tr069-acs-profile='gold'])",
       "Change in tr069-acs-profile configuration will result in temporary data loss for all ONUs "
       "using this profile.",
       kReadFailure},
      {"sip-agent-profile", "sip_agent_profile_confirmation_warning",
       "sip_agent_profile_confirmation", "gpon_sip_agent_validation", "proxy-server", "pots",
       "count(/config/interface/gpon/onu/pots[sip-agent-profile='gold'])",
       "Change in sip-agent-profile configuration will result in temporary data loss for all ONUs "
       "using this profile.",
       kReadFailure},
      {"media-profile", "voip_media_profile_confirmation_warning",
       "voip_media_profile_confirmation", "gpon_voip_media_profile_validation", "codec", "pots",
       "count(/config/interface/gpon/onu/pots[media-profile='gold'])",
       "Change in media-profile configuration will result in temporary data loss for all ONUs "
       "using this profile.",
       "Failed accessing transaction data."},
  };
  return all;
}

const Kind& kind_of(const std::string& word) {
  return *std::find_if(kinds().begin(), kinds().end(),
                       [&word](const Kind& kind) { return kind.word == word; });
}

std::string profile(const Kind& kind, const std::string& name, const std::string& content = "") {
  return profiles(element(kind.word, element("name", name) + content));
}

/// The profile with one thing changed.
std::string edit_of(const Kind& kind, const std::string& name = "gold") {
  if (kind.property == "gem") return profile(kind, name, gem(7));
  if (kind.property == "wlan") {
    return profile(
        kind, name,
        element("wlan", element("id", "1") + element("ssid", element("custom", "home"))));
  }
  return profile(kind, name, element(kind.property, "new"));
}

/// The content of an ONU that uses the profile.
std::string use_of(const Kind& kind, const std::string& name = "gold", int pots = 1) {
  std::string reference = element(kind.word, name);
  if (kind.used_by == "references") return element("profile-references", reference);
  if (kind.used_by == "onu") return reference;
  std::string ports;
  for (int port = 1; port <= pots; ++port) {
    ports += element("pots", element("port", std::to_string(port)) + reference);
  }
  return ports;
}

class ProfileConfirmation : public CardFixture {
 protected:
  /// Only the text of the result counts, not the returned code.
  static void count_as(const std::string& text) { InPlace::xpath = {CONFD_ERR, text}; }

  /// Whether the trace has this record, written by the validator and by no other function.
  static bool has_record(TraceCapture& trace, const Kind& kind, const std::string& level,
                         const std::string& text) {
    const std::string start =
        level + " " + kind.validator + " src/validation/" + kind.source + ".cpp:";
    const std::string end = " " + text;
    const std::vector<std::string>& records = trace.records();
    return std::any_of(records.begin(), records.end(), [&](const std::string& record) {
      return record.rfind(start, 0) == 0 && record.size() > end.size() &&
             record.compare(record.size() - end.size(), end.size(), end) == 0;
    });
  }

 private:
  InPlace in_place_;
};

class EveryProfileConfirmation : public ProfileConfirmation,
                                 public ::testing::WithParamInterface<Kind> {};

INSTANTIATE_TEST_SUITE_P(Of, EveryProfileConfirmation, ::testing::ValuesIn(kinds()),
                         [](const auto& tested) { return suite_name(tested.param.request); });

TEST_P(EveryProfileConfirmation, AProfileThatIsCreatedIsNotAskedAboutEvenWithUsers) {
  const Kind& kind = GetParam();
  TraceCapture trace(TraceLevel::kDetail);
  const Answer answer = answer_of(kind.request, edit_of(kind) + gpon_link(1, onu(1, use_of(kind))));
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(answer.text, "");
  EXPECT_EQ(calls(PlatformCall::maapi_xpath_eval_expr), 0U);
  EXPECT_TRUE(
      has_record(trace, kind, "DETAIL", "Check if " + kind.word + " gold has been edited."));
  EXPECT_TRUE(has_record(trace, kind, "DETAIL", kind.word + " gold was not edited"));
  EXPECT_TRUE(trace.has(" " + kind.validator + " begin"));
  EXPECT_TRUE(trace.has(" " + kind.validator + " end - OK"));
}

TEST_P(EveryProfileConfirmation, AnUnusedProfileIsNotAskedAbout) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + profile(kind, "silver") +
          gpon_link(1, onu(1, use_of(kind, "silver"))));
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(answer.text, "");
  EXPECT_TRUE(has_record(trace, kind, "FLOW", "There are 0 onus associated with gold"));
}

TEST_P(EveryProfileConfirmation, OneUserIsEnoughForTheWarning) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kWarning);
  EXPECT_EQ(answer.text, kind.warning);
  EXPECT_TRUE(has_record(trace, kind, "FLOW", "There are 1 onus associated with gold"));
  EXPECT_TRUE(trace.has(" " + kind.validator + " end - WARNING"));
}

TEST_P(EveryProfileConfirmation, TheUsersAfterTheCommitCount) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + gpon_link(1, onu(1)));
  const std::string change = edit_of(kind) + gpon_link(1, onu(1, use_of(kind)));
  EXPECT_EQ(answer_of(kind.request, change).result, Verdict::kWarning);

  running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
  const std::string removal = edit_of(kind) + gpon_link(1, onu(1, "", "delete"));
  EXPECT_EQ(answer_of(kind.request, removal).result, Verdict::kOk);
}

TEST_P(EveryProfileConfirmation, TheUserDecides) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
  EXPECT_EQ(commit(edit_of(kind), {kind.request}, false).result, CommitResult::kUnconfirmed);
  EXPECT_EQ(commit(edit_of(kind), {kind.request}, true).result, CommitResult::kAccepted);
}

TEST_P(EveryProfileConfirmation, WithoutAConfigurationSessionItFails) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  fail_call(PlatformCall::qzconfd_config_session_start);
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kReadFailure);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 0U);
  EXPECT_EQ(trace.records().size(), 2U) << "nothing but begin and end";
  EXPECT_TRUE(trace.has(" " + kind.validator + " end - ERROR"));
}

TEST_P(EveryProfileConfirmation, AnUnreadableCommittedConfigurationFailsWithTheSessionEnded) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  fail_call(PlatformCall::cdb_exists);
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kReadFailure);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
  EXPECT_EQ(trace.records().size(), 2U) << "nothing but begin and end";
}

TEST_P(EveryProfileConfirmation, ACountWithoutAResultFails) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  fail_call(PlatformCall::maapi_xpath_eval_expr);
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kReadFailure);
  EXPECT_TRUE(trace.has("There was an error ("));
  EXPECT_TRUE(has_record(trace, kind, "FLOW",
                         "checking if there is any ONU using " + kind.word + " gold."));
  EXPECT_FALSE(trace.has("(stoi)"));
}

TEST_P(EveryProfileConfirmation, AQuoteInTheNameBreaksTheCount) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold's"));
  const Answer answer = answer_of(kind.request, edit_of(kind, "gold's"));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kReadFailure);
}

TEST_P(EveryProfileConfirmation, TheUsersAreCountedByTheirReferenceToTheName) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(InPlace::evaluated, kind.users);
}

TEST_P(EveryProfileConfirmation, TheResultsLeadingNumberIsTheCount) {
  struct Row {
    const char* result;
    Verdict verdict;
    const char* count;
  };
  const std::array<Row, 5> rows{{
      {"2147483647", Verdict::kWarning, "2147483647"},
      {" 1", Verdict::kWarning, "1"},
      {"3.5 or so", Verdict::kWarning, "3"},
      {"0", Verdict::kOk, "0"},
      {"-1", Verdict::kOk, "-1"},
  }};
  const Kind& kind = GetParam();
  for (const Row& row : rows) {
    running(profile(kind, "gold"));
    count_as(row.result);
    TraceCapture trace(TraceLevel::kFlow);
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, row.verdict) << row.result;
    EXPECT_TRUE(has_record(trace, kind, "FLOW",
                           std::string("There are ") + row.count + " onus associated with gold"))
        << row.result;
  }
}

TEST_P(EveryProfileConfirmation, AResultThatIsNoNumberFails) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  for (const char* const result : {"many", "", "NaN"}) {
    count_as(result);
    TraceCapture trace(TraceLevel::kFlow);
    const Answer answer = answer_of(kind.request, edit_of(kind));
    EXPECT_EQ(answer.result, Verdict::kError) << result;
    EXPECT_EQ(answer.text, kind.not_a_number) << result;
    EXPECT_TRUE(trace.has("There was an error (")) << result;
    EXPECT_TRUE(has_record(trace, kind, "FLOW",
                           "(stoi) checking if there is any ONU using " + kind.word + " gold."))
        << result;
  }
}

TEST_P(EveryProfileConfirmation, TheRecordComesBeforeTheText) {
  using testing::HasSubstr;
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
  const auto last_three = [this, &kind](std::optional<PlatformCall> failing) {
    TraceCapture trace(TraceLevel::kDetail);
    const CallsAmongRecords calls(failing);
    answer_of(kind.request, edit_of(kind));
    std::vector<std::string> lines = trace.records();
    lines.erase(lines.begin(), lines.end() - 3);
    return lines;
  };
  const std::string text = "CALL confd_trans_seterr";
  EXPECT_THAT(last_three(std::nullopt),
              testing::ElementsAre(HasSubstr(" There are 1 onus associated with gold"), text,
                                   HasSubstr(kind.validator + " end - WARNING")));
  const auto count_failed =
      testing::ElementsAre(HasSubstr(" checking if there is any ONU using " + kind.word + " gold."),
                           text, HasSubstr(kind.validator + " end - ERROR"));
  EXPECT_THAT(last_three(PlatformCall::maapi_xpath_eval_expr), count_failed);
  count_as("many");
  EXPECT_THAT(last_three(std::nullopt), count_failed);
}

TEST_P(EveryProfileConfirmation, TheNameIsTracedBeforeTheCommittedConfigurationIsRead) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  TraceCapture trace(TraceLevel::kDetail);
  const CallsAmongRecords calls;
  answer_of(kind.request, edit_of(kind));
  const std::vector<std::string>& lines = trace.records();
  ASSERT_GE(lines.size(), 7U);
  EXPECT_THAT(
      std::vector(lines.begin(), lines.begin() + 7),
      testing::ElementsAre("CALL qzconfd_maapi_socket_get", testing::HasSubstr(" begin"),
                           "CALL confd_pp_value", testing::EndsWith(" gold has been edited."),
                           "CALL qzconfd_config_session_start", "CALL cdb_exists",
                           "CALL qzconfd_config_session_end"));
}

TEST_P(EveryProfileConfirmation, AnyPositiveAnswerMeansThatTheProfileIsCommitted) {
  const Kind& kind = GetParam();
  InPlace::committed_exists = 2;
  EXPECT_THAT(answer_of(kind.request, edit_of(kind) + gpon_link(1, onu(1, use_of(kind)))),
              AsksToConfirm(kind.warning));
}

TEST_P(EveryProfileConfirmation, ThePlatformIsCalledInOrder) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
  const auto calls_with = [&](std::optional<PlatformCall> failing) {
    const RecordedCalls recorded(failing);
    answer_of(kind.request, edit_of(kind));
    return recorded.names();
  };
  using Names = std::vector<std::string>;
  Names expected = {"qzconfd_maapi_socket_get", "confd_pp_value", "qzconfd_config_session_start",
                    "confd_trans_seterr"};
  EXPECT_EQ(calls_with(PlatformCall::qzconfd_config_session_start), expected);

  expected = {"qzconfd_maapi_socket_get", "confd_pp_value", "qzconfd_config_session_start",
              "cdb_exists", "qzconfd_config_session_end"};
  Names refused = expected;
  refused.emplace_back("confd_trans_seterr");
  EXPECT_EQ(calls_with(PlatformCall::cdb_exists), refused);

  if (kind.word == "line-profile") {
    const Names card = {"fm_init", "fm_local_slot", "fm_scalar_card_tarnd_is_xgspon"};
    expected.insert(expected.end(), card.begin(), card.end());
  }
  expected.insert(expected.end(), {"maapi_xpath_eval_expr", "confd_trans_seterr"});
  EXPECT_EQ(calls_with(std::nullopt), expected);
}

TEST_P(EveryProfileConfirmation, ACountBeyond32BitsLeavesTheValidatorAsAnException) {
  const Kind& kind = GetParam();
  running(profile(kind, "gold"));
  count_as("2147483648");
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kind.request, edit_of(kind));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "");
  EXPECT_TRUE(trace.has(" " + kind.validator + " begin"));
  EXPECT_FALSE(trace.has(" " + kind.validator + " end"));
}

TEST_F(ProfileConfirmation, TheExceptionOfACountBeyond32BitsIsOutOfRange) {
  running(line_profile("gold", ""));
  open();
  std::string name = "gold";
  confd_hkeypath_t keypath{};
  keypath.len = 1;
  CONFD_SET_BUF(&keypath.v[0][0], reinterpret_cast<unsigned char*>(name.data()),
                static_cast<unsigned int>(name.size()));
  CONFD_SET_NOEXISTS(&keypath.v[0][1]);
  count_as("2147483648");
  EXPECT_THROW(line_profile_confirmation(sock(), tctx(), &keypath, nullptr), std::out_of_range);
}

TEST_F(ProfileConfirmation, LineProfilesCountOnTheLinksOfTheCardsKind) {
  const Kind& kind = kind_of("line-profile");
  const std::string gpon_user = gpon_link(1, onu(1, uses_line("gold")));
  const std::string xgspon_user = xgspon_link(1, onu(1, uses_line("gold")));
  struct Row {
    std::optional<bool> xgspon_card;
    std::string user;
    std::string itf_type;
    Verdict verdict;
  };
  const std::array<Row, 6> rows{{
      {true, xgspon_user, "xgspon", Verdict::kWarning},
      {true, gpon_user, "xgspon", Verdict::kOk},
      {false, gpon_user, "gpon", Verdict::kWarning},
      {false, xgspon_user, "gpon", Verdict::kOk},
      {std::nullopt, gpon_user, "gpon", Verdict::kWarning},
      {std::nullopt, xgspon_user, "gpon", Verdict::kOk},
  }};
  for (const Row& row : rows) {
    CardDescription card = CardDescription::standard();
    card.xgspon = row.xgspon_card;
    insert(card);
    running(line_profile("gold", "") + row.user);
    TraceCapture trace(TraceLevel::kFlow);
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, row.verdict) << row.user;
    EXPECT_EQ(InPlace::evaluated, "count(/config/interface/" + row.itf_type +
                                      "/onu/profile-references[line-profile='gold'])");
    EXPECT_TRUE(has_record(trace, kind, "FLOW", "itfType:" + row.itf_type)) << row.user;
  }
}

TEST_F(ProfileConfirmation, ACardThatDoesNotAnswerCountsAsGpon) {
  const Kind& kind = kind_of("line-profile");
  CardDescription card = CardDescription::standard();
  card.xgspon = true;
  insert(card);
  running(line_profile("gold", "") + gpon_link(1, onu(1, uses_line("gold"))));
  fail_call(PlatformCall::fm_scalar_card_tarnd_is_xgspon);
  EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, Verdict::kWarning);
}

TEST_F(ProfileConfirmation, TheCardsKindIsRequestedEvenIfItsServiceDoesNotStart) {
  const Kind& kind = kind_of("line-profile");
  CardDescription card = CardDescription::standard();
  card.xgspon = true;
  insert(card);
  running(line_profile("gold", "") + xgspon_link(1, onu(1, uses_line("gold"))));
  for (const PlatformCall call : {PlatformCall::fm_init, PlatformCall::fm_local_slot}) {
    fail_call(call);
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, Verdict::kWarning);
  }
}

TEST_F(ProfileConfirmation, TheOtherProfilesCountOnGponLinksOnEveryCard) {
  CardDescription card = CardDescription::standard();
  card.xgspon = true;
  insert(card);
  for (const Kind& kind : kinds()) {
    if (kind.word == "line-profile") continue;
    running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind))));
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, Verdict::kWarning) << kind.word;
    running(profile(kind, "gold") + xgspon_link(1, onu(1, use_of(kind))));
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, Verdict::kOk) << kind.word;
  }
  EXPECT_EQ(calls(PlatformCall::fm_scalar_card_tarnd_is_xgspon), 0U);
}

TEST_F(ProfileConfirmation, OnlyLineProfilesTraceTheKindOfLink) {
  for (const Kind& kind : kinds()) {
    running(profile(kind, "gold"));
    TraceCapture trace(TraceLevel::kDetail);
    answer_of(kind.request, edit_of(kind));
    EXPECT_EQ(trace.has("itfType:"), kind.word == "line-profile") << kind.word;
  }
}

TEST_F(ProfileConfirmation, TelephonePortsCountEach) {
  for (const char* word : {"sip-agent-profile", "media-profile"}) {
    const Kind& kind = kind_of(word);
    running(profile(kind, "gold") + gpon_link(1, onu(1, use_of(kind, "gold", 2))));
    TraceCapture trace(TraceLevel::kFlow);
    EXPECT_EQ(answer_of(kind.request, edit_of(kind)).result, Verdict::kWarning) << word;
    EXPECT_TRUE(trace.has("There are 2 onus associated with gold")) << word;
  }
}

TEST_F(ProfileConfirmation, TheWarningOfLineProfilesMayBeReplaced) {
  const Kind& kind = kind_of("line-profile");
  running(line_profile("gold", "") + gpon_link(1, onu(1, uses_line("gold"))));
  const char* const own_text = LINE_PROF_WARN_MSG;
  LINE_PROF_WARN_MSG = "100% of the users of %s lose data";
  EXPECT_EQ(answer_of(kind.request, edit_of(kind)).text, "100% of the users of %s lose data");
  LINE_PROF_WARN_MSG = own_text;
  EXPECT_EQ(answer_of(kind.request, edit_of(kind)).text, kind.warning);
}

}  // namespace
}  // namespace tarnd::test
