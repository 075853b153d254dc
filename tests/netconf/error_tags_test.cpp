// What is wrong in a message and in a configuration, and the error that says so: RFC 6241,
// Appendix A, and RFC 7950, sections 8.3 and 15.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "netconf/message.h"
#include "tests/netconf/session_fixture.h"
#include "tests/support/configuration.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"

namespace tarnd::netconf {
namespace {

using ::testing::HasSubstr;

constexpr const char* kDefaultTag =
    " xmlns:wd='urn:ietf:params:xml:ns:netconf:default:1.0' wd:default='true'";

/// The fields of an rpc-error; the error-info as "bad-element=x bad-namespace=y".
struct Expected {
  std::string tag;
  std::string info;
  std::string path;
  std::string app_tag;
};

bool operator==(const Expected& left, const Expected& right) {
  return left.tag == right.tag && left.info == right.info && left.path == right.path &&
         left.app_tag == right.app_tag;
}

void PrintTo(const Expected& error, std::ostream* out) {
  *out << error.tag << ", info '" << error.info << "', path '" << error.path << "', app-tag '"
       << error.app_tag << "'";
}

std::string info_of(const Element& info) {
  std::string text;
  for (const Element& child : info.children) {
    text += (text.empty() ? "" : " ") + child.name + "=" + child.text;
  }
  return text;
}

/// The only error of the reply.
Expected error_in(const std::string& reply) {
  Expected error;
  const Element read = read_message(reply);
  if (read.children.size() != 1 || read.children.front().name != "rpc-error") return error;
  for (const Element& field : read.children.front().children) {
    if (field.name == "error-tag") error.tag = field.text;
    if (field.name == "error-app-tag") error.app_tag = field.text;
    if (field.name == "error-path") error.path = field.text;
    if (field.name == "error-info") error.info = info_of(field);
  }
  return error;
}

std::string message_in(const std::string& reply) {
  const Element read = read_message(reply);
  for (const Element& field : read.children.front().children) {
    if (field.name == "error-message") return field.text;
  }
  return {};
}

struct Row {
  std::string name;
  std::string content;
  Expected error;
};

std::string in_config(const std::string& document) {
  return "<config>" + document + "</config>";
}

std::string edit_of(const std::string& target, const std::string& document) {
  return "<edit-config><target><" + target + "/></target>" + in_config(document) + "</edit-config>";
}

std::vector<std::string> edits_of(const std::string& document) {
  return {edit_of("candidate", document), edit_of("running", document)};
}

std::vector<std::string> wholes_of(const std::string& document) {
  const std::string source = "<source>" + in_config(document) + "</source>";
  return {"<copy-config><target><candidate/></target>" + source + "</copy-config>",
          "<copy-config><target><running/></target>" + source + "</copy-config>",
          "<validate>" + source + "</validate>"};
}

std::string link(int port, const std::string& content) {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>" +
         std::to_string(port) + "</port-id>" + content + "</gpon></interface>";
}

std::string mapping(const std::string& content) {
  return test::service_profile("s", test::vlan_mapping("m", content));
}

const std::string kLink =
    "/base:config/base:interface/base:gpon[base:chassis-id='1'][base:slot-id='1']"
    "[base:port-id='3']";
const std::string kMapping =
    "/base:config/base:profile/base:gpon/base:service-profile[base:name='s']"
    "/base:vlan-mapping[base:name='m']";

class ErrorTagsTest : public ServedCardTest {
 protected:
  // Service ports 1 and 2, and a link whose upstream-fec has its default, but was set.
  ErrorTagsTest() {
    datastore_.load(test::config(port("1") + port("2") + link(3, kFecSet)), store::Format::kXml);
  }
  static constexpr const char* kFecSet = "<upstream-fec>true</upstream-fec>";

