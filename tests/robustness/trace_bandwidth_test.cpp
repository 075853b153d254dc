// The records of the bandwidth checks, path by path.

#include "tests/catalogue/expected_trace.h"

namespace tarnd::test {
namespace {

constexpr const char* kLinkRequest = "onu_bw_check";
constexpr const char* kLinkValidator = "validate_max_bandwidth_ponlink";
constexpr const char* kCardRequest = "ponlink_bw_check";
constexpr const char* kCardValidator = "validate_max_bandwidth_global";
constexpr const char* kOnus = "/config/interface/gpon{1 1 2}/onu";
constexpr const char* kProfiles = "/config/profile/gpon/bandwidth-profile";

const Source kSource("gpon_bw_limit");

std::string type_1(const std::string& fixed) {
  return element("type-1", element("fixed", fixed));
}

Records joined(std::initializer_list<Records> parts) {
  Records all;
  for (const Records& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

std::string from(const std::string& function, const std::string& text) {
  return kSource.detail(function, text);
}

const std::string kBwsLoaded =
    from("loadAllBws", "Took # msecs to load all bandwidth profiles from ConfD");
const std::string kLinesLoaded =
    from("loadAllLines", "Took # msecs to load all line profiles from ConfD");

/// Loading the model of `TraceBandwidth`'s card, with this fixed bandwidth.
Records model_loaded(const std::string& fixed) {
  return {
      from("loadBwProf", "BW name: t1. type-1. fixed=" + fixed),
      kBwsLoaded,
      from("loadAllLines", "Loading line fast"),
      from("loadAllTconts", "tcont=7 bw=t1"),
      from("loadAllTconts", "BW found! BW name: t1. fixed=" + fixed + " total=" + fixed),
      from("loadAllTconts", "Took # msecs to load all tconts from ConfD (err=0)"),
      from("loadAllLines", "Line fast has dynamic=0 static=1 TCONTs"),
      kLinesLoaded,
  };
}

/// Link 2 with one ONU on the line "fast", whose bandwidth is fixed.
class TraceBandwidth : public TraceTest {
 protected:
  void card(const std::string& fixed, const std::string& line = "fast") {
    running(bandwidth_profile("t1", type_1(fixed)) + line_profile("fast", tcont(7, "t1")) +
            gpon_link(2, onu(1, uses_line(line))));
  }

  void leave_the_bandwidth_to_the_planner() {
    CardDescription without_check = CardDescription::standard();
    without_check.bw_check = false;
    insert(without_check);
  }
};

const std::string kLinkCheckStarts =
    kSource.flow(kLinkValidator, "Bandwidth check enabled for this platform. Do check now...");

TEST_F(TraceBandwidth, OfALinkThatCarriesItsOnus) {
  card("1000");
  expect_records(
      records_of(kLinkRequest, kOnus),
      joined({
          {begin(kLinkValidator), kLinkCheckStarts},
          model_loaded("1000"),
          {kSource.flow("validate_ponlink_bw",
                        "BW check: pl 2, fxd=1000, total=1000, overhead=560 (num_onus=1)"),
           end(kLinkValidator, "OK")},
      }));
}

TEST_F(TraceBandwidth, OfAnOverbookedLink) {
  card("1106945");
  expect_records(
      records_of(kLinkRequest, kOnus),
      joined({
          {begin(kLinkValidator), kLinkCheckStarts},
          model_loaded("1106945"),
          {kSource.flow("validate_ponlink_bw",
                        "BW check: pl 2, fxd=1106945, total=1106945, overhead=560 (num_onus=1)"),
           end(kLinkValidator, "ERROR")},
      }));
}

TEST_F(TraceBandwidth, OfAnOnuWithoutAKnownLineProfile) {
  card("1000", "gone");
  expect_records(records_of(kLinkRequest, kOnus),
                 joined({
                     {begin(kLinkValidator), kLinkCheckStarts},
                     model_loaded("1000"),
                     {kSource.flow("validate_ponlink_bw", "Line profile gone not found."),
                      kSource.flow("validate_ponlink_bw",
                                   "There was some error during line-profile iteration (err=-1)"),
                      end(kLinkValidator, "ERROR")},
                 }));
}

TEST_F(TraceBandwidth, OfALinkThatCannotBeQueried) {
  card("1000");
  expect_records(records_of_failed(PlatformCall::maapi_query_start, 1, kLinkRequest, kOnus),
                 joined({
                     {begin(kLinkValidator), kLinkCheckStarts},
                     model_loaded("1000"),
                     {kSource.flow("validate_ponlink_bw",
                                   "query failed for onu. err=maapi_query_start is not answered"),
                      end(kLinkValidator, "ERROR")},
                 }));
}

TEST_F(TraceBandwidth, OfALinkWithTheCheckDisabled) {
  card("1000");
  leave_the_bandwidth_to_the_planner();
  expect_records(
      records_of(kLinkRequest, kOnus),
      {
          begin(kLinkValidator),
          kSource.flow(kLinkValidator, "Bandwidth check disabled for this platform. PONLINK 1/2"),
          end(kLinkValidator, "OK"),
      });
}

TEST_F(TraceBandwidth, OfEveryTypeOfTraffic) {
  running(
      bandwidth_profile("a1", type_1("1")) +
      bandwidth_profile("a2", element("type-2", element("assured", "2"))) +
      bandwidth_profile("a3",
                        element("type-3", element("assured", "3") + element("maximum", "33"))) +
      bandwidth_profile("a4", element("type-4", element("maximum", "44"))) +
      bandwidth_profile("a5", element("type-5", element("fixed", "5") + element("assured", "6") +
                                                    element("maximum", "55"))) +
      bandwidth_profile("a6", "") + bandwidth_profile("a7", type_1("7")));
  expect_records(records_of(kLinkRequest, kOnus),
                 {
                     begin(kLinkValidator),
                     kLinkCheckStarts,
                     from("loadBwProf", "BW name: a1. type-1. fixed=1"),
                     from("loadBwProf", "BW name: a2. type-2. assured=2"),
                     from("loadBwProf", "BW name: a3. type-3. assured=3 max=33"),
                     from("loadBwProf", "BW name: a4. type-4. max=44"),
                     from("loadBwProf", "BW name: a5. type-5. fixed=5 assured=6 max=55"),
                     // a6 has no type: it and the rest of its batch are skipped.
                     kBwsLoaded,
                     kLinesLoaded,
                     kSource.flow("validate_ponlink_bw",
                                  "BW check: pl 2, fxd=0, total=0, overhead=0 (num_onus=0)"),
                     end(kLinkValidator, "OK"),
                 });
}

TEST_F(TraceBandwidth, OfATcontWithoutAKnownBandwidthProfile) {
  running(line_profile("fast", tcont(7, "gone")));
  expect_records(records_of(kLinkRequest, kOnus),
                 {
                     begin(kLinkValidator),
                     kLinkCheckStarts,
                     kBwsLoaded,
                     from("loadAllLines", "Loading line fast"),
                     from("loadAllTconts", "tcont=7 bw=gone"),
                     kSource.flow("loadAllTconts", "BW NOT found! BW name: gone. fixed=0 total=0"),
                     from("loadAllTconts", "Took # msecs to load all tconts from ConfD (err=-1)"),
                     from("loadAllLines", "Line fast has dynamic=1 static=0 TCONTs"),
                     kLinesLoaded,
                     kSource.flow("validate_ponlink_bw",
                                  "BW check: pl 2, fxd=0, total=0, overhead=0 (num_onus=0)"),
                     end(kLinkValidator, "OK"),
                 });
}

TEST_F(TraceBandwidth, OfAllLinks) {
  card("1000");
  expect_records(
      records_of(kCardRequest, kProfiles, gpon_link(9)),
      joined({
          {begin(kCardValidator)},
          model_loaded("1000"),
          {kSource.flow(kCardValidator,
                        "Bandwidth check enabled for this platform. Do check now (all "
                        "ponlinks)..."),
           from(kCardValidator, "Check ponlink 1/2 bandwidth"),
           kSource.flow("validate_ponlink_bw",
                        "BW check: pl 2, fxd=1000, total=1000, overhead=560 (num_onus=1)"),
           from(kCardValidator, "Check ponlink 1/9 bandwidth"),
           kSource.flow("validate_ponlink_bw",
                        "BW check: pl 9, fxd=0, total=0, overhead=0 (num_onus=0)"),
           end(kCardValidator, "OK")},
      }));
}

TEST_F(TraceBandwidth, OfAllLinksUpToAnOverbookedOne) {
  card("442753");
  expect_records(
      records_of(kCardRequest, kProfiles, gpon_link(9)),
      joined({
          {begin(kCardValidator)},
          model_loaded("442753"),
          {kSource.flow(kCardValidator,
                        "Bandwidth check enabled for this platform. Do check now (all "
                        "ponlinks)..."),
           from(kCardValidator, "Check ponlink 1/2 bandwidth"),
           kSource.flow("validate_ponlink_bw",
                        "BW check: pl 2, fxd=442753, total=442753, overhead=560 (num_onus=1)"),
           end(kCardValidator, "ERROR")},
      }));
}

TEST_F(TraceBandwidth, OfTheCardWithTheCheckDisabled) {
  card("1000");
  leave_the_bandwidth_to_the_planner();
  expect_records(records_of(kCardRequest, kProfiles),
                 joined({
                     {begin(kCardValidator)},
                     model_loaded("1000"),
                     {kSource.flow(kCardValidator, "Bandwidth check disabled for this platform."),
                      end(kCardValidator, "OK")},
                 }));
}

TEST_F(TraceBandwidth, OfALineProfileWithTooManyTconts) {
  running(line_profile("wide",
                       tcont(1, "gone") + tcont(2, "gone") + tcont(3, "gone") + tcont(4, "gone")));
  const std::string not_found =
      kSource.flow("loadAllTconts", "BW NOT found! BW name: gone. fixed=0 total=0");
  expect_records(records_of(kCardRequest, kProfiles),
                 {
                     begin(kCardValidator),
                     kBwsLoaded,
                     from("loadAllLines", "Loading line wide"),
                     from("loadAllTconts", "tcont=1 bw=gone"),
                     not_found,
                     from("loadAllTconts", "tcont=2 bw=gone"),
                     not_found,
                     from("loadAllTconts", "tcont=3 bw=gone"),
                     not_found,
                     from("loadAllTconts", "tcont=4 bw=gone"),
                     not_found,
                     from("loadAllTconts", "Took # msecs to load all tconts from ConfD (err=-1)"),
                     from("loadAllLines", "Line wide has dynamic=4 static=0 TCONTs"),
                     kLinesLoaded,
                     end(kCardValidator, "ERROR"),
                 });
}

}  // namespace
}  // namespace tarnd::test
