// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/Reachability.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <QCoreApplication>
#include <QThread>
#include <QVariant>
#include <string_view>

#include "app/NetworkNamespace.h"
#include "foundation/Descriptor.h"
#include "foundation/NotificationCenter.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using enum network_flag::Flag;
using tests::ip;
using tests::runUntil;

bool inOwnNetwork = false;

/// A link v0 with a carrier, whose other end is v1, and 10.0.0.1/24.
class ReachabilityInNetwork : public testing::Test {
 protected:
  void SetUp() override {
    if (!inOwnNetwork) GTEST_SKIP() << "this system permits no network namespaces";
    // An earlier test may have left half of it.
    ASSERT_TRUE(ip("link set lo up"));
    ASSERT_TRUE(ip("link add v0 type veth peer name v1"));
    // Without addresses of their own, whose news would come at any time in between.
    for (const std::string link : {"v1", "v0"})
      ASSERT_TRUE(ip("link set " + link + " addrgenmode none") && ip("link set " + link + " up"));
    ASSERT_TRUE(ip("address add 10.0.0.1/24 dev v0"));
  }
  void TearDown() override {
    if (inOwnNetwork && !ip("link delete v0")) ADD_FAILURE() << "the link stays";
  }
};

/// What a monitor tells, as long as this is there.
class Heard {
 public:
  explicit Heard(std::shared_ptr<Reachability> monitor) : m_monitor(std::move(monitor)) {
    m_monitor->setReachabilityBlock(
        [told = m_told](Reachability &, std::uint32_t flags) { told.put(flags); });
    m_observation = NotificationCenter::defaultCenter().addObserver(
        QString::fromUtf16(kReachabilityChangedNotification),
        [this](const Notification &) {
          EXPECT_TRUE(QThread::currentThread() == QCoreApplication::instance()->thread());
          ++m_notifications;
        },
        QVariant::fromValue(m_monitor.get()));
    EXPECT_TRUE(m_monitor->startNotifier());
  }
  ~Heard() { m_monitor->stopNotifier(); }
  Heard(const Heard &) = delete;
  Heard &operator=(const Heard &) = delete;

  /// Waits for the telling of `flags` and its notification.
  [[nodiscard]] bool tells(std::uint32_t flags) {
    return runUntil([&] {
      const auto told = m_told.values();
      return told.size() > m_seen && told.back() == flags && m_notifications == told.size() &&
             (m_seen = told.size()) > 0;
    });
  }
  [[nodiscard]] std::size_t count() const { return m_notifications; }

 private:
  std::shared_ptr<Reachability> m_monitor;
  tests::Inbox<std::uint32_t> m_told;
  std::size_t m_notifications = 0;
  std::size_t m_seen = 0;
  NotificationCenter::Observation m_observation;
};

TEST_F(ReachabilityInNetwork, FollowsWhatIsTakenAwayAndGivenBack) {
  const auto monitor = Reachability::reachabilityForInternetConnection();
  ASSERT_TRUE(monitor);
  ASSERT_EQ(monitor->reachabilityFlags(), 0U);
  Heard heard(monitor);

  const std::pair<std::vector<std::string>, std::uint32_t> steps[] = {
      {{"route add default via 10.0.0.2"}, kReachable},
      {{"link set v1 down"}, 0},  // the carrier; the route stays
      {{"link set v1 up"}, kReachable},
      {{"address delete 10.0.0.1/24 dev v0"}, 0},  // takes the routes along without a word of them
      {{"address add 10.0.0.1/24 dev v0", "route add default via 10.0.0.2"}, kReachable},
      {{"route replace prohibit default"}, 0},
      {{"route delete prohibit default", "route add default dev v0"}, kReachable | kIsDirect},
      {{"route delete default"}, 0},
      {{"route add 0.0.0.0/1 via 10.0.0.2", "route add 128.0.0.0/1 via 10.0.0.2"}, kReachable},
      {{"route delete 0.0.0.0/1", "route delete 128.0.0.0/1"}, 0},
      {{"route add default via 10.0.0.2 table 100", "rule add from all lookup 100"}, kReachable},
      {{"rule delete from all lookup 100"}, 0},
      {{"address delete 10.0.0.1/24 dev v0", "address add 2001:db8::1/64 dev v0 nodad",
        "-6 route add default via 2001:db8::2"},
       kReachable},
      {{"-6 route replace blackhole default metric 1"}, 0},
      {{"-6 route delete blackhole default"}, kReachable},
      {{"address delete 2001:db8::1/64 dev v0", "-6 route flush default"}, 0},
  };
  for (const auto &[commands, flags] : steps) {
    for (const std::string &command : commands) ASSERT_TRUE(ip(command)) << command;
    ASSERT_TRUE(heard.tells(flags)) << commands.back();
    EXPECT_EQ(monitor->reachabilityFlags(), flags) << commands.back();
  }
}

