// The model in the forms that the loops read: flat arrays of one number type, never changed during
// a search and shared by its threads.
#pragma once

#include <cstdint>
#include <vector>

#include "easysolver/numbers.h"

namespace zorv::plugin::easy {

template <typename Num>
struct WideLink {
  uint32_t variable;
  Num coeff;
};
// Where it suffices: the links of many models then stay in the caches close to the processor.
struct NarrowLink {
  uint16_t variable;
  int16_t coeff;
};

// Terms of degrees 1 and 2. The links of variable i are links[head[i]] .. links[head[i + 1] - 1],
// one for each variable that it shares a term with, ascending.
template <typename Num, typename LinkOf = WideLink<Num>>
struct PairTable {
  using Link = LinkOf;

  std::vector<Num> linear;
  std::vector<uint64_t> head = {0};
  std::vector<Link> links;
  std::vector<uint8_t> links_on;  // whether a variable has links to later ones of its block

  uint32_t size() const { return static_cast<uint32_t>(linear.size()); }
};

// The same links as full rows of a symmetric matrix, of the narrower type that holds all of them;
// the other one is empty.
struct DenseTable {
  std::vector<int32_t> linear;
  size_t stride = 0;  // a multiple of 2 * kLanes
  std::vector<int16_t> narrow;
  std::vector<int32_t> wide;

  uint32_t size() const { return static_cast<uint32_t>(linear.size()); }
};

// Terms of degree 3 and more, besides pairs. Literals are those of the model: bit 31 marks a
// complement.
template <typename Num>
struct ProductTable {
  PairTable<Num> pairs;
  std::vector<Num> coeffs;
  std::vector<uint64_t> term_head = {0};
  std::vector<uint32_t> literals;  // term after term
  // By variable: the terms that hold it, doubled, plus 1 where its complement is meant.
  std::vector<uint64_t> use_head = {0};
  std::vector<uint64_t> uses;

  uint32_t size() const { return pairs.size(); }
};

inline constexpr uint32_t kMaxSpinDegree = 6;

// The polynomial in spins 1 - 2x. All terms have one length, that of the highest degree; shorter
// ones are filled up with a variable that does not exist, number size(). That makes
// loops of a fixed length, and takes 12 bytes less for each use than a list of the others of each
// term.
template <typename Num>
struct SpinTable {
  uint32_t degree = 3;  // 3 .. kMaxSpinDegree
  std::vector<Num> coeffs;
  std::vector<uint32_t> variables;       // `degree` a term
  std::vector<uint64_t> use_head = {0};  // by variable
  std::vector<uint32_t> uses;            // numbers of terms

  uint32_t size() const { return static_cast<uint32_t>(use_head.size() - 1); }
};

}  // namespace zorv::plugin::easy
