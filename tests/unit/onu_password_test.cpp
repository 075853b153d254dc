#include <array>
#include <string>
#include <utility>
#include <vector>

#include "gpon_onu_password_valid.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Its names are macros and would hit those of the headers above.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

using Credentials = std::multimap<std::string, std::string>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kRequest = "onu_pwd_sn_unique_check";
constexpr const char* kOnuList = "/config/interface/gpon{1 1 3}/onu";
constexpr const char* kPrefixOfOnu5 = "/config/interface/gpon{1 1 3}/onu{5}/auth-method/";

constexpr const char* kPasswordHead =
    "The ONU password must be unique per PON interface.\n Repeated passwords:\n";
constexpr const char* kSerialHead =
    "ONU serial number must be unique and as shown on the product label.\n"
    " Repeated serial numbers:\n";

constexpr const char* kBySerial = "serial-number";
constexpr const char* kByBoth = "serial-number-and-password";
constexpr const char* kByPassword = "password";

/// The card 1/1 with its authentication method.
std::string card(const std::string& method) {
  return element("gpon", element("slot", "1/1") + element("onu-auth-method", method));
}

std::string credentials(const std::string& serial, const std::string& pwd) {
  return element("auth-method", element("serial-number", serial) + element("password", pwd));
}

confd_hkeypath_t onu_list_keypath(std::uint32_t chassis, std::uint32_t slot, std::uint32_t port) {
  return link_child_keypath(base_onu, base_gpon, chassis, slot, port);
}

class OnuPwdSnUniqueCheck : public CardFixture {
 protected:
  Answer check() { return request(kRequest, kOnuList); }

  int auth_method(std::uint32_t chassis = 1, std::uint32_t slot = 1) {
    confd_hkeypath_t keypath = onu_list_keypath(chassis, slot, 3);
    return getAuthMethod(sock(), tctx(), &keypath);
  }

  Pairs collect(const std::string& leaf_name, int method) {
    Credentials found;
    ProfileOnuSerialPassword(sock(), tctx(), &found, "3", "5", kPrefixOfOnu5, leaf_name, method,
                             "interface gpon");
    return {found.begin(), found.end()};
  }
};

// ---- The authentication method

TEST_F(OnuPwdSnUniqueCheck, TheMethodIsThatOfTheCard) {
  struct Row {
    std::string card;
    int method;
  };
  const std::array<Row, 5> rows{{
      {card(kBySerial), 0},
      {card(kByBoth), 1},
      {card(kByPassword), 2},
      {element("gpon", element("slot", "1/1")), 0},
      {"", 0},
  }};
  for (const Row& row : rows) {
    running(row.card);
    open();
    EXPECT_EQ(auth_method(), row.method) << row.card;
  }
}

TEST_F(OnuPwdSnUniqueCheck, ChassisAndSlotSelectTheCard) {
  running(element("gpon", element("slot", "2/7") + element("onu-auth-method", kByPassword)) +
          card(kByBoth));
  open();
  EXPECT_EQ(auth_method(2, 7), 2);
  EXPECT_EQ(auth_method(1, 1), 1);
  EXPECT_EQ(auth_method(1, 7), 0);
}

TEST_F(OnuPwdSnUniqueCheck, NumbersOfTheCardAreSignedInItsPath) {
  open();
  const RecordedPaths recorded;
  auth_method(4294967295, 2147483648);
  EXPECT_THAT(recorded.calls(),
              testing::ElementsAre(
                  "maapi_get_enum_value_elem /config/gpon{-1/-2147483648}/onu-auth-method"));
}

TEST_F(OnuPwdSnUniqueCheck, PathsAreAskedForInThisForm) {
  running(card(kBySerial) + gpon_link(3, onu(5, serial_number("A"))));
  const RecordedPaths recorded;
  check();
  const std::string onus = "/config/interface/gpon{1 1 3}/onu";
  const std::string method = "maapi_get_enum_value_elem /config/gpon{1/1}/onu-auth-method";
  EXPECT_THAT(recorded.calls(),
              testing::ElementsAre(method, "maapi_init_cursor /config/interface/gpon/",
                                   "maapi_init_cursor " + onus,
                                   "maapi_get_str_elem " + onus + "{5}/auth-method/serial-number",
                                   method, "maapi_init_cursor /config/interface/xgspon/"));
}

TEST_F(OnuPwdSnUniqueCheck, AnUnreadableMethodIsZero) {
  running(card(kByPassword));
  open();
  fail_call(PlatformCall::maapi_get_enum_value_elem);
  EXPECT_EQ(auth_method(), 0);
}

