// The formats of path arguments.

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdPaths : public ConfdTest {
 protected:
  ConfdPaths() {
    open();
    CONFD_SET_UINT32(&link_[0], 1);
    CONFD_SET_UINT32(&link_[1], 1);
    CONFD_SET_UINT32(&link_[2], 3);
  }

  static confd_value_t text_value(const char* text) {
    confd_value_t value;
    CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(const_cast<char*>(text)),
                  static_cast<unsigned int>(std::strlen(text)));
    return value;
  }

  // The keypath of /config/interface/gpon{1 1 3}/onu{10}, as the daemon would pass it.
  confd_hkeypath_t onu_keypath() {
    confd_hkeypath_t path = {};
    path.len = 6;
    const char* names[] = {nullptr, "onu", nullptr, "gpon", "interface", "config"};
    for (int i = 0; i < path.len; ++i) {
      if (names[i] == nullptr) continue;
      confd_cs_node* node = confd_cs_node_cd(nullptr, "/config/interface/gpon/onu");
      while (confd_hash2str(node->tag) != std::string(names[i])) node = node->parent;
      CONFD_SET_XMLTAG(&path.v[i][0], node->tag, node->ns);
      CONFD_SET_NOEXISTS(&path.v[i][1]);
    }
    CONFD_SET_UINT32(&path.v[0][0], 10);
    CONFD_SET_NOEXISTS(&path.v[0][1]);
    for (int i = 0; i < 3; ++i) path.v[2][i] = link_[i];
    CONFD_SET_NOEXISTS(&path.v[2][3]);
    return path;
  }

  confd_value_t link_[3]{};
};

TEST_F(ConfdPaths, NumbersAndTextsAsInPrintf) {
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{%d %u %s}/onu{%d}", 1, 1U, "3", 10),
            1);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/%s{%s}/onu{%d}", "gpon", "1 1 3", 10), 1);
  EXPECT_EQ(
      maapi_exists(sock(), th(), "%s{%d}/rg-profile", "/config/interface/gpon{1 1 3}/onu", 10), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/service-port{%d}", -7), 0);
}

TEST_F(ConfdPaths, ValuesAreKeys) {
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{%x %x %x}", &link_[0], &link_[1],
                         &link_[2]),
            1);
  const confd_value_t name = text_value("it's50%");
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/profile/gpon/line-profile{%x}", &name), 1);
  confd_value_t port;
  CONFD_SET_ENUM_VALUE(&port, 1);  // eth2
  EXPECT_EQ(maapi_exists(sock(), th(),
                         "/config/profile/gpon/rg-profile{home}/wan-ip-connection{internet}/"
                         "itf-grouping/ports{%x}/vlan",
                         &port),
            1);
}

TEST_F(ConfdPaths, AKeyWithBlanksIsQuoted) {
  const confd_value_t value = text_value("1 1 3");
  // One key instead of three.
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{%x}", &value), 0);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/profile/gpon/line-profile{\"fast\"}"), 1);
}

TEST_F(ConfdPaths, CountedValuesAreAllKeys) {
  EXPECT_EQ(maapi_num_instances(sock(), th(), "%s{%*x}/onu", "/config/interface/gpon/", 3, link_),
            2);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{%*x %x}", 2, link_, &link_[2]), 1);
}

TEST_F(ConfdPaths, AKeypathBeginsThePath) {
  const confd_hkeypath_t path = onu_keypath();
  EXPECT_EQ(maapi_exists(sock(), th(), "%h", &path), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), "%h/rg-profile", &path), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), "%h/description", &path), 0);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config%h", &path), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
}

TEST_F(ConfdPaths, ALengthTakesThatManyElementsFromTheRoot) {
  const confd_hkeypath_t path = onu_keypath();
  EXPECT_EQ(maapi_exists(sock(), th(), "%*h/upstream-fec", path.len - 2, &path), 1);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "%*h", path.len - 1, &path), 2);
  EXPECT_EQ(maapi_exists(sock(), th(), "%*h", path.len + 1, &path), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
}

TEST_F(ConfdPaths, PrefixTrailingSlashAndSlashBeforeABraceAreHarmless) {
  EXPECT_EQ(maapi_exists(sock(), th(), "/base:config/service-port{%u}", 7U), 1);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/interface/gpon/"), 2);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon/{1 1 3}/onu/{10}/"), 1);
}

TEST_F(ConfdPaths, APercentSignOfATextIsNoDirective) {
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/profile/gpon/line-profile{%s}", "it's50%"), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/profile/gpon/line-profile{it's50%%}"), 1);
}

TEST_F(ConfdPaths, UnknownDirectivesAndMissingArgumentsFail) {
  const char* no_text = nullptr;
  const confd_value_t* no_value = nullptr;
  const confd_hkeypath_t* no_path = nullptr;
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/%q"), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/%"), CONFD_ERR);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/%*d", 1, 1), CONFD_ERR);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/%s", no_text), CONFD_ERR);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/service-port{%x}", no_value), CONFD_ERR);
  EXPECT_EQ(maapi_exists(sock(), th(), "%h", no_path), CONFD_ERR);
  EXPECT_EQ(maapi_exists(sock(), th(), no_text), CONFD_ERR);
}

}  // namespace
}  // namespace tarnd::test
