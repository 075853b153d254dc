// What the reader of configurations and changes accepts, and its messages for the rest.

#include "standalone/store/reader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

const std::string kBase = R"(<config xmlns="urn:tarnd:base")";
const std::string kNc = R"( xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0")";
const std::string kNetconf = R"( xmlns="urn:ietf:params:xml:ns:netconf:base:1.0")";

std::string xml(const std::string& content) {
  return kBase + kNc + ">\n" + content + "</config>";
}

std::string json(const std::string& content) {
  return R"({"base:config": {)" + content + "}}";
}

std::string port(const std::string& content) {
  return xml("<service-port><id>5</id>\n" + content + "</service-port>");
}

std::string json_port(const std::string& content) {
  return json(R"("service-port": [{"id": 5,)" + content + "}]");
}

struct Refused {
  std::string what;
  Format format;
  std::string text;
  std::size_t line;
  std::string message;
};

void PrintTo(const Refused& row, std::ostream* out) {
  *out << row.what;
}

std::string name_of(const testing::TestParamInfo<Refused>& info) {
  return info.param.what;
}

class RefusedChange : public testing::TestWithParam<Refused> {};

TEST_P(RefusedChange, NamesLinePlaceAndWhatIsWrong) {
  const Refused& row = GetParam();
  try {
    read_change(test::model(), row.text, row.format);
    FAIL() << "taken: " << row.text;
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), row.message);
    EXPECT_EQ(error.line(), row.line);
  }
}

// The attribute by which NETCONF servers say that a leaf has its default.
std::string tag(const std::string& value) {
  return " xmlns:wd=\"urn:ietf:params:xml:ns:netconf:default:1.0\" wd:default=\"" + value + "\"";
}

// A link whose upstream-fec, which is true by default, is tagged.
std::string tagged_fec(const std::string& is_default, const std::string& value) {
  return xml(
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>\n"
      "<upstream-fec" +
      tag(is_default) + ">" + value + "</upstream-fec></gpon></interface>");
}

const std::string kNeedsNc =
    R"(; nc:operation with xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0" is needed)";
const std::string kNeedsConfig = "; 'config' in the namespace 'urn:tarnd:base' is needed";

