#include <dlfcn.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "gpon_bw_limit.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kLineProfiles = "/config/profile/gpon/line-profile";

/// {total, fixed, static count, dynamic count}
using Figures = std::array<std::uint32_t, 4>;

Figures figures(const bandwidth_ctx& ctx) {
  return {ctx.total, ctx.fixed, ctx.static_count, ctx.dynamic_count};
}

std::string leaf(const std::string& name, std::uint32_t kbits) {
  return element(name, std::to_string(kbits));
}

std::string type_1(std::uint32_t fixed) {
  return element("type-1", leaf("fixed", fixed));
}

std::string type_2(std::uint32_t assured) {
  return element("type-2", leaf("assured", assured));
}

std::string type_3(std::uint32_t assured, std::uint32_t maximum) {
  return element("type-3", leaf("assured", assured) + leaf("maximum", maximum));
}

std::string type_4(std::uint32_t maximum) {
  return element("type-4", leaf("maximum", maximum));
}

std::string type_5(std::uint32_t fixed, std::uint32_t assured, std::uint32_t maximum) {
  return element("type-5",
                 leaf("fixed", fixed) + leaf("assured", assured) + leaf("maximum", maximum));
}

/// "bw001" and so on, in the order of the list.
std::string bw_name(int number) {
  std::string digits = std::to_string(number);
  return "bw" + digits.insert(0, 3 - digits.size(), '0');
}

/// Profiles of type 1 from the first to the last number.
std::string bandwidth_profiles(int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) {
    text += bandwidth_profile(bw_name(i), type_1(1000));
  }
  return text;
}

std::string without_type(const std::string& name) {
  return bandwidth_profile(name, "");
}

/// Level and text of a record; running times become "N".
std::string level_and_text(const std::string& record) {
  const std::size_t place = record.find(" src/validation/gpon_bw_limit.cpp:");
  if (place == std::string::npos) return record;
  std::string text = record.substr(record.find(' ', place + 1));
  constexpr std::string_view kTook = " Took ";
  if (text.rfind(kTook, 0) == 0) {
    text.replace(kTook.size(), text.find(' ', kTook.size()) - kTook.size(), "N");
  }
  return record.substr(0, record.find(' ')) + text;
}

class BwModel : public CardFixture {
 protected:
  BwModel() { clear(); }
  ~BwModel() override { clear(); }

  int load_profiles() { return loadAllBws(sock(), tctx()); }

  /// Loads both kinds of profiles; returns the line profile's figures.
  Figures load_line(const std::string& name) {
    load_profiles();
    EXPECT_EQ(loadAllLines(sock(), tctx()), 0);
    return figures(line_prof_to_bandwidth.at(name));
  }

 private:
  static void clear() {
    bandwidth_prof_to_bandwidth.clear();
    line_prof_to_bandwidth.clear();
  }
};

TEST_F(BwModel, TheHostFindsTheModelByItsPlainNames) {
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "bandwidth_prof_to_bandwidth"), &bandwidth_prof_to_bandwidth);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "line_prof_to_bandwidth"), &line_prof_to_bandwidth);
}

// ---- Bandwidth profiles

TEST_F(BwModel, EachTrafficTypeReservesItsOwn) {
  struct Row {
    const char* name;
    std::string traffic;
    Figures figures;
  };
  const std::array<Row, 6> rows{{
      {"one", type_1(1000), {1000, 1000, 0, 0}},
      {"two", type_2(2000), {2000, 0, 0, 0}},
      {"three", type_3(5000, 9000), {5000, 0, 0, 0}},
      {"four", type_4(7000), {0, 0, 0, 0}},
      {"five", type_5(1000, 2000, 3000), {2000, 1000, 0, 0}},
      {"most", type_1(4294967295), {4294967295, 4294967295, 0, 0}},
  }};
  std::string content;
  for (const Row& row : rows) {
    content += bandwidth_profile(row.name, row.traffic);
  }
  running(content);
  open();
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), rows.size());
  for (const Row& row : rows) {
    EXPECT_EQ(figures(bandwidth_prof_to_bandwidth.at(row.name)), row.figures) << row.name;
  }
}

TEST_F(BwModel, ItIsWhatTheTransactionWouldLeave) {
  running(bandwidth_profile("kept", type_1(1)) + bandwidth_profile("gone", type_1(2)));
  open(bandwidth_profile("gone", "", "delete") + bandwidth_profile("new", type_1(3)));
  load_profiles();
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count("kept"), 1U);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count("gone"), 0U);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count("new"), 1U);
}

