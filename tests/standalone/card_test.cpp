#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "card/fm_card.h"
#include "card/limid.h"
#include "standalone/card/card_file.h"
#include "standalone/platform_calls.h"
#include "standalone/store/schema.h"

namespace tarnd {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class CardFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = ::testing::TempDir() + "card-XXXXXX";
    const int descriptor = mkstemp(name.data());
    ASSERT_EQ(close(descriptor), 0);
    file_ = name;
  }
  void TearDown() override { std::filesystem::remove(file_); }

  CardDescription read(const std::string& text) {
    std::ofstream(file_) << text;
    return read_card_file(file_);
  }

  std::string refusal_of(const std::string& text) {
    try {
      read(text);
    } catch (const InputError& error) {
      return error.what();
    }
    return "accepted";
  }

  std::filesystem::path file_;
};

TEST_F(CardFileTest, EveryKeyIsRead) {
  const CardDescription card = read(
      "# an XGS-PON card\n"
      "bw-check = false\n"
      "onus-per-link = 64   # of 128\n"
      "\n"
      "pon-links=16\n"
      "manageable-links = 8\n"
      "max-service-ports = 4294967295\n"
      "xgspon = true\n");
  EXPECT_EQ(card.bw_check, false);
  EXPECT_EQ(card.onus_per_link, 64U);
  EXPECT_EQ(card.pon_links, 16U);
  EXPECT_EQ(card.manageable_links, 8U);
  EXPECT_EQ(card.max_service_ports, 4294967295U);
  EXPECT_EQ(card.xgspon, true);
}

TEST_F(CardFileTest, AnAbsentKeyIsACapabilityThatTheCardDoesNotDefine) {
  const CardDescription card = read("pon-links = 4\n");
  EXPECT_EQ(card.bw_check, std::nullopt);
  EXPECT_EQ(card.onus_per_link, std::nullopt);
  EXPECT_EQ(card.pon_links, 4U);
  EXPECT_EQ(card.manageable_links, std::nullopt);
  EXPECT_EQ(card.max_service_ports, std::nullopt);
  EXPECT_EQ(card.xgspon, std::nullopt);
}

TEST_F(CardFileTest, TheLastLineNeedsNoLineEnd) {
  EXPECT_EQ(read("xgspon = true").xgspon, true);
}

TEST_F(CardFileTest, WhatIsWrongIsToldWithFileKeyAndValue) {
  const struct {
    const char* text;
    const char* told;
  } cases[] = {
      {"colour = red\n", "unknown key 'colour'"},
      {"BW-CHECK = true\n", "unknown key 'BW-CHECK'"},
      {"bw-check = maybe\n", "'bw-check' has the value 'maybe', expected true or false"},
      {"bw-check =\n", "'bw-check' has the value ''"},
      {"xgspon = 1\n", "'xgspon' has the value '1'"},
      {"onus-per-link = many\n", "'onus-per-link' has the value 'many', expected a number"},
      {"onus-per-link = -1\n", "'onus-per-link' has the value '-1'"},
      {"onus-per-link = 12x\n", "'onus-per-link' has the value '12x'"},
      {"onus-per-link = 1.5\n", "'onus-per-link' has the value '1.5'"},
      {"pon-links = 4294967296\n", "'pon-links' has the value '4294967296'"},
      {"pon-links\n", "'pon-links' has the value 'true'"},
      {"pon-links = 1 2\n", "'pon-links' has more than one value"},
      {"pon-links = 1\npon-links = 1\n", "'pon-links' has more than one value"},
      {"pon-links = 1\nxgspon = true\npon-links = 1\n", "'pon-links' is given twice"},
      {"[card]\npon-links = 1\n", "sections are not known"},
      {"card.pon-links = 1\n", "unknown key 'card.pon-links'"},
  };
  for (const auto& [text, told] : cases) {
    const std::string refusal = refusal_of(text);
    EXPECT_THAT(refusal, HasSubstr(told)) << text;
    EXPECT_THAT(refusal, HasSubstr(file_.string())) << text;
    EXPECT_THAT(refusal, Not(HasSubstr("\n"))) << text;
  }
}

TEST_F(CardFileTest, AFileThatCannotBeReadIsRefused) {
  EXPECT_THROW(read_card_file(file_.string() + ".missing"), InputError);
  EXPECT_THROW(read_card_file(file_.parent_path()), InputError);
}

TEST(StandardCard, ChecksBandwidthFor128OnusAndDefinesNothingElse) {
  const CardDescription card = CardDescription::standard();
  EXPECT_EQ(card.bw_check, true);
  EXPECT_EQ(card.onus_per_link, 128U);
  EXPECT_EQ(card.pon_links, std::nullopt);
  EXPECT_EQ(card.manageable_links, std::nullopt);
  EXPECT_EQ(card.max_service_ports, std::nullopt);
  EXPECT_EQ(card.xgspon, std::nullopt);
}

