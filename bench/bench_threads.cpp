// SPDX-License-Identifier: MIT

// Parsing text notation, including the release of the objects, on 1, 2 and all cores at once: each
// thread has documents of its own. Reading one document on all threads.

#include <algorithm>
#include <barrier>
#include <boost/json.hpp>
#include <chrono>
#include <deque>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "BenchDocument.h"
#include "JsonPeers.h"

namespace Bench {

namespace {

using benchmark::State;

using Work = std::function<void()>;

// Runs `body` `count` times on each of some threads at once.
class Crew {
 public:
  struct Time {
    double fWall;    // in seconds, from the start of the first to the end of the last
    double fQueued;  // of all threads together, ready to run but without a core
  };

  static Time Run(unsigned threads, unsigned count, const Work& body) {
    std::vector<double> queued(threads);
    std::chrono::steady_clock::time_point start;
    std::barrier ready(threads, [&start]() noexcept { start = std::chrono::steady_clock::now(); });
    const auto work = [&](unsigned thread) {
      ready.arrive_and_wait();
      const double before = QueuedSeconds();
      for (unsigned i = 0; i < count; ++i) body();
      queued[thread] = QueuedSeconds() - before;
    };
    std::vector<std::jthread> others;
    for (unsigned thread = 1; thread < threads; ++thread) others.emplace_back(work, thread);
    work(0);
    others.clear();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    double sum = 0;
    for (const double seconds : queued) sum += seconds;
    return {wall.count(), sum};
  }

 private:
  // How long the calling thread has waited for a core. 0 if the system does not count it.
  static double QueuedSeconds() {
    std::ifstream file("/proc/thread-self/schedstat");
    double running = 0;
    double queued = 0;
    file >> running >> queued;
    return queued / 1e9;
  }
};

// The same work by several sides, which take turns. A round counts only if the threads of every
// peer hardly waited for a core: on a busy machine, two threads on one core look like threads that
// wait for each other. Processor time does not tell that: threads that wait for each other use none
// either, such as those of peers in the C library's heap, and that must show.
class Contest {
 public:
  struct Side {
    std::string fName;
    Work fWork;
  };

  // The first side is ours.
  Contest(std::vector<Side> sides, unsigned threads)
      : fSides(std::move(sides)), fTurns(fSides.size()), fThreads(threads) {}

  const std::string& Name(std::size_t side) const { return fSides[side].fName; }
  std::size_t Count() const { return fSides.size(); }

  struct Turn {
    double fSeconds;  // of one call of a side
    bool fCounts;     // whether each thread had a core
  };
  // A round yields one time for each side; they are returned in turn.
  Turn Next(std::size_t side) {
    if (fTurns[side].empty()) Measure();
    const Turn turn = fTurns[side].front();
    fTurns[side].pop_front();
    return turn;
  }

 private:
  static constexpr int kMostRounds = 8;
  static constexpr double kRoundSeconds = 0.1;
  static constexpr double kMostQueued = 0.07;  // of the time of each thread of a peer

  void Measure() {
    if (fCalls.empty()) {
      for (const Side& side : fSides) fCalls.push_back(CallsOfRound(side.fWork));
    }
    std::vector<double> times(fSides.size());
    bool counts = false;
    for (int round = 0; round < kMostRounds && !counts; ++round) counts = RunRound(times);
    for (std::size_t side = 0; side < fSides.size(); ++side) {
      fTurns[side].push_back({times[side], counts});
    }
  }

  static unsigned CallsOfRound(const Work& work) {
    work();
    return std::max(1u, static_cast<unsigned>(kRoundSeconds / Crew::Run(1, 1, work).fWall));
  }

  // Returns whether the round counts.
  bool RunRound(std::vector<double>& times) {
    bool counts = true;
    for (std::size_t side = 0; side < fSides.size(); ++side) {
      const Crew::Time time = Crew::Run(fThreads, fCalls[side], fSides[side].fWork);
      times[side] = time.fWall / fCalls[side];
      if (side > 0) counts &= time.fQueued <= kMostQueued * time.fWall * fThreads;
    }
    return counts;
  }