TEST_F(ReachabilityInNetwork, TellsTargetsApart) {
  constexpr std::uint32_t kOwn = kReachable | kIsLocalAddress | kIsDirect;
  ASSERT_TRUE(ip("route add default via 10.0.0.2"));
  for (const auto &[address, flags] : {std::pair<const char *, std::uint32_t>("10.0.0.1", kOwn),
                                       {"10.0.0.9", kReachable | kIsDirect},
                                       {"198.51.100.7", kReachable},
                                       {"2001:db8:1::9", 0},
                                       {"169.254.7.7", 0}})
    EXPECT_EQ(Reachability::reachabilityWithHostName(address)->reachabilityFlags(), flags) << address;
  const auto named = Reachability::reachabilityWithHostName("localhost");
  EXPECT_TRUE(runUntil([&] { return named->reachabilityFlags() == kOwn; }));
}

TEST_F(ReachabilityInNetwork, TellsABurstInFewWords) {
  const auto monitor = Reachability::reachabilityForInternetConnection();
  Heard heard(monitor);
  const tests::TemporaryFolder folder;
  std::string batch;
  for (int i = 0; i < 300; ++i) batch += "route add default via 10.0.0.2\nroute delete default\n";
  const auto file = folder.write("batch", batch + "route add default via 10.0.0.2\n");
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_TRUE(ip("-batch " + file.string()));
  ASSERT_TRUE(heard.tells(kReachable));
  ASSERT_TRUE(ip("route delete default"));
  ASSERT_TRUE(heard.tells(0));
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_LE(heard.count(), std::size_t(took / std::chrono::milliseconds(100)) + 3);
}

TEST_F(ReachabilityInNetwork, StopsFromWithinABlock) {
  auto monitor = Reachability::reachabilityForInternetConnection();
  const tests::Inbox<std::uint32_t> told;
  monitor->setReachabilityBlock([told](Reachability &self, std::uint32_t flags) {
    self.stopNotifier();
    told.put(flags);
  });
  ASSERT_TRUE(monitor->startNotifier());
  const std::weak_ptr<Reachability> watch = monitor;
  monitor.reset();
  ASSERT_TRUE(ip("route add default via 10.0.0.2"));
  EXPECT_EQ(told.waitFor(1).size(), 1U);
  EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

TEST_F(ReachabilityInNetwork, ANameThatNobodyAnswersMakesNobodyWait) {
  const tests::TemporaryFolder folder;
  const auto mount = [&](const char *name, const char *contents) {
    const std::string over = std::string("/etc/") + name;
    return ::mount(folder.write(name, contents).c_str(), over.c_str(), nullptr, MS_BIND, nullptr) == 0;
  };
  ASSERT_TRUE(mount("resolv.conf", "nameserver 127.0.0.1\noptions timeout:30 attempts:1\n"));
  ASSERT_TRUE(mount("nsswitch.conf", "hosts: files dns\n"));
  const Descriptor server(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_port = htons(53);
  own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(::bind(server.number(), reinterpret_cast<sockaddr *>(&own), sizeof own), 0);
  const auto monitor = Reachability::reachabilityWithHostName("unanswered.example");
  char question = 0;
  ASSERT_EQ(::recv(server.number(), &question, 1, 0), 1);
  EXPECT_EQ(monitor->currentReachabilityString().toStdString(), "No Connection");
  ASSERT_TRUE(monitor->startNotifier());
  monitor->stopNotifier();  // and it is destroyed, with the look-up under way
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  if (argc > 1 && std::string_view(argv[1]) == "--as-ordinary-user") {
    if (::geteuid() == 0 && (::setresgid(65534, 65534, 65534) != 0 || ::setresuid(65534, 65534, 65534) != 0))
      return 1;
  }
  velmora::inOwnNetwork = velmora::tests::enterOwnNetwork();
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
