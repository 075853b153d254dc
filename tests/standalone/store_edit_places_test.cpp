#include "standalone/store/edit_places.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>

#include "standalone/store/keypath_edit.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

constexpr int kUntouched = 0;
constexpr int kSeveralPlaces = -1;

// The line of the only place that touches the node, or one of the two above.
int place(ReadChange edit, const std::string& path) {
  const EditPlaces places(std::move(edit));
  const EditPlace place = places.of(Path::parse(test::model(), path, nullptr).value());
  if (!place.touched) return kUntouched;
  return place.line.has_value() ? static_cast<int>(*place.line) : kSeveralPlaces;
}

int place_in_xml(const std::string& text, const std::string& path) {
  return place(read_change(test::model(), text, Format::kXml), path);
}

int place_in_json(const std::string& text, const std::string& path) {
  return place(read_change(test::model(), text, Format::kJson), path);
}

constexpr const char* kLink =
    "<chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>\n";
constexpr const char* kFec = "/config/interface/gpon{1 1 3}/upstream-fec";
constexpr const char* kOnu = "/config/interface/gpon{1 1 3}/onu";

std::string in_config(const std::string& content) {
  return "<config xmlns='urn:tarnd:base' xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>\n" +
         content + "</config>";
}

std::string in_link(const std::string& content, const std::string& operation = "") {
  return in_config("<interface>\n<gpon" + operation + ">" + kLink + content +
                   "</gpon></interface>");
}

TEST(StoreEditPlaces, AreOfTheNodeItselfInsideOrAround) {
  const std::string kReplace = " nc:operation='replace'";
  const struct {
    std::string text;
    const char* path;
    int line;
  } cases[] = {
      {in_link("<upstream-fec>true</upstream-fec>"), kFec, 4},
      {in_link("<upstream-fec>true</upstream-fec>"), "/config/interface/gpon{1 1 3}", 3},
      {in_link("<upstream-fec>true</upstream-fec>"), kOnu, kUntouched},
      {in_link("<upstream-fec>true</upstream-fec>"), "/config/interface/gpon{1 1 4}", kUntouched},
      {in_link("", kReplace), kFec, 3},
      {in_link("", kReplace), kOnu, 3},
      {in_link("<upstream-fec>true</upstream-fec>", kReplace), kFec, 4},
      {in_link("\n<upstream-fec nc:operation='delete'/>"), kFec, 5},
      {in_link("\n<upstream-fec nc:operation='replace'>true</upstream-fec>"), kFec, 5},
      {in_link("<onu><id>1</id></onu>"), kOnu, 4},
      {in_link("<onu><id>1</id></onu>"), "/config/interface/gpon{1 1 3}/onu{1}", 4},
      {in_link("<onu><id>1</id></onu>"), "/config/interface/gpon{1 1 3}/onu{2}", kUntouched},
      {in_link("<onu><id>1</id></onu>\n<onu><id>2</id></onu>"), kOnu, kSeveralPlaces},
      {in_link("<onu><id>1</id></onu>\n<onu><id>2</id></onu>"),
       "/config/interface/gpon{1 1 3}/onu{2}", 5},
      {in_link("<onu><id>1</id></onu>\n<onu><id>1</id></onu>"),
       "/config/interface/gpon{1 1 3}/onu{1}", kSeveralPlaces},
      {in_link("\n<onu nc:operation='delete'><id>1</id></onu>"), kOnu, 5},
  };
  for (const auto& [text, path, line] : cases) {
    EXPECT_EQ(place_in_xml(text, path), line) << text << "\n" << path;
  }
}

TEST(StoreEditPlaces, DependOnTheDefaultOperation) {
  const auto in_edit = [](const std::string& operation, const std::string& config) {
    return "<edit-config xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><target><candidate/>"
           "</target><default-operation>" +
           operation + "</default-operation><config>" + config + "</config></edit-config>";
  };
  const std::string fec = in_link("<upstream-fec>true</upstream-fec>");
  EXPECT_EQ(place_in_xml(in_edit("merge", fec), kFec), 4);
  EXPECT_EQ(place_in_xml(in_edit("none", fec), kFec), kUntouched);
  const std::string created = in_link("<upstream-fec nc:operation='create'>true</upstream-fec>");
  EXPECT_EQ(place_in_xml(in_edit("none", created), kFec), 4);
  EXPECT_EQ(place_in_xml(in_edit("none", created), "/config/interface/gpon{1 1 3}"), 3);
  EXPECT_EQ(place_in_xml(in_edit("replace", fec), kFec), 4);
  EXPECT_EQ(place_in_xml(in_edit("replace", fec), "/config/service-port"), kSeveralPlaces);
}

TEST(StoreEditPlaces, AreThoseOfJsonsMetadata) {
  const auto in_link = [](const std::string& leaf, const std::string& operation) {
    return "{\"base:config\": {\"interface\": {\"gpon\": [{\"chassis-id\": 1, \"slot-id\": 1,"
           "\"port-id\": 3,\n" +
           leaf + "\n\"@upstream-fec\": {\"ietf-netconf:operation\": \"" + operation + "\"}}]}}}";
  };
  EXPECT_EQ(place_in_json(in_link("\"upstream-fec\": true,", "replace"), kFec), 3);
  EXPECT_EQ(place_in_json(in_link("\"upstream-fec\": true,", "delete"), kFec), 3);
  EXPECT_EQ(place_in_json(in_link("", "delete"), kFec), 3);
}

TEST(StoreEditPlaces, AnEditByPathTouchesItsNodes) {
  const auto edit = [](Operation operation, const std::string& text) {
    return read_keypath_edit(test::model(), {operation, text});
  };
  EXPECT_NE(place(edit(Operation::kMerge, std::string(kFec) + "=true"), kFec), kUntouched);
  EXPECT_NE(place(edit(Operation::kDelete, kFec), kFec), kUntouched);
  EXPECT_EQ(place(edit(Operation::kDelete, kFec), kOnu), kUntouched);
}

}  // namespace
}  // namespace tarnd::store