using OnuPwdSnUniqueCheckDeathTest = OnuPwdSnUniqueCheck;

TEST_F(OnuPwdSnUniqueCheckDeathTest, AnEntryWithoutTwoNumbersIsImpossible) {
  running("");
  open();
  confd_hkeypath_t keypath = onu_list_keypath(1, 1, 3);
  CONFD_SET_NOEXISTS(&keypath.v[1][1]);
  EXPECT_DEATH(getAuthMethod(sock(), tctx(), &keypath),
               "\\(&keypath->v\\[1\\]\\[1\\]\\)->type == C_UINT32");
  CONFD_SET_XMLTAG(&keypath.v[1][0], base_interface, base__ns);
  EXPECT_DEATH(getAuthMethod(sock(), tctx(), &keypath),
               "\\(&keypath->v\\[1\\]\\[0\\]\\)->type == C_UINT32");
}

// ---- One credential

TEST_F(OnuPwdSnUniqueCheck, TheMethodDecidesWhichCredentialIsRead) {
  running(gpon_link(3, onu(5, credentials("ZQRT0000ABCD", "secret"))));
  open();
  const std::string label = "interface gpon 3 onu 5";
  struct Row {
    const char* leaf;
    int method;
    Pairs found;
  };
  const std::array<Row, 8> rows{{
      {"serial-number", 0, {{"ZQRT0000ABCD", label}}},
      {"serial-number", 1, {{"ZQRT0000ABCD", label}}},
      {"serial-number", 2, {}},
      {"serial-number", 3, {{"ZQRT0000ABCD", label}}},
      {"password", 0, {}},
      {"password", 1, {}},
      {"password", 2, {{"secret", label}}},
      {"password", 3, {}},
  }};
  for (const Row& row : rows) {
    const std::uint64_t before = calls(PlatformCall::maapi_get_str_elem);
    EXPECT_EQ(collect(row.leaf, row.method), row.found) << row.leaf << " " << row.method;
    EXPECT_EQ(calls(PlatformCall::maapi_get_str_elem) - before, row.found.size());
  }
}

TEST_F(OnuPwdSnUniqueCheck, ASerialNumberIsUpperCaseFromTheFifthCharacterOn) {
  struct Row {
    const char* configured;
    const char* compared;
  };
  const std::array<Row, 7> rows{{
      {"ZQRT0000abcd", "ZQRT0000ABCD"},
      {"zqrt0000ABCD", "zqrt0000ABCD"},
      {"zqrtabcd", "zqrtABCD"},
      {"zqrt", "zqrt"},
      {"zqr", "zqr"},
      {"z", "z"},
      {"", ""},
  }};
  for (const Row& row : rows) {
    running(gpon_link(3, onu(5, serial_number(row.configured))));
    open();
    EXPECT_EQ(collect("serial-number", 0), (Pairs{{row.compared, "interface gpon 3 onu 5"}}));
  }
}

TEST_F(OnuPwdSnUniqueCheck, APasswordIsComparedAsItIs) {
  running(gpon_link(3, onu(5, password("seCret%s"))));
  open();
  EXPECT_EQ(collect("password", 2), (Pairs{{"seCret%s", "interface gpon 3 onu 5"}}));
}

TEST_F(OnuPwdSnUniqueCheck, ACredentialThatCannotBeReadIsLeftOut) {
  running(gpon_link(3, onu(5, serial_number("ZQRT00000001"))));
  open();
  EXPECT_EQ(collect("password", 2), Pairs{});
  fail_call(PlatformCall::maapi_get_str_elem);
  EXPECT_EQ(collect("serial-number", 0), Pairs{});
}

TEST_F(OnuPwdSnUniqueCheck, ACredentialMayHave8191Characters) {
  for (const std::size_t length : {8191U, 8192U}) {
    const std::string text(length, 'x');
    running(gpon_link(3, onu(5, password(text))));
    open();
    const Pairs fits{{text, "interface gpon 3 onu 5"}};
    EXPECT_EQ(collect("password", 2), length == 8191 ? fits : Pairs{}) << length;
  }
}

// ---- Repeated values

