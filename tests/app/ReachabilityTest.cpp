// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/Reachability.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <QCoreApplication>
#include <QThread>
#include <QVariant>
#include <array>
#include <cstring>
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

/// A network that says what it is told to.
class ScriptedTarget final : public NetworkTarget {
 public:
  explicit ScriptedTarget(std::optional<std::uint32_t> flags) : m_flags(flags) {}
  [[nodiscard]] std::optional<std::uint32_t> flags() const override { return m_flags; }
  bool setCallback(Callback callback) override {
    if (callback) ++registered;
    watched = callback && registers;
    return !callback || registers;
  }
  bool setDispatchQueue(CallbackThread *queue) override { return !queue || attaches; }

  int registered = 0;
  bool watched = false;
  bool registers = true;
  bool attaches = true;

 private:
  std::optional<std::uint32_t> m_flags;
};

TEST(ReachabilityFlags, AreDecoded) {
  struct Case {
    std::optional<std::uint32_t> flags;
    const char *letters;
    bool reachable, viaWiFi, required, onDemand, intervention;
  };
  const Case cases[] = {
      {{}, "X- -------", false, false, false, false, false},
      {kReachable | kTransientConnection | kConnectionRequired, "XR ct-----", false, true, true, false,
       false},
      {kReachable | kConnectionRequired, "XR c------", true, true, true, false, false},
      {kReachable | kTransientConnection, "XR -t-----", true, true, false, false, false},
      {kConnectionRequired | kConnectionOnTraffic, "X- c--C---", false, false, true, true, false},
      {kConnectionRequired | kConnectionOnDemand, "X- c---D--", false, false, true, true, false},
      {kConnectionRequired | kInterventionRequired, "X- c-i----", false, false, true, false, true},
      {kConnectionOnDemand | kInterventionRequired, "X- --i-D--", false, false, false, false, false},
      {kReachable | kIsLocalAddress | kIsDirect, "XR -----ld", true, true, false, false, false},
  };
  for (const Case &each : cases) {
    SCOPED_TRACE(each.letters);
    const Reachability monitor(std::make_unique<ScriptedTarget>(each.flags));
    EXPECT_EQ(monitor.currentReachabilityFlags(), QLatin1String(each.letters));
    EXPECT_EQ(monitor.isReachable(), each.reachable);
    EXPECT_EQ(monitor.isReachableViaWiFi(), each.viaWiFi);
    EXPECT_EQ(monitor.isConnectionRequired(), each.required);
    EXPECT_EQ(monitor.isConnectionOnDemand(), each.onDemand);
    EXPECT_EQ(monitor.isInterventionRequired(), each.intervention);
    EXPECT_EQ(monitor.currentReachabilityString().toStdString(), each.reachable ? "WiFi" : "No Connection");
  }
}

TEST(ReachabilityNotifier, RegistersOnceAndGivesUpCleanly) {
  for (const auto &[registers, attaches] : {std::pair(true, true), {false, true}, {true, false}}) {
    auto owned = std::make_unique<ScriptedTarget>(kReachable);
    ScriptedTarget &target = *owned;
    target.registers = registers;
    target.attaches = attaches;
    auto monitor = std::make_shared<Reachability>(std::move(owned));
    const std::weak_ptr<Reachability> watch = monitor;
    const bool starts = registers && attaches;
    EXPECT_EQ(monitor->startNotifier(), starts);
    EXPECT_EQ(target.watched, starts);
    EXPECT_EQ(monitor->startNotifier(), starts);
    EXPECT_EQ(target.registered, starts ? 1 : 2);

    // It lives on by itself exactly while the notifier runs.
    Reachability *running = monitor.get();
    monitor.reset();
    EXPECT_EQ(watch.expired(), !starts);
    if (starts) running->stopNotifier();
    EXPECT_TRUE(watch.expired());
  }
}

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
    m_monitor->setReachableBlock([ways = m_ways](Reachability &) { ways.put(true); });
    m_monitor->setUnreachableBlock([ways = m_ways](Reachability &) { ways.put(false); });
    m_observation = NotificationCenter::defaultCenter().addObserver(
        QString::fromUtf16(kReachabilityChangedNotification),
        [this](const Notification &) {
          EXPECT_TRUE(QThread::currentThread() == QCoreApplication::instance()->thread());
          ++notifications;
        },
        QVariant::fromValue(m_monitor.get()));
    EXPECT_TRUE(m_monitor->startNotifier());
  }
  ~Heard() { m_monitor->stopNotifier(); }
  Heard(const Heard &) = delete;
  Heard &operator=(const Heard &) = delete;

  /// Waits for the telling of `flags` and everything that belongs to it.
  [[nodiscard]] bool tells(std::uint32_t flags) {
    return runUntil([&] {
      const auto told = m_told.values();
      return told.size() > m_seen && told.back() == flags && std::size_t(notifications) == told.size() &&
             m_ways.values().back() == Reachability::isReachableWithFlags(flags) &&
             (m_seen = told.size()) > 0;
    });
  }
  [[nodiscard]] std::size_t count() const { return m_told.values().size(); }

  int notifications = 0;

 private:
  std::shared_ptr<Reachability> m_monitor;
  tests::Inbox<std::uint32_t> m_told;
  tests::Inbox<bool> m_ways;
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
  ASSERT_TRUE(ip("route add default via 10.0.0.2"));
  ASSERT_TRUE(ip("-6 address add 2001:db8::1/64 dev v0 nodad"));
  for (const auto &[address, flags] :
       {std::pair<const char *, std::uint32_t>("127.0.0.1", kReachable | kIsLocalAddress | kIsDirect),
        {"10.0.0.1", kReachable | kIsLocalAddress | kIsDirect},
        {"10.0.0.9", kReachable | kIsDirect},
        {"198.51.100.7", kReachable},
        {"2001:db8::9", kReachable | kIsDirect},
        {"2001:db8:1::9", 0},
        {"169.254.7.7", 0}})
    EXPECT_EQ(Reachability::reachabilityWithHostName(address)->reachabilityFlags(), flags) << address;
  const auto local = Reachability::reachabilityForLocalWiFi();
  EXPECT_EQ(local->reachabilityFlags(), 0U);
  ASSERT_TRUE(ip("route add 169.254.0.0/16 dev v0"));
  EXPECT_EQ(local->reachabilityFlags(), kReachable | kIsDirect);
  EXPECT_FALSE(Reachability::reachabilityWithHostName(""));
  EXPECT_FALSE(Reachability::reachabilityWithAddress(sockaddr{.sa_family = AF_UNIX, .sa_data = {}}));
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