INSTANTIATE_TEST_SUITE_P(
    AsXml, RefusedChange,
    testing::Values(
        Refused{"Empty", Format::kXml, "", 0, "there is nothing in it"},
        Refused{"Blank", Format::kXml, " \n\t", 0, "there is nothing in it"},
        Refused{"Utf16", Format::kXml, std::string("\xFF\xFE<\0", 4), 1,
                "the text is UTF-16 or UTF-32; UTF-8 is needed"},
        Refused{"NotUtf8", Format::kXml, port("<gpon><id>\xE9</id></gpon>"), 3,
                "the text is not UTF-8: the byte 0xe9 begins no letter"},
        Refused{"OverlongLetter", Format::kXml, port("\xC0\xAF"), 3,
                "the text is not UTF-8: the byte 0xc0 begins no letter"},
        Refused{"Surrogate", Format::kXml, port("\xED\xA0\x80"), 3,
                "the text is not UTF-8: the byte 0xed begins no letter"},
        Refused{"NulByte", Format::kXml, port(std::string(1, '\0')), 3, "holds a NUL byte"},
        Refused{"OtherEncoding", Format::kXml,
                R"(<?xml version="1.0" encoding="ISO-8859-1"?>)" + xml(""), 1,
                "the encoding is 'ISO-8859-1'; UTF-8 is needed"},
        Refused{"OtherVersion", Format::kXml, R"(<?xml version="2.0"?>)" + xml(""), 1,
                "the version of XML is '2.0'; 1.0 is needed"},
        Refused{"SecondByteOrderMark", Format::kXml, "\xEF\xBB\xBF\xEF\xBB\xBF" + xml(""), 1,
                "a second byte order mark"},
        Refused{"ParameterTwice", Format::kXml,
                "<edit-config" + kNetconf + "><test-option>set</test-option>\n<test-option>", 2,
                "'test-option' is given twice"},
        Refused{"ParameterAfterTheEdit", Format::kXml,
                "<edit-config" + kNetconf + "><config>" + xml("") + "</config><default-operation>",
                2, "'default-operation' comes after the edit that it is for"},
        Refused{"TextBeforeAnElementAround", Format::kXml, "<rpc" + kNetconf + ">abc<edit-config>",
                1, "the text 'abc' is in no node of the model"},
        Refused{"Doctype", Format::kXml, "<!DOCTYPE config [<!ENTITY a 'b'>]>\n" + xml(""), 1,
                "a DOCTYPE; a configuration is read without one"},
        Refused{"UnknownEntity", Format::kXml, port("<gpon><id>&lol;</id></gpon>"), 3,
                "not XML: an entity that XML does not have; it has amp, lt, gt, apos and quot"},
        Refused{"NotClosed", Format::kXml, kBase + ">\n<interface>", 2,
                "not XML: the text ends before the elements that it begins"},
        Refused{"WrongEnd", Format::kXml, kBase + ">\n<interface></gpon>", 2,
                "not XML: an end tag does not match the element that is open"},
        Refused{"SameAttributeTwice", Format::kXml,
                port(R"(<upstream-rate nc:operation="delete" nc:operation="delete"/>)"), 3,
                "not XML: an attribute is given twice"},
        Refused{"SecondTopLevelElement", Format::kXml, xml("") + "\n<x/>", 3,
                "not XML: a second element, or text, after the top level"},
        Refused{"NoNamespace", Format::kXml, "<config/>", 1,
                "found 'config' in no namespace at the top level" + kNeedsConfig},
        Refused{"OtherNamespace", Format::kXml, R"(<config xmlns="urn:x"/>)", 1,
                "found 'config' in the namespace 'urn:x' at the top level" + kNeedsConfig},
        Refused{
            "OtherRoot", Format::kXml, R"(<interface xmlns="urn:tarnd:base"/>)", 1,
            "found 'interface' in the namespace 'urn:tarnd:base' at the top level" + kNeedsConfig},
        Refused{"TwoEmptyNamespaces", Format::kXml, R"(<a xmlns=""/><a xmlns=""/>)", 1,
                "found 'a' in no namespace at the top level" + kNeedsConfig},
        Refused{"EmptyNamespaceInside", Format::kXml, xml(R"(<a xmlns=""/><a xmlns=""/>)"), 2,
                "/config: holds 'a' in no namespace; 'urn:tarnd:base' is needed"},
        Refused{"OtherNamespaceInside", Format::kXml, xml(R"(<a xmlns="urn:x"/>)"), 2,
                "/config: holds 'a' in the namespace 'urn:x'; 'urn:tarnd:base' is needed"},
        Refused{"UnknownName", Format::kXml, port("<upstream-rte>5</upstream-rte>"), 3,
                "/config/service-port{5}: there is no 'upstream-rte' here; did you mean "
                "'upstream-rate'?"},
        Refused{"TextInContainer", Format::kXml, xml("<interface>\n abc </interface>"), 3,
                "/config/interface: holds the text 'abc' where only elements can be"},
        Refused{"ElementInLeaf", Format::kXml, port("<upstream-rate><x/></upstream-rate>"), 3,
                "/config/service-port{5}/upstream-rate: holds 'x', but upstream-rate is a leaf"},
        Refused{"OutOfRange", Format::kXml,
                port("<match><vlan><vlan-id>5000</vlan-id></vlan></match>"), 3,
                "/config/service-port{5}/match/vlan/vlan-id: '5000' is not a number from 1 to "
                "4094"},
        Refused{"NoNumber", Format::kXml, xml("<service-port><id>x</id></service-port>"), 2,
                "/config/service-port/id: 'x' is not a number from 0 to 4294967295"},
        Refused{"UnknownEnumeration", Format::kXml, port("<action><type>transalte</type></action>"),
                3,
                "/config/service-port{5}/action/type: 'transalte' is not one of add, translate, "
                "remove; did you mean 'translate'?"},
        Refused{"NoBoolean", Format::kXml, port("<admin-enabled>True</admin-enabled>"), 3,
                "/config/service-port{5}/admin-enabled: 'True' is not true or false; did you mean "
                "'true'?"},
        Refused{"ValueOfEmptyLeaf", Format::kXml,
                xml("<gpon><slot>1/1</slot><rg-one-shot-prov>1</rg-one-shot-prov></gpon>"), 2,
                "/config/gpon{1/1}/rg-one-shot-prov: '1' is given; it takes no value"},
        Refused{
            "NameWithBlank", Format::kXml,
            xml("<profile><gpon><line-profile><name>a b</name></line-profile></gpon></profile>"), 2,
            "/config/profile/gpon/line-profile/name: 'a b' is refused: A name holds no blanks, "
            "braces, slashes or double quotes."},
        Refused{"NameTooLong", Format::kXml,
                xml("<profile><gpon><line-profile><name>" + std::string(65, 'n') +
                    "</name></line-profile></gpon></profile>"),
                2,
                "/config/profile/gpon/line-profile/name: '" + std::string(60, 'n') +
                    "...' has 65 characters, a text of 1 to 64 characters is needed"},
        Refused{"SecretIsNotShown", Format::kXml,
                xml("<profile><gpon><tr069-acs-profile><name>a</name><password>hunter2</password>"
                    "</tr069-acs-profile></gpon></profile>"),
                2,
                "/config/profile/gpon/tr069-acs-profile{a}/password: the value is refused: Clear "
                "text after $0$, or base64 after $8$ is expected."},
        Refused{"Noncharacter", Format::kXml, port("<gpon><id>\xEF\xB7\x90</id></gpon>"), 3,
                "/config/service-port{5}/gpon/id: the value holds a character that no text may "
                "hold"},
        Refused{"NoKey", Format::kXml,
                xml("<service-port>\n<upstream-rate>5</upstream-rate>\n"
                    "</service-port>"),
                2, "/config/service-port: the entry has no key 'id'"},
        Refused{"LeafTwice", Format::kXml,
                port("<upstream-rate>5</upstream-rate>\n<upstream-rate>5</upstream-rate>"), 4,
                "/config/service-port{5}: holds 'upstream-rate' twice"},
        Refused{"LeafTwiceInTwoVisits", Format::kXml,
                xml("<interface/><service-port><id>5</id><upstream-rate>5</upstream-rate>"
                    "</service-port>\n<service-port><id>5</id><upstream-rate>6</upstream-rate>"
                    "</service-port>"),
                3, "/config/service-port{5}: holds 'upstream-rate' twice"},
        Refused{"LeafDeletedAndSetInTwoVisits", Format::kXml,
                xml(R"(<service-port><id>5</id><upstream-rate nc:operation="delete"/>)"
                    "</service-port>\n<service-port><id>5</id><upstream-rate>6</upstream-rate>"
                    "</service-port>"),
                3, "/config/service-port{5}: holds 'upstream-rate' twice"},
        Refused{"KeyTwice", Format::kXml, xml("<service-port><id>5</id><id>5</id></service-port>"),
                2, "/config/service-port{5}: holds 'id' twice"},
        Refused{"EntryTwiceWithAnOperation", Format::kXml,
                xml(R"(<service-port nc:operation="delete"><id>5</id></service-port>)"
                    "\n<service-port><id>5</id></service-port>"),
                3, "/config/service-port{5}: is given twice, with an operation"},
        Refused{"OperationWithoutPrefix", Format::kXml,
                xml("\n<service-port operation=\"delete\"><id>5</id></service-port>"), 3,
                "/config/service-port: has an attribute 'operation' without a prefix" + kNeedsNc},
        Refused{"OperationOfAnotherNamespace", Format::kXml,
                xml(R"(<service-port xmlns:x="urn:x" x:operation="delete"/>)"), 2,
                "/config/service-port: has an attribute 'operation' in the namespace 'urn:x'" +
                    kNeedsNc},
        Refused{"OperationOnAKey", Format::kXml,
                xml(R"(<service-port><id nc:operation="delete">5</id></service-port>)"), 2,
                "/config/service-port/id: a key has no operation; the entry has"},
        Refused{"UnknownOperation", Format::kXml, xml(R"(<interface nc:operation="destroy"/>)"), 2,
                "/config/interface: has the unknown operation 'destroy'; merge, replace, create, "
                "delete or remove is needed"},
        Refused{"UnknownAttribute", Format::kXml, xml(R"(<interface a="b"/>)"), 2,
                "/config/interface: has the unknown attribute 'a'"},
        Refused{"AnotherValueThanTheDefault", Format::kXml, tagged_fec("true", "false"), 3,
                "/config/interface/gpon{1 1 3}/upstream-fec: 'false' is tagged as the default, "
                "which is 'true'"},
        Refused{"WrongTag", Format::kXml, tagged_fec("yes", "true"), 3,
                "/config/interface/gpon{1 1 3}/upstream-fec: has the attribute 'default' with "
                "'yes'; true, 1, false or 0 is needed"},
        Refused{"TaggedLeafWithoutDefault", Format::kXml,
                xml("<service-port><id>5</id><upstream-rate" + tag("true") +
                    ">7</upstream-rate></service-port>"),
                2,
                "/config/service-port{5}/upstream-rate: is tagged as a default, but the model has "
                "none for it"},
        Refused{"TaggedEntry", Format::kXml, xml("<service-port" + tag("true") + "/>"), 2,
                "/config/service-port: is tagged as a default, but only a leaf that is no key can "
                "have one"},
        Refused{"OperationAroundTheModel", Format::kXml,
                "<config" + kNetconf + R"( operation="delete">)" + xml("") + "</config>", 1,
                "'config' has an attribute 'operation', which only nodes of the model have"},
        Refused{"OtherOperationOfNetconf", Format::kXml, "<rpc" + kNetconf + ">\n<lock/></rpc>", 2,
                "found 'lock' in the namespace 'urn:ietf:params:xml:ns:netconf:base:1.0' inside "
                "'rpc'" +
                    kNeedsConfig},
        Refused{"NothingInside", Format::kXml, "<rpc" + kNetconf + "><edit-config/></rpc>", 1,
                "there is no 'config' in it"},
        Refused{"TwoInside", Format::kXml,
                "<config" + kNetconf + ">" + xml("") + "\n" + xml("") + "</config>", 3,
                "a second top-level 'config'; one is needed"},
        Refused{"UnknownDefaultOperation", Format::kXml,
                "<edit-config" + kNetconf + "><default-operation>delete</default-operation>", 1,
                "default-operation is 'delete'; merge, replace or none is needed"},
        Refused{"TestOnly", Format::kXml,
                "<edit-config" + kNetconf + "><test-option>test-only</test-option>", 1,
                "test-option is 'test-only'; test-then-set or set is needed"},
        Refused{"ContinueOnError", Format::kXml,
                "<edit-config" + kNetconf + "><error-option>continue-on-error</error-option>", 1,
                "error-option is 'continue-on-error'; a change applies whole or not at all: "
                "stop-on-error or rollback-on-error is needed"},
        Refused{"TextAroundTheModel", Format::kXml,
                "<config" + kNetconf + ">abc" + xml("") + "</config>", 1,
                "the text 'abc' is in no node of the model"}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    AsJson, RefusedChange,
    testing::Values(
        Refused{"NoObject", Format::kJson, "[]", 1, "found an array; an object is needed"},
        Refused{"AValue", Format::kJson, "5", 1, "found a value; an object is needed"},
        Refused{"NoModule", Format::kJson, R"({"config": {}})", 1,
                "'config' has no module; 'base:config' is needed"},
        Refused{"LeafSetAndDeletedInTwoVisits", Format::kJson,
                json(R"("service-port": [{"id": 5, "upstream-rate": 6}, {"id": 5,
                     "@upstream-rate": {"ietf-netconf:operation": "delete"}}])"),
                2, "/config/service-port{5}: holds 'upstream-rate' twice"},
        Refused{"NoMember", Format::kJson, "{}", 1, "there is no 'config' in it"},
        Refused{"SecondTopLevelMember", Format::kJson,
                R"({"base:config": {},)"
                "\n"
                R"("x:y": 1})",
                2, "'y' in the namespace 'x' is a second top-level node, after 'config'"},
        Refused{"TextAfterTheObject", Format::kJson, json("") + " x", 1,
                "not JSON: syntax error while parsing value - invalid literal; expected end of "
                "input"},
        Refused{"CommaAtTheEnd", Format::kJson, json("\"interface\": {},\n"), 2,
                "not JSON: syntax error while parsing object key - unexpected '}'; expected string "
                "literal"},
        Refused{"MemberTwice", Format::kJson, json(R"("interface": {}, "interface": {})"), 1,
                "/config: holds the member 'interface' twice"},
        Refused{"MemberTwiceUnderTwoNames", Format::kJson,
                json(R"("interface": {}, "base:interface": {})"), 1,
                "/config: holds the member 'interface' twice"},
        Refused{"OtherModule", Format::kJson, json(R"("nc:interface": {})"), 1,
                "/config: holds 'nc:interface' of another module; 'base' is needed"},
        Refused{"UnknownName", Format::kJson, json_port("\n\"upstream-rte\": 5"), 2,
                "/config/service-port{5}: there is no 'upstream-rte' here; did you mean "
                "'upstream-rate'?"},
        Refused{"ObjectForAList", Format::kJson, json(R"("service-port": {"id": 5})"), 1,
                "/config: 'service-port' is an object; an array of objects is needed"},
        Refused{"ValueForAContainer", Format::kJson, json(R"("interface": 5)"), 1,
                "/config: 'interface' is a value; an object is needed"},
        Refused{"ArrayForALeaf", Format::kJson, json_port(R"("upstream-rate": [5])"), 1,
                "/config/service-port{5}: 'upstream-rate' is an array; a value is needed"},
        Refused{"ValueInAList", Format::kJson, json(R"("service-port": [5])"), 1,
                "/config: a value is out of place; an object is needed"},
        Refused{"StringForANumber", Format::kJson, json(R"("service-port": [{"id": "5"}])"), 1,
                "/config/service-port/id: needs a JSON number without quotes: a number from 0 to "
                "4294967295"},
        Refused{"NumberForAString", Format::kJson, json(R"("gpon": [{"slot": 1}])"), 1,
                "/config/gpon/slot: needs a JSON string in quotes: a text"},
        Refused{"StringForABoolean", Format::kJson, json_port(R"("admin-enabled": "true")"), 1,
                "/config/service-port{5}/admin-enabled: needs JSON's true or false without quotes: "
                "true or false"},
        Refused{"NullForANumber", Format::kJson, json_port(R"("upstream-rate": null)"), 1,
                "/config/service-port{5}/upstream-rate: 'null' is not a number from 0 to "
                "4294967295"},
        Refused{"Fraction", Format::kJson, json_port("\"upstream-rate\": 5.0\n"), 1,
                "/config/service-port{5}/upstream-rate: '5.0' is not a number from 0 to "
                "4294967295"},
        Refused{"TooLargeANumber", Format::kJson,
                json_port(R"("upstream-rate": 100000000000000000000)"), 1,
                "/config/service-port{5}/upstream-rate: '100000000000000000000' is not a number "
                "from 0 to 4294967295"},
        Refused{"FarTooLargeANumber", Format::kJson,
                json_port(R"("upstream-rate": )" + std::string(400, '1')), 1,
                "not JSON: a number has too many digits"},
        Refused{"StringForANumberOfAUnion", Format::kJson,
                json(R"("profile": {"gpon": {"service-profile": [{"name": "s", "vlan-mapping":
                     [{"name": "m", "match": {"outer": {"vlan-id": "100"}}}]}]}})"),
                2,
                "/config/profile/gpon/service-profile{s}/vlan-mapping{m}/match/outer/vlan-id: "
                "needs a JSON number without quotes: a number from 1 to 4094 or any"},
        Refused{"NotNullForEmpty", Format::kJson,
                json(R"("gpon": [{"slot": "1/1", "rg-one-shot-prov": [1]}])"), 1,
                "/config/gpon{1/1}: 'rg-one-shot-prov' needs [null]"},
        Refused{"NothingForEmpty", Format::kJson,
                json(R"("gpon": [{"slot": "1/1", "rg-one-shot-prov": []}])"), 1,
                "/config/gpon{1/1}: 'rg-one-shot-prov' needs [null]"},
        Refused{"ControlCharacter", Format::kJson, json(R"("gpon": [{"slot": "a\u0001"}])"), 1,
                "/config/gpon/slot: the value holds a character that no text may hold"},
        Refused{"NulCharacter", Format::kJson, json(R"("gpon": [{"slot": "a\u0000"}])"), 1,
                "/config/gpon/slot: the value holds a character that no text may hold"},
        Refused{"OperationByItsPrefix", Format::kJson,
                json_port("\n"
                          R"("@": {"nc:operation": "delete"})"),
                2,
                "/config/service-port{5}: has the unknown metadata 'nc:operation'; "
                "'ietf-netconf:operation' is needed"},
        Refused{"OperationAsMember", Format::kJson, json_port(R"("nc:operation": "delete")"), 1,
                "/config/service-port{5}: holds 'nc:operation' of another module; 'base' is "
                "needed"},
        Refused{"MetadataOfAKey", Format::kJson,
                json_port(R"("@id": {"ietf-netconf:operation": "delete"})"), 1,
                "/config/service-port{5}: the key 'id' has no operation; the entry has"},
        Refused{"MetadataOfAList", Format::kJson,
                json(R"("@service-port": {"ietf-netconf:operation": "delete"})"), 1,
                "/config: has '@service-port'; the metadata of service-port is '@' inside it"},
        Refused{"MetadataOfALeafThatIsNotThere", Format::kJson,
                json_port(R"("@upstream-rate": {"ietf-netconf:operation": "create"})"), 1,
                "/config/service-port{5}: '@upstream-rate' needs a 'upstream-rate' beside it"},
        Refused{"MetadataIsNoObject", Format::kJson, json_port(R"("@": "delete")"), 1,
                "/config/service-port{5}: metadata needs an object"},
        Refused{"MoreMetadataThanValues", Format::kJson,
                json(R"("profile": {"gpon": {"service-profile": [{"name": "s", "vlan-mapping":
                     [{"name": "m", "uni": {"ethernet": [1],
                     "@ethernet": [null, {"ietf-netconf:operation": "delete"}]}}]}]}})"),
                3,
                "/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni: '@ethernet' has more "
                "values than 'ethernet'"}),
    name_of);

