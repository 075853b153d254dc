#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <fstream>
#include <functional>
#include <future>
#include <utility>

#include "tests/cli/gponval_run.h"
#include "tools/gponval/file_lock.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAreArray;

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

  // Commits a service port while another program changes the files. When the command waits for the
  // change on standard input, it has read the running configuration.
  Outcome commit_meanwhile(const std::function<void()>& others_do,
                           const std::string& running = "card.xml",
                           const std::string& target = "card.xml") {
    const std::filesystem::path fifo = folder_ / "fifo";
    mkfifo(fifo.c_str(), 0600);
    auto run = std::async(std::launch::async, [&] {
      return run_program(folder_,
                         {"/bin/sh", "-c",
                          R"(exec "$0" commit --running "$1" --change fifo --save "$2" <card.xml)",
                          gponval_command(), running, target});
    });
    // Opened without a reader it fails, so that a command that ends early ends the test, too.
    tarnd::Descriptor change(-1);
    while (!change.is_open() &&
           run.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
      change = tarnd::Descriptor(open(fifo.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    }
    others_do();
    const std::string text = in_config(good_);
    if (change.is_open()) {
      EXPECT_EQ(write(change.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    change = tarnd::Descriptor(-1);
    return run.get();
  }

  /// The file, locked as by a running command.
  [[nodiscard]] tarnd::Descriptor locked(const std::string& name) const {
    tarnd::Descriptor descriptor(open((folder_ / name).c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(flock(descriptor.get(), LOCK_EX | LOCK_NB), 0) << name;
    return descriptor;
  }

  [[nodiscard]] tarnd::Descriptor make_socket(const std::string& name) const {
    tarnd::Descriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder_ / name).string().copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
              0);
    return descriptor;
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

TEST_F(SaveTest, ALinkWithoutAFileIsFollowedToo) {
  std::filesystem::create_directory(folder_ / "folder");
  std::filesystem::create_symlink("folder/new.xml", folder_ / "link.xml");
  std::filesystem::create_symlink("link.xml", folder_ / "link-to-link.xml");
  EXPECT_EQ(commit(good_, {"--save", "link-to-link.xml"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.xml"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link-to-link.xml"));
  EXPECT_THAT(text_of("folder/new.xml"), HasSubstr("<id>3</id>"));
}

TEST_F(SaveTest, ANameMayBeAsLongAsItGets) {
  const std::string longest(NAME_MAX, 'n');
  EXPECT_EQ(commit(good_, {"--save", longest}).status, 0);
  EXPECT_THAT(text_of(longest), HasSubstr("<id>3</id>"));
}

TEST_F(SaveTest, WhatIsNoRegularFileIsRefusedBeforeTheCommit) {
  std::filesystem::create_directory(folder_ / "folder");
  mkfifo((folder_ / "fifo").c_str(), 0600);
  const tarnd::Descriptor socket = make_socket("socket");
  for (const auto& [link, target] : {std::pair("to-folder", "folder"),
                                     {"to-device", "/dev/null"},
                                     {"to-nowhere", "missing/new.xml"},
                                     {"to-itself", "to-itself"}}) {
    std::filesystem::create_symlink(target, folder_ / link);
  }
  config("change.xml", "");
  const std::vector<std::string> before = files();
  const struct {
    std::string target;
    std::string told;
  } cases[] = {
      {"folder", "it is not a regular file"},
      {".", "it is not a regular file"},
      {"folder/", "it is not a regular file"},
      {"fifo", "it is not a regular file"},
      {"socket", "it is not a regular file"},
      {"/dev/null", "it is not a regular file"},
      {"/dev/full", "it is not a regular file"},
      {"to-folder", "it is not a regular file"},
      {"to-device", "it is not a regular file"},
      {"to-nowhere", "there is no folder 'missing'"},
      {"to-itself", "Too many levels of symbolic links"},
      {"missing/new.xml", "there is no folder 'missing'"},
      {"new.xml/", "there is no folder 'new.xml'"},
      {"card.xml/new.xml", "there is no folder '" + (folder_ / "card.xml").string() + "'"},
      // To root every folder is writable, until a file is made in it.
      {"/proc/new.xml",
       geteuid() == 0 ? "No such file or directory" : "no file can be made in '/proc'"},
      {std::string(NAME_MAX + 1, 'n'), "File name too long"},
  };
  // A commit would be rejected; the test of the file name comes first.
  const std::string rejected = service_port(3, 9, 30);
  for (const auto& [target, told] : cases) {
    const bool too_late = target == "/proc/new.xml";
    const Outcome run = commit(too_late ? good_ : rejected, {"--save", target});
    EXPECT_EQ(run.status, 2) << target;
    EXPECT_THAT(run.out, IsEmpty()) << target;
    EXPECT_EQ(
        run.err,
        std::string("gponval: cannot save '").append(target).append("': ").append(told) + "\n");
  }
  EXPECT_EQ(commit(rejected, {"--save", ""}).err, "gponval: --save needs the name of a file\n");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_EQ(files(), before);
}

TEST_F(SaveTest, ADashIsStandardOutput) {
  EXPECT_EQ(commit(good_, {"--save", "new.xml"}).status, 0);
  const Outcome run = commit(good_, {"--save", "-"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, text_of("new.xml"));
  EXPECT_EQ(run.err, "Commit accepted.\n");

  const Outcome in_json = commit(good_, {"--save", "-", "--format", "json"});
  EXPECT_EQ(in_json.out, text_of("new.xml"));
  EXPECT_EQ(json::parse(in_json.err).at("result"), "accepted");

  const Outcome rejected = commit(service_port(3, 9, 30), {"--save", "-"});
  EXPECT_EQ(rejected.status, 1);
  EXPECT_THAT(rejected.out, IsEmpty());
  EXPECT_THAT(rejected.err, StartsWith("Commit rejected.\n\nERROR "));

  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml", "new.xml"));
}

TEST_F(SaveTest, AStandardOutputThatCannotBeWrittenIsReported) {
  config("change.xml", good_);
  const Outcome run = run_program(
      folder_, {"/bin/sh", "-c",
                "exec \"$0\" commit --running card.xml --change change.xml --save - > /dev/full",
                gponval_command()});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "gponval: cannot write standard output\n");
}

TEST_F(SaveTest, ANameWithoutAFormatGetsThatOfTheRunningConfiguration) {
  EXPECT_EQ(commit(good_, {"--save", "new.json"}).status, 0);
  EXPECT_EQ(commit(good_, {"--save", "new.conf"}).status, 0);
  EXPECT_THAT(text_of("new.conf"), StartsWith("<config "));
  EXPECT_THAT(gponval({"commit", "--running", "new.json", "--save", "-"}).out, text_of("new.json"));
  EXPECT_THAT(gponval({"commit", "--running", "-", "--input-format", "json", "--save", "new.conf"},
                      text_of("new.json"))
                  .err,
              IsEmpty());
  EXPECT_EQ(text_of("new.conf"), text_of("new.json"));
  EXPECT_EQ(gponval({"commit", "--running", "new.json", "--save", "new.XML"}).status, 0);
  EXPECT_THAT(text_of("new.XML"), StartsWith("<config "));
  EXPECT_EQ(commit(good_, {"--save", "new.Json"}).status, 0);
  EXPECT_EQ(text_of("new.Json"), text_of("new.json"));
}

TEST_F(SaveTest, WithoutAChangeItIsWrittenToo) {
  const Outcome run = gponval({"commit", "--running", "card.xml", "--save", "new.xml"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "Nothing to commit.\n");
  EXPECT_TRUE(holds("new.xml", "card.xml"));
}

TEST_F(SaveTest, ARunningFileThatDoesNotExistCannotBeRead) {
  const Outcome run = gponval({"commit", "--running", "missing.xml", "--save", "missing.xml"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "gponval: cannot read 'missing.xml': No such file or directory\n");
  EXPECT_THAT(files(), ElementsAre("card.xml"));
}

TEST_F(SaveTest, ARunningFileThatChangedMeanwhileIsNotOverwritten) {
  const std::string read = text_of("card.xml");
  const std::string changed = "X" + read.substr(1);
  const auto same_size_and_time = [&] {
    const auto time = std::filesystem::last_write_time(folder_ / "card.xml");
    file("card.xml", changed);
    std::filesystem::last_write_time(folder_ / "card.xml", time);
  };
  const auto replace_by = [this](const std::string& text) {
    std::filesystem::rename(folder_ / file("other.xml", text), folder_ / "card.xml");
  };
  const struct {
    const char* what;
    std::function<void()> change;
    bool saved;
    std::string text;
  } cases[] = {
      {"nothing", [] {}, true, ""},
      {"touched", [&] { file("card.xml", read); }, true, ""},
      {"longer", [&] { file("card.xml", read + "\n"); }, false, read + "\n"},
      {"shorter", [&] { file("card.xml", read.substr(1)); }, false, read.substr(1)},
      {"empty", [&] { file("card.xml", ""); }, false, ""},
      {"same size and time", same_size_and_time, false, changed},
      {"another file", [&] { replace_by(changed); }, false, changed},
      {"another file with that text", [&] { replace_by(read); }, false, read},
      {"removed", [this] { std::filesystem::remove(folder_ / "card.xml"); }, false, ""},
  };
  for (const auto& [what, change, saved, text] : cases) {
    file("card.xml", read);
    const Outcome run = commit_meanwhile(change);
    EXPECT_EQ(run.status, saved ? 0 : 2) << what << run.err;
    if (saved) {
      EXPECT_THAT(text_of("card.xml"), HasSubstr("<id>3</id>")) << what;
    } else {
      EXPECT_THAT(run.out, IsEmpty()) << what;
      EXPECT_EQ(run.err, "gponval: cannot save 'card.xml': it has changed since it was read\n");
      EXPECT_EQ(text_of("card.xml"), text) << what;
    }
  }
  EXPECT_THAT(files(), ElementsAre("fifo"));
}

TEST_F(SaveTest, TheRunningFileIsKnownByAnyName) {
  std::filesystem::create_symlink("card.xml", folder_ / "link.xml");
  std::filesystem::create_hard_link(folder_ / "card.xml", folder_ / "same.xml");
  const std::pair<std::string, std::string> cases[] = {
      {"card.xml", "./card.xml"},         {"link.xml", "card.xml"}, {"card.xml", "link.xml"},
      {folder_ / "card.xml", "card.xml"}, {"same.xml", "card.xml"}, {"-", "card.xml"},
      {"/dev/stdin", "link.xml"}};
  for (const auto& [running, target] : cases) {
    const std::string before = text_of("card.xml");
    const Outcome run = commit_meanwhile(
        [&] { std::ofstream(folder_ / "card.xml", std::ios::app) << "<!-- -->"; }, running, target);
    EXPECT_EQ(run.status, 2) << running << ' ' << target;
    EXPECT_EQ(run.err, "gponval: cannot save '" + target + "': it has changed since it was read\n");
    EXPECT_EQ(text_of("card.xml"), before + "<!-- -->") << running << ' ' << target;
  }
}

TEST_F(SaveTest, ARunWaitsForAnotherAndSeesWhatThatSaved) {
  config("change.xml", service_port(4, 2, 20));
  EXPECT_EQ(commit(good_, {"--save", "next.xml"}).status, 0);
  config("change.xml", service_port(4, 2, 20));
  std::future<Outcome> run;
  {
    const tarnd::Descriptor other = locked("card.xml");
    run = std::async(std::launch::async, [this] {
      return gponval(
          {"commit", "--running", "card.xml", "--change", "change.xml", "--save", "card.xml"});
    });
    EXPECT_EQ(run.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout);
    std::filesystem::rename(folder_ / "next.xml", folder_ / "card.xml");
  }
  EXPECT_EQ(run.get().status, 0);
  EXPECT_THAT(text_of("card.xml"), HasSubstr("<id>3</id>"));
  EXPECT_THAT(text_of("card.xml"), HasSubstr("<id>4</id>"));
}

TEST_F(SaveTest, ARunDoesNotWaitForever) {
  const std::string before = text_of("card.xml");
  const tarnd::Descriptor other = locked("card.xml");
  const Outcome run = commit(good_, {"--save", "card.xml"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "gponval: cannot save 'card.xml': another run is committing to it\n");
  EXPECT_EQ(text_of("card.xml"), before);
  // Only who saves to the file that it reads needs it for itself.
  EXPECT_EQ(commit(good_, {"--save", "new.xml"}).status, 0);
  EXPECT_EQ(commit(good_).status, 0);
}

TEST_F(SaveTest, ParallelRunsOnOneFileLoseNoChange) {
  constexpr int kRuns = 8;
  std::filesystem::create_symlink("card.xml", folder_ / "link.xml");
  std::vector<std::future<Outcome>> runs;
  for (int i = 0; i < kRuns; ++i) {
    const std::string change = "change-" + std::to_string(i);
    config(change, service_port(100 + i, 1, 100 + i));
    const std::string name = i % 2 == 0 ? "card.xml" : "link.xml";
    runs.push_back(std::async(std::launch::async, [this, change, name] {
      return gponval({"commit", "--running", name, "--change", change, "--save", "card.xml"});
    }));
  }
  int saved = 0;
  for (int i = 0; i < kRuns; ++i) {
    const Outcome run = runs[i].get();
    const bool is_saved = run.status == 0;
    if (is_saved) {
      ++saved;
    } else {
      EXPECT_EQ(run.status, 2);
      EXPECT_EQ(run.err, "gponval: cannot save 'card.xml': another run is committing to it\n");
    }
    EXPECT_EQ(
        text_of("card.xml").find("<id>" + std::to_string(100 + i) + "</id>") != std::string::npos,
        is_saved)
        << i;
  }
  EXPECT_GT(saved, 1);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.xml"));
  EXPECT_THAT(files(), Not(Contains(StartsWith("."))));
}

TEST_F(SaveTest, TheNextSaveRemovesWhatAKilledRunLeft) {
  config("change.xml", good_);
  const std::string before = text_of("card.xml");
  // The signal for a file that grows too large ends the run while it writes.
  const Outcome killed = run_program(
      folder_, {"/bin/sh", "-c",
                "ulimit -c 0; ulimit -f 1; exec \"$0\" commit --running card.xml --change "
                "change.xml --save card.xml",
                gponval_command()});
  EXPECT_EQ(killed.status, 128 + SIGXFSZ);
  EXPECT_EQ(text_of("card.xml"), before);
  ASSERT_THAT(files(), ElementsAre(StartsWith(".gponval-save-"), "card.xml", "change.xml"));

  // Files of users, with any name, and of a run that is not finished.
  const std::vector<std::string> own = {".gponval-save-", ".gponval-save-backup",
                                        ".gponval-save-0123456789abcdeF",
                                        ".gponval-save-0123456789abcdef0", "gponval-save.xml"};
  for (const std::string& name : own) file(name, "own");
  const std::string folder = ".gponval-save-0000000000000000";
  std::filesystem::create_directory(folder_ / folder);
  const std::string link = ".gponval-save-1111111111111111";
  std::filesystem::create_symlink("change.xml", folder_ / link);
  const std::string of_living = file(".gponval-save-2222222222222222", "own");
  const tarnd::Descriptor living = locked(of_living);

  EXPECT_EQ(commit(good_, {"--save", "new.xml"}).status, 0);
  std::vector<std::string> expected = own;
  expected.insert(expected.end(), {folder, link, of_living, "card.xml", "change.xml", "new.xml"});
  EXPECT_THAT(files(), UnorderedElementsAreArray(expected));
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
  EXPECT_EQ(run.err, "gponval: cannot save 'old.xml': File too large\n");
  EXPECT_EQ(text_of("old.xml"), "old");
  EXPECT_THAT(files(), ElementsAre("card.xml", "change.xml", "old.xml"));
}

}  // namespace
}  // namespace gponval::test
