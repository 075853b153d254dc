// Which request calls which validator, and how the answer is returned.

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <stdexcept>
#include <string_view>

#include "gpon_card_valid.h"
#include "gpon_vald_trace_itf.h"
#include "tests/catalogue/requests.h"
#include "tests/support/card_fixture.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

const std::vector<Request>& all_requests() {
  static const std::vector<Request> all = requests();
  return all;
}

/// The request that answers a name: the first that begins with it.
const Request* request_for(std::string_view name) {
  const std::vector<Request>& all = all_requests();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Request& request) {
    return std::string_view(request.name).substr(0, name.size()) == name;
  });
  return found != all.end() ? &*found : nullptr;
}

/// Every name and every beginning of one, the empty one included.
std::set<std::string> all_prefixes() {
  std::set<std::string> prefixes;
  for (const Request& request : all_requests()) {
    for (std::size_t length = 0; length <= request.name.size(); ++length) {
      prefixes.insert(request.name.substr(0, length));
    }
  }
  return prefixes;
}

class Dispatch : public CardFixture {
 protected:
  Dispatch() {
    CardDescription card = CardDescription::standard();
    card.manageable_links = 4;  // more than exist of either kind, so that both checks reject
    insert(card);
    running(whole_card());
  }

  struct Call {
    std::string request;
    std::string keypath;
  };

  /// The signs of the validators that ran, all of them, call by call.
  std::vector<std::set<std::string>> signs_of(const std::vector<Call>& calls) {
    std::vector<std::set<std::string>> signs;
    std::vector<std::string> texts;
    TraceCapture trace(TraceLevel::kDetail);
    for (const Call& call : calls) {
      VALID_TRACE(kTraceFlow, "%s", kNextCall);
      texts.push_back(request(call.request, call.keypath).text);
    }
    for (const std::string& record : trace.records()) {
      if (record.find(kNextCall) != std::string::npos) {
        signs.emplace_back();
      } else {
        add_signs(record, signs.back());
      }
    }
    for (std::size_t i = 0; i < calls.size(); ++i) add_signs(texts[i], signs[i]);
    return signs;
  }

  /// A change of a service port that exists already.
  static std::string changed_port() {
    return element("service-port", element("id", "1") + element("admin-enabled", "true"));
  }

 private:
  static constexpr const char* kNextCall = "next call";

  static void add_signs(const std::string& text, std::set<std::string>& signs) {
    for (const Request& request : all_requests()) {
      if (text.find(request.sign) != std::string::npos) signs.insert(request.sign);
    }
  }
};

constexpr const char* kServicePorts = "/config/service-port";

TEST_F(Dispatch, EveryNameReachesItsOwnValidatorAlone) {
  std::vector<Call> calls;
  for (const Request& request : all_requests()) calls.push_back({request.name, request.instance});
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const Request& request = all_requests()[i];
    EXPECT_EQ(signs.at(i), std::set<std::string>{request.sign}) << request.name;
  }
}

TEST_F(Dispatch, EveryLeadingPartReachesTheEarliestNameThatBeginsWithIt) {
  std::vector<Call> calls;
  for (const std::string& prefix : all_prefixes()) {
    calls.push_back({prefix, request_for(prefix)->instance});
  }
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(signs.at(i), std::set<std::string>{request_for(calls[i].request)->sign})
        << "request '" << calls[i].request << "'";
  }
}

TEST_F(Dispatch, AnEmptyRequestReachesTheFirstValidator) {
  const Request& first = all_requests().front();
  EXPECT_EQ(signs_of({{"", first.instance}}).front(), std::set<std::string>{first.sign});
}

TEST_F(Dispatch, ANameWithACharacterMoreReachesNothing) {
  std::vector<Call> calls;
  for (const Request& request : all_requests()) {
    calls.push_back({request.name + "x", request.instance});
  }
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_TRUE(signs.at(i).empty()) << calls[i].request;
    EXPECT_THAT(request(calls[i].request, calls[i].keypath), Accepted());
  }
}

