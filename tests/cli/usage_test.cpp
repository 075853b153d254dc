#include <gmock/gmock.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
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

TEST_F(UsageTest, TheVersionIsThatOfTheProject) {
  const Outcome run = gponval({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "gponval " GPONVAL_VERSION "\n");
}

TEST_F(UsageTest, AWrongCommandLineIsReportedWithWhatWasMeant) {
  const struct {
    std::vector<std::string> line;
    std::string told;  // before " (see ... --help)"
  } cases[] = {
      {{}, "a command is required"},
      {{"comit"}, "unknown command 'comit', did you mean 'commit'?"},
      {{"Points"}, "unknown command 'Points', did you mean 'points'?"},
      {{"gen"}, "unknown command 'gen', did you mean 'generate'?"},
      {{"delete"}, "unknown command 'delete'"},
      {{"comit", "--running", "card.xml"}, "unknown command 'comit', did you mean 'commit'?"},
      {{""}, "unknown command ''"},
      {{"--verion"}, "before the command: unknown option '--verion', did you mean '--version'?"},
      {{"--running", "card.xml", "commit"}, "before the command: unknown option '--running'"},
      {{"comit", "commit"}, "unknown command 'comit', did you mean 'commit'?"},
      {{"commit", "points"}, "unexpected argument 'points'"},
      {{"--running", "card.xml"}, "before the command: unknown option '--running'"},
      {{"commit"}, "--running or --state is required"},
      {{"commit", "--runing", "card.xml"}, "unknown option '--runing', did you mean '--running'?"},
      {{"commit", "--chnage=x", "--running", "card.xml"},
       "unknown option '--chnage', did you mean '--change'?"},
      {{"commit", "-running", "card.xml"}, "unknown option '-running', did you mean '--running'?"},
      {{"commit", "running", "card.xml"},
       "unexpected argument 'running', did you mean '--running'?"},
      {{"commit", "--running", "card.xml", "--links", "3"}, "unknown option '--links'"},
      {{"commit", "--running"}, "--running needs a value (FILE)"},
      {{"points", "--format"}, "--format needs a value (text|json)"},
      {{"commit", "--running", "card.xml", "extra"}, "unexpected argument 'extra'"},
      {{"commit", "--running", "card.xml", "--running", "card.xml"},
       "--running is given more than once"},
      {{"commit", "--running", "card.xml", "--format", "csv"},
       "--format: 'csv' is none of text, json"},
      {{"commit", "--running", "card.xml", "--format", "JSON"},
       "--format: 'JSON' is none of text, json, did you mean 'json'?"},
      {{"commit", "--running", "card.xml", "--format="}, "--format: '' is none of text, json"},
      {{"commit", "--running", "card.xml", "--input-format", "yaml"},
       "--input-format: 'yaml' is none of xml, json"},
      {{"commit", "--running", "card.xml", "--confirm", "yess"},
       "--confirm: 'yess' is none of yes, no, ask, did you mean 'yes'?"},
      {{"commit", "--running", "card.xml", "--trace", "loud"},
       "--trace: 'loud' is none of off, flow, entry, detail"},
      {{"commit", "--running", "card.xml", "--change", "card.xml", "--candidate", "card.xml"},
       "--change excludes --candidate"},
      {{"commit", "--running", "card.xml", "--candidate", "card.xml", "--set", "/config"},
       "--set excludes --candidate"},
      {{"commit", "--running", "card.xml", "--set"}, "--set needs a value (PATH[=VALUE])"},
      {{"commit", "--running", "card.xml", "--remove"}, "--remove needs a value (PATH)"},
      {{"request", "sp_gem_check"}, "KEYPATH is required"},
      {{"request", "sp_gem_check", "/config/service-port"}, "--running is required"},
      {{"points", "--format", "xml"}, "--format: 'xml' is none of text, json"},
      {{"generate", "--links", "many"}, "--links: 'many' is no number from 0 to 4294967295"},
      {{"history", "card.state", "x"}, "N: 'x' is no number from 1 on"},
      {{"history", "card.state", "--last", "0"}, "--last: '0' is no number from 1 on"},
      {{"export", "card.state", "--at", "1.5"}, "--at: '1.5' is no number from 1 on"},
      {{"rollback", "card.state", "99999999999999999999"},
       "N: '99999999999999999999' is no number from 1 on"},
      {{"serve", "--max-message", "0"}, "--max-message: '0' is no number from 1 to 1024"},
      {{"serve", "--hello-timeout", "3601"}, "--hello-timeout: '3601' is no number from 1 to 3600"},
      {{"generate", "--onu", "3"}, "unknown option '--onu', did you mean '--onus'?"},
  };
  for (const auto& [line, told] : cases) {
    expect_wrong_use(gponval(line), "gponval: " + told + " (see gponval ");
  }
}

TEST_F(UsageTest, OptionsThatExcludeEachOtherAreReported) {
  const struct {
    std::vector<std::string> more;
    const char* told;
  } cases[] = {
      {{"--only", "no_such_check"},
       "--only: the model has no request 'no_such_check' (see gponval points)"},
      {{"--only", "sp_gem_check,sp_gem_chek"},
       "no request 'sp_gem_chek', did you mean 'sp_gem_check'? (see"},
      {{"--only", "sp_gem_check,sp"}, "no request 'sp', did you mean"},
      {{"--only", ""}, "no request '' (see"},
      {{"--only="}, "no request '' (see"},
      {{"--change", "-", "--change", "-"}, "standard input (-) can be read only once"},
      {{"--change", "-", "--card", "-"}, "standard input (-) can be read only once"},
      {{"--change", "-", "--confirm", "ask"}, "--confirm ask needs standard input"},
  };
  for (const auto& [more, told] : cases) {
    std::vector<std::string> line = {"commit", "--running", "card.xml"};
    line.insert(line.end(), more.begin(), more.end());
    expect_wrong_use(gponval(line), told);
  }
  expect_wrong_use(gponval({"commit", "--running", "-", "--change", "-"}), "standard input");
}

TEST_F(UsageTest, AFileThatCannotBeReadIsReported) {
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
      {{"--running", "card.xml", "--card", "missing.txt"}, "cannot read 'missing.txt'"},
      {{"--running", "card.xml", "--card", "folder"}, "cannot read 'folder': Is a directory"},
      {{"--running", "card.xml", "--card", "/dev/zero"},
       "cannot read '/dev/zero': longer than 1 MB"},
      {{"--running", "card.xml", "--plugin", "missing.so"}, "missing.so"},
      {{"--running", "card.xml", "--plugin", "card.xml"}, "card.xml"},
  };
  for (const auto& [line, told] : cases) {
    std::vector<std::string> whole = {"commit"};
    whole.insert(whole.end(), line.begin(), line.end());
    expect_wrong_use(gponval(whole), told);
  }
}