TEST_F(BwModel, WithoutProfilesItIsEmpty) {
  running("");
  open();
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_TRUE(bandwidth_prof_to_bandwidth.empty());
}

TEST_F(BwModel, AnExistingNameKeepsItsFigures) {
  running(bandwidth_profile("bw", type_1(1000)));
  open();
  bandwidth_prof_to_bandwidth["bw"] = {7, 5, 0, 0};
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_EQ(figures(bandwidth_prof_to_bandwidth.at("bw")), (Figures{7, 5, 0, 0}));
}

TEST_F(BwModel, SixtyFourProfilesComeWithOneRequest) {
  running(bandwidth_profiles(1, 65));
  open();
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), 65U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 2U);
}

TEST_F(BwModel, AProfileWithoutTypeHidesTheRestOfItsBatch) {
  running(bandwidth_profiles(1, 2) + without_type(bw_name(3)) + bandwidth_profiles(4, 6));
  open();
  EXPECT_EQ(load_profiles(), -1);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), 2U);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count(bw_name(3)), 0U);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count(bw_name(4)), 0U);
}

TEST_F(BwModel, AProfileOfALaterBatchResetsTheResult) {
  running(without_type(bw_name(1)) + bandwidth_profiles(2, 65));
  open();
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), 1U);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.count(bw_name(65)), 1U);
}

TEST_F(BwModel, AProfileWithoutTypeAtTheEndIsTheResult) {
  running(bandwidth_profiles(1, 64) + without_type(bw_name(65)));
  open();
  EXPECT_EQ(load_profiles(), -1);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), 64U);
}

TEST_F(BwModel, EveryNameReadIsReleased) {
  running(bandwidth_profiles(1, 2) + without_type(bw_name(3)) + bandwidth_profiles(4, 65));
  ValidationSession& session = open();
  load_profiles();
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 65U);
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(BwModel, AFailedReaderEndsTheLoad) {
  running(bandwidth_profiles(1, 65));
  open();
  fail_call(PlatformCall::maapi_get_objects, 2);
  EXPECT_EQ(load_profiles(), 0);
  EXPECT_EQ(bandwidth_prof_to_bandwidth.size(), 64U);
}

TEST_F(BwModel, TheTraceShowsWhatIsLoaded) {
  running(bandwidth_profile("a", type_1(1)) + bandwidth_profile("b", type_2(2)) +
          bandwidth_profile("c", type_3(3, 4)) + bandwidth_profile("d", type_4(5)) +
          bandwidth_profile("e", type_5(6, 7, 8)) +
          line_profile("line", tcont(3, "a") + tcont(4, "unknown")) + line_profile("empty", ""));
  open();
  TraceCapture trace(TraceLevel::kDetail);
  load_line("line");
  std::vector<std::string> records;
  for (const std::string& record : trace.records()) records.push_back(level_and_text(record));
  EXPECT_EQ(records, (std::vector<std::string>{
                         "DETAIL BW name: a. type-1. fixed=1",
                         "DETAIL BW name: b. type-2. assured=2",
                         "DETAIL BW name: c. type-3. assured=3 max=4",
                         "DETAIL BW name: d. type-4. max=5",
                         "DETAIL BW name: e. type-5. fixed=6 assured=7 max=8",
                         "DETAIL Took N msecs to load all bandwidth profiles from ConfD",
                         "DETAIL Loading line empty",
                         "DETAIL Took N msecs to load all tconts from ConfD (err=0)",
                         "DETAIL Line empty has dynamic=0 static=0 TCONTs",
                         "DETAIL Loading line line",
                         "DETAIL tcont=3 bw=a",
                         "DETAIL BW found! BW name: a. fixed=1 total=1",
                         "DETAIL tcont=4 bw=unknown",
                         "FLOW BW NOT found! BW name: unknown. fixed=0 total=0",
                         "DETAIL Took N msecs to load all tconts from ConfD (err=-1)",
                         "DETAIL Line line has dynamic=1 static=1 TCONTs",
                         "DETAIL Took N msecs to load all line profiles from ConfD",
                     }));
}

TEST_F(BwModel, AnEmptyModelReportsItsTimesToo) {
  running("");
  open();
  TraceCapture trace(TraceLevel::kDetail);
  load_profiles();
  loadAllLines(sock(), tctx());
  ASSERT_EQ(trace.records().size(), 2U);
  EXPECT_TRUE(trace.has("loadAllBws src/validation/gpon_bw_limit.cpp:"));
  EXPECT_TRUE(trace.has("loadAllLines src/validation/gpon_bw_limit.cpp:"));
}

