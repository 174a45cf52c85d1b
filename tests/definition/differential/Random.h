#pragma once

#include <cstdint>
#include <iterator>
#include <random>

namespace qorix {

/// Numbers that depend on the seed alone, not on the standard library's distributions.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }
  std::size_t between(std::size_t least, std::size_t most) {
    return least + below(most - least + 1);
  }
  bool happens(std::size_t percent) { return below(100) < percent; }

  template <class Choices>
  const auto& pick(const Choices& choices) {
    return choices[below(std::size(choices))];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace qorix