TEST(Reader, RefusesWhatIsNestedTooDeeply) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "[";
  EXPECT_THROW(read_change(test::model(), text, Format::kJson), InputError);
  text = R"({"base:config": )";
  for (int i = 0; i < 100000; ++i) text += R"({"interface": )";
  EXPECT_THROW(read_change(test::model(), text, Format::kJson), InputError);
  text = kBase + ">";
  for (int i = 0; i < 100000; ++i) text += "<interface>";
  EXPECT_THROW(read_change(test::model(), text, Format::kXml), InputError);
}

struct RefusedConfiguration {
  std::string text;
  std::size_t line;
  std::string message;
};

TEST(Reader, NamesTheEntryThatAConfigurationLacksSomethingIn) {
  const std::string head = "<profile><gpon>\n<line-profile><name>gold</name>\n";
  const std::string tail = "</line-profile></gpon></profile>";
  const std::vector<RefusedConfiguration> rows = {
      {xml(head + "<tcont>\n<id>1</id></tcont>" + tail), 4,
       "/config/profile/gpon/line-profile{gold}/tcont{1}: mandatory node 'bandwidth-profile' does "
       "not exist"},
      {xml("<service-port><id>5</id></service-port>\n<service-port><id>5</id></service-port>"), 3,
       "/config/service-port{5}: is given twice"},
      {xml("<interface/>\n<interface/>"), 3, "/config: holds 'interface' twice"},
      {port("<gpon><id>a</id></gpon>\n<xgspon><id>b</id></xgspon>"), 2,
       "/config/service-port{5}: 'xgspon' and 'gpon' exclude each other"},
      {port(R"(<gpon nc:operation="delete"/>)"), 3,
       "/config/service-port{5}/gpon: has the attribute 'operation'; a configuration has none, a "
       "change may"},
  };
  for (const RefusedConfiguration& row : rows) {
    try {
      read_configuration(test::model(), row.text, Format::kXml);
      ADD_FAILURE() << "taken: " << row.text;
    } catch (const InputError& error) {
      EXPECT_EQ(error.what(), row.message);
      EXPECT_EQ(error.line(), row.line);
    }
  }
}

