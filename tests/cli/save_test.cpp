#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class SaveTest : public CommandTest {
 protected:
  [[nodiscard]] mode_t mode_of(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat((folder_ / name).c_str(), &status), 0);
    return status.st_mode & 07777U;
  }
  // The number of service ports in a saved configuration, as the command itself reads it.
  [[nodiscard]] bool holds(const std::string& name, const std::string& candidate) const {
    const Outcome run =
        gponval({"commit", "--running", name, "--candidate", candidate, "--format", "json"});
    return run.status == 0 && run.json().at("answers").empty();
  }

  const std::string good_ = service_port(3, 1, 30);
};

TEST_F(SaveTest, AnAcceptedCommitIsWritten) {
  const std::string before = text_of("card.xml");
  const Outcome run = commit(good_, {"--save", "new.xml"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Commit accepted.\n");
  EXPECT_THAT(text_of("new.xml"), HasSubstr("<id>3</id>"));
  EXPECT_EQ(text_of("card.xml"), before);
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml", "new.xml"));
}

TEST_F(SaveTest, TheRunningFileMayBeReplaced) {
  EXPECT_EQ(commit(good_, {"--save", "card.xml"}).status, 0);
  EXPECT_THAT(text_of("card.xml"), HasSubstr("<id>3</id>"));
  EXPECT_EQ(commit(service_port(4, 1, 30), {"--save", "card.xml"}).status, 1);
  EXPECT_THAT(text_of("card.xml"), Not(HasSubstr("<id>4</id>")));
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml"));
}

TEST_F(SaveTest, TheEndingOfTheNameSaysTheFormat) {
  EXPECT_EQ(commit(good_, {"--save", "new.json"}).status, 0);
  EXPECT_EQ(commit(good_, {"--save", "new.xml"}).status, 0);
  const json saved = json::parse(text_of("new.json"));
  EXPECT_EQ(saved.at("base:config").at("service-port").size(), 3U);
  EXPECT_THAT(text_of("new.xml"), StartsWith("<config xmlns=\"urn:tarnd:base\""));
  EXPECT_TRUE(holds("new.json", "new.xml"));
  EXPECT_TRUE(holds("new.xml", "new.json"));
  EXPECT_FALSE(holds("new.xml", "card.xml"));
}

TEST_F(SaveTest, NothingIsWrittenUnlessTheCommitIsAccepted) {
  EXPECT_EQ(commit(service_port(3, 9, 30), {"--save", "new.xml"}).status, 1);
  EXPECT_EQ(commit(fec_change(), {"--save", "new.xml"}).status, 3);
  EXPECT_EQ(commit("<nothing/>", {"--save", "new.xml"}).status, 2);
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml"));
  EXPECT_EQ(commit(fec_change(), {"--save", "new.xml", "--confirm", "yes"}).status, 0);
  EXPECT_THAT(text_of("new.xml"), HasSubstr("<downstream-fec>false</downstream-fec>"));
}

TEST_F(SaveTest, AnExistingFileKeepsItsMode) {
  chmod((folder_ / file("old.xml", "old")).c_str(), 0640);
  EXPECT_EQ(commit(good_, {"--save", "old.xml"}).status, 0);
  EXPECT_EQ(mode_of("old.xml"), 0640U);
  const mode_t mask = umask(022);
  EXPECT_EQ(commit(good_, {"--save", "new.xml"}).status, 0);
  umask(mask);
  EXPECT_EQ(mode_of("new.xml"), 0644U);
}

TEST_F(SaveTest, ALinkIsFollowed) {
  file("old.xml", "old");
  std::filesystem::create_symlink("old.xml", folder_ / "link.xml");
  EXPECT_EQ(commit(good_, {"--save", "link.xml"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.xml"));
  EXPECT_THAT(text_of("old.xml"), HasSubstr("<id>3</id>"));
}

TEST_F(SaveTest, WhereNothingCanBeSavedIsWrongUse) {
  std::filesystem::create_directory(folder_ / "folder");
  for (const std::string target :
       {"folder", "missing/new.xml", "/dev/null", "-", "", "/proc/new.xml", "card.xml/new.xml"}) {
    const Outcome run = commit(good_, {"--save", target});
    EXPECT_EQ(run.status, 2) << target;
    EXPECT_THAT(run.out, IsEmpty()) << target;
    EXPECT_THAT(run.err, StartsWith("gponval: ")) << target;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << target;
  }
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml", "folder"));
}

TEST_F(SaveTest, AFailingSaveLeavesTheOldFileAndNothingElse) {
  file("old.xml", "old");
  config("change.xml", good_);
  // No file may grow beyond a block, so that writing fails halfway into the temporary file.
  const Outcome run = run_program(
      folder_, {"/bin/sh", "-c",
                "trap '' XFSZ; ulimit -f 1; exec \"$0\" commit --running card.xml --change "
                "change.xml --save old.xml",
                gponval_command()});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.out, IsEmpty());
  EXPECT_EQ(run.err,
            "gponval: cannot save '" + (folder_ / "old.xml").string() + "': File too large\n");
  EXPECT_EQ(text_of("old.xml"), "old");
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml", "old.xml"));
}

}  // namespace
}  // namespace gponval::test
