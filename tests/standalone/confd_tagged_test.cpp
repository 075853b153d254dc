// maapi_get_values: several leaves below one node at once.

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdTagged : public ConfdTest {
 protected:
  ~ConfdTagged() override {
    for (confd_tag_value_t& value : values_) confd_free_value(CONFD_GET_TAG_VALUE(&value));
  }

  void begin(const char* name) { add(name, C_XMLBEGIN); }
  void end(const char* name) { add(name, C_XMLEND); }
  void leaf(const char* name) { add(name, C_NOEXISTS); }

  // The branches of a service port.
  void branch(const char* link) {
    begin(link);
    leaf("id");
    begin("onu");
    leaf("id");
    begin("gem");
    leaf("gem-id");
    end("gem");
    end("onu");
    end(link);
  }

  int read(const char* path) {
    return maapi_get_values(sock(), th(), values_.data(), static_cast<int>(values_.size()), "%s",
                            path);
  }

  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const confd_tag_value_t& value : values_) {
      char text[64];
      confd_pp_value(text, sizeof text, &value.v);
      result.emplace_back(value.v.type == C_XMLBEGIN   ? "<"
                          : value.v.type == C_XMLEND   ? ">"
                          : value.v.type == C_NOEXISTS ? "-"
                                                       : text);
    }
    return result;
  }

  std::vector<confd_tag_value_t> values_;

 private:
  void add(const char* name, confd_vtype type) {
    confd_tag_value_t& value = values_.emplace_back();
    value = {};
    value.tag = {number_of(name), 864307902};
    value.v.type = type;
  }

  static std::uint32_t number_of(const std::string& name) {
    const confd_cs_node* node = confd_cs_node_cd(nullptr, "/config");
    return find(node, name)->tag;
  }

  static const confd_cs_node* find(const confd_cs_node* node, const std::string& name) {
    for (; node != nullptr; node = node->next) {
      if (confd_hash2str(node->tag) == name) return node;
      const confd_cs_node* below = find(node->children, name);
      if (below != nullptr) return below;
    }
    return nullptr;
  }
};

TEST_F(ConfdTagged, EveryElementKeepsItsPlace) {
  open();
  branch("gpon");
  branch("xgspon");
  ASSERT_EQ(read("/base:config/service-port{7}"), CONFD_OK);
  EXPECT_THAT(texts(), testing::ElementsAre("<", "1/1/3", "<", "10", "<", "1", ">", ">", ">",  //
                                            "<", "-", "<", "-", "<", "-", ">", ">", ">"));
  EXPECT_EQ(CONFD_GET_TAG_VALUE(&values_[1])->type, C_BUF);
  EXPECT_EQ(CONFD_GET_TAG_VALUE(&values_[3])->type, C_UINT32);
}

TEST_F(ConfdTagged, AMissingLeafStaysNoExists) {
  open();
  branch("xgspon");
  ASSERT_EQ(read("/config/service-port{100}"), CONFD_OK);
  EXPECT_THAT(texts(), testing::ElementsAre("<", "1/1/5", "<", "2", "<", "-", ">", ">", ">"));
}

TEST_F(ConfdTagged, AContainerMayBeTheBase) {
  open();
  leaf("address");
  leaf("default-gateway");
  ASSERT_EQ(read("/config/interface/gpon{1 1 3}/onu{10}/ip-host"), CONFD_OK);
  EXPECT_THAT(texts(), testing::ElementsAre("10.0.0.5/24", "10.0.0.1"));
}

TEST_F(ConfdTagged, AnEntryThatDoesNotExistFails) {
  open();
  leaf("id");
  EXPECT_EQ(read("/config/service-port{8}"), CONFD_ERR);
  expect_error(CONFD_ERR_NOEXISTS);
}

TEST_F(ConfdTagged, PathsToOtherNodesFail) {
  open();
  leaf("id");
  for (const char* path :
       {"/config/service-port", "/config/service-port{7}/id", "/config/nothing"}) {
    EXPECT_EQ(read(path), CONFD_ERR) << path;
    expect_error(CONFD_ERR_BADPATH);
  }
}

TEST_F(ConfdTagged, AFailedReadWritesNothing) {
  open();
  leaf("upstream-rate");
  leaf("slot");  // no leaf of a service port
  EXPECT_EQ(read("/config/service-port{100}"), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
  EXPECT_THAT(texts(), testing::ElementsAre("-", "-"));

  fail_call(PlatformCall::maapi_get_values);
  values_.pop_back();
  EXPECT_EQ(read("/config/service-port{100}"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_THAT(texts(), testing::ElementsAre("-"));
  EXPECT_EQ(read("/config/service-port{100}"), CONFD_OK);
}

TEST_F(ConfdTagged, StructureMustBeClosedByWhatBegan) {
  open();
  begin("match");
  EXPECT_EQ(read("/config/service-port{7}"), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  end("action");
  EXPECT_EQ(read("/config/service-port{7}"), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  values_.clear();
  end("match");
  EXPECT_EQ(read("/config/service-port{7}"), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  values_.clear();
  begin("upstream-rate");
  EXPECT_EQ(read("/config/service-port{7}"), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
  values_.clear();
  leaf("upstream-rate");
  CONFD_SET_UINT32(CONFD_GET_TAG_VALUE(values_.data()), 1);
  EXPECT_EQ(read("/config/service-port{7}"), CONFD_ERR);
  expect_error(CONFD_ERR_BADTYPE);
}

}  // namespace
}  // namespace tarnd::test