  void expect_error(const Row& row, const std::string& operation) {
    const std::string before = datastore_.print(store::Format::kXml);
    const std::string reply = client(1).ask(operation);
    EXPECT_EQ(error_in(reply), row.error) << row.name << "\n" << operation << "\n" << reply;
    if (!row.error.path.empty()) {
      EXPECT_THAT(reply, HasSubstr("<error-path xmlns:base=\"urn:tarnd:base\">")) << row.name;
    }
    EXPECT_EQ(datastore_.print(store::Format::kXml), before) << row.name;
    EXPECT_FALSE(client(1).has_ended()) << row.name;
  }
  void expect_errors(const Row& row, const std::vector<std::string>& operations) {
    for (const std::string& operation : operations) expect_error(row, operation);
  }
};

TEST_F(ErrorTagsTest, SayWhatIsWrongInAnEditAndInAWholeConfiguration) {
  const std::string config = "/base:config";
  const std::string entry = "/base:config/base:service-port[base:id='3']";
  for (const Row& row : std::vector<Row>{
           {"unknown node", "<nix/>", {"unknown-element", "bad-element=nix", config, ""}},
           {"unknown node in an entry",
            "<service-port><id>3</id><nix/></service-port>",
            {"unknown-element", "bad-element=nix", entry, ""}},
           {"unknown node before the key",
            "<service-port><nix/><id>3</id></service-port>",
            {"unknown-element", "bad-element=nix", "/base:config/base:service-port", ""}},
           {"element in a leaf",
            "<service-port><id><x/></id></service-port>",
            {"unknown-element", "bad-element=x", "/base:config/base:service-port/base:id", ""}},
           {"foreign namespace",
            "<x xmlns='urn:x'/>",
            {"unknown-namespace", "bad-element=x bad-namespace=urn:x", config, ""}},
           {"no namespace",
            "<service-port xmlns=''><id>3</id></service-port>",
            {"unknown-namespace", "bad-element=service-port bad-namespace=", config, ""}},
           {"no key",
            "<service-port/>",
            {"missing-element", "bad-element=id", "/base:config/base:service-port", ""}},
           {"one key of three missing",
            "<interface><gpon><chassis-id>1</chassis-id><port-id>3</port-id></gpon></interface>",
            {"missing-element", "bad-element=slot-id", "/base:config/base:interface/base:gpon",
             ""}},
           {"leaf twice",
            link(3, "<upstream-fec>true</upstream-fec><upstream-fec>false</upstream-fec>"),
            {"bad-element", "bad-element=upstream-fec", kLink, ""}},
           {"leaf twice, once tagged",
            link(3, std::string(kFecSet) + "<upstream-fec" + kDefaultTag + ">true</upstream-fec>"),
            {"bad-element", "bad-element=upstream-fec", kLink, ""}},
           {"key twice",
            "<service-port><id>3</id><id>4</id></service-port>",
            {"bad-element", "bad-element=id", entry, ""}},
           {"value of a leaf-list twice",
            mapping("<uni><ethernet>1</ethernet><ethernet>1</ethernet></uni>"),
            {"bad-element", "bad-element=ethernet", kMapping + "/base:uni/base:ethernet", ""}},
           {"text where elements belong",
            "<service-port><id>3</id>text</service-port>",
            {"bad-element", "bad-element=service-port", entry, ""}},
           {"no number",
            port("x"),
            {"invalid-value", "", "/base:config/base:service-port/base:id", ""}},
           {"out of range",
            mapping("<action><vlan-id>4096</vlan-id></action>"),
            {"invalid-value", "", kMapping + "/base:action/base:vlan-id", ""}},
           {"no boolean",
            link(3, "<upstream-fec>yes</upstream-fec>"),
            {"invalid-value", "", kLink + "/base:upstream-fec", ""}},
           {"a value for an empty leaf",
            mapping("<veip><veip>x</veip></veip>"),
            {"invalid-value", "", kMapping + "/base:veip/base:veip", ""}},
           {"in no type of a union",
            mapping("<match><outer><cos>9</cos></outer></match>"),
            {"invalid-value", "", kMapping + "/base:match/base:outer/base:cos", ""}},
           {"too short",
            test::line_profile("", ""),
            {"invalid-value", "", "/base:config/base:profile/base:gpon/base:line-profile/base:name",
             ""}},
           {"matches no pattern",
            test::line_profile("a b", ""),
            {"invalid-value", "", "/base:config/base:profile/base:gpon/base:line-profile/base:name",
             ""}},
           {"unknown attribute",
            "<service-port x='y'><id>3</id></service-port>",
            {"unknown-attribute", "bad-attribute=x bad-element=service-port",
             "/base:config/base:service-port", ""}},
           {"operation without a namespace",
            "<service-port operation='delete'><id>1</id></service-port>",
            {"unknown-attribute", "bad-attribute=operation bad-element=service-port",
             "/base:config/base:service-port", ""}},
           {"insert, in a model whose lists have no order of users",
            "<service-port xmlns:y='urn:ietf:params:xml:ns:yang:1' y:insert='first'><id>3</id>"
            "</service-port>",
            {"unknown-attribute", "bad-attribute=insert bad-element=service-port",
             "/base:config/base:service-port", ""}},
           {"tagged as a default, with another value",
            link(3, "<upstream-fec" + std::string(kDefaultTag) + ">false</upstream-fec>"),
            {"invalid-value", "", kLink + "/base:upstream-fec", ""}},
           {"tagged as a default, but the model has none",
            "<service-port><id>3</id><match><ethertype" + std::string(kDefaultTag) +
                ">1</ethertype></match></service-port>",
            {"invalid-value", "", entry + "/base:match/base:ethertype", ""}},
           {"tagged as a default, with a value of no type",
            link(3, "<upstream-fec" + std::string(kDefaultTag) + ">yes</upstream-fec>"),
            {"invalid-value", "", kLink + "/base:upstream-fec", ""}},
           {"an entry that is tagged as a default",
            port("3", kDefaultTag),
            {"unknown-attribute", "bad-attribute=default bad-element=service-port",
             "/base:config/base:service-port", ""}},
           {"a tag that is neither true nor false",
            link(3,
                 "<upstream-fec xmlns:wd='urn:ietf:params:xml:ns:netconf:default:1.0' "
                 "wd:default='x'>true</upstream-fec>"),
            {"bad-attribute", "bad-attribute=default bad-element=upstream-fec",
             kLink + "/base:upstream-fec", ""}},
       }) {
    expect_errors(row, edits_of(test::config(row.content)));
    expect_errors(row, wholes_of(test::config(row.content)));
  }
}

TEST_F(ErrorTagsTest, SayWhatIsWrongWithTheTopOfAConfiguration) {
  for (const Row& row : std::vector<Row>{
           {"foreign",
            "<config xmlns='urn:x'/>",
            {"unknown-namespace", "bad-element=config bad-namespace=urn:x", "", ""}},
           {"unknown",
            "<nix xmlns='urn:tarnd:base'/>",
            {"unknown-element", "bad-element=nix", "", ""}},
           {"text", "text", {"bad-element", "bad-element=config", "", ""}},
           {"text before it",
            "text" + test::config(""),
            {"bad-element", "bad-element=config", "", ""}},
           {"twice",
            test::config("") + test::config(""),
            {"bad-element", "bad-element=config", "", ""}},
       }) {
    expect_errors(row, edits_of(row.content));
    expect_errors(row, wholes_of(row.content));
  }
}

TEST_F(ErrorTagsTest, SayWhatAnEditCannotDo) {
  const std::string entry = "/base:config/base:service-port";
  for (const Row& row : std::vector<Row>{
           {"unknown operation",
            port("1", " nc:operation='destroy'"),
            {"bad-attribute", "bad-attribute=operation bad-element=service-port", entry, ""}},
           {"operation of a key",
            "<service-port><id nc:operation='delete'>1</id></service-port>",
            {"unknown-attribute", "bad-attribute=operation bad-element=id", entry + "/base:id",
             ""}},
           {"create an entry that exists",
            port("1", " nc:operation='create'"),
            {"data-exists", "", entry + "[base:id='1']", ""}},
           {"create a leaf that is set",
            link(3, "<upstream-fec nc:operation='create'>false</upstream-fec>"),
            {"data-exists", "", kLink + "/base:upstream-fec", ""}},
           {"create a leaf that is set, tagged as a default",
            link(3, "<upstream-fec nc:operation='create'" + std::string(kDefaultTag) +
                        ">true</upstream-fec>"),
            {"data-exists", "", kLink + "/base:upstream-fec", ""}},
           {"delete an entry that does not exist",
            port("9", kDelete),
            {"data-missing", "", entry + "[base:id='9']", ""}},
           {"delete a leaf that has its default only",
            link(3, "<downstream-fec nc:operation='delete'/>"),
            {"data-missing", "", kLink + "/base:downstream-fec", ""}},
           {"delete it, tagged as a default",
            link(3, "<downstream-fec nc:operation='delete'" + std::string(kDefaultTag) +
                        ">true</downstream-fec>"),
            {"data-missing", "", kLink + "/base:downstream-fec", ""}},
           {"two cases of a choice",
            "<service-port><id>3</id><gpon><id>1/1/3</id></gpon><xgspon><id>1/1/3</id></xgspon>"
            "</service-port>",
            {"bad-element", "bad-element=gpon", entry + "[base:id='3']/base:gpon", ""}},
           {"an entry twice, with an operation",
            port("3") + port("3", kDelete),
            {"bad-element", "bad-element=service-port", entry + "[base:id='3']", ""}},
       }) {
    expect_errors(row, edits_of(test::config(row.content)));
  }
}

TEST_F(ErrorTagsTest, SayThatANodeToBeEditedDoesNotExist) {
  const Row row{
      "none", port("9"), {"data-missing", "", "/base:config/base:service-port[base:id='9']", ""}};
  for (const char* target : {"candidate", "running"}) {
    expect_error(row, "<edit-config><target><" + std::string(target) +
                          "/></target><default-operation>none</default-operation>" +
                          in_config(test::config(row.content)) + "</edit-config>");
  }
}

TEST_F(ErrorTagsTest, SayWhatIsWrongWithAWholeConfigurationOnly) {
  const std::string entry = "/base:config/base:service-port";
  for (const Row& row : std::vector<Row>{
           {"an operation",
            port("1", kDelete),
            {"unknown-attribute", "bad-attribute=operation bad-element=service-port", entry, ""}},
           {"an entry twice",
            port("3") + port("3"),
            {"bad-element", "bad-element=service-port", entry + "[base:id='3']", ""}},
           {"two cases of a choice",
            "<service-port><id>3</id><gpon><id>1/1/3</id></gpon><xgspon><id>1/1/3</id></xgspon>"
            "</service-port>",
            {"bad-element", "bad-element=gpon", entry + "[base:id='3']", ""}},
           {"a mandatory leaf does not exist",
            test::bandwidth_profile("b", "<type-3><assured>1</assured></type-3>"),
            {"data-missing", "",
             "/base:config/base:profile/base:gpon/base:bandwidth-profile[base:name='b']"
             "/base:traffic/base:type-3",
             ""}},
       }) {
    expect_errors(row, wholes_of(test::config(row.content)));
  }
}

TEST_F(ErrorTagsTest, SayWhatACommitMisses) {
  const Row row{"a mandatory leaf",
                test::bandwidth_profile("b", "<type-3><assured>1</assured></type-3>"),
                {"data-missing", "",
                 "/base:config/base:profile/base:gpon/base:bandwidth-profile[base:name='b']"
                 "/base:traffic/base:type-3",
                 ""}};
  const std::string config = test::config(row.content);
  expect_error(row, edit_of("running", config));
  EXPECT_THAT(client(1).ask(edit_of("candidate", config)), IsOk());
  expect_error(row, "<commit/>");
  expect_error(row, "<validate><source><candidate/></source></validate>");
}

TEST_F(ErrorTagsTest, SayWhatIsWrongWithAnOperation) {
  const std::string target = "<target><candidate/></target>";
  for (const Row& row : std::vector<Row>{
           {"unknown parameter",
            "<commit><nix/></commit>",
            {"unknown-element", "bad-element=nix", "", ""}},
           {"foreign parameter",
            "<commit><nix xmlns='urn:x'/></commit>",
            {"unknown-namespace", "bad-element=nix bad-namespace=urn:x", "", ""}},
           {"parameter twice",
            "<commit><persist>a</persist><persist>b</persist></commit>",
            {"bad-element", "bad-element=persist", "", ""}},
           {"no target", "<lock/>", {"missing-element", "bad-element=target", "", ""}},
           {"no source", "<get-config/>", {"missing-element", "bad-element=source", "", ""}},
           {"no config",
            "<edit-config>" + target + "</edit-config>",
            {"missing-element", "bad-element=config", "", ""}},
           {"no session-id",
            "<kill-session/>",
            {"missing-element", "bad-element=session-id", "", ""}},
           {"no datastore",
            "<lock><target/></lock>",
            {"missing-element", "bad-element=running", "", ""}},
           {"a datastore that is not offered",
            "<lock><target><startup/></target></lock>",
            {"unknown-element", "bad-element=startup", "", ""}},
           {"a place that is not offered",
            "<copy-config>" + target + "<source><url>file:///x</url></source></copy-config>",
            {"unknown-element", "bad-element=url", "", ""}},
           {"foreign datastore",
            "<lock><target><running xmlns='urn:x'/></target></lock>",
            {"unknown-namespace", "bad-element=running bad-namespace=urn:x", "", ""}},
           {"two datastores",
            "<lock><target><running/><candidate/></target></lock>",
            {"bad-element", "bad-element=candidate", "", ""}},
           {"text in a datastore",
            "<lock><target><running>x</running></target></lock>",
            {"invalid-value", "", "", ""}},
           {"text beside a datastore",
            "<lock><target>x<running/></target></lock>",
            {"bad-element", "bad-element=target", "", ""}},
           {"text in an operation",
            "<commit>x</commit>",
            {"bad-element", "bad-element=commit", "", ""}},
           {"text beside an operation", "x<commit/>", {"bad-element", "bad-element=rpc", "", ""}},
           {"two operations",
            "<commit/><commit/>",
            {"unknown-element", "bad-element=commit", "", ""}},
           {"text in an empty parameter",
            "<commit><confirmed>x</confirmed></commit>",
            {"invalid-value", "", "", ""}},
           {"element in a word",
            "<commit><persist><x/>a</persist></commit>",
            {"unknown-element", "bad-element=x", "", ""}},
           {"wrong word",
            "<edit-config>" + target + "<error-option>nix</error-option><config/></edit-config>",
            {"invalid-value", "", "", ""}},
           {"wrong default-operation",
            "<edit-config>" + target + "<default-operation>nix</default-operation>" +
                in_config(test::config("")) + "</edit-config>",
            {"invalid-value", "", "", ""}},
           {"attribute of an operation",
            "<commit x='y'/>",
            {"unknown-attribute", "bad-attribute=x bad-element=commit", "", ""}},
           {"operation of the config",
            "<edit-config>" + target + "<config nc:operation='delete' xmlns:nc='" +
                std::string(kBaseNamespace) + "'/></edit-config>",
            {"unknown-attribute", "bad-attribute=operation bad-element=config", "", ""}},
           {"attribute of a source's config",
            "<copy-config>" + target + "<source><config x='y'/></source></copy-config>",
            {"unknown-attribute", "bad-attribute=x bad-element=config", "", ""}},
           {"unknown type of a filter",
            "<get><filter type='regex'/></get>",
            {"bad-attribute", "bad-attribute=type bad-element=filter", "", ""}},
           {"other attribute of a filter",
            "<get><filter x='y'/></get>",
            {"unknown-attribute", "bad-attribute=x bad-element=filter", "", ""}},
           {"no expression",
            "<get><filter type='xpath'/></get>",
            {"missing-attribute", "bad-attribute=select bad-element=filter", "", ""}},
       }) {
    expect_error(row, row.content);
  }
}

// A model with what the shipped one does not have.
class ErrorTagsOfAModelTest : public ::testing::Test {
 protected:
  const test::OwnModel model_{R"(container config {
      leaf number { type uint8 { range "1..5" {
        error-message "From one to five."; error-app-tag "not-in-range"; } } }
      leaf tagged { type string { length "1..5" { error-app-tag "not-so-long"; } } }
      leaf name { type string {
        pattern "[a-z]*" { error-message "Letters only."; error-app-tag "no-letter"; }
        pattern "[^x]*" { error-message "No x."; } } }
      leaf plain { type uint8 { range "1..5"; } }
      container needs { presence "Needs a way."; choice way {
        mandatory true; leaf up { type empty; } leaf down { type empty; } } } })"};
  const store::Schema schema_{model_.folder()};
};

class CardOfModel : public ServedCardTest {
 public:
  explicit CardOfModel(const store::Schema& schema) : ServedCardTest(schema) {}
  std::string ask(const std::string& operation) { return client(1).ask(operation); }