TEST(EvaluateOnuSerialPassword, EveryMemberOfAGroupHasOneLine) {
  struct Row {
    Pairs credentials;
    const char* report;
  };
  const std::vector<Row> rows{
      {{}, ""},
      {{{"a", "onu 1"}}, ""},
      {{{"a", "onu 1"}, {"b", "onu 2"}, {"A", "onu 3"}}, ""},
      {{{"a", "onu 1"}, {"a", "onu 2"}}, "onu 1 leaf: [a]\nonu 2 leaf: [a]\n"},
      {{{"a", "onu 3"}, {"a", "onu 2"}, {"a", "onu 1"}},
       "onu 3 leaf: [a]\nonu 2 leaf: [a]\nonu 1 leaf: [a]\n"},
      {{{"b", "onu 1"}, {"a", "onu 2"}, {"c", "onu 3"}, {"b", "onu 4"}, {"a", "onu 5"}},
       "onu 2 leaf: [a]\nonu 5 leaf: [a]\nonu 1 leaf: [b]\nonu 4 leaf: [b]\n"},
      {{{"", "onu 1"}}, " leaf: []\nonu 1 leaf: []\n"},
      {{{"", "onu 1"}, {"", "onu 2"}, {"a", "onu 3"}},
       " leaf: []\nonu 1 leaf: []\nonu 2 leaf: []\n"},
  };
  for (const Row& row : rows) {
    Credentials seen(row.credentials.begin(), row.credentials.end());
    std::stringstream report;
    std::int32_t result = 7;
    evaluateOnuSerialPassword(report, seen, "leaf", &result);
    EXPECT_EQ(report.str(), row.report);
    EXPECT_EQ(result, std::string(row.report).empty() ? 7 : -1) << row.report;
  }
}

// ---- The whole card

TEST_F(OnuPwdSnUniqueCheck, PasswordsAreUniquePerInterfaceUnderPasswordAuthentication) {
  const std::string same_interface =
      gpon_link(3, onu(1, password("one")) + onu(2, password("one")));
  struct Row {
    const char* name;
    std::string content;
    std::string text;
  };
  const std::array<Row, 7> rows{{
      {"same interface", card(kByPassword) + same_interface,
       std::string(kPasswordHead) +
           "interface gpon 3 onu 1 password: [one]\ninterface gpon 3 onu 2 password: [one]\n"},
      {"two interfaces",
       card(kByPassword) + gpon_link(3, onu(1, password("one"))) +
           gpon_link(4, onu(1, password("one"))) + xgspon_link(3, onu(1, password("one"))),
       ""},
      {"by serial number", card(kBySerial) + same_interface, ""},
      {"by both", card(kByBoth) + same_interface, ""},
      {"no method", same_interface, ""},
      {"another case",
       card(kByPassword) + gpon_link(3, onu(1, password("one")) + onu(2, password("ONE"))), ""},
      {"an empty one", card(kByPassword) + gpon_link(3, onu(1, password(""))),
       std::string(kPasswordHead) + " password: []\ninterface gpon 3 onu 1 password: []\n"},
  }};
  for (const Row& row : rows) {
    running(row.content);
    const Answer answer = check();
    EXPECT_EQ(answer.result, row.text.empty() ? Verdict::kOk : Verdict::kError) << row.name;
    EXPECT_EQ(answer.text, row.text) << row.name;
  }
}

TEST_F(OnuPwdSnUniqueCheck, ThePasswordReportHasTheInterfacesInOrder) {
  const auto twice = [](const std::string& first, const std::string& second) {
    return onu(1, password(second)) + onu(2, password(first)) + onu(3, password(second)) +
           onu(4, password(first));
  };
  running(card(kByPassword) + xgspon_link(1, twice("a", "b")) + gpon_link(7, twice("c", "d")) +
          gpon_link(2, twice("e", "f")));
  EXPECT_EQ(check().text, std::string(kPasswordHead) +
                              "interface gpon 2 onu 2 password: [e]\n"
                              "interface gpon 2 onu 4 password: [e]\n"
                              "interface gpon 2 onu 1 password: [f]\n"
                              "interface gpon 2 onu 3 password: [f]\n"
                              "interface gpon 7 onu 2 password: [c]\n"
                              "interface gpon 7 onu 4 password: [c]\n"
                              "interface gpon 7 onu 1 password: [d]\n"
                              "interface gpon 7 onu 3 password: [d]\n"
                              "interface gpon 1 onu 2 password: [a]\n"
                              "interface gpon 1 onu 4 password: [a]\n"
                              "interface gpon 1 onu 1 password: [b]\n"
                              "interface gpon 1 onu 3 password: [b]\n");
}

