#include "match_overlap_validation.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace tarnd::test {
namespace {

constexpr std::int32_t kAnyVlan = -1;

struct Claim {
  fm_port_type type = FM_PORT_TYPE_GPON;
  std::string interface_name = "1 1 1";
  std::uint32_t onu = 1;
  std::uint32_t gem = 1;
  std::int32_t vlan = kAnyVlan;
};

class MatchOverlap : public ::testing::Test {
 protected:
  /// The message if the claim collides, or else an empty one.
  std::string claimed_by(std::uint32_t sp, const Claim& claim) {
    std::string message = "untouched";
    const bool overlaps = matches_.ServicePortMatchOverlaps(
        sp, message, claim.type, claim.interface_name, claim.onu, claim.gem, claim.vlan);
    if (!overlaps) {
      EXPECT_EQ(message, "untouched");
      return "";
    }
    return message;
  }

 private:
  MatchOverlapValidation matches_;
};

TEST_F(MatchOverlap, ClaimsThatDifferInOneValueDoNotConflict) {
  EXPECT_EQ(claimed_by(1, {}), "");
  EXPECT_EQ(claimed_by(2, {FM_PORT_TYPE_XGSPON}), "");
  EXPECT_EQ(claimed_by(3, {FM_PORT_TYPE_GPON, "1 1 2"}), "");
  EXPECT_EQ(claimed_by(4, {FM_PORT_TYPE_GPON, "1 1 1", 2}), "");
  EXPECT_EQ(claimed_by(5, {FM_PORT_TYPE_GPON, "1 1 1", 1, 2}), "");
  EXPECT_EQ(claimed_by(6, {FM_PORT_TYPE_GPON, "1 1 1", 1, 1, 10}), "");
  EXPECT_EQ(claimed_by(7, {FM_PORT_TYPE_GPON, "1 1 1", 1, 1, 11}), "");
}

TEST_F(MatchOverlap, TwoWithoutAMatchVlanConflict) {
  EXPECT_EQ(claimed_by(4294967295U, {}), "");
  EXPECT_EQ(claimed_by(2, {}), "Service-port 4294967295 and 2 have conflicting matches.");
}

TEST_F(MatchOverlap, TwoWithTheSameMatchVlanConflict) {
  const Claim claim{FM_PORT_TYPE_XGSPON, "1 1 16", 128, 4000, 10};
  EXPECT_EQ(claimed_by(7, claim), "");
  EXPECT_EQ(claimed_by(8, claim), "Service-port 7 and 8 have conflicting matches.");
}

TEST_F(MatchOverlap, TheThirdConflictsWithTheFirstToo) {
  EXPECT_EQ(claimed_by(1, {}), "");
  EXPECT_EQ(claimed_by(2, {}), "Service-port 1 and 2 have conflicting matches.");
  EXPECT_EQ(claimed_by(3, {}), "Service-port 1 and 3 have conflicting matches.");
}

TEST_F(MatchOverlap, NumbersThatShareAHashAreDistinguished) {
  EXPECT_EQ(claimed_by(1, {FM_PORT_TYPE_GPON, "1 1 1", 1, 2}), "");
  EXPECT_EQ(claimed_by(2, {FM_PORT_TYPE_GPON, "1 1 1", 2, 1}), "");
}

TEST_F(MatchOverlap, ANewTableKnowsNoClaims) {
  EXPECT_EQ(claimed_by(1, {}), "");
  MatchOverlapValidation other;
  std::string message;
  EXPECT_FALSE(
      other.ServicePortMatchOverlaps(2, message, FM_PORT_TYPE_GPON, "1 1 1", 1, 1, kAnyVlan));
}

using Key = MatchOverlapValidation::key;

TEST(MatchOverlapKey, TheHashMixesTheNumbersIntoTheNamesHash) {
  const std::size_t name = std::hash<std::string>()("1 1 1");
  constexpr std::uint32_t kNone = 0xffffffffU;
  const MatchOverlapValidation::key_hash hash;
  EXPECT_EQ(hash(Key("1 1 1", 0, 0, 0, 0)), name);
  EXPECT_EQ(hash(Key("1 1 1", 7, 1, 2, 8)), name ^ (7U ^ 1U ^ 2U ^ 8U));
  EXPECT_EQ(hash(Key("1 1 1", 0, 0, 0, kNone)), name ^ std::size_t{kNone});
  EXPECT_EQ(hash(Key("1 1 1", 0, 1, 2, 3)), hash(Key("1 1 1", 0, 3, 1, 2)));
}

TEST(MatchOverlapKey, KeysAreEqualInAllFiveValues) {
  const Key key("1 1 1", 0, 1, 2, 3);
  const MatchOverlapValidation::key_equal equal;
  EXPECT_TRUE(equal(key, Key("1 1 1", 0, 1, 2, 3)));
  EXPECT_FALSE(equal(key, Key("1 1", 0, 1, 2, 3)));
  EXPECT_FALSE(equal(key, Key("1 1 1", 7, 1, 2, 3)));
  EXPECT_FALSE(equal(key, Key("1 1 1", 0, 2, 2, 3)));
  EXPECT_FALSE(equal(key, Key("1 1 1", 0, 1, 1, 3)));
  EXPECT_FALSE(equal(key, Key("1 1 1", 0, 1, 2, 4)));
}

}  // namespace
}  // namespace tarnd::test
