// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <optional>
#include <thread>
#include <vector>

#include "foundation/MainQueue.h"
#include "foundation/NotificationCenter.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

struct MainThread : testing::Test {
  int argc = 1;
  char name[5] = "test";
  char *argv[2] = {name, nullptr};
  QCoreApplication application{argc, argv};
  Alive alive;
};

TEST_F(MainThread, WorkOfOtherThreadsRunsHereInItsOrder) {
  QEventLoop loop;
  std::vector<int> seen;
  const auto here = std::this_thread::get_id();
  std::thread([&] {
    for (int i = 0; i < 3; ++i) {
      MainQueue::main().async([&, i] { seen.push_back(std::this_thread::get_id() == here ? i : -1); });
    }
    MainQueue::main().async([&] { loop.quit(); });
  }).join();
  EXPECT_TRUE(seen.empty());
  loop.exec();
  EXPECT_THAT(seen, ElementsAre(0, 1, 2));
}

TEST_F(MainThread, AnEventLoopInsideWorkRunsTheWorkAfterIt) {
  QEventLoop outer;
  QEventLoop inner;
  MainQueue::main().async([&] {
    inner.exec();
    outer.quit();
  });
  MainQueue::main().async([&] { inner.quit(); });
  outer.exec();
}

TEST_F(MainThread, WorkOfAnObjectThatIsGoneIsDropped) {
  QEventLoop loop;
  std::vector<std::string> seen;
  std::optional<Alive> gone(std::in_place);
  MainQueue::main().async(*gone, [&] { seen.emplace_back("now"); });
  MainQueue::main().after(5ms, *gone, [&] { seen.emplace_back("later"); });
  gone.reset();
  MainQueue::main().after(20ms, alive, [&] { loop.quit(); });
  loop.exec();
  EXPECT_THAT(seen, ElementsAre());
}

TEST(NotificationCenterTest, ReachesWhoObservesTheNameAndTheObject) {
  NotificationCenter center;
  int first = 0;
  int second = 0;
  std::vector<std::string> seen;
  const auto any =
      center.addObserver(QStringLiteral("name"), [&](const Notification &) { seen.emplace_back("any"); });
  const auto one = center.addObserver(
      QStringLiteral("name"), [&](const Notification &) { seen.emplace_back("first"); },
      QVariant::fromValue(&first));
  auto ended =
      center.addObserver(QStringLiteral("name"), [&](const Notification &) { seen.emplace_back("ended"); });
  const auto ends = center.addObserver(QStringLiteral("end"), [&](const Notification &) { ended = {}; });
  const auto other =
      center.addObserver(QStringLiteral("other"), [&](const Notification &) { seen.emplace_back("other"); });
  center.post(QStringLiteral("end"));
  center.post(QStringLiteral("name"), QVariant::fromValue(&first));
  center.post(QStringLiteral("name"), QVariant::fromValue(&second));
  center.post(QStringLiteral("nobody"));
  EXPECT_THAT(seen, ElementsAre("any", "first", "any"));
}

TEST(NotificationCenterTest, AnObserverThatEndsALaterOneInTheSamePostIsObeyed) {
  NotificationCenter center;
  NotificationCenter::Observation later;
  int calls = 0;
  const auto first = center.addObserver(QStringLiteral("name"), [&](const Notification &) { later = {}; });
  later = center.addObserver(QStringLiteral("name"), [&](const Notification &) { ++calls; });
  center.post(QStringLiteral("name"));
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace velmora