// An ONU whose description begins so many bytes before the end of the first piece.
std::string described(const std::string& description, std::size_t bytes_before) {
  const std::string head = kBase + ">\n<!--";
  const std::string begin =
      "-->\n<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>"
      "<onu><id>1</id><description>";
  const std::size_t length = TextSource::kPieceSize - bytes_before - head.size() - begin.size();
  return head + std::string(length, '.') + begin + description +
         "</description></onu></gpon></interface>\n</config>";
}

TEST(Reader, TakesALetterThatLiesInTwoPieces) {
  for (const std::string letter : {"e", "\u00e9", "\u20ac", "\U00010348"}) {
    for (std::size_t before = 0; before <= letter.size(); ++before) {
      const ReadConfiguration read =
          read_configuration(test::model(), described(letter, before), Format::kXml);
      char* text = nullptr;
      lyd_print_mem(&text, read.root.get(), LYD_XML, 0);
      EXPECT_NE(std::string(text).find("<description>" + letter + "<"), std::string::npos);
      std::free(text);
    }
  }
}

TEST(Reader, NamesTheLineInALaterPiece) {
  constexpr std::size_t kFar = 1000;  // into the second piece
  const std::string far(kFar, '\n');
  const std::vector<RefusedConfiguration> rows = {
      {described("\xE2\x82", 0), 3, "the text is not UTF-8: the byte 0xe2 begins no letter"},
      {described("\xE2\x82", 1), 3, "the text is not UTF-8: the byte 0xe2 begins no letter"},
      {described("\xE2\x82", 2), 3, "the text is not UTF-8: the byte 0xe2 begins no letter"},
      {described(far + "\xE9", 1), 3 + kFar,
       "the text is not UTF-8: the byte 0xe9 begins no letter"},
      {described("</description>" + far + "<id>2</id><description>", 1), 3 + kFar,
       "/config/interface/gpon{1 1 1}/onu{1}: holds 'id' twice"},
      {described("</description>" + far + "</onu><onu><description>", 1), 3 + kFar,
       "/config/interface/gpon{1 1 1}/onu: the entry has no key 'id'"},
      {described("</description>" + far + "</onus><description>", 1), 3 + kFar,
       "not XML: an end tag does not match the element that is open"},
  };
  for (const RefusedConfiguration& row : rows) {
    try {
      read_configuration(test::model(), row.text, Format::kXml);
      ADD_FAILURE() << "taken: " << row.message;
    } catch (const InputError& error) {
      EXPECT_EQ(error.what(), row.message);
      EXPECT_EQ(error.line(), row.line);
    }
  }
  const std::string ended = kBase + "/>";
  const std::string text = ended + std::string(TextSource::kPieceSize - ended.size() - 1, '\n');
  EXPECT_THROW(read_configuration(test::model(), text + "\xC3", Format::kXml), InputError);
  EXPECT_NO_THROW(read_configuration(test::model(), text + "\n", Format::kXml));
}