class CardServiceTest : public ::testing::Test {
 protected:
  ~CardServiceTest() override {
    set_call_hook({});
    insert_card(CardDescription::standard());
  }
  fm_slot_t slot_{};
};

TEST_F(CardServiceTest, TellsTheCapabilitiesOfTheInsertedCard) {
  CardDescription card;
  card.bw_check = false;
  card.onus_per_link = 32;
  card.pon_links = 4;
  card.manageable_links = 3;
  card.max_service_ports = 77;
  card.xgspon = true;
  insert_card(card);

  EXPECT_EQ(fm_init(), 0);
  EXPECT_EQ(fm_local_slot(&slot_), 0);
  bool bw_check = true;
  EXPECT_EQ(fm_scalar_card_tarnd_do_bw_check(&slot_, &bw_check), 0);
  EXPECT_FALSE(bw_check);
  bool xgspon = false;
  EXPECT_EQ(fm_scalar_card_tarnd_is_xgspon(&slot_, &xgspon), 0);
  EXPECT_TRUE(xgspon);
  std::uint32_t count = 0;
  EXPECT_EQ(fm_scalar_card_tarnd_manageable_pon_links(&slot_, &count), 0);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(fm_scalar_card_tarnd_max_service_ports(&slot_, &count), 0);
  EXPECT_EQ(count, 77U);
  const fm_board_count_t onus = fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(&slot_);
  ASSERT_NE(onus, nullptr);
  EXPECT_EQ(onus(0), 32U);
  const fm_board_count_t links = fm_oper_card_tarnd_get_max_num_ponlink_from_board(&slot_);
  ASSERT_NE(links, nullptr);
  EXPECT_EQ(links(0), 4U);
}

TEST_F(CardServiceTest, ZeroIsAFigureOfItsOwn) {
  CardDescription card;
  card.onus_per_link = 0;
  card.manageable_links = 0;
  insert_card(card);
  const fm_board_count_t onus = fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(&slot_);
  ASSERT_NE(onus, nullptr);
  EXPECT_EQ(onus(0), 0U);
  std::uint32_t count = 9;
  EXPECT_EQ(fm_scalar_card_tarnd_manageable_pon_links(&slot_, &count), 0);
  EXPECT_EQ(count, 0U);
}

TEST_F(CardServiceTest, WhatTheCardDoesNotDefineLeavesTheVariableAlone) {
  insert_card(CardDescription());
  bool flag = true;
  std::uint32_t count = 5;
  EXPECT_NE(fm_scalar_card_tarnd_do_bw_check(&slot_, &flag), 0);
  EXPECT_TRUE(flag);
  EXPECT_NE(fm_scalar_card_tarnd_is_xgspon(&slot_, &flag), 0);
  EXPECT_TRUE(flag);
  EXPECT_NE(fm_scalar_card_tarnd_manageable_pon_links(&slot_, &count), 0);
  EXPECT_NE(fm_scalar_card_tarnd_max_service_ports(&slot_, &count), 0);
  EXPECT_EQ(count, 5U);
  EXPECT_EQ(fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(&slot_), nullptr);
  EXPECT_EQ(fm_oper_card_tarnd_get_max_num_ponlink_from_board(&slot_), nullptr);
}

TEST_F(CardServiceTest, ACardCanFailToOpenOrToKnowItsSlot) {
  CardDescription card;
  card.init_fails = true;
  insert_card(card);
  EXPECT_NE(fm_init(), 0);
  card.init_fails = false;
  card.local_slot_fails = true;
  insert_card(card);
  EXPECT_EQ(fm_init(), 0);
  EXPECT_NE(fm_local_slot(&slot_), 0);
}

TEST_F(CardServiceTest, AServiceThatDoesNotAnswerFailsAndLeavesTheVariableAlone) {
  set_call_hook([](PlatformCall) { return false; });
  EXPECT_NE(fm_init(), 0);
  EXPECT_NE(fm_local_slot(&slot_), 0);
  bool flag = false;
  EXPECT_NE(fm_scalar_card_tarnd_do_bw_check(&slot_, &flag), 0);
  EXPECT_FALSE(flag);
  EXPECT_EQ(fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(&slot_), nullptr);
}

TEST(InterfaceTypes, AreEqualOnlyToThemselves) {
  const struct {
    limid_type_t left;
    limid_type_t right;
    bool equal;
  } cases[] = {
      {limid_type_gpon, limid_type_gpon, true},    {limid_type_xgspon, limid_type_xgspon, true},
      {limid_type_gpon, limid_type_xgspon, false}, {limid_type_xgspon, limid_type_gpon, false},
      {nullptr, limid_type_gpon, false},           {limid_type_xgspon, nullptr, false},
  };
  for (const auto& [left, right, equal] : cases) {
    EXPECT_EQ(limid_type_compare(left, right) != 0, equal);
  }
}

}  // namespace
}  // namespace tarnd