  std::vector<Side> fSides;
  std::vector<unsigned> fCalls;
  std::vector<std::deque<Turn>> fTurns;
  unsigned fThreads;
};

void Report(State& state, Contest& contest, std::size_t side, std::int64_t items, double target) {
  for (auto _ : state) {
    const Contest::Turn turn = contest.Next(side);
    state.SetIterationTime(turn.fSeconds);
    // Not an error: the library reports no goals with errors, and a goal not measured must show.
    state.counters["no_core"] = turn.fCounts ? 0 : 1;
  }
  SetItems(state, items);
  if (target != 0) SetTarget(state, target);
}

// Goals by the number of threads, as ratios to nlohmann::json; 0 is none.
using Targets = std::map<unsigned, double>;

Targets NewTargets(double one, double two) {
  Targets targets = {{1, one}, {2, two}};
  targets.try_emplace(std::max(1u, std::thread::hardware_concurrency()), two);
  return targets;
}

void Register(const std::string& name, const std::vector<Contest::Side>& sides,
              std::int64_t itemsPerThread, const Targets& targets) {
  for (const auto& [threads, target] : targets) {
    const auto contest = std::make_shared<Contest>(sides, threads);
    for (std::size_t side = 0; side < contest->Count(); ++side) {
      const std::string title = name + "/" + contest->Name(side) + "/" + std::to_string(threads);
      const double limit = contest->Name(side) == "nlohmann" ? target : 0;
      benchmark::RegisterBenchmark(title.c_str(),
                                   [=, items = itemsPerThread * threads](State& state) {
                                     Report(state, *contest, side, items, limit);
                                   })
          ->UseManualTime()
          ->Iterations(1);
    }
  }
}

void RegisterParsing(const std::string& name, Content content, std::int64_t count,
                     const Targets& targets) {
  const Document& document = GetDocument(content, count);
  std::vector<Contest::Side> sides = {{"ours", [&document] { Parsed(document); }}};
  for (const JsonPeer& peer : JsonPeers()) {
    // The arena of RapidJSON takes nothing from the heap that threads could wait for.
    if (peer.fName == std::string("rapidjson_arena")) continue;
    sides.push_back({peer.fName, [&document, peer] { peer.fParse(document.fJson); }});
  }
  Register(name, sides, document.fCount, targets);
}

template <class Array, class ToDouble>
void Sum(const Array& array, ToDouble toDouble) {
  double sum = 0;
  for (const auto& number : array) sum += toDouble(number);
  benchmark::DoNotOptimize(sum);
}

void SumOurs(KAPContainer* array) {
  double sum = 0;
  const unsigned count = Arrays::Call<"Count">(array);
  for (unsigned i = 0; i < count; ++i) {
    const Reference number(Arrays::Call<"GetAt">(array, i), KAPAdopt());
    sum += Numbers::Call<"Get">(number.Handle());
  }
  benchmark::DoNotOptimize(sum);
}

// Sums the numbers of one array that all threads read. Ours counts a reference to each number, on
// a cache line that the threads share; the peers count none.
void RegisterReading() {
  const Document& document = GetDocument(Content::kIntegers, 10'000);
  const auto object = std::make_shared<Reference>(Parsed(document));
  const auto json = std::make_shared<nlohmann::json>(nlohmann::json::parse(document.fJson));
  const auto boost = std::make_shared<boost::json::value>(boost::json::parse(document.fJson));
  const std::vector<Contest::Side> sides = {
      {"ours", [object] { SumOurs(object->Handle()); }},
      {"nlohmann",
       [json] { Sum(*json, [](const auto& number) { return number.template get<double>(); }); }},
      {"boost_json", [boost] {
         Sum(boost->get_array(),
             [](const auto& number) { return number.template to_number<double>(); });
       }}};
  Register("threads_read_shared", sides, document.fCount, NewTargets(0, 0));
}

}  // namespace

void RegisterBenchmarks() {
  constexpr std::int64_t kCount = 100'000;
  RegisterParsing("threads_integers", Content::kIntegers, kCount, NewTargets(0.42, 0.42));
  RegisterParsing("threads_words", Content::kWords, kCount, NewTargets(0.60, 0.65));
  RegisterParsing("threads_strings", Content::kStrings, kCount, NewTargets(1.1, 1.4));
  RegisterParsing("threads_records", Content::kRecords, kCount, NewTargets(0.65, 0));
  RegisterReading();
}

}  // namespace Bench
