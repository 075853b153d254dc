// A daemon runs for months: after thousands of commits in one process nothing is left over.

#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "standalone/confd/session_state.h"
#include "tests/catalogue/dispatch.h"
#include "tests/support/card_fixture.h"

namespace tarnd::test {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// Under the sanitizers a commit takes many times as long.
constexpr std::size_t kCommits = kSanitized ? 2000 : 10000;
// As many again first, until every cache is full and the heap no longer grows.
constexpr std::size_t kWarmUp = kCommits / 5;

// The allowed difference of the memory in use at two moments with the same configuration. The heap
// hardly differs; a byte that each round keeps must exceed the allowance.
constexpr std::size_t kHeapSlack = std::size_t{2} * 1024;
constexpr std::size_t kResidentSlack = std::size_t{2} * 1024 * 1024;

std::size_t resident() {
  std::size_t pages = 0;
  std::size_t resident_pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident_pages;
  return resident_pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::ptrdiff_t open_files() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

// Blocks that the allocator caches for a thread count as in use: sometimes up to 20 KiB.
constexpr const char* kNoThreadCache = "glibc.malloc.tcache_count=0";

bool heap_is_exact() {
  const char* tunables = std::getenv("GLIBC_TUNABLES");
  return tunables != nullptr && std::strstr(tunables, kNoThreadCache) != nullptr;
}

struct Memory {
  std::size_t heap;
  std::size_t resident_set;
};

Memory memory() {
  malloc_trim(0);
  return {mallinfo2().uordblks, resident()};
}

/// A change, whether the user confirms its warnings, and its result.
struct Commit {
  std::string change;
  bool confirm;
  CommitResult result;
};

std::string leaf(const std::string& name, const std::string& text) {
  return element(name, text);
}

/// A round of commits that ends where it began: accepted changes are undone later in the round.
std::vector<Commit> round_of_commits() {
  constexpr auto kAccepted = CommitResult::kAccepted;
  constexpr auto kRejected = CommitResult::kRejected;
  constexpr auto kUnconfirmed = CommitResult::kUnconfirmed;
  const auto profile = [](const std::string& kind, const std::string& name,
                          const std::string& content) {
    return profiles(element(kind, leaf("name", name) + content));
  };
  const auto gateway = [](const std::string& content) { return rg_profile("rg", content); };
  const auto wlan = [](const std::string& ssid) {
    return element("wlan", leaf("id", "1") + element("ssid", leaf("custom", ssid)));
  };
  const auto mapping = [](const std::string& name, const std::string& vlan) {
    return element("vlan-mapping", leaf("name", name) +
                                       element("match", element("outer", leaf("vlan-id", vlan))) +
                                       element("uni", leaf("ethernet", "1")));
  };
  const auto slot = [](const std::string& content) {
    return element("gpon", leaf("slot", "1/1") + content);
  };
  const auto type_1 = [](const std::string& fixed) {
    return element("type-1", leaf("fixed", fixed));
  };
  const std::string new_port = service_port(4, "gpon", "1/1/1", 1, 1, 40);
  const std::string all_ports =
      deleted_service_port(1) + deleted_service_port(2) + deleted_service_port(3);
  const std::string ports_again = service_port(1, "gpon", "1/1/1", 1, 1, 10) +
                                  service_port(2, "gpon", "1/1/1", 1, 2, 20) +
                                  service_port(3, "xgspon", "1/1/1", 1, 1, 10);
  return {
      // Service ports
      {new_port, false, kAccepted},
      {service_port(5, "gpon", "1/1/1", 1, 1, 40), false, kRejected},
      {service_port(5, "gpon", "1/1/1", 1, 9), false, kRejected},
      {service_port(4, "gpon", "1/1/1", 1, 1, 41), false, kRejected},
      {deleted_service_port(4), false, kAccepted},
      {all_ports, false, kUnconfirmed},
      {all_ports, true, kAccepted},
      {ports_again, false, kAccepted},
      // ONUs
      {gpon_link(1, onu(3, serial_number("ZQRT00000009") + uses_line("slow"))), false, kAccepted},
      {gpon_link(1, onu(3, serial_number("ZQRT00000001"))), false, kRejected},
      {gpon_link(1, onu(3, uses_line("gone"))), false, kRejected},
      {gpon_link(1, onu(3, "", "delete")), false, kAccepted},
      {gpon_link(1, onu(1, "", "delete")), false, kRejected},
      {gpon_link(1, onu(1, uses_line("slow"))), false, kRejected},
      {gpon_link(1, onu(1, element("ip-host", leaf("default-gateway", "10.0.0.5")))), false,
       kRejected},
      {gpon_link(1, onu(2, leaf("rg-profile", "other"))), false, kUnconfirmed},
      {gpon_link(1, onu(2, leaf("rg-profile", "other"))), true, kAccepted},
      {gpon_link(1, onu(2, leaf("rg-profile", "rg"))), true, kAccepted},
      // Links
      {gpon_link(1, leaf("downstream-fec", "false")), true, kAccepted},
      {gpon_link(1, leaf("downstream-fec", "true")), false, kUnconfirmed},
      {gpon_link(1, leaf("downstream-fec", "true")), true, kAccepted},
      {xgspon_link(2, leaf("operation-mode", "combo")), false, kAccepted},
      {xgspon_link(2, leaf("operation-mode", "xgspon")), false, kAccepted},
      {xgspon_link(1, leaf("operation-mode", "combo")), false, kRejected},
      {gpon_link(2, "", "delete"), false, kRejected},
      {slot(element("rg-one-shot-prov", "", "delete")), true, kAccepted},
      {slot(leaf("rg-one-shot-prov", "")), true, kAccepted},
      // Profiles
      {bandwidth_profile("t6", type_1("7")), false, kAccepted},
      {bandwidth_profile("t6", type_1("8")), false, kRejected},
      {profiles(element("bandwidth-profile", leaf("name", "t6"), "delete")), false, kAccepted},
      {line_profile("fast", tcont(9, "t1")), true, kAccepted},
      {line_profile("fast", element("tcont", leaf("id", "9"), "delete")), false, kUnconfirmed},
      {line_profile("fast", element("tcont", leaf("id", "9"), "delete")), true, kAccepted},
      {service_profile("more", mapping("m1", "1")), false, kAccepted},
      {service_profile("more", mapping("m2", "2")), false, kRejected},
      {service_profile("some", mapping("m1", "1") + mapping("m2", "1")), false, kRejected},
      {profiles(element("service-profile", leaf("name", "more"), "delete")), false, kAccepted},
      {gateway(wlan("AZQRT12345678B")), true, kRejected},
      {gateway(wlan("Away")), true, kAccepted},
      {gateway(wlan("Home")), true, kAccepted},
      {gateway(element("wan-ip-connection",
                       leaf("name", "spare") +
                           element("itf-grouping", leaf("ipv4-address", "192.168.1.9/24")))),
       true, kRejected},
      {gateway(element(
           "wan-ip-connection",
           leaf("name", "spare") + element("itf-grouping", element("ports", leaf("port", "wl0"))))),
       true, kRejected},
      {profile("tr069-acs-profile", "acs", leaf("password", "$0$" + std::string(26, 'x'))), true,
       kRejected},
      {profile("tr069-acs-profile", "acs", leaf("password", "$0$second")), true, kAccepted},
      {profile("sip-agent-profile", "sip", leaf("proxy-server", "proxy")), true, kAccepted},
      {profile("sip-agent-profile", "sip", element("proxy-server", "", "delete")), true, kAccepted},
      {profile("media-profile", "voice", leaf("codec", "pcma")), false, kUnconfirmed},
  };
}

class LongLife : public CardFixture {
 protected:
  LongLife() {
    CardDescription card = CardDescription::standard();
    card.onus_per_link = 2;
    card.pon_links = 2;
    card.max_service_ports = 8;
    insert(card);
    running(whole_card());
  }

  void make_round() {
    // Changes that are not confirmed and then undone, so that every request is called.
    for (const Scenario& one : scenarios_) {
      ASSERT_EQ(dispatch(open(one.change), one), one.answer) << one;
    }
    for (const Commit& one : round_) {
      const CommitReport report = commit(one.change, {}, one.confirm);
      ASSERT_EQ(report.result, one.result) << one.change;
    }
    ++rounds_;
    // The keys of encrypted leaves belong to a session, and there is none left.
    ASSERT_EQ(find_session_with_crypto_keys(), nullptr);
  }

  void make_commits(std::size_t count) {
    for (std::size_t made = 0; made < count && !HasFatalFailure(); made += round_.size()) {
      make_round();
    }
  }

  /// The number of calls that open something, minus that of calls that close it.
  [[nodiscard]] std::int64_t unbalanced(PlatformCall opens, PlatformCall closes) const {
    return static_cast<std::int64_t>(calls(opens)) - static_cast<std::int64_t>(calls(closes));
  }

  /// The running configuration without the encrypted leaf.
  [[nodiscard]] std::string configured() const {
    const std::string text = running_text();
    const std::size_t encrypted = text.find("$8$");
    return text.substr(0, encrypted) + text.substr(text.find('<', encrypted));
  }

  const std::vector<Commit> round_ = round_of_commits();
  const std::vector<Scenario> scenarios_ = scenarios();
  std::int64_t rounds_ = 0;
};

TEST_F(LongLife, LeavesNothingBehind) {
  make_commits(kWarmUp);
  const std::string configuration = configured();
  const Memory before = memory();
  const std::ptrdiff_t files = open_files();

  make_commits(kCommits);
  const Memory after = memory();
  EXPECT_EQ(open_files(), files);
  EXPECT_EQ(configured(), configuration);
  // The address sanitizer has its own allocator, and LeakSanitizer reports what is left.
  if (!kSanitized) {
    ASSERT_TRUE(heap_is_exact()) << "run this with GLIBC_TUNABLES=" << kNoThreadCache;
    EXPECT_LT(after.heap, before.heap + kHeapSlack);
    EXPECT_LT(after.resident_set, before.resident_set + kResidentSlack);
  }
  RecordProperty("heap_before", std::to_string(before.heap));
  RecordProperty("heap_after", std::to_string(after.heap));
  RecordProperty("resident_before", std::to_string(before.resident_set));
  RecordProperty("resident_after", std::to_string(after.resident_set));
}

TEST_F(LongLife, ClosesWhatItOpens) {
  make_commits(kWarmUp);
  using Call = PlatformCall;
  EXPECT_EQ(unbalanced(Call::qzconfd_config_session_start, Call::qzconfd_config_session_end), 0);
  EXPECT_EQ(unbalanced(Call::maapi_query_start, Call::maapi_query_stop), 0);
  EXPECT_EQ(unbalanced(Call::maapi_query_result, Call::maapi_query_free_result), 0);
  // These cursors stay open until the end of the transaction: of the WLANs for repeated SSIDs, of
  // the connections for overlapping networks, of the connections and the ports for a port used
  // twice.
  constexpr std::int64_t kLeftInARound = 4;
  EXPECT_EQ(unbalanced(Call::maapi_init_cursor, Call::maapi_destroy_cursor),
            kLeftInARound * rounds_);
}

}  // namespace
}  // namespace tarnd::test
