// The polynomial in spins s = 1 - 2x, if that is the cheaper form: sums of squared correlations, as
// of low autocorrelation sequences, have a fraction of the terms there.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "common/literal.h"
#include "easysolver/build_tables.h"
#include "easysolver/random.h"

namespace zorv::plugin::easy {

// A product of c over d literals is c / 2^d times the sum over all subsets of them, with a minus
// for each plain literal. Terms are collected in a hash table.
template <typename E>
class SpinExpansion {
 public:
  struct Term {
    std::array<uint32_t, kMaxSpinDegree> variables;  // ascending
    uint32_t degree;
    E coeff;
  };

  explicit SpinExpansion(uint32_t variables) : slots_(1024, kEmpty), codes_(variables) {
    Random random(1);
    for (uint64_t& code : codes_) code = random();
  }

  // Adds factor times the product of the literals' doubles.
  void add(const uint32_t* literals, uint32_t degree, const E& factor) {
    std::array<uint32_t, kMaxSpinDegree> sorted{};
    for (uint32_t k = 0; k < degree; ++k) {  // by insertion
      uint32_t place = k;
      for (; place > 0 && variable_of(literals[k]) < variable_of(sorted[place - 1]); --place) {
        sorted[place] = sorted[place - 1];
      }
      sorted[place] = literals[k];
    }
    for (uint32_t subset = 0; subset < 1u << degree; ++subset) {
      Term term = {{}, 0, factor};
      for (uint32_t k = 0; k < degree; ++k) {
        if ((subset >> k & 1) == 0) continue;
        if (!is_complement(sorted[k])) term.coeff = -term.coeff;
        term.variables[term.degree++] = variable_of(sorted[k]);
      }
      add(term);
    }
  }

  const std::vector<Term>& terms() const { return terms_; }

 private:
  static constexpr uint32_t kEmpty = 0xFFFFFFFF;

  void add(const Term& term) {
    uint64_t code = 0;
    for (uint32_t k = 0; k < term.degree; ++k) code ^= codes_[term.variables[k]];
    for (uint64_t at = code;; ++at) {
      uint32_t& slot = slots_[at & (slots_.size() - 1)];
      if (slot == kEmpty) {
        slot = static_cast<uint32_t>(terms_.size());
        terms_.push_back(term);
        if (2 * terms_.size() > slots_.size()) grow();
        return;
      }
      Term& other = terms_[slot];
      if (other.degree != term.degree || other.variables != term.variables) continue;
      other.coeff += term.coeff;
      return;
    }
  }
  void grow() {
    slots_.assign(2 * slots_.size(), kEmpty);
    for (uint32_t t = 0; t < terms_.size(); ++t) {
      uint64_t at = 0;
      for (uint32_t k = 0; k < terms_[t].degree; ++k) at ^= codes_[terms_[t].variables[k]];
      while (slots_[at & (slots_.size() - 1)] != kEmpty) ++at;
      slots_[at & (slots_.size() - 1)] = t;
    }
  }

  std::vector<uint32_t> slots_;  // a power of 2 of them
  std::vector<uint64_t> codes_;  // by variable
  std::vector<Term> terms_;
};

// Terms of the spin form, all times 2^degree_of(source).
template <typename E>
struct SpinForm {
  std::vector<typename SpinExpansion<E>::Term> terms;  // none of degree 0
  E constant;
  uint64_t scale;
};

template <typename E>
uint32_t degree_of(const Source<E>& source) {
  uint64_t degree = 2;
  for (size_t t = 0; t + 1 < source.product_head.size(); ++t) {
    degree = std::max(degree, source.product_head[t + 1] - source.product_head[t]);
  }
  return static_cast<uint32_t>(degree);
}

// Touched numbers of all flips together, in each form.
template <typename E>
uint64_t work_as_products(const Source<E>& source) {
  return 3 * source.product_literals.size() + 2 * source.pairs.size();
}
template <typename E>
uint64_t work_as_spins(const SpinForm<E>& form) {
  uint64_t work = 0;
  for (const auto& term : form.terms) work += uint64_t{term.degree} * term.degree;
  return work;
}

// The spin form where it is worth its while and is ready in time: is_over() tells when to give up.
// Energies times 2^degree must fit E.
template <typename E, typename IsOver>
std::optional<SpinForm<E>> cheaper_spin_form(const Source<E>& source, const IsOver& is_over) {
  constexpr uint64_t kProductsBetweenLooks = 1024;
  constexpr uint64_t kMostTerms = uint64_t{1} << 22;
  const uint32_t degree = degree_of(source);
  if (source.product_coeffs.empty() || degree > kMaxSpinDegree) return std::nullopt;
  SpinExpansion<E> expansion(source.size());
  const uint64_t most = work_as_products(source);
  for (uint64_t t = 0; t < source.product_coeffs.size(); ++t) {
    if (t % kProductsBetweenLooks == 0 && is_over()) return std::nullopt;
    const uint64_t begin = source.product_head[t];
    const auto d = static_cast<uint32_t>(source.product_head[t + 1] - begin);
    expansion.add(&source.product_literals[begin], d,
                  source.product_coeffs[t] * E(uint64_t{1} << (degree - d)));
    if (expansion.terms().size() > std::min(most, kMostTerms)) return std::nullopt;
  }
  for (const auto& pair : source.pairs) {
    const uint32_t literals[] = {pair.i, pair.j};
    expansion.add(literals, 2, pair.coeff * E(uint64_t{1} << (degree - 2)));
  }
  for (uint32_t i = 0; i < source.size(); ++i) {
    expansion.add(&i, 1, source.linear[i] * E(uint64_t{1} << (degree - 1)));
  }
  SpinForm<E> form = {{}, 0, uint64_t{1} << degree};
  for (const auto& term : expansion.terms()) {
    if (term.degree == 0) form.constant = term.coeff;
    if (term.degree != 0 && term.coeff != 0) form.terms.push_back(term);
  }
  if (work_as_spins(form) >= most) return std::nullopt;
  return form;
}

template <typename Num, typename E>
SpinTable<Num> spin_table(const SpinForm<E>& form, uint32_t n) {
  SpinTable<Num> table;
  table.use_head.assign(n + 1, 0);
  for (const auto& term : form.terms) table.degree = std::max(table.degree, term.degree);
  for (const auto& term : form.terms) {
    table.coeffs.push_back(build::narrowed<Num>(term.coeff));
    for (uint32_t k = 0; k < table.degree; ++k) {
      table.variables.push_back(k < term.degree ? term.variables[k] : n);
      if (k < term.degree) ++table.use_head[term.variables[k]];
    }
  }
  build::to_heads(table.use_head);
  table.uses.resize(table.use_head.back());
  std::vector<uint64_t> next = table.use_head;
  for (uint32_t t = 0; t < form.terms.size(); ++t) {
    for (uint32_t k = 0; k < form.terms[t].degree; ++k) {
      table.uses[next[form.terms[t].variables[k]]++] = t;
    }
  }
  return table;
}

}  // namespace zorv::plugin::easy
