#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "gpon_capabilities.h"
#include "gpon_card_valid.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"

namespace tarnd::test {
namespace {

constexpr const char* kFmInitFailed =
    "Cannot initialize tarnd confd validation lib. Error in fm_init\n";
constexpr const char* kFmLocalSlotFailed =
    "Cannot initialize tarnd confd validation lib. Error in fm_local_slot\n";

struct Values {
  bool do_bw_check;
  std::uint32_t onus_per_link, links, manageable_links, dynamic_tconts, static_tconts;

  bool operator==(const Values&) const = default;
};

Values values() {
  return {get_do_bw_check(),           get_num_onus_per_ponlink(),
          get_num_ponlinks(),          get_num_manageable_ponlinks(),
          valid::max_dynamic_tconts(), valid::max_static_tconts()};
}

constexpr Values kCompiledIn = {true, 128, 8, 8, 3, 3};

/// The values as they stood when the process began; `act` runs first.
template <typename Act>
[[noreturn]] void exit_zero_when_compiled_in_after(Act act) {
  act();
  std::exit(values() == kCompiledIn ? 0 : 2);
}

/// A fresh process: the death test runs its statement in one where no other test ran.
class BeforeLibInit : public ::testing::Test {
 protected:
  BeforeLibInit() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

using BeforeLibInitDeathTest = BeforeLibInit;

TEST_F(BeforeLibInitDeathTest, TheCompiledInValuesHold) {
  EXPECT_EXIT(exit_zero_when_compiled_in_after([] {}), testing::ExitedWithCode(0), "");
}

TEST_F(BeforeLibInitDeathTest, AFailedFmInitChangesNothing) {
  EXPECT_EXIT(exit_zero_when_compiled_in_after([] {
                CardDescription card;
                card.bw_check = false;
                card.onus_per_link = 64;
                card.manageable_links = 2;
                card.init_fails = true;
                insert_card(card);
                if (lib_init() != -1) std::exit(3);
              }),
              testing::ExitedWithCode(0), kFmInitFailed);
}

TEST_F(BeforeLibInitDeathTest, AFailedFmLocalSlotChangesNothing) {
  EXPECT_EXIT(exit_zero_when_compiled_in_after([] {
                CardDescription card;
                card.bw_check = false;
                card.onus_per_link = 64;
                card.manageable_links = 2;
                card.local_slot_fails = true;
                insert_card(card);
                if (lib_init() != -1) std::exit(3);
              }),
              testing::ExitedWithCode(0), kFmLocalSlotFailed);
}

struct Initialised {
  const char* name;
  CardDescription card;
  Values values;
};

void PrintTo(const Initialised& row, std::ostream* out) {
  *out << row.name;
}

TEST(BoardCounts, AreAskedForWithZero) {
  const InPlace in_place;
  insert_card(CardDescription::standard());
  InPlace::onus_of_board = [](std::uint32_t argument) { return 100 + argument; };
  InPlace::links_of_board = [](std::uint32_t argument) { return 200 + argument; };
  EXPECT_EQ(lib_init(), 0);
  EXPECT_EQ(get_num_onus_per_ponlink(), 100U);
  EXPECT_EQ(get_num_ponlinks(), 200U);
}

class LibInit : public ::testing::TestWithParam<Initialised> {};

TEST_P(LibInit, UsesWhatTheCardDefines) {
  insert_card(GetParam().card);
  testing::internal::CaptureStderr();
  EXPECT_EQ(lib_init(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const Values got = values();
  const Values& expected = GetParam().values;
  EXPECT_EQ(got.do_bw_check, expected.do_bw_check);
  EXPECT_EQ(got.onus_per_link, expected.onus_per_link);
  EXPECT_EQ(got.links, expected.links);
  EXPECT_EQ(got.manageable_links, expected.manageable_links);
  EXPECT_EQ(got.dynamic_tconts, expected.dynamic_tconts);
  EXPECT_EQ(got.static_tconts, expected.static_tconts);
}

CardDescription card(std::optional<bool> bw_check, std::optional<std::uint32_t> onus_per_link,
                     std::optional<std::uint32_t> pon_links,
                     std::optional<std::uint32_t> manageable_links) {
  CardDescription card;
  card.bw_check = bw_check;
  card.onus_per_link = onus_per_link;
  card.pon_links = pon_links;
  card.manageable_links = manageable_links;
  return card;
}

INSTANTIATE_TEST_SUITE_P(
    Cards, LibInit,
    ::testing::Values(
        // The check is on, and no compiled-in count is left.
        Initialised{"NothingDefined", card({}, {}, {}, {}), {true, 0, 0, 0, 3, 3}},
        Initialised{"AllDefined", card(true, 128, 16, 12), {true, 128, 16, 12, 3, 3}},
        Initialised{"WithoutBandwidthCheck", card(false, 64, 16, 12), {false, 64, 16, 12, 4, 3}},
        // Then all links are manageable.
        Initialised{"NoManageableLinks", card(true, 128, 16, {}), {true, 128, 16, 16, 3, 3}},
        Initialised{"OnlyManageableLinks", card(true, {}, {}, 4), {true, 0, 0, 4, 3, 3}},
        Initialised{"LargestCounts",
                    card(true, 4294967295U, 4294967295U, 0),
                    {true, 4294967295U, 4294967295U, 0, 3, 3}}),
    [](const auto& tested) { return tested.param.name; });

TEST(LibInitAgain, ReplacesTheValuesOfTheCardBefore) {
  insert_card(card(false, 64, 16, 12));
  ASSERT_EQ(lib_init(), 0);
  insert_card(card({}, {}, {}, {}));
  ASSERT_EQ(lib_init(), 0);
  EXPECT_EQ(values(), (Values{true, 0, 0, 0, 3, 3}));
}

TEST(LibInitAgain, KeepsTheValuesWhenThePlatformFails) {
  insert_card(card(false, 64, 16, 12));
  ASSERT_EQ(lib_init(), 0);
  CardDescription broken = card(true, 1, 1, 1);
  broken.init_fails = true;
  insert_card(broken);
  testing::internal::CaptureStderr();
  EXPECT_EQ(lib_init(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), kFmInitFailed);
  EXPECT_EQ(values(), (Values{false, 64, 16, 12, 4, 3}));

  broken.init_fails = false;
  broken.local_slot_fails = true;
  insert_card(broken);
  testing::internal::CaptureStderr();
  EXPECT_EQ(lib_init(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), kFmLocalSlotFailed);
  EXPECT_EQ(values(), (Values{false, 64, 16, 12, 4, 3}));
}

std::vector<std::string> calls_of_lib_init(const CardDescription& card) {
  insert_card(card);
  testing::internal::CaptureStderr();
  const RecordedCalls recorded;
  lib_init();
  testing::internal::GetCapturedStderr();
  return recorded.names();
}

TEST(LibInitAgain, AsksThePlatformInItsOrderAndNoMoreAfterAFailure) {
  using Names = std::vector<std::string>;
  CardDescription description = card(true, 128, 16, 12);
  EXPECT_EQ(calls_of_lib_init(description),
            (Names{"fm_init", "fm_local_slot", "fm_scalar_card_tarnd_do_bw_check",
                   "fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board",
                   "fm_oper_card_tarnd_get_max_num_ponlink_from_board",
                   "fm_scalar_card_tarnd_manageable_pon_links"}));

  description.local_slot_fails = true;
  EXPECT_EQ(calls_of_lib_init(description), (Names{"fm_init", "fm_local_slot"}));

  description.init_fails = true;
  EXPECT_EQ(calls_of_lib_init(description), Names{"fm_init"});
}

TEST(Accessors, GiveBackWhatWasSet) {
  set_num_onus_per_ponlink(7);
  set_num_ponlinks(8);
  set_num_manageable_ponlinks(9);
  EXPECT_EQ(get_num_onus_per_ponlink(), 7U);
  EXPECT_EQ(get_num_ponlinks(), 8U);
  EXPECT_EQ(get_num_manageable_ponlinks(), 9U);
}

TEST(Accessors, TheTcontLimitsFollowTheBandwidthCheck) {
  set_do_bw_check(false);
  EXPECT_FALSE(get_do_bw_check());
  EXPECT_EQ(valid::max_dynamic_tconts(), 4U);
  EXPECT_EQ(valid::max_static_tconts(), 3U);
  set_do_bw_check(true);
  EXPECT_TRUE(get_do_bw_check());
  EXPECT_EQ(valid::max_dynamic_tconts(), 3U);
  EXPECT_EQ(valid::max_static_tconts(), 3U);
}

class TcontLimits : public CardFixture {
 protected:
  /// Asks for a line profile with so many TCONTs of traffic type 4 and of type 1.
  Verdict verdict(int dynamic_tconts, int static_tconts) {
    std::string tconts;
    for (int id = 1; id <= dynamic_tconts + static_tconts; ++id) {
      tconts += tcont(id, id <= dynamic_tconts ? "dynamic" : "static");
    }
    running(bandwidth_profile("dynamic", element("type-4", element("maximum", "1"))) +
            bandwidth_profile("static", element("type-1", element("fixed", "1"))) +
            line_profile("line", tconts));
    return request("ponlink_bw_check", "/config/profile/gpon/line-profile").result;
  }
};

TEST_F(TcontLimits, WithTheBandwidthCheckThreeAndThree) {
  set_do_bw_check(true);
  EXPECT_EQ(verdict(3, 3), Verdict::kOk);
  EXPECT_EQ(verdict(4, 3), Verdict::kError);
  EXPECT_EQ(verdict(3, 4), Verdict::kError);
}

TEST_F(TcontLimits, WithoutTheBandwidthCheckFourDynamicAndThreeStatic) {
  set_do_bw_check(false);
  EXPECT_EQ(verdict(4, 3), Verdict::kOk);
  EXPECT_EQ(verdict(5, 3), Verdict::kError);
  EXPECT_EQ(verdict(4, 4), Verdict::kError);
}

}  // namespace
}  // namespace tarnd::test
