#include "netconf/forked_replies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tarnd::netconf {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Clock = ForkedReplies::Clock;

constexpr ReplyLimits kPatient{std::chrono::hours{1}, std::size_t{256} << 20};
constexpr std::size_t kMebibyte = std::size_t{1} << 20;

Reply sleep_long() {
  for (;;) pause();
}

void wait(const ForkedReplies& replies) {
  std::vector<pollfd> polled;
  replies.add_to(polled);
  poll(polled.data(), polled.size(), 10);
}

// What comes until there are so many.
std::map<SessionId, ForkedReplies::Done> next(ForkedReplies& replies, std::size_t number) {
  std::map<SessionId, ForkedReplies::Done> all;
  while (all.size() < number) {
    for (auto& done : replies.proceed(Clock::now())) all.emplace(done.session, std::move(done));
    wait(replies);
  }
  return all;
}

bool has_no_children() {
  return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
}

TEST(ForkedRepliesTest, AReplyComesAsItWasMade) {
  ForkedReplies replies(kPatient);
  const std::string text(3 * kMebibyte, 'x');
  replies.begin(7, [&text] { return Reply{text, 2, "it failed"}; });
  const auto done = next(replies, 1);
  EXPECT_TRUE(done.at(7).reply.content == text);
  EXPECT_EQ(done.at(7).reply.errors, 2U);
  EXPECT_EQ(done.at(7).reply.failure, "it failed");
  EXPECT_EQ(done.at(7).given_up, "");
}

TEST(ForkedRepliesTest, AReplyMayBeEmpty) {
  ForkedReplies replies(kPatient);
  replies.begin(7, [] { return Reply{}; });
  const auto done = next(replies, 1);
  EXPECT_EQ(done.at(7).reply.content, "");
  EXPECT_EQ(done.at(7).given_up, "");
}

TEST(ForkedRepliesTest, WhatMakesAReplyChangesNothingHere) {
  ForkedReplies replies(kPatient);
  int changed = 0;
  replies.begin(1, [&changed] { return Reply{std::to_string(++changed), 0, {}}; });
  EXPECT_EQ(next(replies, 1).at(1).reply.content, "1");
  EXPECT_EQ(changed, 0);
}

TEST(ForkedRepliesTest, ManyAreMadeAfterOneAnother) {
  ForkedReplies replies(kPatient);
  for (SessionId id = 1; id <= 20; ++id) {
    replies.begin(id, [id] { return Reply{std::to_string(id), 0, {}}; });
  }
  const auto done = next(replies, 20);
  for (SessionId id = 1; id <= 20; ++id) EXPECT_EQ(done.at(id).reply.content, std::to_string(id));
}

void expect_error(const ReplyLimits& limits, const MakeReply& make, const char* why) {
  ForkedReplies replies(limits);
  replies.begin(3, make);
  const auto done = next(replies, 1);
  ASSERT_EQ(done.at(3).reply.errors, 1U);
  EXPECT_THAT(done.at(3).reply.content, HasSubstr("<error-tag>resource-denied</error-tag>"));
  EXPECT_THAT(done.at(3).reply.content, HasSubstr(why));
  EXPECT_THAT(done.at(3).given_up, HasSubstr(why));
}

TEST(ForkedRepliesTest, AnErrorTellsWhyThereIsNoReply) {
  struct Row {
    const char* name;
    ReplyLimits limits;
    MakeReply make;
    const char* why;
  };
  const std::vector<Row> rows{
      Row{"too long", {std::chrono::seconds{1}, 256 * kMebibyte}, &sleep_long, "longer"},
      Row{"its process ends", kPatient, []() -> Reply { _exit(0); }, "memory"},
      Row{"an exception", kPatient, []() -> Reply { throw std::runtime_error(""); }, "memory"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    expect_error(row.limits, row.make, row.why);
  }
}

TEST(ForkedRepliesTest, AReplyThatTakesTooMuchMemoryIsAnError) {
  expect_error(
      {std::chrono::hours{1}, 64 * kMebibyte},
      [] {
        return Reply{std::string(640 * kMebibyte, 'x'), 0, {}};
      },
      "memory");
}

TEST(ForkedRepliesTest, OneThatIsCancelledMakesRoomAndItsProcessEnds) {
  ForkedReplies replies(kPatient);
  for (SessionId id = 1; id <= 8; ++id) replies.begin(id, &sleep_long);
  replies.begin(9, [] { return Reply{"nine", 0, {}}; });
  EXPECT_THAT(replies.proceed(Clock::now()), IsEmpty());
  for (SessionId id = 1; id <= 8; ++id) replies.cancel(id);
  EXPECT_EQ(next(replies, 1).at(9).reply.content, "nine");
  while (!has_no_children()) replies.proceed(Clock::now());
}

TEST(ForkedRepliesTest, ProcessesEndWithTheirOwner) {
  {
    ForkedReplies replies(kPatient);
    replies.begin(1, &sleep_long);
    replies.proceed(Clock::now());
    std::vector<pollfd> polled;
    replies.add_to(polled);
    EXPECT_THAT(polled, SizeIs(1));
  }
  EXPECT_TRUE(has_no_children());
}

TEST(ForkedRepliesTest, ItsDeadlineIsThatOfTheFirst) {
  ForkedReplies replies(kPatient);
  EXPECT_EQ(replies.deadline(), Clock::time_point::max());
  const auto now = Clock::now();
  replies.begin(1, &sleep_long);
  replies.proceed(now);
  replies.begin(2, &sleep_long);
  replies.proceed(now + std::chrono::seconds{5});
  EXPECT_EQ(replies.deadline(), now + kPatient.time);
}

}  // namespace
}  // namespace tarnd::netconf
