// The attribute `default` in what a client sends (RFC 6243, sections 3.4 and 6): the leaf is as if
// nobody had set it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/netconf/session_fixture.h"
#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string kTag = " xmlns:wd='urn:ietf:params:xml:ns:netconf:default:1.0' wd:default=";
const std::string kTrue = kTag + "'true'";

std::string fec(const std::string& attributes, const std::string& value = "true") {
  return "<upstream-fec" + attributes + ">" + value + "</upstream-fec>";
}

std::string link(const std::string& content, const std::string& attributes = "") {
  return "<interface><gpon" + attributes +
         "><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>" + content +
         "</gpon></interface>";
}

class DefaultTagsTest : public ServedCardTest {
 protected:
  // What is set, and nothing else.
  std::string data(const std::string& datastore, const std::string& mode = "explicit") {
    const std::string reply =
        client(1).ask("<get-config><source><" + datastore +
                      "/></source><with-defaults "
                      "xmlns='urn:ietf:params:xml:ns:yang:ietf-netconf-with-defaults'>" +
                      mode + "</with-defaults></get-config>");
    const std::string begin = "<data>";
    const std::size_t from = reply.find(begin) + begin.size();
    return reply.substr(from, reply.find("</data>") - from);
  }
};

TEST_F(DefaultTagsTest, SayThatALeafIsNotSet) {
  struct Row {
    const char* name;
    std::string before;  // of the link
    std::string edit;
    const char* after;  // the leaf, "" for none
  };
  const std::string set = fec("", "false");
  for (const Row& row : {
           Row{"merged to a value", set, link(fec(kTrue)), ""},
           Row{"merged to the default that was set", fec(""), link(fec(kTrue)), ""},
           Row{"merged to nothing", "", link(fec(kTrue)), ""},
           Row{"in another form", set, link(fec(kTag + "'1'")), ""},
           Row{"before the keys", set,
               "<interface><gpon>" + fec(kTrue) +
                   "<chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id></gpon>"
                   "</interface>",
               ""},
           Row{"replaced", set, link(fec(kTrue + " nc:operation='replace'")), ""},
           Row{"in an entry that is replaced", set, link(fec(kTrue), " nc:operation='replace'"),
               ""},
           Row{"created", "", link(fec(kTrue + " nc:operation='create'")), ""},
           Row{"deleted", set, link(fec(kTrue + " nc:operation='delete'")), ""},
           Row{"removed", "", link(fec(kTrue + " nc:operation='remove'")), ""},
           Row{"not tagged", set, link(fec("")), ">true<"},
           Row{"tagged as no default", set, link(fec(kTag + "'false'")), ">true<"},
           Row{"tagged as no default, in another form", set, link(fec(kTag + "'0'")), ">true<"},
       }) {
    SCOPED_TRACE(row.name);
    datastore_.load(test::config(link(row.before)), store::Format::kXml);
    EXPECT_THAT(client(1).ask(edit(row.edit)), IsOk());
    const std::string after = data("candidate");
    EXPECT_THAT(after, HasSubstr("<port-id>3</port-id>"));
    if (std::string(row.after).empty()) {
      EXPECT_THAT(after, Not(HasSubstr("upstream-fec")));
      EXPECT_THAT(data("candidate", "report-all-tagged"),
                  HasSubstr("<upstream-fec wd:default=\"true\">true</upstream-fec>"));
    } else {
      EXPECT_THAT(after, HasSubstr("<upstream-fec" + std::string(row.after)));
    }
    EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
  }
}

TEST_F(DefaultTagsTest, DoNothingIfTheEditDoesNothing) {
  datastore_.load(test::config(link(fec("", "false"))), store::Format::kXml);
  EXPECT_THAT(client(1).ask(edit(link(fec(kTrue)), "<default-operation>none</default-operation>")),
              IsOk());
  EXPECT_THAT(data("candidate"), HasSubstr("<upstream-fec>false</upstream-fec>"));
}

TEST_F(DefaultTagsTest, ComeBackAsTheServerSentThem) {
  const std::string whole = test::config(
      link(fec("") + "<downstream-fec>false</downstream-fec>") + port("1") +
      "<profile><gpon><service-profile><name>s</name><vlan-mapping><name>m</name>"
      "<match><outer><cos>7</cos></outer></match></vlan-mapping></service-profile></gpon>"
      "</profile>");
  datastore_.load(whole, store::Format::kXml);
  const std::string tagged = data("running", "report-all-tagged");
  const std::string explicitly = data("running");
  ASSERT_THAT(tagged, HasSubstr("wd:default=\"true\""));
  const std::string config = "<config>" + tagged + "</config>";
  for (const std::string& operation : {
           "<edit-config><target><candidate/></target>" + config + "</edit-config>",
           "<edit-config><target><candidate/></target><default-operation>replace"
           "</default-operation>" +
               config + "</edit-config>",
           "<copy-config><target><candidate/></target><source>" + config +
               "</source></copy-config>",
           "<validate><source>" + config + "</source></validate>",
           "<edit-config><target><running/></target>" + config + "</edit-config>",
           "<copy-config><target><running/></target><source>" + config + "</source></copy-config>",
       }) {
    EXPECT_THAT(client(1).ask(operation), IsOk()) << operation;
    EXPECT_EQ(data("candidate"), explicitly) << operation;
    EXPECT_EQ(data("candidate", "report-all-tagged"), tagged) << operation;
    EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
  }
  // And into a card that has nothing.
  EXPECT_THAT(client(1).ask("<copy-config><target><running/></target><source><config/></source>"
                            "</copy-config>"),
              IsOk());
  EXPECT_THAT(client(1).ask("<edit-config><target><running/></target>" + config + "</edit-config>"),
              IsOk());
  EXPECT_EQ(data("running"), explicitly);
}

}  // namespace
}  // namespace tarnd::netconf