TEST_F(UsageTest, WrongContentIsReportedWithItsFile) {
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
    expect_wrong_use(gponval({"commit", "--running", name}), std::string("gponval: ") + name + ":");
    expect_wrong_use(gponval({"commit", "--running", "card.xml", "--candidate", name}),
                     std::string("gponval: ") + name + ":");
  }
  expect_wrong_use(gponval({"commit", "--running", "-"}, "<config"), "gponval: standard input:");
}

TEST_F(UsageTest, AnErrorInACardFileIsReportedWithLineAndKey) {
  const struct {
    std::string text;
    std::string told;
  } cases[] = {
      {"# a card\npon-link = 4\n", "card.txt:2: unknown key 'pon-link', did you mean 'pon-links'?"},
      {"xgspon = yes\n", "card.txt:1: 'xgspon' has the value 'yes', expected true or false"},
      {"\x1b[2J", "card.txt:1: a card file is text, and this line is not"},
      {std::string(1000001, '\n'), "cannot read 'card.txt': longer than 1 MB"},
  };
  for (const auto& [text, told] : cases) {
    file("card.txt", text);
    EXPECT_EQ(gponval({"commit", "--running", "card.xml", "--card", "card.txt"}).err,
              "gponval: " + told + "\n");
  }
  EXPECT_EQ(
      gponval({"commit", "--running", "card.xml", "--card", "-"}, "\ncolour\n").err.substr(0, 47),
      "gponval: standard input:2: unknown key 'colour'");
}