TEST_F(BwModel, OnlyAMissingProfileIsReportedAtTheFlowLevel) {
  running(bandwidth_profile("a", type_1(1)) +
          line_profile("line", tcont(3, "a") + tcont(4, "unknown")));
  open();
  TraceCapture trace(TraceLevel::kFlow);
  load_line("line");
  ASSERT_EQ(trace.records().size(), 1U);
  EXPECT_TRUE(trace.has("BW NOT found! BW name: unknown. fixed=0 total=0"));
}

// ---- One bandwidth profile

/// The 15 values of a profile; all types exist until they are removed.
class ProfileValues {
 public:
  ProfileValues() {
    for (confd_value_t& value : values_) {
      CONFD_SET_XMLTAG(&value, 1, 1);
    }
    CONFD_SET_BUF(values_.data(), reinterpret_cast<unsigned char*>(strdup("bw")), 2);
    for (const int position : {3, 5, 7, 8, 10, 12, 13, 14}) {
      CONFD_SET_UINT32(&values_.at(static_cast<std::size_t>(position)),
                       static_cast<std::uint32_t>(position * 100));
    }
  }
  ProfileValues(const ProfileValues&) = delete;
  ProfileValues& operator=(const ProfileValues&) = delete;
  ~ProfileValues() {
    if (!released_) confd_free_value(values_.data());
  }

  ProfileValues& without(const std::vector<std::size_t>& positions) {
    for (const std::size_t position : positions) {
      CONFD_SET_NOEXISTS(&values_.at(position));
    }
    return *this;
  }
  /// A value of a type that no position has.
  ProfileValues& spoil(std::size_t position) {
    CONFD_SET_BOOL(&values_.at(position), 1);
    return *this;
  }
  int load(std::string& name, std::uint32_t& fixed, std::uint32_t& total) {
    released_ = true;
    return loadBwProf(values_.data(), name, fixed, total);
  }
  int load() {
    std::string name;
    std::uint32_t fixed = 0;
    std::uint32_t total = 0;
    return load(name, fixed, total);
  }

 private:
  std::array<confd_value_t, 15> values_{};
  bool released_ = false;
};

TEST_F(BwModel, TheFirstTypePresentDecides) {
  struct Row {
    std::vector<std::size_t> absent;
    std::uint32_t fixed;
    std::uint32_t total;
  };
  const std::vector<Row> rows{
      {{}, 300, 300},
      {{3}, 0, 500},
      {{3, 5}, 0, 700},
      {{3, 5, 7, 8}, 0, 0},
      {{3, 5, 7, 8, 10}, 1200, 1300},
      {{5, 7, 8, 10, 12, 13, 14}, 300, 300},
  };
  for (const Row& row : rows) {
    std::string name;
    std::uint32_t fixed = 1;
    std::uint32_t total = 1;
    ProfileValues values;
    EXPECT_EQ(values.without(row.absent).load(name, fixed, total), 0);
    EXPECT_EQ(name, "bw");
    EXPECT_EQ(fixed, row.fixed) << row.absent.size();
    EXPECT_EQ(total, row.total) << row.absent.size();
  }
}

TEST_F(BwModel, AProfileWithoutTypeIsNotReducedButItsNameIsReleased) {
  std::string name;
  std::uint32_t fixed = 11;
  std::uint32_t total = 22;
  ProfileValues values;
  values.without({3, 5, 7, 8, 10, 12, 13, 14});
  EXPECT_EQ(values.load(name, fixed, total), -1);
  EXPECT_EQ(fixed, 11U);
  EXPECT_EQ(total, 22U);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
}

using BwModelDeathTest = BwModel;

