#include <gmock/gmock.h>

#include <string>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

/// A card with one ONU on the GPON link 1/1/3, none on the XGS-PON link 1/1/4, and two service
/// ports, of which one names no link.
class LoadTest : public CommandTest {
 protected:
  LoadTest() {
    config(
        "load.xml",
        "<profile><gpon>"
        "<bandwidth-profile><name>up</name>"
        "<traffic><type-5><fixed>110688</fixed><assured>553192</assured><maximum>900000</maximum>"
        "</type-5></traffic>"
        "</bandwidth-profile>"
        "<line-profile><name>home</name>"
        "<tcont><id>1</id><bandwidth-profile>up</bandwidth-profile></tcont></line-profile>"
        "</gpon></profile>"
        "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
        "<onu><id>1</id><profile-references><line-profile>home</line-profile>"
        "</profile-references></onu></gpon>"
        "<xgspon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>4</port-id></xgspon>"
        "</interface>"
        "<service-port><id>1</id></service-port>" +
            service_port(2, 1, 100));
  }

  [[nodiscard]] Outcome load(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"load", "--running", "load.xml"});
    return gponval(arguments);
  }
};

TEST_F(LoadTest, TheTextHasATableOfTheLinksOneOfTheLineProfilesAndTheServicePorts) {
  const Outcome run = load({});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      run.out,
      "Upstream bandwidth of the PON links in kbit/s: total of 1107504, with 560 for each ONU; "
      "fixed of 442752\n"
      "link              ONUs   total                 share    room   fixed                 share  "
      "  "
      "room\n"
      "gpon 1/1/3    1 of 128  553752  [#####.....]  50.0 %  553752  110688  [###.......]  25.0 %  "
      "332064\n"
      "xgspon 1/1/4  0 of 128       -                     -       -       -                     -  "
      "   "
      "  -\n"
      "\n"
      "TCONTs of the line profiles, and what each ONU reserves in kbit/s\n"
      "line profile  types 2 to 5  type 1   total   fixed\n"
      "home                1 of 3  0 of 3  553192  110688\n"
      "\n"
      "Service ports: 1 of 4096\n");
}

TEST_F(LoadTest, FitAddsHowManyMoreOnusEachLinkAccepts) {
  const Outcome run = load({"--fit", "home"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out,
              EndsWith("Service ports: 1 of 4096\n"
                       "\n"
                       "More ONUs with the line profile home, and what rejects the next one\n"
                       "link                ONUs            limit\n"
                       "gpon 1/1/3             1  total bandwidth\n"
                       "xgspon 1/1/4  any number                -\n"));
}

TEST_F(LoadTest, JsonHasTheSame) {
  const Outcome run = load({"--fit", "home", "--format", "json"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.json(), json::parse(R"({
    "onu-overhead": 560,
    "links": [
      {"path": "/config/interface/gpon{1 1 3}", "onus": {"used": 1, "limit": 128},
       "total": {"reserved": 553752, "capacity": 1107504, "share": 0.5, "room": 553752},
       "fixed": {"reserved": 110688, "capacity": 442752, "share": 0.25, "room": 332064},
       "rejected": null},
      {"path": "/config/interface/xgspon{1 1 4}", "onus": {"used": 0, "limit": 128},
       "total": null, "fixed": null, "rejected": null}],
    "line-profiles": [
      {"name": "home", "dynamic-tconts": {"used": 1, "limit": 3},
       "static-tconts": {"used": 0, "limit": 3}, "total": 553192, "fixed": 110688}],
    "service-ports": {"used": 1, "limit": 4096},
    "fit": [
      {"path": "/config/interface/gpon{1 1 3}", "onus": 1, "limit": "total bandwidth"},
      {"path": "/config/interface/xgspon{1 1 4}", "onus": null, "limit": null}]
  })"));
}

TEST_F(LoadTest, TheLimitsAreThoseOfTheCardFile) {
  file("small.card", "bw-check = false\nonus-per-link = 32\nmax-service-ports = 8\n");
  const Outcome run = load({"--card", "small.card"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("gpon 1/1/3    1 of 32      -"));
  EXPECT_THAT(run.out, HasSubstr("home                1 of 4  0 of 3"));
  EXPECT_THAT(run.out, HasSubstr("Service ports: 1 of 8\n"));
}

TEST_F(LoadTest, WhatTheCardFileDoesNotDefineIsNoLimit) {
  file("small.card", "bw-check = true\n");
  EXPECT_THAT(load({"--card", "small.card"}).out, HasSubstr("gpon 1/1/3       1  553752"));
  const json links = load({"--card", "small.card", "--format", "json"}).json().at("links");
  EXPECT_EQ(links.at(0).at("onus"), (json{{"used", 1}, {"limit", nullptr}}));
}

TEST_F(LoadTest, ALinkWhoseOnusCannotBeChangedIsNamed) {
  config("load.xml",
         "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
         "<onu><id>1</id></onu></gpon></interface>");
  EXPECT_THAT(load({}).out, HasSubstr("gpon 1/1/3: every change of its ONUs is rejected: "
                                      "an ONU has no line profile\n"));
  EXPECT_EQ(load({"--format", "json"}).json().at("links").at(0).at("rejected"),
            "an ONU has no line profile");
  EXPECT_THAT(run_at_terminal(folder_, {"load", "--running", "load.xml"}).out,
              HasSubstr("\033[31mgpon 1/1/3: every change of its ONUs is rejected"));
}

TEST_F(LoadTest, WideLettersTakeTwoColumnsAndCombiningOnesNone) {
  config("load.xml",
         "<profile><gpon><line-profile><name>家庭</name></line-profile>"
         "<line-profile><name>cafe\xcc\x81</name></line-profile>"
         "<line-profile><name>home</name></line-profile></gpon></profile>");
  EXPECT_THAT(load({}).out, HasSubstr("line profile  types 2 to 5  type 1  total  fixed\n"
                                      "cafe\xcc\x81                0 of 3  0 of 3      0      0\n"
                                      "home                0 of 3  0 of 3      0      0\n"
                                      "家庭                0 of 3  0 of 3      0      0\n"));
}

TEST_F(LoadTest, AnUnknownLineProfileIsWrongUse) {
  const Outcome run = load({"--fit", "hoem"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "gponval: --fit: there is no line profile 'hoem', did you mean 'home'?\n");
}

TEST_F(LoadTest, AFullLinkIsRedAtATerminal) {
  file("more.xml", in_config("<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id>"
                             "<port-id>3</port-id><onu><id>2</id><profile-references>"
                             "<line-profile>home</line-profile></profile-references></onu>"
                             "<onu><id>3</id><profile-references>"
                             "<line-profile>home</line-profile></profile-references></onu>"
                             "</gpon></interface>"));
  EXPECT_THAT(load({}).out, Not(HasSubstr("\033[")));
  const Outcome green = run_at_terminal(folder_, {"load", "--running", "load.xml"});
  EXPECT_THAT(green.out, HasSubstr("\033[32m[#####.....]  50.0 %\033[0m"));
  const Outcome saved = gponval({"commit", "--running", "load.xml", "--change", "more.xml",
                                 "--only", "onu_snmp_rt_warn", "--save", "load.xml"});
  EXPECT_EQ(saved.status, 0) << saved.out << saved.err;
  const Outcome red = run_at_terminal(folder_, {"load", "--running", "load.xml"});
  EXPECT_THAT(red.out, HasSubstr("\033[31m[##########] 150.0 %\033[0m"));
}

}  // namespace
}  // namespace gponval::test