TEST_F(UsageTest, NoByteOfTheInputReachesTheTerminalUnlessItPrints) {
  const struct {
    std::string name;
    std::string shown;
  } cases[] = {
      {"a\nb", "a\\x0ab"},
      {"a\tb\r", "a\\x09b\\x0d"},
      {"\x1b[31mred", "\\x1b[31mred"},
      {"\x7f", "\\x7f"},
      {"%s%n", "%s%n"},
      {"back\\slash 'quote'", "back\\slash 'quote'"},
      {"caf\xc3\xa9 \xd0\x96 \xe6\xbc\xa2 \xf0\x9f\x98\x80",
       "caf\xc3\xa9 \xd0\x96 \xe6\xbc\xa2 \xf0\x9f\x98\x80"},
      {"caf\xe9", "caf\\xe9"},                       // Latin-1
      {"\xc3", "\\xc3"},                             // broken off
      {"\xc3(", "\\xc3("},                           // not continued
      {"\xa9", "\\xa9"},                             // not begun
      {"\xc0\xaf", "\\xc0\\xaf"},                    // longer than needed
      {"\xed\xa0\x80", "\\xed\\xa0\\x80"},           // a surrogate
      {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},  // beyond the last character
      {"\xff\xfe", "\\xff\\xfe"},
      {"\xc2\x9b"
       "31m",
       "\\xc2\\x9b31m"},  // a control of the upper half
      {"\xe2\x80\xae"
       "fdp",
       "\\xe2\\x80\\xaefdp"},                        // right to left
      {"\xe2\x81\xa6", "\\xe2\\x81\\xa6"},           // isolates
      {"\xe2\x80\xa8", "\\xe2\\x80\\xa8"},           // line separator
      {"\xef\xbb\xbf", "\\xef\\xbb\\xbf"},           // byte order mark
      {"\xf3\xa0\x81\x81", "\\xf3\\xa0\\x81\\x81"},  // tag
  };
  for (const auto& [name, shown] : cases) {
    EXPECT_EQ(gponval({"commit", "--running", name}).err,
              "gponval: cannot read '" + shown + "': No such file or directory\n");
  }
}

TEST_F(UsageTest, ALongLineLosesItsMiddle) {
  constexpr std::size_t kLongest = 400;
  const std::string head = "gponval: unknown command '";
  const std::string tail = "' (see gponval --help)\n";
  const std::size_t fitting = kLongest + 1 - head.size() - tail.size();
  const struct {
    std::string name;
    std::size_t size;
  } cases[] = {
      {std::string(fitting, 'x'), kLongest},
      {std::string(fitting + 1, 'x'), kLongest},
      {std::string(100000, 'x'), kLongest},
      {std::string(100000, '\x01'), kLongest - 4},  // no escape is cut
  };
  for (const auto& [name, size] : cases) {
    const Outcome run = gponval({name});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, StartsWith(head));
    EXPECT_THAT(run.err, EndsWith(tail));
    EXPECT_EQ(run.err.find(" ... ") != std::string::npos, name.size() > fitting) << run.err;
    EXPECT_LE(run.err.size(), kLongest + 1);
    EXPECT_GE(run.err.size(), size - 4) << run.err;
  }
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

  // Its own model, recognised by a request that the other one lacks.
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

TEST_F(UsageTest, AStandardOutputThatCannotBeWrittenIsReported) {
  const Outcome run =
      run_program(folder_, {"/bin/sh", "-c", "exec \"$0\" points > /dev/full", gponval_command()});
  expect_wrong_use(run, "cannot write standard output");
  EXPECT_THAT(files(), ElementsAre("card.xml"));
}

}  // namespace
}  // namespace gponval::test
