// What a card carries, and how many more ONUs fit: held against the commits of the same plug-in.

#include "standalone/load/card_load.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>

#include "standalone/card/card_file.h"
#include "standalone/input_error.h"
#include "tests/support/configuration.h"
#include "tests/support/matchers.h"
#include "tests/support/model.h"

namespace tarnd {
namespace {

using test::bandwidth_profile;
using test::config;
using test::gpon_link;
using test::line_profile;
using test::onu;
using test::serial_number;
using test::service_port;
using test::tcont;
using test::uses_line;
using test::xgspon_link;
using ::testing::HasSubstr;

std::string fixed(int kbits) {
  return "<type-1><fixed>" + std::to_string(kbits) + "</fixed></type-1>";
}

std::string assured(std::uint32_t kbits) {
  return "<type-2><assured>" + std::to_string(kbits) + "</assured></type-2>";
}

// ONUs with a serial number of their own each.
std::string onus(int link, int first, int count, const std::string& profile) {
  std::string text;
  for (int id = first; id < first + count; ++id) {
    const std::string serial = "GPON" + std::to_string(link * 10000 + id);
    text += onu(id, serial_number(serial) + uses_line(profile));
  }
  return text;
}

class CardLoadTest : public ::testing::Test {
 protected:
  CardLoadTest() : datastore_(test::model()), plugin_(GPON_VALID_LIBRARY) {
    insert(CardDescription::standard());
  }

  void insert(const CardDescription& card) {
    insert_card(card);
    daemon_.reset();
    daemon_.emplace(datastore_, plugin_.entry_points());
  }

  void running(const std::string& content) {
    datastore_.load(config(""), store::Format::kXml);
    // A merge, since each helper writes its containers.
    store::Transaction transaction(datastore_);
    transaction.edit(config(content), store::Format::kXml);
    transaction.prepare();
    transaction.commit();
  }

  CommitReport commit(const std::string& change) {
    store::Transaction transaction(datastore_);
    transaction.edit(config(change), store::Format::kXml);
    transaction.prepare();
    return daemon_->commit(transaction, {});
  }

  CardLoad load() { return card_load(*daemon_, plugin_, datastore_); }

