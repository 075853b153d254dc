// The value array of an entry with containers with presence before, after and inside others.

#include "standalone/confd/value_array.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"
#include "tests/support/own_model.h"

namespace tarnd::test {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kModel = R"(
  container config {
    list entry {
      key "id";
      leaf id { type uint32; }
      container first {
        presence "It has a second one inside.";
        leaf before { type uint32; }
        container second {
          presence "It has leaves alone.";
          leaf inner { type uint32; }
          leaf-list many { type uint32; }
        }
        leaf after { type uint32; }
      }
      container always {
        leaf middle { type uint32; }
      }
      container third {
        presence "It is the last of them.";
        leaf inmost { type uint32; }
      }
      leaf last { type string; }
    }
  })";

std::string printed(const confd_value_t& value) {
  std::array<char, 64> text{};
  confd_pp_value(text.data(), text.size(), &value);
  return value.type == C_NOEXISTS ? "-" : text.data();
}

class ConfdValueArray : public testing::Test {
 protected:
  // The array of an entry with this content, and the value after the room for it.
  Texts array_of(const std::string& content, int room) {
    datastore_.load("<config xmlns=\"urn:tarnd:base\"><entry>" + content + "</entry></config>",
                    store::Format::kXml);
    const lyd_node* entry = lyd_child(datastore_.root());
    confd_value_t untouched;
    CONFD_SET_INT8(&untouched, 99);
    std::vector<confd_value_t> values(kRoom, untouched);
    size_ = confd::write_value_array(confd::load_model(schema_), entry, values.data(), room);
    Texts texts;
    std::transform(values.begin(), values.end(), std::back_inserter(texts), printed);
    std::for_each(values.begin(), values.end(), confd::release);
    return texts;
  }

  // For any room, as much as fits is written, and the whole size is returned.
  void expect_array(const std::string& content, const Texts& expected) {
    for (int room = 0; room <= kRoom; ++room) {
      Texts wanted(expected.begin(),
                   expected.begin() + std::min<std::ptrdiff_t>(room, std::ssize(expected)));
      wanted.resize(kRoom, "99");
      EXPECT_EQ(array_of(content, room), wanted) << content << ", room for " << room;
      EXPECT_EQ(size_, std::ssize(expected));
    }
  }

  static constexpr int kRoom = 14;

 private:
  OwnModel model_{kModel};
  store::Schema schema_{model_.folder()};
  store::Datastore datastore_{schema_};
  int size_ = 0;
};

TEST_F(ConfdValueArray, IfNoneExistsEachHasOneValue) {
  expect_array("<id>1</id>", {"1", "-", "always", "-", "-", "-"});
  expect_array("<id>1</id><always><middle>2</middle></always><last>z</last>",
               {"1", "-", "always", "2", "-", "z"});
}

TEST_F(ConfdValueArray, WhatFollowsOneMovesBack) {
  expect_array("<id>1</id><first/><last>z</last>",
               {"1", "first", "-", "-", "-", "always", "-", "-", "z"});
  expect_array("<id>1</id><first><after>3</after></first><always><middle>2</middle></always>",
               {"1", "first", "-", "-", "3", "always", "2", "-", "-"});
  expect_array("<id>1</id><third><inmost>4</inmost></third><last>z</last>",
               {"1", "-", "always", "-", "third", "4", "z"});
}

TEST_F(ConfdValueArray, OneInsideAnotherMovesTheRestOfBoth) {
  expect_array(
      "<id>1</id><first><before>5</before><second><inner>6</inner><many>8</many><many>7</many>"
      "</second><after>3</after></first><always><middle>2</middle></always>"
      "<third><inmost>4</inmost></third><last>z</last>",
      {"1", "first", "5", "second", "6", "7 8", "3", "always", "2", "third", "4", "z"});
  expect_array("<id>1</id><first><second/></first><last>z</last>",
               {"1", "first", "-", "second", "-", "", "-", "always", "-", "-", "z"});
}

}  // namespace
}  // namespace tarnd::test
