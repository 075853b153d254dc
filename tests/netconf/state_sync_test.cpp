// A reply that reports a commit leaves after the disk has the commit.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "netconf/pipe.h"
#include "netconf/server.h"
#include "netconf/state/failure.h"
#include "netconf/unix_socket.h"
#include "tests/netconf/session_fixture.h"
#include "tests/netconf/state_file.h"

namespace tarnd::netconf {
namespace {

// Stands for the disk: counts the syncs, and lets them wait or fail.
class Disk {
 public:
  int sync(int descriptor) {
    std::unique_lock lock(mutex_);
    ++syncs_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !is_stopped_; });
    if (fails_) {
      errno = EIO;
      return -1;
    }
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
  }

  int syncs() {
    const std::lock_guard lock(mutex_);
    return syncs_;
  }
  void begin() {
    const std::lock_guard lock(mutex_);
    syncs_ = 0;
    is_stopped_ = false;
    fails_ = false;
  }
  void stop() { set(is_stopped_, true); }
  void go_on() { set(is_stopped_, false); }
  void fail() { set(fails_, true); }
  void wait_for_sync(int number) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return syncs_ >= number; });
  }

 private:
  void set(bool& what, bool value) {
    const std::lock_guard lock(mutex_);
    what = value;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  int syncs_ = 0;
  bool is_stopped_ = false;
  bool fails_ = false;
};

Disk disk;

}  // namespace
}  // namespace tarnd::netconf

// SQLite finds these instead of those of the C library.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" int fdatasync(int descriptor) {
  return tarnd::netconf::disk.sync(descriptor);
}