  store::Datastore datastore_;
  Plugin plugin_;
  std::optional<Daemon> daemon_;
};

// One ONU reserves 1000 fixed and 2000 assured: 3000 and the overhead of 560.
const std::string kProfiles =
    bandwidth_profile("fixed-1000", fixed(1000)) +
    bandwidth_profile("assured-2000", assured(2000)) +
    line_profile("home", tcont(1, "fixed-1000") + tcont(2, "assured-2000")) +
    line_profile("free", "");

TEST_F(CardLoadTest, ALinkCarriesWhatItsOnusReserveWithTheOverhead) {
  running(kProfiles + gpon_link(1, onus(1, 1, 3, "home")));
  const CardLoad card = load();
  ASSERT_EQ(card.links.size(), 1U);
  const LinkLoad& link = card.links.front();
  EXPECT_EQ(link.path, "/config/interface/gpon{1 1 1}");
  EXPECT_EQ(link.onus, 3U);
  EXPECT_EQ(link.reserved->total, 3U * (3000 + 560));
  EXPECT_EQ(link.reserved->fixed, 3U * 1000);
}

TEST_F(CardLoadTest, TheTcontsOfEachLineProfileAreCountedByKind) {
  running(kProfiles);
  const CardLoad card = load();
  ASSERT_EQ(card.line_profiles.size(), 2U);
  EXPECT_EQ(card.line_profiles[0].name, "free");
  EXPECT_EQ(card.line_profiles[0].dynamic_tconts, 0U);
  EXPECT_EQ(card.line_profiles[1].name, "home");
  EXPECT_EQ(card.line_profiles[1].static_tconts, 1U);
  EXPECT_EQ(card.line_profiles[1].dynamic_tconts, 1U);
  EXPECT_EQ(card.line_profiles[1].reserved.total, 3000U);
  EXPECT_EQ(card.line_profiles[1].reserved.fixed, 1000U);
}

TEST_F(CardLoadTest, TheLimitsAreThoseOfTheCard) {
  CardDescription card = CardDescription::standard();
  card.onus_per_link = 64;
  card.max_service_ports = 100;
  insert(card);
  const CardLimits with_check = load().limits;
  EXPECT_TRUE(with_check.checks_bandwidth);
  EXPECT_EQ(with_check.capacity.total, 1107504U);
  EXPECT_EQ(with_check.capacity.fixed, 442752U);
  EXPECT_EQ(with_check.onus_per_link, 64U);
  EXPECT_EQ(with_check.service_ports, 100U);
  EXPECT_EQ(with_check.dynamic_tconts, 3U);
  EXPECT_EQ(with_check.static_tconts, 3U);

  card.bw_check = false;
  insert(card);
  const CardLimits without_check = load().limits;
  EXPECT_FALSE(without_check.checks_bandwidth);
  EXPECT_EQ(without_check.dynamic_tconts, 4U);
}

TEST_F(CardLoadTest, ServicePortsAreCounted) {
  running(service_port(1, "gpon", "1/1/1", 1, 1) + service_port(2, "gpon", "1/1/1", 1, 2));
  EXPECT_EQ(load().service_ports, 2U);
}

TEST_F(CardLoadTest, ALinkWhoseBandwidthThePluginDoesNotCheckTakesAnyNumberOfOnus) {
  running(kProfiles + xgspon_link(2, onus(2, 1, 2, "home")) +
          "<interface><gpon><chassis-id>2</chassis-id><slot-id>1</slot-id>"
          "<port-id>1</port-id></gpon></interface>");
  const CardLoad card = load();
  ASSERT_EQ(card.links.size(), 2U);
  for (const LinkLoad& link : card.links) {
    EXPECT_FALSE(link.reserved.has_value()) << link.path;
    const Fit fits = fit(card.limits, link, find_line_profile(card, "home"));
    EXPECT_FALSE(fits.onus.has_value()) << link.path;
  }
  EXPECT_EQ(card.links[1].onus, 2U);
}

TEST_F(CardLoadTest, ALinkWithAMissingLineProfileTakesNoOnu) {
  running(kProfiles + gpon_link(1, onus(1, 1, 1, "home") + onus(1, 2, 1, "hoem")));
  const CardLoad card = load();
  const Fit fits = fit(card.limits, card.links.front(), find_line_profile(card, "home"));
  EXPECT_EQ(fits.onus, 0U);
  EXPECT_EQ(fits.limit, "line profile 'hoem' does not exist");
  EXPECT_THAT(commit(gpon_link(1, onus(1, 3, 1, "home"))),
              test::Rejected("Line profile hoem doesn't not exist."));
}

TEST_F(CardLoadTest, AnUnknownLineProfileIsRefusedWithTheNearestName) {
  running(kProfiles);
  const CardLoad card = load();
  try {
    find_line_profile(card, "hoem");
    FAIL() << "found";
  } catch (const InputError& error) {
    EXPECT_THAT(error.what(), HasSubstr("there is no line profile 'hoem', did you mean 'home'?"));
  }
}

// A commit of ONUs in another chassis checks the link of chassis 1 with the same slot and port.
TEST_F(CardLoadTest, AFaultOfALinkStopsTheLinkOfTheSameNameInAnotherChassis) {
  const std::string other =
      "<interface><gpon><chassis-id>2</chassis-id><slot-id>1</slot-id><port-id>1</port-id>" +
      onus(2, 1, 1, "home") + "</gpon></interface>";
  running(kProfiles + gpon_link(1, onus(1, 1, 1, "hoem")));
  EXPECT_THAT(commit(other), test::Rejected("Line profile hoem doesn't not exist."));
  running(kProfiles + gpon_link(1, onus(1, 1, 1, "hoem")) + other);
  const CardLoad card = load();
  ASSERT_EQ(card.links.size(), 2U);
  const Fit fits = fit(card.limits, card.links[1], find_line_profile(card, "home"));
  EXPECT_EQ(fits.onus, 0U);
  EXPECT_EQ(fits.limit, "/config/interface/gpon{1 1 1}: line profile 'hoem' does not exist");
}

TEST_F(CardLoadTest, AnOnuWithoutALineProfileStopsALink) {
  running(kProfiles + gpon_link(1, onu(1, serial_number("GPON1"))));
  const CardLoad card = load();
  const Fit fits = fit(card.limits, card.links.front(), find_line_profile(card, "home"));
  EXPECT_EQ(fits.onus, 0U);
  EXPECT_EQ(fits.limit, "an ONU has no line profile");
  EXPECT_THAT(commit(gpon_link(1, onus(1, 3, 1, "home"))),
              test::Rejected("Line profile  doesn't not exist."));
}

TEST_F(CardLoadTest, AServicePortWithoutALinkDoesNotCount) {
  running("<service-port><id>1</id></service-port>" + service_port(2, "xgspon", "1/1/1", 1, 2));
  EXPECT_EQ(load().service_ports, 1U);
}

class FitTest : public CardLoadTest {
 protected:
  // Returns the limit.
  std::string check(const std::string& profiles, const std::string& before) {
    return check_link(profiles + gpon_link(1, before), 0, 1, "plain");
  }