TEST_F(BwModelDeathTest, AValueOfAnotherTypeIsImpossible) {
  struct Row {
    std::vector<std::size_t> absent;
    std::size_t spoiled;
    const char* assertion;
  };
  const std::vector<std::size_t> up_to_4{3, 5, 7, 8, 10};
  const std::vector<Row> rows{
      {{}, 0, R"(\(&values\[BW_CONFD_VAL_OFFSET_NAME\]\)->type == C_BUF)"},
      {{}, 3, R"(\(&values\[BW_CONFD_VAL_OFFSET_FX_T1\]\)->type == C_UINT32)"},
      {{3}, 5, R"(\(&values\[BW_CONFD_VAL_OFFSET_AS_T2\]\)->type == C_UINT32)"},
      {{3, 5}, 7, R"(\(&values\[BW_CONFD_VAL_OFFSET_AS_T3\]\)->type == C_UINT32)"},
      {{3, 5}, 8, R"(\(&values\[BW_CONFD_VAL_OFFSET_MX_T3\]\)->type == C_UINT32)"},
      {{3, 5, 7}, 10, R"(\(&values\[BW_CONFD_VAL_OFFSET_MX_T4\]\)->type == C_UINT32)"},
      {up_to_4, 12, R"(\(&values\[BW_CONFD_VAL_OFFSET_FX_T5\]\)->type == C_UINT32)"},
      {up_to_4, 13, R"(\(&values\[BW_CONFD_VAL_OFFSET_AS_T5\]\)->type == C_UINT32)"},
      {up_to_4, 14, R"(\(&values\[BW_CONFD_VAL_OFFSET_MX_T5\]\)->type == C_UINT32)"},
  };
  for (const Row& row : rows) {
    EXPECT_DEATH(ProfileValues().without(row.absent).spoil(row.spoiled).load(), row.assertion);
  }
}

// ---- Line profiles

TEST_F(BwModel, ALineProfileIsTheSumOfItsTconts) {
  struct Row {
    const char* line;
    std::string tconts;
    Figures figures;
  };
  const std::array<Row, 8> rows{{
      {"mixed", tcont(1, "fix") + tcont(2, "fix") + tcont(3, "assured"), {7000, 2000, 2, 1}},
      {"empty", "", {0, 0, 0, 0}},
      {"unknown", tcont(1, "none"), {0, 0, 0, 1}},
      {"beside", tcont(1, "none") + tcont(2, "fix"), {1000, 1000, 1, 1}},
      {"all-fixed-type-5", tcont(1, "five-fix"), {2000, 2000, 1, 0}},
      {"type-5", tcont(1, "five"), {2000, 1000, 0, 1}},
      {"best-effort", tcont(1, "four"), {0, 0, 0, 1}},
      {"nothing", tcont(1, "zero"), {0, 0, 0, 1}},
  }};
  std::string content =
      bandwidth_profile("fix", type_1(1000)) + bandwidth_profile("zero", type_1(0)) +
      bandwidth_profile("assured", type_3(5000, 9000)) + bandwidth_profile("four", type_4(9000)) +
      bandwidth_profile("five", type_5(1000, 2000, 3000)) +
      bandwidth_profile("five-fix", type_5(2000, 2000, 3000));
  for (const Row& row : rows) {
    content += line_profile(row.line, row.tconts);
  }
  running(content);
  open();
  load_line("mixed");
  EXPECT_EQ(line_prof_to_bandwidth.size(), rows.size());
  for (const Row& row : rows) {
    EXPECT_EQ(figures(line_prof_to_bandwidth.at(row.line)), row.figures) << row.line;
  }
}

TEST_F(BwModel, SumsWrapAt32Bits) {
  running(bandwidth_profile("half", type_2(2147483648)) +
          line_profile("line", tcont(1, "half") + tcont(2, "half")));
  open();
  EXPECT_EQ(load_line("line"), (Figures{0, 0, 0, 2}));
}

TEST_F(BwModel, AnUnknownProfileEndsTheReadingAfterItsBatch) {
  std::string tconts = tcont(1, "none");
  for (int id = 2; id <= 8; ++id) {
    tconts += tcont(id, "fix");
  }
  running(bandwidth_profile("fix", type_1(1000)) + line_profile("line", tconts));
  open();
  EXPECT_EQ(load_line("line"), (Figures{5000, 5000, 5, 1}));
}

TEST_F(BwModel, TheLoaderOfTcontsReportsUnknownProfiles) {
  running(bandwidth_profile("fix", type_1(1000)) + line_profile("good", tcont(1, "fix")) +
          line_profile("bad", tcont(1, "none")));
  open();
  load_profiles();
  struct Row {
    const char* line;
    int result;
  };
  for (const Row& row : {Row{"good", 0}, Row{"bad", -1}}) {
    bwctx ctx;
    const std::string path = std::string(kLineProfiles) + "{" + row.line + "}/tcont";
    EXPECT_EQ(loadAllTconts(sock(), tctx(), path, ctx), row.result) << row.line;
    EXPECT_EQ(ctx.err, row.result) << row.line;
  }
}

TEST_F(BwModel, SixTcontsComeWithOneRequest) {
  std::string tconts;
  for (int id = 1; id <= 7; ++id) {
    tconts += tcont(id, "fix");
  }
  running(bandwidth_profile("fix", type_1(1000)) + line_profile("line", tconts));
  open();
  load_profiles();
  const std::uint64_t before = calls(PlatformCall::maapi_get_objects);
  EXPECT_EQ(load_line("line"), (Figures{7000, 7000, 7, 0}));
  // One more for the bandwidth profiles, which load_line reads again.
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects) - before, 3U);
}