// Each text is the same configuration, with service port 5 at 7 kbit/s upstream.
TEST(Reader, AcceptsAConfigurationInEachOfItsForms) {
  const std::string content =
      "<service-port><id>5</id><upstream-rate>7</upstream-rate></service-port>";
  const std::string plain = kBase + ">" + content + "</config>";
  const std::vector<std::pair<std::string, Format>> forms = {
      {plain, Format::kXml},
      {"\xEF\xBB\xBF" + plain, Format::kXml},
      {"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!-- a card -->" + plain, Format::kXml},
      {"<b:config xmlns:b=\"urn:tarnd:base\"><b:service-port><b:upstream-rate><![CDATA[7]]>"
       "</b:upstream-rate><b:id>&#53;</b:id></b:service-port></b:config>",
       Format::kXml},
      {"<data" + kNetconf + ">" + plain + "</data>", Format::kXml},
      {"<rpc-reply message-id=\"1\"" + kNetconf + "><data>" + plain + "</data></rpc-reply>",
       Format::kXml},
      {R"({"base:config": {"service-port": [{"upstream-rate": 7, "id": 5}]}})", Format::kJson},
      {"\xEF\xBB\xBF"
       R"({"base:config": {"base:service-port": [{"base:id": 5,
       "upstream-rate": 7}]}})",
       Format::kJson},
      {R"({"ietf-netconf:data": {"base:config": {"service-port":
       [{"id": 5, "upstream-rate": 7}]}}})",
       Format::kJson},
  };
  for (const auto& [text, format] : forms) {
    Datastore datastore(test::model());
    datastore.load(text, format);
    Datastore plain_one(test::model());
    plain_one.load(plain, Format::kXml);
    EXPECT_EQ(datastore.print(Format::kXml), plain_one.print(Format::kXml)) << text;
  }
}