 private:
  void TestBody() override {}
};

TEST_F(ErrorTagsOfAModelTest, AValueHasTheTagAndTheTextThatTheModelHas) {
  struct Value {
    const char* content;
    const char* path;
    const char* app_tag;
    std::optional<std::string> message;  // of the model
  };
  CardOfModel card(schema_);
  for (const Value& row : {
           Value{"<number>9</number>", "/base:config/base:number", "not-in-range",
                 "From one to five."},
           Value{"<tagged>too long</tagged>", "/base:config/base:tagged", "not-so-long", {}},
           Value{"<name>A</name>", "/base:config/base:name", "no-letter", "Letters only."},
           Value{"<name>x</name>", "/base:config/base:name", "", "No x."},
           Value{"<plain>9</plain>", "/base:config/base:plain", "", {}},
           Value{"<number>nix</number>", "/base:config/base:number", "", {}},
       }) {
    const std::string config = test::config(row.content);
    std::vector<std::string> operations = edits_of(config);
    for (const std::string& operation : wholes_of(config)) operations.push_back(operation);
    for (const std::string& operation : operations) {
      const std::string reply = card.ask(operation);
      EXPECT_EQ(error_in(reply), (Expected{"invalid-value", "", row.path, row.app_tag})) << reply;
      const std::string message = message_in(reply);
      if (row.message.has_value()) {
        EXPECT_EQ(message, *row.message);
      } else {
        EXPECT_THAT(message, HasSubstr("config/"));
      }
    }
  }
}

TEST_F(ErrorTagsOfAModelTest, AChoiceIsMissing) {
  const Expected error{"data-missing", "missing-choice=way", "/base:config/base:needs",
                       "missing-choice"};
  const std::string config = test::config("<needs/>");
  CardOfModel card(schema_);
  std::vector<std::string> operations = wholes_of(config);
  operations.push_back(edit_of("running", config));
  for (const std::string& operation : operations) {
    EXPECT_EQ(error_in(card.ask(operation)), error) << operation;
  }
  EXPECT_THAT(card.ask(edit_of("candidate", config)), IsOk());
  const std::string reply = card.ask("<commit/>");
  EXPECT_EQ(error_in(reply), error);
  EXPECT_THAT(reply, HasSubstr("<missing-choice xmlns=\"urn:ietf:params:xml:ns:yang:1\">"));
}

}  // namespace
}  // namespace tarnd::netconf