/// A name server on 127.0.0.1:53 that answers when it is told to: with one IPv4 address.
class NameServer {
 public:
  NameServer() : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const timeval patience{.tv_sec = tests::kPatience.count(), .tv_usec = 0};
    ::setsockopt(m_socket.number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in own{};
    own.sin_family = AF_INET;
    own.sin_port = htons(53);
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(m_socket.number(), reinterpret_cast<sockaddr *>(&own), sizeof own) != 0) m_socket.close();
  }

  /// Waits for a question.
  [[nodiscard]] bool asked() {
    socklen_t length = sizeof m_from;
    m_length = ::recvfrom(m_socket.number(), m_packet.data(), m_packet.size() - 16, 0,
                          reinterpret_cast<sockaddr *>(&m_from), &length);
    return m_length > 16;
  }

  /// Answers the question that `asked()` has taken.
  [[nodiscard]] bool answer() {
    constexpr std::array<unsigned char, 16> kRecord{0xc0, 12, 0, 1, 0, 1, 0, 0, 0, 9, 0, 4, 198, 51, 100, 7};
    auto length = static_cast<std::size_t>(m_length);
    m_packet[2] = 0x81;
    m_packet[3] = 0x80;
    // The type is in the four bytes before what an extension may have added; there is none here.
    if (m_packet[length - 3] == 1) {
      m_packet[7] = 1;
      std::memcpy(m_packet.data() + length, kRecord.data(), kRecord.size());
      length += kRecord.size();
    }
    return ::sendto(m_socket.number(), m_packet.data(), length, 0, reinterpret_cast<sockaddr *>(&m_from),
                    sizeof m_from) > 0;
  }

 private:
  Descriptor m_socket;
  std::array<unsigned char, 600> m_packet{};
  ssize_t m_length = 0;
  sockaddr_in m_from{};
};

TEST_F(ReachabilityInNetwork, LooksNamesUpWithoutMakingAnyoneWait) {
  const tests::TemporaryFolder folder;
  const auto mount = [&](const char *name, const char *contents) {
    const std::string over = std::string("/etc/") + name;
    return ::mount(folder.write(name, contents).c_str(), over.c_str(), nullptr, MS_BIND, nullptr) == 0;
  };
  ASSERT_TRUE(mount("resolv.conf", "nameserver 127.0.0.1\noptions timeout:30 attempts:1 single-request\n"));
  ASSERT_TRUE(mount("nsswitch.conf", "hosts: files dns\n"));
  ASSERT_TRUE(ip("route add default via 10.0.0.2"));

  NameServer server;
  {
    // Nobody has answered yet: nothing can be read, and to destroy the monitor does not wait for it either.
    const auto unanswered = Reachability::reachabilityWithHostName("unanswered.example");
    ASSERT_TRUE(server.asked());
    EXPECT_EQ(unanswered->currentReachabilityString().toStdString(), "No Connection");
    ASSERT_TRUE(unanswered->startNotifier());
    unanswered->stopNotifier();
  }
  // For its IPv4 and its IPv6 address.
  const auto answerBoth = [&] { return server.answer() && server.asked() && server.answer(); };
  ASSERT_TRUE(answerBoth());  // the look-up is alone now, and comes to its end

  const auto monitor = Reachability::reachabilityWithHostName("assistant.example");
  Heard heard(monitor);
  ASSERT_TRUE(server.asked() && answerBoth());
  ASSERT_TRUE(heard.tells(kReachable));
  // The way is told at once, by the address known; the name is looked up anew.
  ASSERT_TRUE(ip("link set v1 down"));
  ASSERT_TRUE(heard.tells(0));
  ASSERT_TRUE(server.asked() && answerBoth());
  ASSERT_TRUE(ip("link set v1 up"));
  ASSERT_TRUE(heard.tells(kReachable));
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