TEST(Reader, ALeafThatIsTaggedAsADefaultIsNotSet) {
  struct Row {
    const char* is_default;
    bool is_set;
  };
  for (const Row& row : {Row{"true", false}, Row{"1", false}, Row{"false", true}, Row{"0", true}}) {
    Datastore datastore(test::model());
    datastore.load(tagged_fec(row.is_default, "true"), Format::kXml);
    const bool is_set = datastore.print(Format::kXml).find("upstream-fec") != std::string::npos;
    EXPECT_EQ(is_set, row.is_set) << row.is_default;
  }
}

class ReaderChange : public testing::Test {
 protected:
  ReaderChange() : datastore_(test::model()) {
    datastore_.load(port("<upstream-rate>7</upstream-rate><downstream-rate>8</downstream-rate>"
                         "</service-port><service-port><id>6</id>"),
                    Format::kXml);
  }

  // Which of the nodes exist after the change: "5", "6", "up" and "down" of service port 5.
  std::string left_by(const std::string& text, Format format) {
    Transaction transaction(datastore_);
    transaction.edit(text, format);
    transaction.prepare();
    std::string left;
    const std::vector<std::pair<std::string, std::string>> nodes = {
        {"/config/service-port{5}", "5"},
        {"/config/service-port{5}/upstream-rate", "up"},
        {"/config/service-port{5}/downstream-rate", "down"},
        {"/config/service-port{6}", "6"},
        {"/config/service-port{8}", "8"}};
    for (const auto& [path, name] : nodes) {
      if (datastore_.find(*Path::parse(test::model(), path, nullptr)) != nullptr)
        left += name + " ";
    }
    return left;
  }

