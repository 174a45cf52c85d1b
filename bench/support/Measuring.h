#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qorix::bench {

/// What the programs do: prints the tables. Returns the exit status of the program.
int report(void (*compare)());

using Work = std::function<void()>;

/// How often something is measured: once where QORIX_BENCH_TRIAL is set, which only shows that a
/// benchmark still runs.
int rounds(int many);

using Timer = double (*)(const Work& work);
double microsecondsOf(const Work& work);
/// Of this thread's processor time, which other programs disturb less.
double processorMicrosecondsOf(const Work& work);

double medianOf(std::vector<double> values);

/// Does all of the works `count` times, in turns, so that a busy machine slows all down alike.
/// Returns the median of each one's microseconds.
std::vector<double> inTurns(int count, const std::vector<Work>& works,
                            Timer timer = microsecondsOf);

/// Runs this program with each of the lists of arguments, in turns. Each run prints a line of
/// numbers. Returns their medians: those of the first list first. Ends this program with a message
/// if a run fails.
using Arguments = std::vector<std::string>;
std::vector<std::vector<double>> runsInTurns(int count, const std::vector<Arguments>& runs);

/// What such a run does.
void printNumbers(const std::vector<double>& numbers);

/// One line of a table: what is measured, beside a reference that does the same work.
struct Row {
  std::string what;
  double ours;
  std::string reference;
  double theirs;
  std::optional<double> goal = {};  // of ours / theirs, at most
};

/// Prints the beginning of a table, in Markdown, whose values are in `unit`.
void printHeading(const std::string& title, const std::string& unit);
void printRow(const Row& row);

/// A table without a reference: a value and what it is to be at most.
void printLimitsHeading(const std::string& title, const std::string& unit);
void printLimit(const std::string& what, double value, std::optional<double> most = {});

}  // namespace qorix::bench
