// Makes keys narrower by what they have in common.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qz::detail {

// Drops the bits that are the same in all of a set of keys, which does not change their order. Four
// UTF-16 code units of plain letters come down from 64 to some 20 bits, so that their index fits
// beside them and radix digits are spent on bits that tell them apart.
class KeySqueeze {
 public:
  KeySqueeze(const std::uint64_t* keys, std::size_t count) {
    std::uint64_t varying = 0;
    for (std::size_t k = 1; k < count; ++k) varying |= keys[k] ^ keys[0];
    bits_ = static_cast<unsigned>(std::popcount(varying));
    unsigned kept = 0;
    while (varying != 0) {
      const int from = std::countr_zero(varying);
      const int width = std::countr_one(varying >> from);
      const std::uint64_t mask = ~std::uint64_t{0} >> (64 - width) << from;
      runs_[runCount_++] = {mask, static_cast<unsigned>(from) - kept};
      kept += static_cast<unsigned>(width);
      varying &= ~mask;
    }
  }

  // How many bits the squeezed keys have.
  unsigned bits() const { return bits_; }

  std::uint64_t operator()(std::uint64_t key) const {
    std::uint64_t result = 0;
    for (std::size_t k = 0; k < runCount_; ++k) result |= (key & runs_[k].mask) >> runs_[k].shift;
    return result;
  }

 private:
  struct Run {
    std::uint64_t mask;
    unsigned shift;
  };

  std::array<Run, 32> runs_;
  std::size_t runCount_ = 0;
  unsigned bits_ = 0;
};

}  // namespace qz::detail
