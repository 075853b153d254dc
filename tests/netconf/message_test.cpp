#include "netconf/message.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnd::netconf {
namespace {

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(MessageTest, KeepsNamesTextsAndAttributes) {
  const Element root = read_message(
      "<rpc xmlns='urn:a' xmlns:b='urn:b' id='7' b:more='x&amp;y'>one<b:child> two "
      "</b:child></rpc>");
  EXPECT_TRUE(root.is("urn:a", "rpc"));
  EXPECT_EQ(root.text, "one");
  ASSERT_EQ(root.attributes.size(), 2U);
  EXPECT_EQ(*root.attribute("id"), "7");
  EXPECT_EQ(root.attribute("more"), nullptr);
  EXPECT_EQ(root.attributes[1].name_space, "urn:b");
  EXPECT_EQ(root.attributes[1].prefix, "b");
  EXPECT_EQ(root.attributes[1].value, "x&y");
  ASSERT_EQ(root.children.size(), 1U);
  EXPECT_TRUE(root.children[0].is("urn:b", "child"));
  EXPECT_EQ(root.children[0].text, " two ");
}

TEST(MessageTest, LeavesTheConfigurationOfAnEditUnread) {
  const std::string begin = "<rpc xmlns='" + std::string(kBaseNamespace) + "'><edit-config>";
  const std::string many = repeated("<a><b/></a>", 50'000);
  const std::string message =
      begin + "<config xmlns:y='urn:y'>" + many + "</config><x/></edit-config></rpc>";
  const Element full = read_message(message);
  const Element& edit = full.children.at(0);
  ASSERT_EQ(edit.children.size(), 2U);
  const auto& unread = edit.children[0].unread;
  EXPECT_EQ(message.substr(unread.begin, unread.end - unread.begin), many);
  EXPECT_EQ(edit.children[0].namespaces.size(), 2U);
  EXPECT_TRUE(edit.children[0].children.empty());
  EXPECT_EQ(edit.children[1].name, "x");
  for (const char* config : {"<config/>", "<config></config>", "<config> <!-- --> </config>"}) {
    const Element empty = read_message(begin + config + "<x/></edit-config></rpc>");
    EXPECT_TRUE(empty.children.at(0).children.at(0).unread.empty()) << config;
    EXPECT_EQ(empty.children.at(0).children.size(), 2U) << config;
  }
}

TEST(MessageTest, RefusesWhatNoMessageNeeds) {
  struct Row {
    const char* name;
    std::string text;
  };
  for (const Row& row : {
           Row{"nothing", ""},
           Row{"no XML", "hello"},
           Row{"no end", "<a><b></a>"},
           Row{"two elements", "<a/><b/>"},
           Row{"DOCTYPE", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"},
           Row{"prefix without declaration", "<x:a/>"},
           Row{"not UTF-8", "<a>\xff</a>"},
           Row{"other encoding", "<?xml version='1.0' encoding='nix'?><a>\xe4</a>"},
           Row{"too deep", repeated("<a>", 101) + repeated("</a>", 101)},
           Row{"too many elements", "<a>" + repeated("<b/>", 20'000) + "</a>"},
       }) {
    EXPECT_THROW(read_message(row.text), MalformedMessage) << row.name;
  }
}

TEST(MessageTest, KeepsTheNamespacesInScopeOfAnExpression) {
  const Element root = read_message(
      "<a xmlns='urn:a' xmlns:x='urn:x'><b xmlns:y='urn:y'/><c xmlns:x='urn:z' select='/x:d'/>"
      "<d/></a>");
  EXPECT_TRUE(root.namespaces.empty());
  EXPECT_TRUE(root.children.at(0).namespaces.empty());
  EXPECT_TRUE(root.children.at(2).namespaces.empty());
  std::string all;
  for (const Namespace& known : root.children.at(1).namespaces) {
    all += known.prefix + "=" + known.name + " ";
  }
  EXPECT_EQ(all, "=urn:a x=urn:x x=urn:z ");
}

}  // namespace
}  // namespace tarnd::netconf