  Datastore datastore_;
};

TEST_F(ReaderChange, CountsWhatSurroundsIt) {
  const std::string deletes =
      xml(R"(<service-port nc:operation="delete"><id>6</id></service-port>)");
  const std::string eight = xml("<service-port><id>8</id></service-port>");
  const auto edit_config = [](const std::string& options, const std::string& content) {
    return "<edit-config" + kNetconf + "><target><running/></target>" + options + "<config>" +
           content + "</config></edit-config>";
  };
  EXPECT_EQ(left_by(deletes, Format::kXml), "5 up down ");
  EXPECT_EQ(left_by("<config" + kNetconf + ">" + deletes + "</config>", Format::kXml),
            "5 up down ");
  EXPECT_EQ(left_by("<rpc message-id=\"7\"" + kNetconf + ">" + edit_config("", deletes) + "</rpc>",
                    Format::kXml),
            "5 up down ");
  EXPECT_EQ(
      left_by(edit_config("<default-operation>merge</default-operation>", eight), Format::kXml),
      "5 up down 6 8 ");
  EXPECT_EQ(
      left_by(edit_config("<default-operation>replace</default-operation>", eight), Format::kXml),
      "8 ");
  EXPECT_EQ(left_by(edit_config("<default-operation> none </default-operation>"
                                "<test-option>set</test-option>"
                                "<error-option>rollback-on-error</error-option>",
                                deletes),
                    Format::kXml),
            "5 up down ");
  EXPECT_THROW(
      left_by(edit_config("<default-operation>none</default-operation>", eight), Format::kXml),
      InputError);
}