TEST_F(Dispatch, ANameThatIsNoneReachesNothing) {
  for (const char* name :
       {"sp_gem_check_x", "onu_bw_check ", "Onu_bw_check", "n", "nothing of the kind", "%s%n"}) {
    TraceCapture trace(TraceLevel::kDetail);
    EXPECT_THAT(request(name, kServicePorts), Accepted()) << name;
    EXPECT_TRUE(trace.records().empty()) << name << ": " << trace.records().front();
  }
}

// If the table had another name, this name would begin like a known one, and then have a character
// that no known name has there. All such beginnings are tried, so the table has no other name.
TEST_F(Dispatch, ARequestThatNoNameBeginsWithReachesNothing) {
  ValidationSession& session = open();
  TraceCapture trace(TraceLevel::kDetail);
  confd_hkeypath_t keypath{};
  int requests = 0;
  for (const std::string& prefix : all_prefixes()) {
    for (const char next : std::string_view("abcdefghijklmnopqrstuvwxyz0123456789_-AZ ")) {
      const std::string name = prefix + next;
      if (request_for(name) != nullptr) continue;
      session.begin_request(name);
      ASSERT_EQ(validate(tctx(), &keypath, nullptr), CONFD_OK) << name;
      ASSERT_EQ(session.error_text(), std::nullopt) << name;
      ++requests;
    }
  }
  EXPECT_GT(requests, 10000);
  EXPECT_TRUE(trace.records().empty()) << trace.records().front();
}

TEST_F(Dispatch, TheValidatorsResultAndTextAreTheAnswer) {
  EXPECT_THAT(request("config_modified_check", kServicePorts, changed_port()),
              Rejected("Changing already committed service port is not allowed."));
  EXPECT_THAT(request("line_confirmation_warning", "/config/profile/gpon/line-profile{fast}"),
              AsksToConfirm(testing::HasSubstr("Change in line-profile configuration")));
}

TEST_F(Dispatch, AMissingSocketIsTheValidatorsToNotice) {
  fail_call(PlatformCall::qzconfd_maapi_socket_get);
  // Without a socket the changes cannot be read, and this validator then accepts.
  EXPECT_THAT(request("config_modified_check", kServicePorts, changed_port()), Accepted());
}

TEST_F(Dispatch, AnExceptionOfAnyTypeBecomesAnError) {
  struct NoStandardException {};
  const std::array<std::function<void()>, 3> throws{
      [] { throw std::out_of_range("a test"); },
      [] { throw NoStandardException(); },
      [] { throw 1; },
  };
  for (const auto& throw_one : throws) {
    set_call_hook([&throw_one](PlatformCall call) {
      if (call == PlatformCall::maapi_keypath_diff_iterate) {
        throw_one();
      }
      return true;
    });
    EXPECT_THAT(request("config_modified_check", kServicePorts), Rejected(""));
  }
}

TEST(ValidationPoint, HasItsName) {
  std::array<char, 64> name{};
  EXPECT_EQ(get_validation_point(name.data(), static_cast<int>(name.size())), 0);
  EXPECT_STREQ(name.data(), "gpon_validation_check");
}

TEST(ValidationPoint, IsCutToTheBuffer) {
  std::array<char, 12> name{};
  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 10), 0);
  EXPECT_STREQ(name.data(), "gpon_vali");
  EXPECT_EQ(name[10], 'x');

  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 1), 0);
  EXPECT_STREQ(name.data(), "");

  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 0), 0);
  EXPECT_EQ(name[0], 'x');
  EXPECT_EQ(get_validation_point(name.data(), -1), 0);
  EXPECT_EQ(name[0], 'x');
}

TEST(Finish, LeavesTheTraceCategoryRegistered) {
  TraceCapture trace(TraceLevel::kFlow);
  get_trace_cat();
  const auto index = static_cast<std::size_t>(PlatformCall::qzmw_trace_register_category);
  const std::uint64_t before = platform_call_counts().at(index);
  EXPECT_EQ(lib_finish(), 0);
  get_trace_cat();
  EXPECT_EQ(platform_call_counts().at(index), before);
}

}  // namespace
}  // namespace tarnd::test
