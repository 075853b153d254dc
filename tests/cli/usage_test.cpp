#include <gmock/gmock.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using UsageTest = CommandTest;

// Wrong use: status 2, one line on standard error, nothing on standard output.
void expect_wrong_use(const Outcome& run, const std::string& told) {
  EXPECT_EQ(run.status, 2) << told;
  EXPECT_THAT(run.out, IsEmpty()) << told;
  EXPECT_THAT(run.err, StartsWith("gponval: ")) << told;
  EXPECT_THAT(run.err, HasSubstr(told));
  EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
}

TEST_F(UsageTest, HelpIsThereForEveryCommand) {
  for (const std::string command : {"", "commit", "request", "points", "generate"}) {
    std::vector<std::string> line = {"--help"};
    if (!command.empty()) line.insert(line.begin(), command);
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, 0) << command;
    EXPECT_THAT(run.err, IsEmpty()) << command;
    EXPECT_THAT(run.out, HasSubstr("Examples:\n  gponval ")) << command;
    EXPECT_THAT(run.out, HasSubstr("Exit status:\n")) << command;
  }
}

TEST_F(UsageTest, TheHelpListsEachCommandInALine) {
  const Outcome run = gponval({"--help"});
  for (const std::string command : {"commit", "request", "points", "generate"}) {
    EXPECT_THAT(run.out, ContainsRegex("\n  " + command + " +[A-Z][^\n]+\\.\n")) << command;
  }
}

TEST_F(UsageTest, AWrongCommandLineIsTold) {
  const struct {
    std::vector<std::string> line;
    const char* told;
  } cases[] = {
      {{}, "a command is required"},
      {{"comit"}, "comit"},
      {{"commit"}, "--running"},
      {{"commit", "--running"}, "--running"},
      {{"commit", "--running", "card.xml", "extra"}, "extra"},
      {{"commit", "--running", "card.xml", "--running", "card.xml"}, "--running"},
      {{"commit", "--running", "card.xml", "--format", "csv"}, "csv"},
      {{"commit", "--running", "card.xml", "--confirm", "perhaps"}, "perhaps"},
      {{"commit", "--running", "card.xml", "--trace", "loud"}, "loud"},
      {{"commit", "--running", "card.xml", "--unknown"}, "--unknown"},
      {{"commit", "--running", "card.xml", "--change", "card.xml", "--candidate", "card.xml"},
       "--candidate"},
      {{"commit", "--running", "card.xml", "--only", "no_such_check"}, "no_such_check"},
      {{"commit", "--running", "card.xml", "--only", "sp_gem_check,sp"}, "'sp'"},
      {{"commit", "--running", "card.xml", "--only", ""}, "''"},
      {{"commit", "--running", "card.xml", "--only="}, "''"},
      {{"commit", "--running", "-", "--change", "-"}, "standard input"},
      {{"commit", "--running", "card.xml", "--change", "-", "--change", "-"}, "standard input"},
      {{"commit", "--running", "-", "--confirm", "ask"}, "standard input"},
      {{"request", "sp_gem_check"}, "KEYPATH"},
      {{"request", "sp_gem_check", "/config/service-port"}, "--running"},
      {{"points", "--format", "xml"}, "xml"},
      {{"generate", "--links", "many"}, "many"},
  };
  for (const auto& [line, told] : cases) expect_wrong_use(gponval(line), told);
}

