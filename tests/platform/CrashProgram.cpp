// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Ends as it is told: CrashProgram FOLDER WAY
#include <pthread.h>

#include <filesystem>
#include <functional>
#include <map>
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
  try {
    throwHere();  // what is caught is no crash
  } catch (const std::out_of_range &) {
  }
  const std::map<std::string, std::function<void()>> ways{
      {"fault", crashHere},
      {"overflow", [] { overflowHere(); }},
      {"exception", throwHere},
      {"thread",
       [] {
         std::thread([] {
           pthread_setname_np(pthread_self(), "worker");
           crashHere();
         }).join();
       }},
  };
  ways.at(argv[2])();
  return 0;
}