TEST_F(BwModel, ALineProfileKeepsTheFiguresThatItHas) {
  running(line_profile("line", tcont(1, "none")));
  open();
  line_prof_to_bandwidth["line"] = {7, 5, 3, 1};
  EXPECT_EQ(load_line("line"), (Figures{7, 5, 3, 1}));
}

TEST_F(BwModel, ANameIsNoFormat) {
  running(bandwidth_profile("100%d", type_1(1000)) + line_profile("50%s", tcont(1, "100%d")));
  open();
  EXPECT_EQ(load_line("50%s"), (Figures{1000, 1000, 1, 0}));
}

TEST_F(BwModel, EveryTcontAndCursorIsReleased) {
  running(bandwidth_profile("fix", type_1(1000)) +
          line_profile("line", tcont(1, "fix") + tcont(2, "none") + tcont(3, "fix")));
  ValidationSession& session = open();
  load_line("line");
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 4U);
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(BwModel, AnUnreadableListOfLineProfilesIsEmpty) {
  running(line_profile("line", ""));
  ValidationSession& session = open();
  fail_call(PlatformCall::maapi_init_cursor);
  EXPECT_EQ(loadAllLines(sock(), tctx()), 0);
  EXPECT_TRUE(line_prof_to_bandwidth.empty());
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(BwModel, UnreadableTcontsCountForNothing) {
  running(bandwidth_profile("fix", type_1(1000)) + line_profile("line", tcont(1, "fix")));
  open();
  fail_call(PlatformCall::maapi_get_objects, 2);  // the first reads the bandwidth profiles
  EXPECT_EQ(load_line("line"), (Figures{0, 0, 0, 0}));
}

TEST_F(BwModelDeathTest, AnotherNumberOfValuesInTheModelEndsTheProcess) {
  running("");
  open();
  bwctx ctx;
  fail_call(PlatformCall::confd_max_object_size);
  EXPECT_EXIT(load_profiles(), testing::ExitedWithCode(1),
              "\\[/config/profile/gpon/bandwidth-profile\\] object size \\(-1\\) differs from "
              "expected \\(15\\)\\.");
  EXPECT_EXIT(loadAllTconts(sock(), tctx(), std::string(kLineProfiles) + "{line}/tcont", ctx),
              testing::ExitedWithCode(1),
              "\\[/config/profile/gpon/line-profile\\{line\\}/tcont\\] object size \\(-1\\) "
              "differs from expected \\(2\\)\\.");
}

TEST_F(BwModelDeathTest, AListThatIsNoTcontsIsImpossible) {
  running(line_profile("line", gem(1)) +
          profiles(element("sip-agent-profile",
                           element("name", "sip") + element("proxy-server", "proxy"))));
  open();
  const auto load = [this](const std::string& path) {
    bwctx ctx;
    loadAllTconts(sock(), tctx(), path, ctx);
  };
  EXPECT_DEATH(load(std::string(kLineProfiles) + "{line}/gem"),
               "\\(&cur_val\\[TCONT_CONFD_VAL_OFFSET_BW\\]\\)->type == C_BUF");
  EXPECT_DEATH(load("/config/profile/gpon/sip-agent-profile"),
               "\\(&cur_val\\[TCONT_CONFD_VAL_OFFSET_ID\\]\\)->type == C_UINT32");
}

TEST_F(BwModel, TheTimesOfTheLoadsAreTracedInMilliseconds) {
  running(bandwidth_profile("bw", type_1(1)) + line_profile("l", tcont(1, "bw")));
  open();
  TraceCapture trace(TraceLevel::kDetail);
  constexpr int kPause = 20;
  const SlowCalls opening(PlatformCall::maapi_init_cursor, kPause);
  loadAllBws(sock(), tctx());
  loadAllLines(sock(), tctx());
  std::vector<long> took;
  for (const std::string& record : trace.records()) {
    const std::size_t at = record.find(" Took ");
    if (at != std::string::npos) took.push_back(std::atol(record.c_str() + at + 6));
  }
  ASSERT_EQ(took.size(), 3U) << "bandwidth profiles, the TCONTs of the line, lines";
  for (const long msecs : took) {
    EXPECT_GE(msecs, kPause);
    EXPECT_LT(msecs, kPause * 1000) << "these are microseconds";
  }
}

}  // namespace
}  // namespace tarnd::test