TEST_F(OnuPwdSnUniqueCheck, SerialNumbersAreUniqueOnTheWholeCard) {
  const std::string sn = "ZQRT0000ABCD";
  const std::string both_kinds =
      gpon_link(3, onu(5, serial_number(sn))) + xgspon_link(4, onu(6, serial_number(sn)));
  const std::string both_reported = std::string(kSerialHead) +
                                    "interface gpon 3 onu 5 serial-number: [ZQRT0000ABCD]\n"
                                    "interface gpon 4 onu 6 serial-number: [ZQRT0000ABCD]\n";
  struct Row {
    const char* name;
    std::string content;
    std::string text;
  };
  const std::array<Row, 8> rows{{
      {"both kinds", card(kBySerial) + both_kinds, both_reported},
      {"no method", both_kinds, both_reported},
      {"by both", card(kByBoth) + both_kinds, both_reported},
      {"by password", card(kByPassword) + both_kinds, ""},
      {"another case of the last characters",
       gpon_link(3, onu(5, serial_number("ZQRT0000abcd"))) +
           gpon_link(4, onu(6, serial_number("ZQRT0000aBcD"))),
       both_reported},
      {"another case of the first characters",
       gpon_link(3, onu(5, serial_number("zqrt0000ABCD"))) +
           gpon_link(4, onu(6, serial_number("ZQRT0000ABCD"))),
       ""},
      {"one interface", gpon_link(3, onu(5, serial_number(sn)) + onu(6, serial_number(sn))),
       std::string(kSerialHead) + "interface gpon 3 onu 5 serial-number: [ZQRT0000ABCD]\n"
                                  "interface gpon 3 onu 6 serial-number: [ZQRT0000ABCD]\n"},
      {"no ONUs", gpon_link(3) + xgspon_link(4), ""},
  }};
  for (const Row& row : rows) {
    running(row.content);
    const Answer answer = check();
    EXPECT_EQ(answer.result, row.text.empty() ? Verdict::kOk : Verdict::kError) << row.name;
    EXPECT_EQ(answer.text, row.text) << row.name;
  }
}

TEST_F(OnuPwdSnUniqueCheck, TheOnuThatRepeatsASerialNumberIsRejected) {
  running(card(kBySerial) + gpon_link(3, onu(5, serial_number("ZQRT00000001"))));
  const Answer answer = answer_of(kRequest, xgspon_link(4, onu(6, serial_number("ZQRT00000001"))));
  EXPECT_EQ(answer.text, std::string(kSerialHead) +
                             "interface gpon 3 onu 5 serial-number: [ZQRT00000001]\n"
                             "interface gpon 4 onu 6 serial-number: [ZQRT00000001]\n");
}

TEST_F(OnuPwdSnUniqueCheck, APercentSignInACredentialStaysOne) {
  running(card(kByPassword) + gpon_link(3, onu(1, password("%d%s")) + onu(2, password("%d%s"))));
  EXPECT_EQ(check().text, std::string(kPasswordHead) +
                              "interface gpon 3 onu 1 password: [%d%s]\n"
                              "interface gpon 3 onu 2 password: [%d%s]\n");
}

TEST_F(OnuPwdSnUniqueCheck, TheOnusAreReadInChassis1) {
  const std::string twins =
      onu(1, serial_number("ZQRT00000001")) + onu(2, serial_number("ZQRT00000001"));
  running(
      element("interface", element("gpon", element("chassis-id", "2") + element("slot-id", "1") +
                                               element("port-id", "3") + twins)));
  EXPECT_EQ(check().result, Verdict::kOk);
}

TEST_F(OnuPwdSnUniqueCheck, AnOnuCostsOneRead) {
  const auto onus = [] {
    std::string text;
    for (int id = 1; id <= 10; ++id) {
      const std::string number = std::to_string(id);
      text += onu(id, credentials("ZQRT000000" + number, "pw" + number));
    }
    return text;
  };
  for (const char* const method : {kBySerial, kByPassword}) {
    running(card(method) + gpon_link(3, onus()));
    const std::uint64_t before = calls(PlatformCall::maapi_get_str_elem);
    EXPECT_EQ(check().result, Verdict::kOk) << method;
    EXPECT_EQ(calls(PlatformCall::maapi_get_str_elem) - before, 10U) << method;
  }
  // Once for each kind of interface.
  EXPECT_EQ(calls(PlatformCall::maapi_get_enum_value_elem), 4U);
}

TEST_F(OnuPwdSnUniqueCheck, ThePlatformIsCalledInOrder) {
  running(gpon_link(3, onu(1, serial_number(""))));
  const RecordedCalls recorded;
  check();
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{
                "qzconfd_maapi_socket_get", "maapi_get_enum_value_elem", "maapi_init_cursor",
                "maapi_get_next", "confd_pp_value", "confd_pp_value",  // slot and port
                "maapi_init_cursor", "maapi_get_next", "confd_pp_value", "maapi_get_str_elem",
                "maapi_get_next", "maapi_destroy_cursor", "maapi_get_next", "maapi_destroy_cursor",
                // the XGS-PON interfaces
                "maapi_get_enum_value_elem", "maapi_init_cursor", "maapi_get_next",
                "maapi_destroy_cursor", "confd_trans_seterr"}));
}

