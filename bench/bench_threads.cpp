// Parsing text notation, including the release of the objects, on 1, 2 and all cores at once: each
// thread has documents of its own. Reading one document on all threads.

#include <algorithm>
#include <barrier>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include "BenchDocument.h"

namespace Bench {

namespace {

using benchmark::State;

// Runs `body(thread)` `count` times on each of some threads at once.
class Crew {
 public:
  struct Time {
    double fWall;  // in seconds, from the start of the first to the end of the last
    double fCpu;   // of all threads
  };

  static Time Run(unsigned threads, unsigned count, const std::function<void(unsigned)>& body) {
    std::vector<double> cpu(threads);
    std::chrono::steady_clock::time_point start;
    std::barrier ready(threads, [&start]() noexcept { start = std::chrono::steady_clock::now(); });
    const auto work = [&](unsigned thread) {
      ready.arrive_and_wait();
      const double before = ThreadSeconds();
      for (unsigned i = 0; i < count; ++i) body(thread);
      cpu[thread] = ThreadSeconds() - before;
    };
    std::vector<std::jthread> others;
    for (unsigned thread = 1; thread < threads; ++thread) others.emplace_back(work, thread);
    work(0);
    others.clear();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    double sum = 0;
    for (const double seconds : cpu) sum += seconds;
    return {wall.count(), sum};
  }

 private:
  static double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
  }
};

using Work = std::function<void(unsigned thread)>;

// A case: the same work with the library and with the peer, which take turns. A round counts only
// if the peer's threads had a core each nearly all the time; on a busy machine, two threads on one
// core would look like threads that wait for each other.
class Duel {
 public:
  Duel(Work ours, Work peer, unsigned threads)
      : fWorks{std::move(ours), std::move(peer)}, fThreads(threads) {}

  // The seconds of one call of a side. Each measurement gives one for each side.
  double Seconds(unsigned side) {
    if (fSeconds[side].empty()) Measure();
    const double seconds = fSeconds[side].back();
    fSeconds[side].pop_back();
    return seconds;
  }

 private:
  static constexpr int kRounds = 5;
  static constexpr int kMostRounds = 60;
  static constexpr double kRoundSeconds = 0.05;
  static constexpr double kLeastShare = 0.93;  // of a core, for each thread of the peer

  void Measure() {
    std::vector<double> walls[2];
    unsigned counts[2] = {};
    for (unsigned side : {0u, 1u}) {
      fWorks[side](0);
      const double once = Crew::Run(1, 1, fWorks[side]).fWall;
      counts[side] = std::max(1u, static_cast<unsigned>(kRoundSeconds / once));
    }
    for (int round = 0; round < kMostRounds && walls[0].size() < kRounds; ++round) {
      const Crew::Time ours = Crew::Run(fThreads, counts[0], fWorks[0]);
      const Crew::Time peer = Crew::Run(fThreads, counts[1], fWorks[1]);
      if (peer.fCpu < kLeastShare * peer.fWall * fThreads && round < kMostRounds - kRounds) {
        continue;
      }
      walls[0].push_back(ours.fWall / counts[0]);
      walls[1].push_back(peer.fWall / counts[1]);
    }
    for (unsigned side : {0u, 1u}) {
      std::sort(walls[side].begin(), walls[side].end());
      fSeconds[side].push_back(walls[side][walls[side].size() / 2]);
    }
  }

  Work fWorks[2];
  unsigned fThreads;
  std::vector<double> fSeconds[2];
};

void Report(State& state, Duel& duel, unsigned side, std::int64_t items, double target) {
  for (auto _ : state) state.SetIterationTime(duel.Seconds(side));
  SetItems(state, items);
  if (target != 0) SetTarget(state, target);
}

void Register(const std::string& name, unsigned threads, const Work& ours, const Work& peer,
              std::int64_t itemsPerThread, double target) {
  const auto duel = std::make_shared<Duel>(ours, peer, threads);
  const std::int64_t items = itemsPerThread * threads;
  const char* const sides[] = {"/ours/", "/nlohmann/"};
  for (unsigned side : {0u, 1u}) {
    benchmark::RegisterBenchmark(
        (name + sides[side] + std::to_string(threads)).c_str(),
        [=](State& state) { Report(state, *duel, side, items, side == 1 ? target : 0); })
        ->UseManualTime()
        ->Iterations(1);
  }
}

void RegisterParsing(const std::string& name, Content content, std::int64_t count,
                     const std::map<unsigned, double>& targets) {
  const auto document = std::make_shared<Document>(NewDocument(content, count));
  const Work ours = [document](unsigned) { Parsed(*document); };
  const Work peer = [document](unsigned) {
    const nlohmann::json value = nlohmann::json::parse(document->fJson);
    benchmark::DoNotOptimize(&value);
  };
  for (const auto& [threads, target] : targets) {
    Register(name, threads, ours, peer, document->fCount, target);
  }
}

// Sums the numbers of one array that all threads read.
void RegisterReading(const std::map<unsigned, double>& targets) {
  constexpr std::int64_t kCount = 10'000;
  const Document document = NewDocument(Content::kIntegers, kCount);
  const auto object = std::make_shared<Reference>(Parsed(document));
  const auto json = std::make_shared<nlohmann::json>(nlohmann::json::parse(document.fJson));
  const Work ours = [object](unsigned) {
    double sum = 0;
    const unsigned count = Arrays::Call<"Count">(object->Handle());
    for (unsigned i = 0; i < count; ++i) {
      const Reference number(Arrays::Call<"GetAt">(object->Handle(), i), KAPAdopt());
      sum += Numbers::Call<"Get">(number.Handle());
    }
    benchmark::DoNotOptimize(sum);
  };
  const Work peer = [json](unsigned) {
    double sum = 0;
    for (const nlohmann::json& number : *json) sum += number.get<double>();
    benchmark::DoNotOptimize(sum);
  };
  for (const auto& [threads, target] : targets) {
    Register("threads_read_shared", threads, ours, peer, document.fCount, target);
  }
}

// A target of 0 is none: for information.
std::map<unsigned, double> Targets(double one, double two) {
  std::map<unsigned, double> targets = {{1, one}, {2, two}};
  targets.try_emplace(std::max(1u, std::thread::hardware_concurrency()), two);
  return targets;
}

}  // namespace

void RegisterBenchmarks() {
  RegisterParsing("threads_integers", Content::kIntegers, 100'000, Targets(0.42, 0.42));
  RegisterParsing("threads_words", Content::kWords, 100'000, Targets(0.60, 0.65));
  RegisterParsing("threads_strings", Content::kStrings, 100'000, Targets(1.1, 1.4));
  RegisterParsing("threads_strings_million", Content::kStrings, 1'000'000, Targets(1.6, 0));
  RegisterReading(Targets(0, 0));
}

}  // namespace Bench
