#include "netconf/subtree_filter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "standalone/store/datastore.h"
#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

constexpr const char* kContent =
    "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
    "<onu><id>1</id><description>a</description></onu><onu><id>2</id></onu></gpon></interface>"
    "<service-port><id>1</id><upstream-rate>5</upstream-rate></service-port>"
    "<service-port><id>2</id><upstream-rate>6</upstream-rate></service-port>";

// What the filter with this content, in the model's namespace, selects; without white space.
std::string selected(const std::string& filter) {
  store::Datastore datastore(test::model());
  datastore.load(test::config(kContent), store::Format::kXml);
  const Element root = read_message("<filter xmlns='urn:tarnd:base'>" + filter + "</filter>");
  const store::TreeOwner tree = select_subtrees(root, datastore.root(), Defaults::kExplicit);
  if (tree == nullptr) return "nothing";
  char* text = nullptr;
  lyd_print_mem(&text, tree.get(), LYD_XML, LYD_PRINT_WD_EXPLICIT | LYD_PRINT_SHRINK);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text;
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

TEST(SubtreeFilterTest, SelectsAsTheRfcSays) {
  struct Row {
    const char* name;
    std::string filter;
    std::string selected;
  };
  const std::string port_1 =
      "<service-port><id>1</id><upstream-rate>5</upstream-rate></service-port>";
  const std::string port_2 =
      "<service-port><id>2</id><upstream-rate>6</upstream-rate></service-port>";
  for (const Row& row : {
           Row{"an empty filter", "", "nothing"},
           Row{"everything", "<config/>", config(kContent)},
           Row{"all entries", "<config><service-port/></config>", config(port_1 + port_2)},
           Row{"any namespace", "<config xmlns=''><service-port/></config>",
               config(port_1 + port_2)},
           Row{"another namespace", "<config xmlns='urn:x'><service-port/></config>", "nothing"},
           Row{"an attribute that no node has", "<config a='b'/>", "nothing"},
           Row{"one entry", "<config><service-port><id>2</id></service-port></config>",
               config(port_2)},
           Row{"white space around a value",
               "<config><service-port><id> 2\n</id></service-port></config>", config(port_2)},
           Row{"no such entry", "<config><service-port><id>3</id></service-port></config>",
               "nothing"},
           Row{"by another leaf",
               "<config><service-port><upstream-rate>6</upstream-rate></service-port></config>",
               config(port_2)},
           Row{"one value of two wrong",
               "<config><service-port><id>1</id><upstream-rate>6</upstream-rate></service-port>"
               "</config>",
               "nothing"},
           Row{"a leaf of all entries",
               "<config><interface><gpon><onu><description/></onu></gpon></interface></config>",
               link("<onu><id>1</id><description>a</description></onu>")},
           Row{"a leaf of one entry",
               "<config><interface><gpon><onu><id>2</id><description/></onu></gpon></interface>"
               "</config>",
               link("<onu><id>2</id></onu>")},
           Row{"only keys", "<config><service-port><id/></service-port></config>",
               config("<service-port><id>1</id></service-port>"
                      "<service-port><id>2</id></service-port>")},
           Row{"several filters for one list",
               "<config><service-port><id>2</id></service-port><service-port><id/></service-port>"
               "</config>",
               config("<service-port><id>1</id></service-port>" + port_2)},
           Row{"two places",
               "<config><service-port><id>1</id></service-port><interface><gpon><onu><id>2</id>"
               "</onu></gpon></interface></config>",
               config("<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id>"
                      "<port-id>3</port-id><onu><id>2</id></onu></gpon></interface>" +
                      port_1)},
           Row{"a value for a container", "<config>text</config>", "nothing"},
           Row{"an unknown name", "<config><nix/></config>", "nothing"},
       }) {
    EXPECT_EQ(selected(row.filter), row.selected) << row.name;
  }
}

TEST(SubtreeFilterTest, CountsItsElements) {
  const auto filter = [](int entries) {
    std::string content;
    for (int i = 0; i < entries; ++i) content += "<service-port><id>1</id></service-port>";
    return read_message("<filter><config>" + content + "</config></filter>");
  };
  EXPECT_FALSE(is_many_subtrees(filter(0)));
  EXPECT_FALSE(is_many_subtrees(filter(30)));
  EXPECT_TRUE(is_many_subtrees(filter(33)));
}

}  // namespace
}  // namespace tarnd::netconf
