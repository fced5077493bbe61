// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A request with 100 ms of the microphone's audio, as a turn sends ten of a second: our message beside the
// bare generated one. Names pair up: `parse/bare` and `parse/velmora` do the same work to the same end.
#include <benchmark/benchmark.h>
#include <protocol/embedded_assistant.pb.h>

#include <stdexcept>
#include <string>

#include "protocol/Messages.h"

namespace {

using Bare = google::assistant::embedded::v1alpha1::ConverseRequest;
using Velmora = velmora::Google_Assistant_Embedded_V1alpha1_ConverseRequest;

constexpr std::size_t kBlock = 3200;  // bytes: 1600 frames of 16 bits at 16 kHz

Bare bareRequest() {
  Bare request;
  request.set_audio_in(std::string(kBlock, '\x5a'));
  return request;
}

Velmora velmoraRequest() {
  Velmora request;
  request.setAudioIn(std::string(kBlock, '\x5a'));
  return request;
}

void parseBare(benchmark::State &state) {
  const std::string bytes = bareRequest().SerializeAsString();
  for (auto _ : state) {
    Bare request;
    if (!request.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())))
      throw std::logic_error("parse");
    benchmark::DoNotOptimize(request.audio_in().data());
  }
}
BENCHMARK(parseBare)->Name("parse/bare");

void parseVelmora(benchmark::State &state) {
  const std::string bytes = velmoraRequest().serialize();
  for (auto _ : state) {
    const Velmora request = Velmora::parse(bytes);
    benchmark::DoNotOptimize(request.audioIn().data());
  }
}
BENCHMARK(parseVelmora)->Name("parse/velmora");

void serialiseBare(benchmark::State &state) {
  const Bare request = bareRequest();
  for (auto _ : state) {
    std::string bytes;
    if (!request.SerializeToString(&bytes)) throw std::logic_error("serialise");
    benchmark::DoNotOptimize(bytes.data());
  }
}
BENCHMARK(serialiseBare)->Name("serialise/bare");

void serialiseVelmora(benchmark::State &state) {
  const Velmora request = velmoraRequest();
  for (auto _ : state) {
    const std::string bytes = request.serialize();
    benchmark::DoNotOptimize(bytes.data());
  }
}
BENCHMARK(serialiseVelmora)->Name("serialise/velmora");

template <typename Request, Request (*made)()>
void copy(benchmark::State &state) {
  const Request request = made();
  for (auto _ : state) {
    Request copied(request);
    benchmark::DoNotOptimize(&copied);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(copy<Bare, bareRequest>)->Name("copy/bare");
BENCHMARK(copy<Velmora, velmoraRequest>)->Name("copy/velmora");

// The copy is given another block, whose making counts on both sides.
void changeCopyBare(benchmark::State &state) {
  const Bare request = bareRequest();
  for (auto _ : state) {
    Bare copied(request);
    copied.set_audio_in(std::string(kBlock, '\x33'));
    benchmark::DoNotOptimize(copied.audio_in().data());
  }
}
BENCHMARK(changeCopyBare)->Name("copy_and_change/bare");

void changeCopyVelmora(benchmark::State &state) {
  const Velmora request = velmoraRequest();
  for (auto _ : state) {
    Velmora copied(request);
    copied.setAudioIn(std::string(kBlock, '\x33'));
    benchmark::DoNotOptimize(copied.audioIn().data());
  }
}
BENCHMARK(changeCopyVelmora)->Name("copy_and_change/velmora");

}  // namespace
