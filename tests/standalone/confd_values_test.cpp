// Values and the helpers that need no transaction.

#include <netinet/in.h>

#include <vector>

#include "standalone/confd/keypath.h"
#include "standalone/confd/model.h"
#include "standalone/confd/values.h"
#include "tests/standalone/confd_test.h"
#include "tests/support/model.h"

namespace tarnd::test {
namespace {

class ConfdValues : public ConfdTest {
 protected:
  static std::string printed(const confd_value_t& value) {
    char text[128];
    const int size = confd_pp_value(text, sizeof text, &value);
    EXPECT_EQ(static_cast<std::size_t>(size), std::strlen(text));
    return text;
  }

  static confd_value_t buf(std::string& text) {
    confd_value_t value;
    CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(text.data()),
                  static_cast<unsigned int>(text.size()));
    return value;
  }

  static std::uint32_t number_of(const char* path) { return confd_cs_node_cd(nullptr, path)->tag; }
};

TEST_F(ConfdValues, EveryTypePrintsItsValue) {
  confd_value_t v;
  CONFD_SET_INT8(&v, -8);
  EXPECT_EQ(printed(v), "-8");
  CONFD_SET_INT16(&v, -16);
  EXPECT_EQ(printed(v), "-16");
  CONFD_SET_INT32(&v, -32);
  EXPECT_EQ(printed(v), "-32");
  CONFD_SET_INT64(&v, -64);
  EXPECT_EQ(printed(v), "-64");
  CONFD_SET_UINT8(&v, 255);
  EXPECT_EQ(printed(v), "255");
  CONFD_SET_UINT16(&v, 65535);
  EXPECT_EQ(printed(v), "65535");
  CONFD_SET_UINT32(&v, 4294967295U);
  EXPECT_EQ(printed(v), "4294967295");
  CONFD_SET_UINT64(&v, 18446744073709551615U);
  EXPECT_EQ(printed(v), "18446744073709551615");
  CONFD_SET_DOUBLE(&v, 1.5);
  EXPECT_EQ(printed(v), "1.5");
  CONFD_SET_BOOL(&v, 1);
  EXPECT_EQ(printed(v), "true");
  CONFD_SET_BOOL(&v, 0);
  EXPECT_EQ(printed(v), "false");
  CONFD_SET_ENUM_VALUE(&v, 4);
  EXPECT_EQ(printed(v), "enum<4>");
  CONFD_SET_STR(&v, "text");
  EXPECT_EQ(printed(v), "text");
  std::string text = "some text";
  EXPECT_EQ(printed(buf(text)), "some text");
  CONFD_SET_NOEXISTS(&v);
  EXPECT_EQ(printed(v), "");
  CONFD_SET_DECIMAL64(&v, (confd_decimal64{-5, 2}));
  EXPECT_EQ(printed(v), "-0.05");
  CONFD_SET_DECIMAL64(&v, (confd_decimal64{1234, 2}));
  EXPECT_EQ(printed(v), "12.34");
}

TEST_F(ConfdValues, AddressesPrintDotted) {
  confd_value_t v;
  CONFD_SET_IPV4(&v, (in_addr{htonl(0xC0A80001)}));
  EXPECT_EQ(printed(v), "192.168.0.1");
  CONFD_SET_IPV4_AND_PLEN(&v, (confd_ipv4_prefix{{htonl(0xC0A80001)}, 0}));
  EXPECT_EQ(printed(v), "192.168.0.1/0");
  CONFD_SET_IPV4PREFIX(&v, (confd_ipv4_prefix{{htonl(0xC0A80000)}, 16}));
  EXPECT_EQ(printed(v), "192.168.0.0/16");
  CONFD_SET_IPV6(&v, in6addr_loopback);
  EXPECT_EQ(printed(v), "::1");
}

TEST_F(ConfdValues, TagsPrintTheirNames) {
  confd_value_t v;
  CONFD_SET_XMLTAG(&v, 2078118842, 864307902);
  EXPECT_EQ(printed(v), "service-port");
  v.type = C_XMLBEGIN;
  EXPECT_EQ(printed(v), "service-port");
}

TEST_F(ConfdValues, AListPrintsItsValues) {
  confd_value_t items[2];
  CONFD_SET_UINT8(&items[0], 1);
  CONFD_SET_UINT8(&items[1], 3);
  confd_value_t list;
  CONFD_SET_LIST(&list, items, 2);
  EXPECT_EQ(printed(list), "1 3");
}

TEST_F(ConfdValues, PrintingNeverWritesAfterTheBuffer) {
  std::string text = "abcdef";
  const confd_value_t value = buf(text);
  char small[5] = "????";
  EXPECT_EQ(confd_pp_value(small, 4, &value), 6);
  EXPECT_STREQ(small, "abc");
  small[0] = '?';
  EXPECT_EQ(confd_pp_value(small, 0, &value), 6);
  EXPECT_EQ(small[0], '?');
}

TEST_F(ConfdValues, KeypathsPrintFromTheRootOn) {
  std::string name = "two words";
  confd_hkeypath_t path = {};
  path.len = 5;
  CONFD_SET_XMLTAG(&path.v[0][0], number_of("/config/interface/gpon/onu"), 0);
  CONFD_SET_NOEXISTS(&path.v[0][1]);
  path.v[1][0] = buf(name);
  CONFD_SET_UINT32(&path.v[1][1], 3);
  CONFD_SET_NOEXISTS(&path.v[1][2]);
  CONFD_SET_XMLTAG(&path.v[2][0], number_of("/config/interface/gpon"), 0);
  CONFD_SET_XMLTAG(&path.v[3][0], number_of("/config/interface"), 0);
  CONFD_SET_XMLTAG(&path.v[4][0], number_of("/config"), 0);
  const std::string whole = "/config/interface/gpon{\"two words\" 3}/onu";
  char text[64];
  EXPECT_EQ(confd_pp_kpath(text, sizeof text, &path), std::ssize(whole));
  EXPECT_EQ(text, whole);
  EXPECT_EQ(confd_pp_kpath(text, 9, &path), std::ssize(whole));
  EXPECT_STREQ(text, "/config/");
}

TEST_F(ConfdValues, Val2strPrintsByTheLeafsType) {
  const auto as_leaf = [](const char* path, const confd_value_t& value) -> std::string {
    char text[32] = "?";
    const int size = confd_val2str(confd_cs_node_cd(nullptr, path)->info.type, &value, text, 32);
    return size == CONFD_ERR ? "error" : text;
  };
  const char* port = "/config/profile/gpon/rg-profile/wan-ip-connection/itf-grouping/ports/port";
  const char* vlan = "/config/profile/gpon/service-profile/vlan-mapping/match/outer/vlan-id";
  const char* ethernet = "/config/profile/gpon/service-profile/vlan-mapping/uni/ethernet";
  confd_value_t v;
  CONFD_SET_ENUM_VALUE(&v, 5);
  EXPECT_EQ(as_leaf(port, v), "wl0-vap1");
  CONFD_SET_ENUM_VALUE(&v, 6);
  EXPECT_EQ(as_leaf(port, v), "error");
  CONFD_SET_UINT32(&v, 5);
  EXPECT_EQ(as_leaf(port, v), "error");

  open();
  for (const auto& [mapping, text] : {std::pair("m1", "100"), std::pair("m2", "any")}) {
    ASSERT_EQ(maapi_get_elem(sock(), th(), &v,
                             "/config/profile/gpon/service-profile{triple}/vlan-mapping{%s}/match/"
                             "outer/vlan-id",
                             mapping),
              CONFD_OK);
    EXPECT_EQ(as_leaf(vlan, v), text);
  }
  CONFD_SET_BOOL(&v, 1);
  EXPECT_EQ(as_leaf(vlan, v), "error");

  CONFD_SET_IPV4(&v, (in_addr{htonl(0x0A000001)}));
  EXPECT_EQ(as_leaf("/config/interface/gpon/onu/ip-host/default-gateway", v), "10.0.0.1");
  EXPECT_EQ(as_leaf("/config/interface/gpon/onu/ip-host/address", v), "error");
  CONFD_SET_IPV4_AND_PLEN(&v, (confd_ipv4_prefix{{htonl(0x0A000001)}, 8}));
  EXPECT_EQ(as_leaf("/config/interface/gpon/onu/ip-host/address", v), "10.0.0.1/8");
  CONFD_SET_BOOL(&v, 0);
  EXPECT_EQ(as_leaf("/config/interface/gpon/upstream-fec", v), "false");

  confd_value_t items[2];
  CONFD_SET_UINT8(&items[0], 1);
  CONFD_SET_UINT8(&items[1], 3);
  CONFD_SET_LIST(&v, items, 2);
  EXPECT_EQ(as_leaf(ethernet, v), "1 3");
  EXPECT_EQ(as_leaf(ethernet, items[0]), "1");
  CONFD_SET_INT8(&items[1], 3);
  EXPECT_EQ(as_leaf(ethernet, v), "error");
}

TEST_F(ConfdValues, Val2strReturnsTheWholeLengthAndFailsWithoutAType) {
  confd_value_t v;
  CONFD_SET_BOOL(&v, 0);
  confd_type* type = confd_cs_node_cd(nullptr, "/config/interface/gpon/upstream-fec")->info.type;
  char text[4];
  EXPECT_EQ(confd_val2str(type, &v, text, sizeof text), 5);
  EXPECT_STREQ(text, "fal");
  EXPECT_EQ(confd_val2str(nullptr, &v, text, sizeof text), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  fail_call(PlatformCall::confd_val2str);
  EXPECT_EQ(confd_val2str(type, &v, text, sizeof text), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
}

TEST_F(ConfdValues, FreeingLeavesAValueThatPointsNowhere) {
  open();
  confd_value_t text;
  ASSERT_EQ(maapi_get_elem(sock(), th(), &text, "/config/service-port{7}/gpon/id"), CONFD_OK);
  confd_free_value(&text);
  EXPECT_EQ(text.val.buf.ptr, nullptr);
  confd_free_value(&text);  // harmless

  confd_value_t list;
  ASSERT_EQ(maapi_get_elem(sock(), th(), &list,
                           "/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/"
                           "ethernet"),
            CONFD_OK);
  confd_free_value(&list);
  EXPECT_EQ(list.val.list.ptr, nullptr);

  confd_value_t number;
  CONFD_SET_UINT32(&number, 7);
  confd_free_value(&number);
  EXPECT_EQ(CONFD_GET_UINT32(&number), 7U);
  confd_free_value(nullptr);
}

TEST_F(ConfdValues, NamesHaveTheirKnownNumbers) {
  const struct {
    const char* name;
    std::uint32_t number;
  } cases[] = {{"service-port", 2078118842}, {"gpon", 1802393476},
               {"xgspon", 1305479277},       {"id", 1279252765},
               {"onu", 1099044037},          {"gem", 54084138},
               {"gem-id", 730022296},        {"rg-one-shot-prov", 0x4de0ba35},
               {"rg-profile", 0x31a8c1d5}};
  for (const auto& c : cases) EXPECT_STREQ(confd_hash2str(c.number), c.name);
  EXPECT_EQ(confd_hash2str(12345), nullptr);
  fail_call(PlatformCall::confd_hash2str);
  EXPECT_EQ(confd_hash2str(2078118842), nullptr);
}

TEST_F(ConfdValues, SchemaNodesAreFoundByPathsWithAndWithoutKeys) {
  confd_cs_node* port = confd_cs_node_cd(nullptr, "/config/service-port");
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->tag, 2078118842U);
  EXPECT_EQ(port->ns, 864307902U);
  EXPECT_EQ(port->info.type, nullptr);
  EXPECT_EQ(confd_cs_node_cd(nullptr, "/base:config/service-port{%d}/", 7), port);
  EXPECT_STREQ(confd_hash2str(port->parent->tag), "config");
  EXPECT_STREQ(confd_hash2str(port->children->tag), "id");
  EXPECT_STREQ(confd_hash2str(port->children->next->tag), "xgspon");

  confd_cs_node* gem_id = confd_cs_node_cd(port, "gpon/onu/gem/gem-id");
  ASSERT_NE(gem_id, nullptr);
  EXPECT_EQ(gem_id->tag, 730022296U);
  EXPECT_NE(gem_id->info.type, nullptr);

  EXPECT_EQ(confd_cs_node_cd(nullptr, "/config/nothing"), nullptr);
  EXPECT_EQ(confd_cs_node_cd(port, "nothing"), nullptr);
  expect_error(CONFD_ERR_BADPATH);
  fail_call(PlatformCall::confd_cs_node_cd);
  EXPECT_EQ(confd_cs_node_cd(nullptr, "/config"), nullptr);
  expect_error(CONFD_ERR_UNAVAILABLE);
}

TEST_F(ConfdValues, ObjectSizesAreThoseOfTheModel) {
  const struct {
    const char* list;
    int size;
  } cases[] = {{"/config/service-port", 26},
               {"/config/profile/gpon/bandwidth-profile", 15},
               {"/config/profile/gpon/line-profile/tcont", 2},
               {"/config/profile/gpon/line-profile", 3},
               {"/config/gpon", 3},
               {"/config/service-port/match", 4}};
  for (const auto& c : cases) {
    EXPECT_EQ(confd_max_object_size(confd_cs_node_cd(nullptr, c.list)), c.size) << c.list;
  }
  EXPECT_EQ(confd_max_object_size(nullptr), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  fail_call(PlatformCall::confd_max_object_size);
  EXPECT_EQ(confd_max_object_size(confd_cs_node_cd(nullptr, "/config")), CONFD_ERR);
}

TEST_F(ConfdValues, TextsBecomeValuesOfTheirLeafsTypes) {
  const confd::Model& known = confd::load_model(model());
  const auto parsed = [&](const char* path, const char* text) {
    const auto* type = confd_cs_node_cd(nullptr, path)->info.type;
    const auto value = confd::parse_value(known, *type->leaf, text);
    return value.has_value() ? std::to_string(value->get().type) + " " + printed(value->get())
                             : "nothing";
  };
  EXPECT_EQ(parsed("/config/service-port/upstream-rate", "5"), "12 5");
  EXPECT_EQ(parsed("/config/service-port/upstream-rate", "-5"), "nothing");
  EXPECT_EQ(parsed("/config/interface/gpon/upstream-fec", "true"), "17 true");
  EXPECT_EQ(parsed("/config/interface/gpon/upstream-fec", "yes"), "nothing");
  EXPECT_EQ(parsed("/config/interface/xgspon/operation-mode", "combo"), "28 enum<2>");
  EXPECT_EQ(parsed("/config/interface/gpon/onu/rg-profile", "home"), "5 home");
  EXPECT_EQ(parsed("/config/interface/gpon/onu/ip-host/address", "10.0.0.1/8"), "48 10.0.0.1/8");
  EXPECT_EQ(parsed("/config/interface/gpon/onu/ip-host/address", "10.0.0.1"), "nothing");
  EXPECT_EQ(parsed("/config/gpon/rg-one-shot-prov", ""), "2 rg-one-shot-prov");
  const char* leaf = "/config/profile/gpon/tr069-acs-profile/password";
  EXPECT_THAT(parsed(leaf, "$0$secret"), testing::StartsWith("5 $8$"));
  EXPECT_EQ(parsed(leaf, "$0$secret"), parsed(leaf, "$0$secret"));
}

TEST_F(ConfdValues, NoValueHasANulByte) {
  const confd::Model& known = confd::load_model(model());
  const auto* type = confd_cs_node_cd(nullptr, "/config/interface/gpon/onu/rg-profile")->info.type;
  const std::string configured = "the one use of this text";
  store::Datastore datastore(model());
  datastore.load(config("<gpon><slot>" + configured + "</slot></gpon>"), store::Format::kXml);
  EXPECT_FALSE(confd::parse_value(known, *type->leaf, configured + '\0' + "more").has_value());
  EXPECT_NE(datastore.print(store::Format::kXml).find(configured), std::string::npos);
}

// ---- Values that the daemon makes for the plug-in

class ConfdKeypaths : public ConfdValues {
 protected:
  static std::string printed(confd::OwnedKeypath& keypath) {
    char text[128];
    confd_pp_kpath(text, sizeof text, keypath.get());
    return text;
  }

  static store::Path parsed(const char* text) {
    return *store::Path::parse(model(), text, nullptr);
  }
};

TEST_F(ConfdKeypaths, APathNeedNotExist) {
  const confd::Model& known = confd::load_model(model());
  for (const char* path : {"/config", "/config/interface/xgspon{1 1 9}/onu{3}/snmp/real-time",
                           "/config/gpon{\"two words\"}/rg-one-shot-prov",
                           "/config/profile/gpon/rg-profile{r}/wan-ip-connection{w}/itf-grouping/"
                           "ports{enum<1>}/vlan"}) {
    confd::OwnedKeypath keypath(known, parsed(path));
    EXPECT_EQ(printed(keypath), path);
  }
  confd::OwnedKeypath keypath(known, parsed("/config/interface/gpon{1 1 9}"));
  EXPECT_EQ(keypath.get()->len, 4);
  EXPECT_EQ(CONFD_GET_UINT32(&keypath.get()->v[0][2]), 9U);
  EXPECT_EQ(keypath.get()->v[0][3].type, C_NOEXISTS);
  EXPECT_EQ(CONFD_GET_XMLTAG(&keypath.get()->v[1][0]), 1802393476U);
}

TEST_F(ConfdKeypaths, KeysMustBeOfTheirTypesAndNumber) {
  const confd::Model& known = confd::load_model(model());
  for (const char* path : {"/config/profile/gpon/line-profile{x}/tcont{y}",
                           "/config/interface/gpon{1 1}", "/config/service-port{}"}) {
    EXPECT_THROW(confd::OwnedKeypath(known, parsed(path)), InputError) << path;
  }
}

TEST_F(ConfdKeypaths, AListsNameMayBeAppended) {
  ValidationSession& session = open();
  const store::Datastore& datastore = session.transaction().datastore();
  const confd::Model& known = confd::load_model(model());
  const store::Path link = parsed("/config/interface/gpon{1 1 3}");
  confd::OwnedKeypath keypath(known, datastore.find(link));
  EXPECT_EQ(printed(keypath), "/config/interface/gpon{1 1 3}");
  keypath.append(known, *link.last().node->child("onu"));
  EXPECT_EQ(printed(keypath), "/config/interface/gpon{1 1 3}/onu");
}

TEST_F(ConfdKeypaths, EverySchemaHasAModelOfItsOwn) {
  const confd::Model& known = confd::load_model(model());
  EXPECT_EQ(&confd::load_model(model()), &known);
  const store::Schema other(TARND_MODEL_DIR);
  EXPECT_NE(&confd::load_model(other), &known);
  EXPECT_EQ(&confd::load_model(model()), &known);
  EXPECT_EQ(confd::loaded_model(), &known);
}

TEST_F(ConfdValues, TheLastErrorTextReplacesTheAnswersText) {
  ValidationSession& session = open();
  EXPECT_EQ(session.error_text(), std::nullopt);
  confd_trans_seterr(tctx(), "%s is wrong", "this");
  EXPECT_EQ(session.error_text(), "this is wrong");
  confd_trans_seterr(tctx(), "%s", std::string(20000, 'x').c_str());
  EXPECT_EQ(session.error_text()->size(), 20000U);
  confd_trans_seterr(tctx(), "%s", "");
  EXPECT_EQ(session.error_text(), "");
  session.begin_request("next");
  EXPECT_EQ(session.error_text(), std::nullopt);
}

}  // namespace
}  // namespace tarnd::test
