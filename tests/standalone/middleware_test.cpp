#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlog.h>

#include <string>

#include "middleware/logger.h"
#include "middleware/qzmw.h"
#include "standalone/middleware/trace.h"
#include "standalone/platform_calls.h"

namespace tarnd {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

constexpr int kDetail = 10;
constexpr int kEntry = 11;
constexpr int kFlow = 12;

// What a validator writes: a record at each of its three levels.
void write_records(zlog_category_t* category) {
  const std::string source = "src/validation/some_source";
  const std::string function = "some_function";
  for (const int level : {kDetail, kEntry, kFlow}) {
    zlog(category, source.data(), source.size(), function.data(), function.size(), 77, level,
         "record at %d", level);
  }
}

class TraceTest : public ::testing::Test {
 protected:
  ~TraceTest() override {
    set_call_hook({});
    start_trace(TraceLevel::kOff);
  }

  std::string written_at(TraceLevel level) {
    start_trace(level);
    CaptureStderr();
    write_records(category_);
    return GetCapturedStderr();
  }

  zlog_category_t* category_ = qzmw_trace_register_category("gpon-valid");
};

TEST_F(TraceTest, NothingIsWrittenWhileItIsOff) {
  ASSERT_NE(category_, nullptr);
  EXPECT_THAT(written_at(TraceLevel::kOff), IsEmpty());
  for (const int level : {kDetail, kEntry, kFlow}) {
    EXPECT_EQ(zlog_level_enabled(category_, level), 0) << level;
  }
}

TEST_F(TraceTest, EachLevelIncludesTheOnesBeforeIt) {
  EXPECT_EQ(written_at(TraceLevel::kFlow),
            "FLOW some_function src/validation/some_source:77 record at 12\n");
  EXPECT_EQ(written_at(TraceLevel::kEntry),
            "ENTRY some_function src/validation/some_source:77 record at 11\n"
            "FLOW some_function src/validation/some_source:77 record at 12\n");
  EXPECT_EQ(written_at(TraceLevel::kDetail),
            "DETAIL some_function src/validation/some_source:77 record at 10\n"
            "ENTRY some_function src/validation/some_source:77 record at 11\n"
            "FLOW some_function src/validation/some_source:77 record at 12\n");
}

TEST_F(TraceTest, ACategoryThatWasRegisteredBeforeFollows) {
  EXPECT_THAT(written_at(TraceLevel::kOff), IsEmpty());
  EXPECT_THAT(written_at(TraceLevel::kFlow), StartsWith("FLOW "));
  EXPECT_THAT(written_at(TraceLevel::kOff), IsEmpty());
}

TEST_F(TraceTest, OneNameIsOneCategory) {
  EXPECT_EQ(qzmw_trace_register_category("gpon-valid"), category_);
  EXPECT_NE(qzmw_trace_register_category("another"), category_);
}

TEST_F(TraceTest, AServiceThatDoesNotAnswerReturnsNoCategory) {
  set_call_hook(
      [](PlatformCall call) { return call != PlatformCall::qzmw_trace_register_category; });
  EXPECT_EQ(qzmw_trace_register_category("gpon-valid"), nullptr);
}

TEST_F(TraceTest, TheDebugLogBelongsToTheDetails) {
  const struct {
    TraceLevel level;
    bool written;
  } cases[] = {{TraceLevel::kOff, false},
               {TraceLevel::kFlow, false},
               {TraceLevel::kEntry, false},
               {TraceLevel::kDetail, true}};
  for (const auto& [level, written] : cases) {
    start_trace(level);
    CaptureStderr();
    Logger::Debug("100%s of it\n");
    EXPECT_EQ(GetCapturedStderr().find("100%s of it") != std::string::npos, written);
  }
}

TEST(Faults, AreWrittenWithKindModulePlaceAndText) {
  CaptureStderr();
  qzmw_gen_fault(1, "SomeModule", "src/validation/some_source", 42, "the size is 5%");
  EXPECT_EQ(GetCapturedStderr(),
            "Fault 1 raised by SomeModule at src/validation/some_source:42: the size is 5%\n");
}

TEST(Faults, ABacktraceNamesTheCaller) {
  CaptureStderr();
  qzmw_print_backtrace();
  const std::string written = GetCapturedStderr();
  EXPECT_THAT(written, StartsWith("Backtrace:\n"));
  EXPECT_THAT(written, HasSubstr("qzmw_print_backtrace"));
}

TEST(PlatformCalls, EachOfTheMiddlewareIsCountedOnce) {
  const CallCounts before = platform_call_counts();
  CaptureStderr();
  qzmw_print_backtrace();
  qzmw_gen_fault(2, "m", "f", 1, "t");
  Logger::Debug("text");
  qzmw_trace_register_category("gpon-valid");
  GetCapturedStderr();
  for (const PlatformCall call :
       {PlatformCall::qzmw_print_backtrace, PlatformCall::qzmw_gen_fault,
        PlatformCall::Logger_Debug, PlatformCall::qzmw_trace_register_category}) {
    const auto index = static_cast<std::size_t>(call);
    EXPECT_EQ(platform_call_counts().at(index) - before.at(index), 1U) << to_string(call);
  }
}

}  // namespace
}  // namespace tarnd