  // Of a link by its place among all; the kinds of links have other port numbers.
  std::string check_link(const std::string& card_text, std::size_t index, int port,
                         const std::string& profile) {
    running(card_text);
    const CardLoad card = load();
    const LinkLoad& link = card.links.at(index);
    const bool is_xgspon = link.path.find("xgspon") != std::string::npos;
    const auto add = [&](int first, int count) {
      const std::string added = onus(port, first, count, profile);
      return commit(is_xgspon ? xgspon_link(port, added) : gpon_link(port, added));
    };
    const Fit fits = fit(card.limits, link, find_line_profile(card, profile));
    constexpr int kFirst = 100;
    constexpr int kMany = 500;
    if (!fits.onus.has_value()) {
      EXPECT_THAT(add(kFirst, kMany), test::Accepted());
      return "none";
    }
    const int count = static_cast<int>(*fits.onus);
    EXPECT_LT(count, 3000);
    if (count > 0) {
      EXPECT_THAT(add(kFirst, count), test::Accepted());
    }
    const CommitReport one_more = add(kFirst + count, 1);
    EXPECT_EQ(one_more.result, CommitResult::kRejected);
    EXPECT_THAT(one_more.answers.back().text,
                HasSubstr(fits.limit == "total bandwidth" ? "Total bandwidth exceeds"
                                                          : "Fixed bandwidth exceeds"));
    return fits.limit;
  }
};

// Half of the cards have few ONUs with much bandwidth, the others many with little.
TEST_F(FitTest, OnRandomCardsAsManyOnusFitAsACommitAccepts) {
  std::mt19937 random(1);
  const auto below = [&random](int limit) {
    return std::uniform_int_distribution<int>(0, limit - 1)(random);
  };
  std::map<std::string, int> seen;
  for (int card_number = 0; card_number < 40; ++card_number) {
    const int most = card_number % 2 == 0 ? 100'000 : 3'000;
    const std::string profiles =
        bandwidth_profile("f", fixed(1 + below(most))) +
        bandwidth_profile("a", assured(1 + below(2 * most))) +
        line_profile("mixed", tcont(1, "f") + tcont(2, "a")) +
        line_profile("plain", tcont(1, below(2) == 0 ? "f" : "a") + tcont(2, "a"));
    ++seen[check(profiles, onus(1, 1, below(8), "mixed"))];
  }
  EXPECT_GT(seen["total bandwidth"], 5);
  EXPECT_GT(seen["fixed bandwidth"], 5);
}

// Each card has two GPON links and two XGS-PON links, four line profiles, and a mix of ONUs on each
// link. Every link is asked about one of the line profiles.
TEST_F(FitTest, OnEachLinkOfARandomCardAsManyOnusFitAsACommitAccepts) {
  std::mt19937 random(2);
  const auto below = [&random](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  const auto profile_name = [](int number) { return "line-" + std::to_string(number); };
  constexpr int kCards = 12;
  constexpr int kLineProfiles = 4;
  constexpr int kLinks = 4;
  std::map<std::string, int> seen;
  for (int card_number = 0; card_number < kCards; ++card_number) {
    SCOPED_TRACE(card_number);
    const int most = card_number % 2 == 0 ? 80'000 : 4'000;
    std::string text = bandwidth_profile("f", fixed(1 + below(most))) +
                       bandwidth_profile("g", fixed(1 + below(most))) +
                       bandwidth_profile("a", assured(static_cast<std::uint32_t>(1 + below(most))));
    for (int i = 0; i < kLineProfiles; ++i) {
      text += line_profile(profile_name(i), tcont(1, below(3) == 0 ? "a" : "f") +
                                                (below(2) == 0 ? tcont(2, "g") : "") +
                                                (below(2) == 0 ? tcont(3, "a") : ""));
    }
    for (int link = 1; link <= kLinks; ++link) {
      std::string mix;
      for (int id = below(5); id > 0; --id)
        mix += onus(link, id, 1, profile_name(below(kLineProfiles)));
      text += link <= 2 ? gpon_link(link, mix) : xgspon_link(link, mix);
    }
    for (int link = 1; link <= kLinks; ++link) {
      SCOPED_TRACE(link);
      const auto index = static_cast<std::size_t>(link - 1);
      ++seen[check_link(text, index, link, profile_name(below(kLineProfiles)))];
    }
  }
  EXPECT_GT(seen["total bandwidth"], 3);
  EXPECT_GT(seen["fixed bandwidth"], 3);
  EXPECT_EQ(seen["none"], kCards * 2);
}

// The plug-in's sums have 32 bits: what is beyond begins again at 0.
TEST_F(FitTest, SumsOfMoreThan32BitsFitAsACommitAccepts) {
  constexpr std::uint32_t kMinusOverhead = 0U - 560U;
  const std::string profile = line_profile("plain", tcont(1, "b"));
  const auto check_assured = [&](std::uint32_t kbits, int onus_before) {
    return check(bandwidth_profile("b", assured(kbits)) + bandwidth_profile("c", assured(100'000)) +
                     profile + line_profile("other", tcont(1, "c")),
                 onus(1, 1, onus_before, "other"));
  };
  EXPECT_EQ(check_assured(kMinusOverhead, 2), "none");
  EXPECT_EQ(check_assured(kMinusOverhead - 20'000, 2), "total bandwidth");
  EXPECT_EQ(check_assured(kMinusOverhead + 20'000, 2), "total bandwidth");
  EXPECT_EQ(check_assured(2'000'000'000, 2), "total bandwidth");
}

}  // namespace
}  // namespace tarnd