TEST_F(UsageTest, AFileThatCannotBeReadIsTold) {
  std::filesystem::create_directory(folder_ / "folder");
  const struct {
    std::vector<std::string> line;
    const char* told;
  } cases[] = {
      {{"--running", "missing.xml"}, "cannot read 'missing.xml': No such file or directory"},
      {{"--running", ""}, "cannot read '': No such file or directory"},
      {{"--running", "folder"}, "cannot read 'folder': Is a directory"},
      {{"--running", "card.xml", "--change", "missing.xml"}, "cannot read 'missing.xml'"},
      {{"--running", "card.xml", "--candidate", "missing.xml"}, "cannot read 'missing.xml'"},
      {{"--running", "card.xml", "--card", "missing.txt"}, "card file 'missing.txt'"},
      {{"--running", "card.xml", "--plugin", "missing.so"}, "missing.so"},
      {{"--running", "card.xml", "--plugin", "card.xml"}, "card.xml"},
  };
  for (const auto& [line, told] : cases) {
    std::vector<std::string> whole = {"commit"};
    whole.insert(whole.end(), line.begin(), line.end());
    expect_wrong_use(gponval(whole), told);
  }
}

TEST_F(UsageTest, WrongContentIsToldWithItsFile) {
  const struct {
    const char* name;
    std::string text;
  } cases[] = {
      {"broken.xml", "<config xmlns=\"urn:tarnd:base\"><interface>"},
      {"empty.xml", ""},
      {"other.xml", "<config xmlns=\"urn:other\"/>"},
      {"unknown.xml", in_config("<nothing/>")},
      {"lines.xml", in_config("<service-port><id>a\nb</id></service-port>")},
      {"range.xml", in_config("<service-port><id>4294967296</id></service-port>")},
      {"twice.xml", in_config("<service-port><id>1</id></service-port>"
                              "<service-port><id>1</id></service-port>")},
      {"broken.json", "{\"base:config\": "},
      {"xml.json", in_config("")},
  };
  for (const auto& [name, text] : cases) {
    file(name, text);
    expect_wrong_use(gponval({"commit", "--running", name}), name);
  }
  file("card.txt", "colour = red\n");
  expect_wrong_use(gponval({"commit", "--running", "card.xml", "--card", "card.txt"}), "colour");
}

TEST_F(UsageTest, ThePluginMayBeNamed) {
  expect_wrong_use(gponval({"points", "--plugin", "card.xml"}), "card.xml");
  EXPECT_EQ(gponval({"points", "--plugin", GPON_VALID_PLUGIN}).status, 0);
}

TEST_F(UsageTest, TheCommandRunsFromAnyFolder) {
  EXPECT_EQ(run_gponval("/", {"points"}).status, 0);
}

TEST_F(UsageTest, ThePluginAndTheModelAreFoundWhereTheyAreInstalled) {
  const std::filesystem::path bin = folder_ / "bin";
  const std::filesystem::path lib = folder_ / "lib" / "tarnd";
  const std::filesystem::path model = folder_ / "share" / "tarnd" / "model";
  for (const auto& folder : {bin, lib, model}) std::filesystem::create_directories(folder);
  std::filesystem::copy(gponval_command(), bin / "gponval");
  const std::vector<std::string> points = {(bin / "gponval").string(), "points"};

  // A model of its own, told by a request that the other has not.
  std::filesystem::copy(GPON_VALID_MODEL, model);
  std::string text = text_of("share/tarnd/model/base.yang");
  const std::string request = "one_shot_prov_check";
  text.replace(text.find(request), request.size(), "installed_check");
  file("share/tarnd/model/base.yang", text);

  file("lib/tarnd/libgpon_valid.so", "no plug-in");
  expect_wrong_use(run_program(folder_, points), (lib / "libgpon_valid.so").string());
  std::filesystem::copy_file(GPON_VALID_PLUGIN, lib / "libgpon_valid.so",
                             std::filesystem::copy_options::overwrite_existing);
  const Outcome run = run_program(folder_, points);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, StartsWith("installed_check "));
}

TEST_F(UsageTest, AStandardOutputThatTakesNothingIsTold) {
  const Outcome run =
      run_program(folder_, {"/bin/sh", "-c", "exec \"$0\" points > /dev/full", gponval_command()});
  expect_wrong_use(run, "cannot write standard output");
  EXPECT_THAT(files(), ElementsAre("card.xml"));
}

}  // namespace
}  // namespace gponval::test
