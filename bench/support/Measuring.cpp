#include "support/Measuring.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <utility>

namespace qorix::bench {

namespace {

std::string quoted(const std::string& word) {
  std::string text = "'";
  for (const char c : word) {
    text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return text + "'";
}

std::vector<double> numbersOf(const Arguments& arguments) {
  std::string command = quoted(std::filesystem::read_symlink("/proc/self/exe"));
  for (const std::string& argument : arguments) {
    command += " " + quoted(argument);
  }
  std::string output;
  command += " 2>/dev/null";  // the log, and what engines complain about
  FILE* run = popen(command.c_str(), "re");
  if (run != nullptr) {
    char part[4096];
    while (std::fgets(part, sizeof part, run) != nullptr) {
      output += part;
    }
  }
  if (run == nullptr || pclose(run) != 0) {
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    std::exit(EXIT_FAILURE);
  }
  std::istringstream words(output);
  std::vector<double> numbers;
  for (double number = 0; words >> number;) {
    numbers.push_back(number);
  }
  return numbers;
}

/// The medians of what the runs of one kind have printed.
std::vector<double> mediansOf(const std::vector<std::vector<double>>& runs) {
  std::vector<double> medians;
  for (std::size_t i = 0; i < runs.front().size(); ++i) {
    std::vector<double> values;
    std::ranges::transform(runs, std::back_inserter(values),
                           [i](const auto& run) { return run.at(i); });
    medians.push_back(medianOf(std::move(values)));
  }
  return medians;
}

}  // namespace

int report(void (*compare)()) {
  try {
    compare();
    return EXIT_SUCCESS;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return EXIT_FAILURE;
  }
}

int rounds(int many) { return std::getenv("QORIX_BENCH_TRIAL") != nullptr ? 1 : many; }

double microsecondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
      .count();
}

double processorMicrosecondsOf(const Work& work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
  };
  const double start = now();
  work();
  return now() - start;
}

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::vector<double> inTurns(int count, const std::vector<Work>& works, Timer timer) {
  std::vector<std::vector<double>> times(works.size());
  for (int round = 0; round < count; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      times[i].push_back(timer(works[i]));
    }
  }
  std::vector<double> medians;
  std::ranges::transform(times, std::back_inserter(medians), medianOf);
  return medians;
}

std::vector<std::vector<double>> runsInTurns(int count, const std::vector<Arguments>& runs) {
  std::vector<std::vector<std::vector<double>>> numbers(runs.size());
  for (int round = 0; round < count; ++round) {
    for (std::size_t i = 0; i < runs.size(); ++i) {
      numbers[i].push_back(numbersOf(runs[i]));
    }
  }
  std::vector<std::vector<double>> medians;
  std::ranges::transform(numbers, std::back_inserter(medians), mediansOf);
  return medians;
}

void printNumbers(const std::vector<double>& numbers) {
  for (const double number : numbers) {
    std::printf("%.3f ", number);
  }
  std::printf("\n");
}

void printHeading(const std::string& title, const std::string& unit) {
  std::printf("\n%s\n\n| %s | QORIX | reference | | ratio | goal |\n|---|--:|---|--:|--:|--:|\n",
              title.c_str(), unit.c_str());
}

void printRow(const Row& row) {
  std::printf("| %s | %.4g | %s | %.4g | %.2f | %s |\n", row.what.c_str(), row.ours,
              row.reference.c_str(), row.theirs, row.ours / row.theirs,
              row.goal ? std::to_string(*row.goal).substr(0, 4).c_str() : "");
  std::fflush(stdout);
}

void printLimitsHeading(const std::string& title, const std::string& unit) {
  std::printf("\n%s\n\n| %s | QORIX | goal |\n|---|--:|--:|\n", title.c_str(), unit.c_str());
}

void printLimit(const std::string& what, double value, std::optional<double> most) {
  std::printf("| %s | %.4g | %s |\n", what.c_str(), value,
              most ? std::to_string(*most).substr(0, 4).c_str() : "");
  std::fflush(stdout);
}

}  // namespace qorix::bench
