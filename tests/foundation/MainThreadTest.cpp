// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/MainQueue.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <optional>
#include <thread>
#include <vector>

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
  QEventLoop outer;
  QEventLoop inner;
  std::vector<int> seen;
  const auto here = std::this_thread::get_id();
  std::thread([&] {
    for (int i = 0; i < 3; ++i) {
      MainQueue::main().async([&, i] { seen.push_back(std::this_thread::get_id() == here ? i : -1); });
    }
    MainQueue::main().async([&] {
      inner.exec();  // runs the work after it
      outer.quit();
    });
    MainQueue::main().async([&] { inner.quit(); });
  }).join();
  EXPECT_TRUE(seen.empty());
  outer.exec();
  EXPECT_THAT(seen, ElementsAre(0, 1, 2));
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

}  // namespace
}  // namespace velmora
