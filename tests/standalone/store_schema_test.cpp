#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/store/schema.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"

namespace tarnd::store {
namespace {

using test::OwnModel;

std::string refusal(const std::string& body) {
  const OwnModel model(body);
  try {
    const Schema schema(model.folder());
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

TEST(SchemaTest, KeysComeFirstAndChoicesDoNotAppear) {
  const SchemaNode* port = test::model().root().child("service-port");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->num_keys, 1U);
  EXPECT_EQ(port->children.at(0)->name, "id");
  EXPECT_EQ(port->children.at(1)->name, "xgspon");
  EXPECT_EQ(port->children.at(2)->name, "gpon");
  EXPECT_EQ(port->child("choice"), nullptr);
  EXPECT_EQ(port->child("match")->child("vlan")->path(), "/config/service-port/match/vlan");
}

TEST(SchemaTest, KnowsTheTypesThatReadersDistinguish) {
  const SchemaNode& root = test::model().root();
  const SchemaNode& onu = *root.child("interface")->child("gpon")->child("onu");
  EXPECT_EQ(onu.child("id")->value, ValueKind::kUint32);
  EXPECT_EQ(onu.child("snmp")->child("real-time")->value, ValueKind::kEmpty);
  EXPECT_EQ(onu.child("ip-host")->kind, NodeKind::kPresence);
  EXPECT_EQ(onu.child("ip-host")->child("address")->value, ValueKind::kIpv4AndPlen);
  EXPECT_EQ(onu.child("ip-host")->child("default-gateway")->value, ValueKind::kIpv4);
  const SchemaNode& profile = *root.child("profile")->child("gpon");
  EXPECT_EQ(profile.child("tr069-acs-profile")->child("password")->value, ValueKind::kEncrypted);
  EXPECT_EQ(root.child("gpon")->child("onu-auth-method")->value, ValueKind::kEnumeration);
  EXPECT_EQ(root.child("service-port")->child("match")->child("vlan")->child("vlan-id")->value,
            ValueKind::kInt32);
}

TEST(SchemaTest, ReadsValidationPointsWithTheirSettings) {
  const OwnModel model(
      "container config { list a { key k; leaf k { type string; }\n"
      "tailf:validate point { tailf:opaque one; tailf:dependency '.'; tailf:call-once true; }\n"
      "tailf:validate point { tailf:opaque two; tailf:dependency '.'; tailf:priority 3; } } }");
  const Schema schema(model.folder());
  const auto& points = schema.root().child("a")->points;
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[0].name, "point");
  EXPECT_EQ(points[0].request, "one");
  EXPECT_TRUE(points[0].call_once);
  EXPECT_EQ(points[0].priority, 0);
  EXPECT_EQ(points[1].request, "two");
  EXPECT_FALSE(points[1].call_once);
  EXPECT_EQ(points[1].priority, 3);
}

TEST(SchemaTest, RefusesADependencyThatItWouldNotFollow) {
  EXPECT_EQ(refusal("container config { leaf a { type string;\n"
                    "tailf:validate p { tailf:opaque o; tailf:dependency '../b'; } } }"),
            "the model uses tailf:dependency '../b': only '.' is known");
}

TEST(SchemaTest, RefusesRulesThatAnEditedSliceCannotShow) {
  for (const char* body :
       {"container config { leaf a { type string; must \"../b\"; } leaf b { type string; } }",
        "container config { leaf a { type string; when \"../b\"; } leaf b { type string; } }",
        "container config { leaf a { type leafref { path \"../b\"; } } leaf b { type string; } }",
        "container config { leaf-list a { type leafref { path \"../b\"; } } leaf b {type int8;} }",
        "container config { leaf a { type union { type int8; type leafref { path \"../b\"; } } }\n"
        "leaf b { type string; } }",
        "container config { list a { key k; unique v; leaf k {type int8;} leaf v {type int8;} } }",
        "container config { list a { key k; max-elements 3; leaf k { type string; } } }",
        "container config { leaf-list a { type string; min-elements 1; } }"}) {
    EXPECT_THAT(refusal(body), testing::StartsWith("the model has a rule at 'a'")) << body;
  }
}

TEST(SchemaTest, ReportsWhyAModelCannotBeLoaded) {
  EXPECT_THAT(refusal("container config { leaf a { type nonsense; } }"),
              testing::AllOf(testing::StartsWith("cannot load the model base.yang from "),
                             testing::HasSubstr("nonsense")));
  EXPECT_EQ(refusal(""), "the model has no top-level container");
  EXPECT_THROW(Schema(std::filesystem::path("/no/such/folder")), InputError);
}

}  // namespace
}  // namespace tarnd::store