TEST_F(ReaderChange, AcceptsOperationsOfEntriesContainersAndLeavesInJson) {
  EXPECT_EQ(left_by(json(R"("service-port": [{"@": {"ietf-netconf:operation": "delete"},
                         "id": 6}])"),
                    Format::kJson),
            "5 up down ");
  EXPECT_EQ(left_by(json_port(R"("@upstream-rate": {"ietf-netconf:operation": "delete"})"),
                    Format::kJson),
            "5 down 6 ");
  EXPECT_EQ(left_by(json_port(R"("@upstream-rate": {"ietf-netconf:operation": "delete"},
                              "upstream-rate": 7)"),
                    Format::kJson),
            "5 down 6 ");
  EXPECT_EQ(left_by(json_port(R"("upstream-rate": 7, "@": {"ietf-netconf:operation": "replace"})"),
                    Format::kJson),
            "5 up 6 ");
  EXPECT_EQ(left_by(json(R"("@": {"ietf-netconf:operation": "replace"},
                         "service-port": [{"id": 8}])"),
                    Format::kJson),
            "8 ");
}

TEST_F(ReaderChange, MayHaveAnEntrySeveralTimes) {
  EXPECT_EQ(left_by(xml("<service-port><id>8</id></service-port><interface/>"
                        "<service-port><id>5</id><upstream-rate nc:operation=\"delete\"/>"
                        "</service-port><service-port><id>8</id><admin-enabled>true"
                        "</admin-enabled></service-port><interface/>"),
                    Format::kXml),
            "5 down 6 8 ");
}

TEST_F(ReaderChange, AcceptsKeysLastAndOperationsBeforeThem) {
  EXPECT_EQ(left_by(xml("<service-port><upstream-rate nc:operation=\"delete\"/>"
                        "<match><vlan><vlan-id>5</vlan-id></vlan></match><id>5</id>"
                        "</service-port>"),
                    Format::kXml),
            "5 down 6 ");
  EXPECT_EQ(left_by(json(R"("service-port": [{"@upstream-rate":
                         {"ietf-netconf:operation": "delete"}, "downstream-rate": 9, "id": 5}])"),
                    Format::kJson),
            "5 down 6 ");
}

TEST_F(ReaderChange, NamesTheLineOfAnEditThatCannotBeApplied) {
  const auto line_of_refusal = [&](const std::string& text) {
    try {
      left_by(text, Format::kXml);
    } catch (const InputError& error) {
      return error.line();
    }
    return std::size_t{0};
  };
  EXPECT_EQ(line_of_refusal(xml("\n<service-port nc:operation=\"create\"><id>5</id>\n"
                                "</service-port>")),
            3U);
  EXPECT_EQ(line_of_refusal(xml("\n<service-port nc:operation=\"delete\">\n<id>9</id>"
                                "</service-port>")),
            3U);
  EXPECT_EQ(line_of_refusal(xml("<service-port><id>6</id>\n<upstream-rate "
                                "nc:operation=\"delete\"/></service-port>")),
            3U);
}

}  // namespace
}  // namespace tarnd::store
