#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <type_traits>

#include "cl_elapsed_time.h"
#include "gpon_vald_trace_itf.h"
#include "standalone/platform_calls.h"
#include "tests/support/trace_capture.h"
#include "validation_guards.h"

namespace tarnd::test {
namespace {

constexpr const char* kTraceSource = " src/validation/gpon_vald_trace_itf.cpp:";

std::uint64_t registrations() {
  return platform_call_counts().at(
      static_cast<std::size_t>(PlatformCall::qzmw_trace_register_category));
}

class Trace : public ::testing::Test {
 protected:
  ~Trace() override {
    set_call_hook({});
    clear_trace_cat();
  }

  static void refuse_registration() {
    set_call_hook(
        [](PlatformCall call) { return call != PlatformCall::qzmw_trace_register_category; });
  }
};

TEST_F(Trace, TheCategoryIsRegisteredOnce) {
  clear_trace_cat();
  const std::uint64_t before = registrations();
  zlog_category_t* const category = get_trace_cat();
  EXPECT_NE(category, nullptr);
  EXPECT_EQ(category, zlog_get_category("gpon-valid"));
  EXPECT_EQ(get_trace_cat(), category);
  EXPECT_EQ(registrations(), before + 1);
}

TEST_F(Trace, AClearedCategoryIsRegisteredAgain) {
  get_trace_cat();
  clear_trace_cat();
  const std::uint64_t before = registrations();
  EXPECT_EQ(get_trace_cat(), zlog_get_category("gpon-valid"));
  EXPECT_EQ(registrations(), before + 1);
}

TEST_F(Trace, WithoutACategoryNothingIsWrittenAndTheNextCallAsksAgain) {
  TraceCapture trace(TraceLevel::kDetail);
  clear_trace_cat();
  refuse_registration();
  const std::uint64_t before = registrations();
  EXPECT_EQ(get_trace_cat(), nullptr);
  EXPECT_EQ(get_trace_cat(), nullptr);
  EXPECT_EQ(registrations(), before + 2);
  EXPECT_FALSE(valid::trace_enabled(kTraceFlow));
  trace_validation_begin("refused");
  trace_validation_end("refused", 0, 1);
  VALID_TRACE(kTraceFlow, "%s", "refused");
  VALID_TRACE_IF(kTraceFlow, "%s", "refused");

  set_call_hook({});
  trace_validation_begin("granted");
  EXPECT_FALSE(trace.has("refused"));
  EXPECT_TRUE(trace.has("granted begin"));
}

TEST_F(Trace, TheBeginRecordNamesTheValidation) {
  TraceCapture trace(TraceLevel::kFlow);
  trace_validation_begin("validate_it");
  ASSERT_EQ(trace.records().size(), 1U);
  const std::string& record = trace.records().front();
  EXPECT_TRUE(record.starts_with(std::string("FLOW trace_validation_begin") + kTraceSource))
      << record;
  EXPECT_TRUE(record.ends_with(" validate_it begin")) << record;
}

TEST_F(Trace, TheEndRecordNamesTheResult) {
  struct Row {
    int result;
    unsigned int msecs;
    const char* text;
  };
  const std::array<Row, 6> rows{{
      {-1, 0, " validate_it end - ERROR - elapsed time 0 msecs."},
      {0, 12, " validate_it end - OK - elapsed time 12 msecs."},
      {-3, 1, " validate_it end - WARNING - elapsed time 1 msecs."},
      {5, 7, " validate_it end - UNKNOWN - elapsed time 7 msecs."},
      {-2, 7, " validate_it end - UNKNOWN - elapsed time 7 msecs."},
      {0, 4294967295U, " validate_it end - OK - elapsed time -1 msecs."},
  }};
  for (const Row& row : rows) {
    TraceCapture trace(TraceLevel::kFlow);
    trace_validation_end("validate_it", row.result, row.msecs);
    ASSERT_EQ(trace.records().size(), 1U) << row.text;
    const std::string& record = trace.records().front();
    EXPECT_TRUE(record.starts_with(std::string("FLOW trace_validation_end") + kTraceSource))
        << record;
    EXPECT_TRUE(record.ends_with(row.text)) << record;
  }
}

TEST_F(Trace, ARecordHasTheLevelFunctionAndSourceOfItsWriter) {
  TraceCapture trace(TraceLevel::kDetail);
  VALID_TRACE(kTraceDetail, "%s %d", "seen", 1);
  const int line = __LINE__ - 1;
  VALID_TRACE(kTraceEntry, "entry");
  VALID_TRACE_IF(kTraceFlow, "%u%%", 7U);
  const std::string place =
      " TestBody tests/unit/frame_trace_test.cpp:" + std::to_string(line) + " ";
  ASSERT_EQ(trace.records().size(), 3U);
  EXPECT_EQ(trace.records()[0], "DETAIL" + place + "seen 1");
  EXPECT_TRUE(trace.records()[1].starts_with("ENTRY TestBody ")) << trace.records()[1];
  EXPECT_TRUE(trace.records()[2].ends_with(" 7%")) << trace.records()[2];
}

TEST_F(Trace, TheCustomLevelsAreOrdered) {
  struct Row {
    TraceLevel level;
    bool detail, entry, flow;
  };
  const std::array<Row, 4> rows{{{TraceLevel::kOff, false, false, false},
                                 {TraceLevel::kFlow, false, false, true},
                                 {TraceLevel::kEntry, false, true, true},
                                 {TraceLevel::kDetail, true, true, true}}};
  for (const Row& row : rows) {
    TraceCapture trace(row.level);
    EXPECT_EQ(valid::trace_enabled(kTraceDetail), row.detail);
    EXPECT_EQ(valid::trace_enabled(kTraceEntry), row.entry);
    EXPECT_EQ(valid::trace_enabled(kTraceFlow), row.flow);
  }
}

TEST_F(Trace, GuardedArgumentsAreEvaluatedOnlyForAnEnabledLevel) {
  int evaluated = 0;
  const auto costly = [&evaluated] { return ++evaluated; };
  TraceCapture trace(TraceLevel::kFlow);
  VALID_TRACE_IF(kTraceDetail, "%d", costly());
  EXPECT_EQ(evaluated, 0);
  VALID_TRACE_IF(kTraceFlow, "%d", costly());
  EXPECT_EQ(evaluated, 1);
}

TEST_F(Trace, TheBracketWritesBothRecordsAndReturnsTheResult) {
  TraceCapture trace(TraceLevel::kFlow);
  const auto validator = [] {
    const valid::ValidationTrace bracket("validate_it");
    return bracket.end(-3);
  };
  EXPECT_EQ(validator(), -3);
  ASSERT_EQ(trace.records().size(), 2U);
  EXPECT_TRUE(trace.records()[0].ends_with(" validate_it begin"));
  EXPECT_NE(trace.records()[1].find(" validate_it end - WARNING - elapsed time "),
            std::string::npos);
}

/// A stopwatch with these readings, start and stop time.
cl_ElapsedTime stopwatch(std::int64_t start, std::int64_t stop) {
  static_assert(std::is_standard_layout_v<cl_ElapsedTime>);
  return std::bit_cast<cl_ElapsedTime>(std::array<std::int64_t, 2>{start, stop});
}

TEST(Stopwatch, CountsWholeUnits) {
  const cl_ElapsedTime watch = stopwatch(5'000, 1'999'999'999 + 5'000);
  EXPECT_EQ(watch.get_elapsed_time_sec(), 1);
  EXPECT_EQ(watch.get_elapsed_time_msec(), 1'999);
  EXPECT_EQ(watch.get_elapsed_time_usec(), 1'999'999);
  EXPECT_EQ(watch.get_stop_time(), 1'999'999'999 + 5'000);
}

TEST(Stopwatch, TruncatesTowardZero) {
  EXPECT_EQ(stopwatch(1'500, 1).get_elapsed_time_usec(), -1);
  EXPECT_EQ(stopwatch(0, 999'999'999).get_elapsed_time_sec(), 0);
}

TEST(Stopwatch, RunsFromTheBeginning) {
  const cl_ElapsedTime watch;
  const std::int64_t first = watch.get_stop_time();
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  // cppcheck-suppress knownConditionTrueFalse ; time goes on
  EXPECT_GT(watch.get_stop_time(), first);
  EXPECT_GE(watch.get_elapsed_time_msec(), 2);
  EXPECT_LT(watch.get_elapsed_time_sec(), 1'000);
}

TEST(Stopwatch, AStoppedOneKeepsItsTime) {
  cl_ElapsedTime watch;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const std::int64_t stopped = watch.stop();
  const std::int64_t elapsed = watch.get_elapsed_time_usec();
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  EXPECT_EQ(watch.get_stop_time(), stopped);
  // cppcheck-suppress knownConditionTrueFalse ; time goes on
  EXPECT_EQ(watch.get_elapsed_time_usec(), elapsed);
  EXPECT_GE(elapsed, 1'000);
}

TEST(Stopwatch, StartsAgain) {
  cl_ElapsedTime watch;
  watch.stop();
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  const std::int64_t restarted = watch.start();
  EXPECT_GE(watch.get_stop_time(), restarted);
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const std::int64_t stopped = watch.stop();
  EXPECT_EQ(watch.get_elapsed_time_usec(), (stopped - restarted) / 1'000);
}

}  // namespace
}  // namespace tarnd::test
