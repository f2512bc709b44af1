#include "lives/exploring.h"

#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>

#include "lives/life.h"
#include "notebook/scenario/scenario_error.h"

namespace nuvelta::explore {

namespace {

using Clock = std::chrono::steady_clock;

// A sanitizer's records of threads that have ended slow a process down over time.
constexpr uint64_t kLivesPerProcess = 2000;
constexpr int kAfresh = 77;  // the exit code of a worker that wants another in its place

// One worker's progress, in memory that it shares with its parent. Lives are dealt
// out in turn: worker w of n plays lives w, w + n, w + 2n and so on.
struct Progress {
  static constexpr size_t kMostFailures = 64;
  std::atomic<uint64_t> next;  // the life being played
  std::atomic<uint64_t> lives;
  std::atomic<uint64_t> healthy_ends;
  std::atomic<uint64_t> crashes;
  std::atomic<uint64_t> failures;
  std::array<std::atomic<uint64_t>, kMostFailures> failed;
  Counts counts;

  void AddFailure(uint64_t seed) {
    const uint64_t index = failures++;
    if (index < failed.size()) failed[index] = seed;
  }
};

// Pages that the workers and their parent share.
class SharedProgress {
 public:
  explicit SharedProgress(unsigned workers) : m_size(workers * sizeof(Progress)) {
    void* const pages =
        mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    m_progress = static_cast<Progress*>(pages);
    for (unsigned i = 0; i < workers; ++i) new (m_progress + i) Progress{};
  }
  ~SharedProgress() { munmap(m_progress, m_size); }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;

  Progress& operator[](unsigned worker) { return m_progress[worker]; }

 private:
  const size_t m_size;
  Progress* m_progress;
};

// A story's threads take turns: on one processor each finds the other's data at
// hand. Threads that run at once need more than one.
void StayOnOneProcessor(unsigned worker) {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
  const int count = CPU_COUNT(&allowed);
  if (count == 0) return;
  int left = static_cast<int>(worker % static_cast<unsigned>(count));
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (!CPU_ISSET(cpu, &allowed) || left-- > 0) continue;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(cpu, &one);
    sched_setaffinity(0, sizeof one, &one);
    return;
  }
}

class Workers {
 public:
  explicit Workers(const ExploreOptions& options)
      : m_options(options), m_progress(std::max(options.jobs, 1U)), m_begin(Clock::now()) {}

  Exploration Run() {
    const unsigned jobs = std::max(m_options.jobs, 1U);
    std::vector<pid_t> processes;
    for (unsigned worker = 0; worker < jobs; ++worker) {
      m_progress[worker].next = worker;
      processes.push_back(Begin(worker));
    }
    for (size_t running = jobs; running > 0;) {
      int status = 0;
      const pid_t ended = wait(&status);
      const auto found = std::ranges::find(processes, ended);
      if (ended < 0 || found == processes.end()) continue;
      const auto worker = static_cast<unsigned>(found - processes.begin());
      if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        --running;
      } else if (WIFEXITED(status) && WEXITSTATUS(status) == kAfresh) {
        *found = Begin(worker);
      } else {
        // It died of the life at hand; another goes on behind that.
        m_progress[worker].AddFailure(m_options.first_seed + m_progress[worker].next);
        m_progress[worker].next += jobs;
        *found = Begin(worker);
      }
    }
    return Sum(jobs);
  }

 private:
  pid_t Begin(unsigned worker) {
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process < 0) throw std::runtime_error("no process can be had");
    if (process > 0) return process;
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // nobody would hear of what it finds
    if (!m_options.free_running) StayOnOneProcessor(worker);
    PlayLives(m_progress[worker]);
    std::_Exit(0);
  }

  bool IsOver() const {
    return m_options.seconds && Clock::now() - m_begin > std::chrono::seconds(*m_options.seconds);
  }

  void PlayLives(Progress& progress) {
    uint64_t left = kLivesPerProcess;
    for (; progress.next < m_options.lives && !IsOver(); progress.next += m_options.jobs) {
      if (left-- == 0) std::_Exit(kAfresh);
      const uint64_t seed = m_options.first_seed + progress.next;
      const LifeReport report =
          PlayLife(ReadLife(MakeLife(seed, m_options.start_delay_ms)), m_options.free_running);
      if (!report.broken.empty()) progress.AddFailure(seed);
      // Threads that run at once may never break it again.
      if (m_options.free_running) Print(seed, report.broken);
      ++progress.lives;
      progress.healthy_ends += report.healthy_end ? 1 : 0;
      progress.crashes += report.crashed ? 1 : 0;
      progress.counts += report.counts;
    }
  }

  static void Print(uint64_t seed, const std::vector<std::string>& broken) {
    for (const std::string& rule : broken) {
      std::printf("life %llu: %s\n", static_cast<unsigned long long>(seed), rule.c_str());
    }
  }

  Exploration Sum(unsigned jobs) {
    Exploration sum;
    for (unsigned worker = 0; worker < jobs; ++worker) {
      Progress& progress = m_progress[worker];
      sum.lives += progress.lives;
      sum.healthy_ends += progress.healthy_ends;
      sum.crashes += progress.crashes;
      sum.counts += progress.counts;
      const uint64_t kept = std::min<uint64_t>(progress.failures, progress.failed.size());
      sum.failed.insert(sum.failed.end(), progress.failed.begin(),
                        progress.failed.begin() + static_cast<std::ptrdiff_t>(kept));
    }
    std::ranges::sort(sum.failed);
    sum.seconds = std::chrono::duration<double>(Clock::now() - m_begin).count();
    return sum;
  }

  const ExploreOptions m_options;
  SharedProgress m_progress;
  const Clock::time_point m_begin;
};

std::string ReadAll(int pipe) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t size = read(pipe, buffer.data(), buffer.size());
    if (size <= 0) return text;
    text.append(buffer.data(), static_cast<size_t>(size));
  }
}

[[noreturn]] void PlayAndTell(const nlohmann::json& life, bool free_running, int pipe) noexcept {
  std::string text;
  try {
    for (const std::string& rule : PlayLife(ReadLife(life), free_running).broken) {
      text += rule + '\0';
    }
  } catch (const virtual_notebook::ScenarioError&) {
    // What the reader refuses is no life, and breaks nothing.
    text.clear();
  }
  const bool told = write(pipe, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  std::_Exit(told ? 0 : 1);
}

}  // namespace

Exploration Explore(const ExploreOptions& options) { return Workers(options).Run(); }

std::vector<std::string> PlayApart(const nlohmann::json& life, bool free_running) {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe can be had");
  std::fflush(nullptr);
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("no process can be had");
  if (process == 0) {
    close(pipe[0]);
    PlayAndTell(life, free_running, pipe[1]);
  }
  close(pipe[1]);
  const std::string text = ReadAll(pipe[0]);
  close(pipe[0]);
  int status = 0;
  waitpid(process, &status, 0);
  std::vector<std::string> broken;
  for (size_t at = 0; at < text.size();) {
    broken.emplace_back(text.c_str() + at);
    at += broken.back().size() + 1;
  }
  if (WIFSIGNALED(status)) {
    broken.push_back("the process died of signal " + std::to_string(WTERMSIG(status)));
  } else if (WEXITSTATUS(status) != 0) {
    broken.push_back("the process ended with code " + std::to_string(WEXITSTATUS(status)));
  }
  return broken;
}

}  // namespace nuvelta::explore
