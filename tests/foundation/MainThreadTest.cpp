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
  int calls = 0;
  std::optional<Alive> gone(std::in_place);
  MainQueue::main().async(*gone, [&] { ++calls; });
  MainQueue::main().after(5ms, *gone, [&] { ++calls; });
  gone.reset();
  MainQueue::main().after(20ms, alive, [&] { loop.quit(); });
  loop.exec();
  EXPECT_EQ(calls, 0);
}

TEST(NotificationCenterTest, ReachesWhoStillObservesTheNameAndTheObject) {
  NotificationCenter center;
  std::string seen;
  const auto observe = [&](const char *name, char told, const QVariant &object = {}) {
    return center.addObserver(
        QString::fromLatin1(name), [&seen, told](const Notification &) { seen += told; }, object);
  };
  const auto any = observe("name", 'a');
  const auto first = observe("name", '1', 1);
  const auto other = observe("other", 'o');
  NotificationCenter::Observation ended;
  const auto ends = center.addObserver(QStringLiteral("name"), [&](const Notification &) { ended = {}; });
  ended = observe("name", 'e');  // by an observer of the same notification
  center.post(QStringLiteral("name"), 1);
  center.post(QStringLiteral("name"), 2);
  center.post(QStringLiteral("nobody"));
  EXPECT_EQ(seen, "a1a");
}

}  // namespace
}  // namespace velmora