extern "C" int fsync(int descriptor) {
  return tarnd::netconf::disk.sync(descriptor);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace tarnd::netconf {
namespace {

using state::Failure;
using state::Journal;
using ::testing::HasSubstr;

state::Commit port_comes(int id) {
  state::Commit commit;
  commit.changes = {{"/config/service-port{" + std::to_string(id) + "}", std::nullopt, ""}};
  return commit;
}

class SyncTest : public ServedCardTest {
 protected:
  SyncTest() : journal_(file_.name()) {
    disk.begin();
    journal_.begin(datastore_, {});
    syncs_before_ = disk.syncs();
  }
  ~SyncTest() override { disk.begin(); }

  [[nodiscard]] int syncs() const { return disk.syncs() - syncs_before_; }

  state::StateFile file_;
  Journal journal_;
  int syncs_before_ = 0;
};

TEST_F(SyncTest, CommitsShareOneSync) {
  for (int id = 2; id < 12; ++id) journal_.record(port_comes(id), std::nullopt);
  EXPECT_EQ(syncs(), 0);
  journal_.sync();
  EXPECT_EQ(syncs(), 1);
  journal_.sync();
  EXPECT_EQ(syncs(), 1) << "there was nothing new";
}

TEST_F(SyncTest, AfterASyncThatFailedNothingIsStoredAnyMore) {
  journal_.record(port_comes(2), std::nullopt);
  disk.fail();
  try {
    journal_.sync();
    ADD_FAILURE() << "the sync did not fail";
  } catch (const Failure& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("its log cannot be synced: Input/output error"));
  }
  disk.begin();
  EXPECT_THROW(journal_.sync(), Failure);
  EXPECT_THROW(journal_.record(port_comes(3), std::nullopt), Failure);
}

TEST_F(SyncTest, TheLogIsEmptiedWhenItIsLongAndNotBefore) {
  const store::Transaction candidate(datastore_);
  state::Commit large = port_comes(2);
  large.author.comment = std::string(400'000, 'x');
  journal_.record(large, std::nullopt);
  journal_.tend(candidate);
  EXPECT_EQ(syncs(), 0);
  for (int i = 0; i < 10; ++i) journal_.record(large, std::nullopt);
  journal_.tend(candidate);
  EXPECT_EQ(syncs(), 2) << "the log, then the database";
}

// A client of the socket.
class SocketClient {
 public:
  explicit SocketClient(const std::filesystem::path& name) : socket_(connect_to(name)) {
    wait_for("]]>]]>");
    send(kHello11);
    ask("<discard-changes/>");  // then the hello was read
  }

  void send(const std::string& text) const {
    ASSERT_EQ(write(socket_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void ask(const std::string& operation) {
    send(framed(rpc(operation), Framing::kChunked));
    EXPECT_THAT(reply(), IsOk());
  }
  void set_port(int id) const {
    const std::string target = "<target><running/></target>";
    send(framed(rpc("<edit-config>" + target + "<config>" + test::config(port(std::to_string(id))) +
                    "</config></edit-config>"),
                Framing::kChunked));
  }
  [[nodiscard]] bool has_input() const {
    pollfd polled{socket_.get(), POLLIN, 0};
    return poll(&polled, 1, 0) > 0;
  }
  std::string wait_for(const std::string& end) {
    std::string text;
    for (char byte = 0; text.find(end) == std::string::npos; text += byte) {
      if (read(socket_.get(), &byte, 1) != 1) return text + " and no more";
    }
    return text;
  }
  std::string reply() { return wait_for("\n##\n"); }

 private:
  Descriptor socket_;
};

class ServerSyncTest : public SyncTest {
 protected:
  ServerSyncTest() {
    card_.journal = &journal_;
    ServerOptions options;
    options.socket = file_.name().parent_path() / "socket";
    socket_ = options.socket;
    server_ = std::make_unique<Server>(card_, options);
    thread_ = std::thread([this] { run(); });
  }
  ~ServerSyncTest() override { stop(); }

  void stop() {
    if (!thread_.joinable()) return;
    end_.write = Descriptor();
    thread_.join();
    server_.reset();
  }
  std::string failure() {
    thread_.join();
    server_.reset();
    return failure_;
  }

  std::filesystem::path socket_;

 private:
  void run() {
    try {
      server_->run({{end_.read.get(), [] { return false; }}});
    } catch (const Failure& failure) {
      failure_ = failure.what();
    }
  }

  Pipe end_ = new_pipe();
  std::string failure_;
  std::unique_ptr<Server> server_;
  std::thread thread_;
};

TEST_F(ServerSyncTest, NoReplyLeavesBeforeTheDiskHasTheCommit) {
  SocketClient first(socket_);
  SocketClient second(socket_);
  const int before = disk.syncs();
  disk.stop();
  first.set_port(2);
  disk.wait_for_sync(before + 1);
  // The server now waits for the disk, so that these come together.
  second.set_port(3);
  EXPECT_FALSE(first.has_input());
  disk.go_on();
  EXPECT_THAT(first.reply(), IsOk());
  EXPECT_THAT(second.reply(), IsOk());
  stop();
  EXPECT_EQ(journal_.newest(), 3);
}

TEST_F(ServerSyncTest, CommitsThatArriveTogetherShareASync) {
  constexpr int kClients = 8;
  std::vector<std::unique_ptr<SocketClient>> clients;
  clients.reserve(kClients);
  for (int i = 0; i < kClients; ++i) clients.push_back(std::make_unique<SocketClient>(socket_));
  const int before = disk.syncs();
  disk.stop();
  clients.front()->set_port(2);
  disk.wait_for_sync(before + 1);
  for (int i = 1; i < kClients; ++i) clients.at(static_cast<std::size_t>(i))->set_port(i + 2);
  disk.go_on();
  for (const auto& client : clients) EXPECT_THAT(client->reply(), IsOk());
  stop();
  EXPECT_EQ(disk.syncs() - before, 2);
  EXPECT_EQ(journal_.newest(), 1 + kClients);
}

TEST_F(ServerSyncTest, AServerWhoseDiskFailsEndsWithoutAReply) {
  SocketClient client(socket_);
  disk.fail();
  client.set_port(2);
  EXPECT_THAT(failure(), HasSubstr("its log cannot be synced"));
  EXPECT_EQ(client.wait_for("##"), " and no more");
}

}  // namespace
}  // namespace tarnd::netconf
