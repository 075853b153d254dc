#include "netconf/data_text.h"

#include <gtest/gtest.h>

#include <string>

#include "standalone/store/datastore.h"
#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

std::string text_of(const std::string& content, Defaults defaults) {
  store::Datastore datastore(test::model());
  datastore.load(test::config(content), store::Format::kXml);
  std::string text;
  append_data(text, datastore.root(), defaults);
  return text;
}

std::string link(const std::string& content) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>" +
         content + "</gpon></interface>";
}

TEST(DataTextTest, ReportsDefaultsAsAskedFor) {
  struct Row {
    const char* name;
    Defaults defaults;
    const char* declared;
    std::string leaves;
  };
  // One leaf has the value of its default, the other was not set.
  const std::string given = link("<downstream-fec>true</downstream-fec>");
  for (const Row& row : {
           Row{"explicit", Defaults::kExplicit, "", "<downstream-fec>true</downstream-fec>"},
           Row{"trim", Defaults::kTrim, "", ""},
           Row{"report-all", Defaults::kReportAll, "",
               "<downstream-fec>true</downstream-fec><upstream-fec>true</upstream-fec>"},
           Row{"report-all-tagged", Defaults::kReportAllTagged,
               " xmlns:wd=\"urn:ietf:params:xml:ns:netconf:default:1.0\"",
               "<downstream-fec>true</downstream-fec>"
               "<upstream-fec wd:default=\"true\">true</upstream-fec>"},
       }) {
    EXPECT_EQ(text_of(given, row.defaults), "<config xmlns=\"urn:tarnd:base\"" +
                                                std::string(row.declared) + ">" + link(row.leaves) +
                                                "</config>")
        << row.name;
  }
}

TEST(DataTextTest, AnEmptyConfigurationIsItsRoot) {
  for (const Defaults defaults : {Defaults::kExplicit, Defaults::kTrim, Defaults::kReportAll}) {
    EXPECT_EQ(text_of("", defaults), "<config xmlns=\"urn:tarnd:base\"/>");
  }
}

TEST(DataTextTest, EscapesValues) {
  const std::string onu =
      "<onu><id>1</id><description>&lt;a&gt; &amp; \"b\"&#13;</description></onu>";
  EXPECT_EQ(text_of(link(onu), Defaults::kExplicit),
            "<config xmlns=\"urn:tarnd:base\">" + link(onu) + "</config>");
}

// What is printed reads back as the same configuration.
TEST(DataTextTest, AgreesWithThePrinterOfTheStore) {
  const std::string content =
      link("<onu><id>1</id><description>a</description></onu><onu><id>2</id></onu>") +
      "<service-port><id>1</id><upstream-rate>5</upstream-rate></service-port>";
  store::Datastore datastore(test::model());
  datastore.load(text_of(content, Defaults::kExplicit), store::Format::kXml);
  store::Datastore other(test::model());
  other.load(test::config(content), store::Format::kXml);
  EXPECT_EQ(datastore.print(store::Format::kXml), other.print(store::Format::kXml));
}

// A leaf that was set and is deleted has its default again.
TEST(DataTextTest, ADeletedLeafIsADefault) {
  store::Datastore datastore(test::model());
  datastore.load(test::config(link("<upstream-fec>false</upstream-fec>")), store::Format::kXml);
  store::Transaction transaction(datastore);
  transaction.edit(test::config(link("<upstream-fec nc:operation='delete'/>")),
                   store::Format::kXml);
  std::string text;
  append_data(text, datastore.root(), Defaults::kReportAllTagged);
  EXPECT_NE(text.find("<upstream-fec wd:default=\"true\">true</upstream-fec>"), std::string::npos)
      << text;
  text.clear();
  append_data(text, datastore.root(), Defaults::kExplicit);
  EXPECT_EQ(text, "<config xmlns=\"urn:tarnd:base\">" + link("") + "</config>");
}

}  // namespace
}  // namespace tarnd::netconf
