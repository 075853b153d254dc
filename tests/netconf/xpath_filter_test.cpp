#include "netconf/xpath_filter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "netconf/rpc_error.h"
#include "standalone/store/datastore.h"
#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

constexpr const char* kContent =
    "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
    "<onu><id>1</id><description>a</description></onu><onu><id>2</id></onu></gpon></interface>"
    "<service-port><id>1</id><upstream-rate>5</upstream-rate></service-port>"
    "<service-port><id>2</id><upstream-rate>6</upstream-rate></service-port>";

// What the filter with this expression selects of the content, or the tag of the error.
std::string selected(const std::string& select, const std::string& content = kContent) {
  store::Datastore datastore(test::model());
  datastore.load(test::config(content), store::Format::kXml);
  const Element filter =
      read_message("<filter xmlns:t='urn:tarnd:base' xmlns:x='urn:x' " + select + "/>");
  try {
    const auto selected = select_by_xpath(filter, datastore.root());
    if (!selected.has_value()) return "foreign";
    const store::TreeOwner& tree = *selected;
    if (tree == nullptr) return "nothing";
    char* text = nullptr;
    lyd_print_mem(&text, tree.get(), LYD_XML, LYD_PRINT_WD_EXPLICIT | LYD_PRINT_SHRINK);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    return text;
  } catch (const RpcFailure& failure) {
    return failure.errors().front().tag;
  }
}

std::string config(const std::string& content) {
  return "<config xmlns=\"urn:tarnd:base\">" + content + "</config>";
}

std::string link(const std::string& content) {
  return config(
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id>"
      "<port-id>3</port-id>" +
      content + "</gpon></interface>");
}

std::string select(const std::string& expression) {
  return "select=\"" + expression + "\"";
}

TEST(XPathFilterTest, SelectsNodesWithWhatIsAroundAndBelowThem) {
  struct Row {
    const char* name;
    std::string expression;
    std::string selected;
  };
  const std::string port_1 =
      "<service-port><id>1</id><upstream-rate>5</upstream-rate></service-port>";
  const std::string port_2 =
      "<service-port><id>2</id><upstream-rate>6</upstream-rate></service-port>";
  for (const Row& row : {
           Row{"the document", "/", config(kContent)},
           Row{"everything", "/t:config", config(kContent)},
           Row{"without a prefix", "/config/service-port", config(port_1 + port_2)},
           Row{"all entries", "/t:config/t:service-port", config(port_1 + port_2)},
           Row{"one entry", "/t:config/t:service-port[t:id='2']", config(port_2)},
           Row{"by another leaf", "//t:service-port[t:upstream-rate > 5]", config(port_2)},
           Row{"a leaf comes with the keys", "//t:onu[t:id=1]/t:description",
               link("<onu><id>1</id><description>a</description></onu>")},
           Row{"only keys", "/t:config/t:service-port/t:id",
               config("<service-port><id>1</id></service-port>"
                      "<service-port><id>2</id></service-port>")},
           Row{"a union", "//t:service-port[t:id=1]|//t:onu[t:id=2]",
               config("<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id>"
                      "<port-id>3</port-id><onu><id>2</id></onu></gpon></interface>" +
                      port_1)},
           Row{"a node and one inside it", "//t:onu[t:id=2]|//t:onu[t:id=2]/t:id",
               link("<onu><id>2</id></onu>")},
           Row{"and, or", "//t:service-port[t:id=1 and t:upstream-rate=5 or t:id=9]",
               config(port_1)},
           Row{"an axis", "//t:onu/child::t:description",
               link("<onu><id>1</id><description>a</description></onu>")},
           Row{"a prefix inside a text", "//t:onu[t:description='x:a']", "nothing"},
           Row{"no such entry", "/t:config/t:service-port[t:id='7']", "nothing"},
       }) {
    EXPECT_EQ(selected(select(row.expression)), row.selected) << row.name;
  }
}

TEST(XPathFilterTest, ConditionsOnNothingSelectNothing) {
  EXPECT_EQ(selected(select("/t:config/t:service-port[t:id=1 and t:upstream-rate=5]/t:gpon"), ""),
            "nothing");
}

TEST(XPathFilterTest, RefusesWhatNamesNoNodes) {
  struct Row {
    const char* name;
    std::string select;
    const char* tag;
  };
  const auto repeated = [](const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
  };
  for (const Row& row : {
           Row{"no expression", "", "missing-attribute"},
           Row{"empty", select(""), "invalid-value"},
           Row{"malformed", select("/t:config["), "invalid-value"},
           Row{"a quote is missing", select("'"), "invalid-value"},
           Row{"a number", select("count(/t:config)"), "invalid-value"},
           Row{"a truth value", select("1 = 1"), "invalid-value"},
           Row{"an undeclared prefix", select("/u:config"), "invalid-value"},
           Row{"a foreign namespace", select("/x:config"), "foreign"},
           Row{"an unknown function", select("nix(/t:config)"), "invalid-value"},
           Row{"too long", select("/t:config" + repeated("/.", 3000)), "invalid-value"},
           Row{"too deep", select(repeated("(", 1000) + repeated(")", 1000)), "invalid-value"},
       }) {
    EXPECT_EQ(selected(row.select), row.tag) << row.name;
  }
}

TEST(XPathFilterTest, APlainPathIsNamesWithAFewConditions) {
  struct Row {
    const char* expression;
    bool is_plain;
  };
  const std::string condition = "[t:id='1']";
  std::string eight = "/t:config/t:service-port";
  for (int i = 0; i < 8; ++i) eight += condition;
  const std::string nine = eight + condition;
  const std::string long_path = "/t:config[t:id='" + std::string(600, 'x') + "']";
  for (const Row& row : {
           Row{"/", true},
           Row{"/t:config", true},
           Row{" /t:config/service-port ", true},
           Row{"/t:config/t:service-port[t:id='1']/t:upstream-rate", true},
           Row{"/t:config/t:service-port[ t:id = 1 ][t:upstream-rate='//*']", true},
           Row{"/t:config/t:service-port[t:id='1' and t:upstream-rate=5]", true},
           Row{eight.c_str(), true},
           Row{nine.c_str(), false},
           Row{long_path.c_str(), false},
           Row{"//t:service-port", false},
           Row{"/t:config//t:id", false},
           Row{"/*", false},
           Row{"/t:config/child::t:service-port", false},
           Row{"/t:config/..", false},
           Row{"/t:config|/t:config", false},
           Row{"/t:config/t:service-port[2]", false},
           Row{"/t:config/t:service-port[t:id > 1]", false},
           Row{"/t:config/t:service-port[t:id=//t:id]", false},
           Row{"/t:config/t:service-port[t:id=t:id]", false},
           Row{"/t:config/t:service-port[t:id='1' or t:id='2']", false},
           Row{"/t:config/t:service-port[count(//*)=1]", false},
           Row{"t:config", false},
           Row{"", false},
       }) {
    const Element filter = read_message("<filter xmlns:t='urn:tarnd:base' select=\"" +
                                        std::string(row.expression) + "\"/>");
    EXPECT_EQ(is_plain_path(filter), row.is_plain) << row.expression;
  }
}

}  // namespace
}  // namespace tarnd::netconf
