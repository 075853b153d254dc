#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "card/fm_card.h"
#include "card/limid.h"
#include "standalone/card/card_file.h"
#include "standalone/input_error.h"
#include "standalone/platform_calls.h"

namespace tarnd {
namespace {

std::string written(const CardDescription& card) {
  std::string text;
  const auto write = [&text](const char* key, const auto& value) {
    if (value.has_value())
      text += (text.empty() ? "" : " ") + std::string(key) + "=" + std::to_string(*value);
  };
  write("bw-check", card.bw_check);
  write("onus-per-link", card.onus_per_link);
  write("pon-links", card.pon_links);
  write("manageable-links", card.manageable_links);
  write("max-service-ports", card.max_service_ports);
  write("xgspon", card.xgspon);
  return text;
}

// "line: what is wrong".
std::string refusal_of(const std::string& text) {
  try {
    return "accepted: " + written(parse_card(text));
  } catch (const InputError& error) {
    return std::to_string(error.line()) + ": " + error.what();
  }
}

TEST(CardFile, EveryKeyIsRead) {
  const CardDescription card = parse_card(
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

TEST(CardFile, AnAbsentKeyIsACapabilityThatTheCardDoesNotDefine) {
  const CardDescription card = parse_card("pon-links = 4\n");
  EXPECT_EQ(card.bw_check, std::nullopt);
  EXPECT_EQ(card.onus_per_link, std::nullopt);
  EXPECT_EQ(card.pon_links, 4U);
  EXPECT_EQ(card.manageable_links, std::nullopt);
  EXPECT_EQ(card.max_service_ports, std::nullopt);
  EXPECT_EQ(card.xgspon, std::nullopt);
}

TEST(CardFile, IsReadAsItIsCommonlyWritten) {
  const struct {
    std::string_view text;
    const char* card;
  } cases[] = {
      {"", ""},
      {"\n\n  \n\t\n", ""},
      {"xgspon = true", "xgspon=1"},
      {"xgspon=true\n", "xgspon=1"},
      {"\t xgspon \t=  true \t\n", "xgspon=1"},
      {"xgspon = true\r\npon-links = 2\r\n", "pon-links=2 xgspon=1"},
      {"\xef\xbb\xbfxgspon = true\n", "xgspon=1"},
      {"# xgspon = true\n", ""},
      {"; xgspon = true\n", ""},
      {"xgspon = true # = false\n", "xgspon=1"},
      {"xgspon = true#\n", "xgspon=1"},
      {"# caf\xc3\xa9\n", ""},
      {"xgspon\n", "xgspon=1"},
      {"xgspon # set\n", "xgspon=1"},
      {"pon-links = \"16\"\n", "pon-links=16"},
      {"'pon-links' = '16'\n", "pon-links=16"},
      {"pon-links = [16]\n", "pon-links=16"},
      {"pon-links = [ \"16\" ]\n", "pon-links=16"},
      {"pon-links = 016\n", "pon-links=16"},
      {"pon-links = 0\n", "pon-links=0"},
      {"pon-links = 4294967295\n", "pon-links=4294967295"},
  };
  for (const auto& [text, card] : cases) EXPECT_EQ(written(parse_card(text)), card) << text;
}

TEST(CardFile, AnErrorIsReportedWithLineKeyAndValue) {
  const std::string known =
      ", known are bw-check, onus-per-link, pon-links, manageable-links, max-service-ports, xgspon";
  const std::string number = "', expected a number from 0 to 4294967295";
  const struct {
    std::string text;
    std::string told;
  } cases[] = {
      {"colour = red\n", "1: unknown key 'colour'" + known},
      {"\n# a card\ncolour = red\n", "3: unknown key 'colour'" + known},
      {"xgspon = true\r\n\r\ncolour = red", "3: unknown key 'colour'" + known},
      {"= 1\n", "1: unknown key ''" + known},
      {"ab\n", "1: unknown key 'ab'" + known},
      {"<config xmlns=\"urn:tarnd:base\"/>\n", "1: unknown key '<config xmlns'" + known},
      {"card.pon-links = 1\n", "1: unknown key 'card.pon-links'" + known},
      {"pon-link = 1\n", "1: unknown key 'pon-link', did you mean 'pon-links'?"},
      {"pon_links = 1\n", "1: unknown key 'pon_links', did you mean 'pon-links'?"},
      {"BW-CHECK = true\n", "1: unknown key 'BW-CHECK', did you mean 'bw-check'?"},
      {"bw-check = maybe\n", "1: 'bw-check' has the value 'maybe', expected true or false"},
      {"bw-check = TRUE\n", "1: 'bw-check' has the value 'TRUE', expected true or false"},
      {"bw-check =\n", "1: 'bw-check' has the value '', expected true or false"},
      {"xgspon = 1\n", "1: 'xgspon' has the value '1', expected true or false"},
      {"xgspon = \"true\n", "1: 'xgspon' has the value '\"true', expected true or false"},
      {"onus-per-link = many\n", "1: 'onus-per-link' has the value 'many" + number},
      {"onus-per-link = -1\n", "1: 'onus-per-link' has the value '-1" + number},
      {"onus-per-link = +1\n", "1: 'onus-per-link' has the value '+1" + number},
      {"onus-per-link = 12x\n", "1: 'onus-per-link' has the value '12x" + number},
      {"onus-per-link = 1.5\n", "1: 'onus-per-link' has the value '1.5" + number},
      {"pon-links = 4294967296\n", "1: 'pon-links' has the value '4294967296" + number},
      {"pon-links\n", "1: 'pon-links' has the value 'true" + number},
      {"pon-links = 1 2\n", "1: 'pon-links' has the value '1 2" + number},
      {"pon-links = [1, 2]\n", "1: 'pon-links' has the value '1, 2" + number},
      {"pon-links = [16\n", "1: 'pon-links' has the value '[16" + number},
      {"pon-links = 1\npon-links = 1\n", "2: 'pon-links' is given twice"},
      {"pon-links = 1\nxgspon = true\npon-links = 1\n", "3: 'pon-links' is given twice"},
      {"[card]\npon-links = 1\n", "1: sections are not known"},
      {"xgspon = true\n[[card]]\n", "2: sections are not known"},
      {std::string("pon-links = 2\0\n", 15), "1: a card file is text, and this line is not"},
      {"\n\x7f"
       "ELF\x01\x02\n",
       "2: a card file is text, and this line is not"},
      {"# caf\xe9\n", "1: a card file is text, and this line is not"},
      {"# caf\xc2\x9b\n", "1: a card file is text, and this line is not"},
      {"# a comment\rxgspon = true\n", "1: a card file is text, and this line is not"},
      {"\xff\xfe"
       "b\x01w",
       "1: a card file is text, and this line is not"},
  };
  for (const auto& [text, told] : cases) EXPECT_EQ(refusal_of(text), told) << text;
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

TEST_F(CardServiceTest, ReportsTheCapabilitiesOfTheInsertedCard) {
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
