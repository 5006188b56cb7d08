#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

constexpr int kThreads = 4;

// Runs `body(number of the thread)` on kThreads threads that begin together, and `meanwhile` here
// until they are done.
inline void RunOnThreads(
    const std::function<void(int)>& body, const std::function<void()>& meanwhile = [] {}) {
  std::atomic<int> waiting = kThreads;
  std::atomic<int> running = kThreads;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      body(i);
      --running;
    });
  }
  while (running != 0) {
    meanwhile();
    std::this_thread::yield();
  }
  for (std::thread& thread : threads) thread.join();
}
