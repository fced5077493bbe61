// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/CallbackGate.h"

#include "foundation/fatal.h"

namespace velmora {

CallbackGate::Pass::Pass(CallbackGate &gate) : m_gate(gate) {
  const std::lock_guard lock(gate.m_mutex);
  m_inside = gate.m_open;
  if (m_inside) gate.m_inside.insert(std::this_thread::get_id());
}

CallbackGate::Pass::~Pass() {
  if (!m_inside) return;
  const std::lock_guard lock(m_gate.m_mutex);
  m_gate.m_inside.extract(std::this_thread::get_id());
  m_gate.m_left.notify_all();
}

void CallbackGate::close() {
  std::unique_lock lock(m_mutex);
  m_open = false;
  if (m_inside.contains(std::this_thread::get_id())) {
    fatal("A conversation was destroyed from within one of its own callbacks");
  }
  m_left.wait(lock, [this] { return m_inside.empty(); });
}

}  // namespace velmora
