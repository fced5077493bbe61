// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Ends as it is told: CrashProgram FOLDER WAY
#include <pthread.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "platform/crash/CrashReporter.h"

namespace {

volatile int *volatile nowhere = nullptr;
volatile int depth = 0;

[[gnu::noinline]] void crashHere() {
  *nowhere = 1;
  depth = depth + 1;
}

[[gnu::noinline]] int overflowHere() {
  volatile char room[4096];
  room[0] = static_cast<char>(depth);
  depth = depth + 1;
  return depth > 0 ? overflowHere() + room[0] : 0;
}

[[gnu::noinline]] void throwHere() { throw std::out_of_range("something private"); }

}  // namespace

int main(int, char **argv) {
  velmora::startCrashReporter(argv[1]);
  const std::string way = argv[2];
  if (way == "overflow") overflowHere();
  if (way == "exception") throwHere();
  std::thread([] {
    pthread_setname_np(pthread_self(), "worker");
    crashHere();
  }).join();
  return 0;
}