TEST_F(OnuPwdSnUniqueCheck, TheWalkReturnsTheSlotAndReportsPasswords) {
  running(gpon_link(3, onu(1, password("a")) + onu(2, password("a"))));
  ValidationSession& session = open();
  Credentials serials;
  std::string first_key;
  std::int32_t result = 0;
  std::stringstream report;
  CheckOnuPwdAndSn(sock(), tctx(), "/config/interface/gpon/", "/config/interface/gpon", &serials,
                   first_key, 2, &result, report);
  EXPECT_EQ(first_key, "1");
  EXPECT_EQ(result, -1);
  EXPECT_TRUE(serials.empty());
  EXPECT_EQ(report.str(),
            "interface gpon 3 onu 1 password: [a]\ninterface gpon 3 onu 2 password: [a]\n");
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(OnuPwdSnUniqueCheck, SlotAndPortAreTheLastTwoKeysOfAnInterface) {
  running(gpon_link(3, onu(1, password("a")) + onu(2, password("a"))));
  open();
  const InPlace in_place;
  InPlace::entry = [](maapi_cursor& cursor) {
    if (cursor.n != 3) return;
    cursor.n = 2;
    cursor.keys[0] = cursor.keys[1];
    cursor.keys[1] = cursor.keys[2];
    CONFD_SET_NOEXISTS(&cursor.keys[2]);
  };
  Credentials serials;
  std::string first_key;
  std::int32_t result = 0;
  std::stringstream report;
  CheckOnuPwdAndSn(sock(), tctx(), "/config/interface/gpon/", "/config/interface/gpon", &serials,
                   first_key, 2, &result, report);
  EXPECT_EQ(first_key, "1");
  EXPECT_EQ(report.str(),
            "interface gpon 3 onu 1 password: [a]\ninterface gpon 3 onu 2 password: [a]\n");
}

TEST_F(OnuPwdSnUniqueCheck, AnUnreadableListIsPassedOver) {
  const std::string twins =
      onu(1, serial_number("ZQRT00000001")) + onu(2, serial_number("ZQRT00000001"));
  running(gpon_link(3, twins));
  // 1: the GPON interfaces, 2: the ONUs of the first one, 3: the XGS-PON interfaces
  for (const int failing : {1, 2}) {
    fail_call(PlatformCall::maapi_init_cursor, failing);
    EXPECT_EQ(check().result, Verdict::kOk) << failing;
  }
  fail_call(PlatformCall::maapi_init_cursor, 3);
  EXPECT_EQ(check().result, Verdict::kError);
}

TEST_F(OnuPwdSnUniqueCheck, AnUnreadableMethodComparesSerialNumbers) {
  running(card(kByPassword) + gpon_link(3, onu(1, credentials("ZQRT00000001", "a")) +
                                               onu(2, credentials("ZQRT00000001", "a"))));
  fail_call(PlatformCall::maapi_get_enum_value_elem, 1);
  EXPECT_EQ(check().text, std::string(kSerialHead) +
                              "interface gpon 3 onu 1 serial-number: [ZQRT00000001]\n"
                              "interface gpon 3 onu 2 serial-number: [ZQRT00000001]\n");
}

TEST_F(OnuPwdSnUniqueCheck, NullArgumentsAreRejectedWithoutText) {
  running("");
  ValidationSession& session = open();
  confd_hkeypath_t keypath = onu_list_keypath(1, 1, 3);
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(validate_onu_pwd_sn_unique(sock(), nullptr, &keypath, nullptr), -1);
  EXPECT_EQ(validate_onu_pwd_sn_unique(sock(), tctx(), nullptr, nullptr), -1);
  EXPECT_EQ(session.error_text(), std::nullopt);
  EXPECT_EQ(trace.count("validate_onu_pwd_sn_unique begin"), 2);
  EXPECT_EQ(trace.count("Error - null pointer passed to validate_onu_pwd_sn_unique."), 2);
  EXPECT_TRUE(
      trace.has_record("DETAIL", "Error - null pointer passed to validate_onu_pwd_sn_unique."));
  EXPECT_EQ(trace.count("validate_onu_pwd_sn_unique end - ERROR - elapsed time "), 2);
}

}  // namespace
}  // namespace tarnd::test
