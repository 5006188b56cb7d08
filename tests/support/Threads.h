// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

constexpr int kThreads = 4;

// Runs `body(number of the thread)` on kThreads threads that start together, and `meanwhile` on
// this one until they are done.
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

// Repeats `body(number of the thread)` on all threads for half a second, or for as many minutes as
// the environment variable KAP_LONG says. Ends early when the test fails.
inline void Soak(
    const std::function<void(int)>& body, const std::function<void()>& meanwhile = [] {}) {
  using Clock = std::chrono::steady_clock;
  const char* const minutes = std::getenv("KAP_LONG");
  const auto end = Clock::now() + (minutes ? std::chrono::minutes(std::atoi(minutes))
                                           : std::chrono::milliseconds(500));
  RunOnThreads(
      [&](int thread) {
        do body(thread);
        while (Clock::now() < end && !testing::Test::HasFailure());
      },
      meanwhile);
}

// Runs `body` on a thread with a stack of `size` bytes.
inline void RunOnStack(std::size_t size, std::function<void()> body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  pthread_t thread;
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}
