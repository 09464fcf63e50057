// Few outputs that are long sums are made one after the other, each by all threads; otherwise the
// outputs are spread over the threads. A term is made in its final place: where no product can
// vanish its place is known, elsewhere the products that stay are counted first.
#include "arrays/einsum.h"

#include <algorithm>

#include "core/arithmetic.h"
#include "core/coeff_sum.h"
#include "core/fatal.h"
#include "core/sum.h"

namespace zorv {

namespace {

constexpr uint64_t kMaxWideOutputs = 9'999;
constexpr uint64_t kMaxNarrowProducts = 99'999;
// Products of expressions that one partial sum takes in. Fixed, so that no result depends on the
// number of threads.
constexpr uint64_t kProductsPerPart = 16'384;

// Where each input stands while indices step over the axes.
class Position {
 public:
  Position(const LabelledAxes& axes, std::vector<uint64_t> base)
      : axes_(axes), coordinates_(axes.extents.size()), offsets_(std::move(base)) {}

  void move_to(uint64_t flat) {
    for (size_t axis = axes_.extents.size(); axis-- > 0 && flat > 0;) {
      coordinates_[axis] = flat % axes_.extents[axis];
      flat /= axes_.extents[axis];
      move(axes_.strides[axis], coordinates_[axis]);
    }
  }

  // The last axis moves fastest.
  void step() {
    size_t axis = axes_.extents.size() - 1;
    while (++coordinates_[axis] == axes_.extents[axis]) {
      coordinates_[axis] = 0;
      move(axes_.strides[axis], 1 - axes_.extents[axis]);
      --axis;
    }
    move(axes_.strides[axis], 1);
  }

  const std::vector<uint64_t>& offsets() const { return offsets_; }

 private:
  // Offsets wrap, so a step back is a large step forward.
  void move(const std::vector<uint64_t>& strides, uint64_t steps) {
    for (size_t i = 0; i < offsets_.size(); ++i) offsets_[i] += steps * strides[i];
  }

  const LabelledAxes& axes_;
  std::vector<uint64_t> coordinates_;
  std::vector<uint64_t> offsets_;
};

// The inputs as runs of elements.
class Elements {
 public:
  explicit Elements(const std::vector<EinsumInput>& inputs) : inputs_(inputs) {}

  size_t count() const { return inputs_.size(); }
  ElementKind kind(size_t i) const { return static_cast<ElementKind>(inputs_[i].kind); }
  bool has(ElementKind wanted) const {
    return std::any_of(inputs_.begin(), inputs_.end(), [=](const EinsumInput& input) {
      return static_cast<ElementKind>(input.kind) == wanted;
    });
  }
  bool has_only(ElementKind wanted) const {
    return std::all_of(inputs_.begin(), inputs_.end(), [=](const EinsumInput& input) {
      return static_cast<ElementKind>(input.kind) == wanted;
    });
  }
  template <typename T>
  const ArrayImpl<T>& array(size_t i) const {
    return *static_cast<const ArrayImpl<T>*>(inputs_[i].array);
  }
  uint32_t var(size_t i, uint64_t at) const { return array<uint32_t>(i).data[at]; }
  const coeff_t& integer(size_t i, uint64_t at) const { return array<coeff_t>(i).data[at]; }
  const TermImpl& term(size_t i, uint64_t at) const { return array<TermImpl>(i).data[at]; }
  const ExprImpl& expr(size_t i, uint64_t at) const { return array<ExprImpl>(i).data[at]; }

 private:
  const std::vector<EinsumInput>& inputs_;
};

// Whether every product of elements is a term: none is 0, and each has a variable.
bool always_gives_terms(const Elements& elements) {
  bool has_variables = elements.has(ElementKind::kVar);
  for (size_t i = 0; i < elements.count(); ++i) {
    if (elements.kind(i) == ElementKind::kInt) {
      const ArrayImpl<coeff_t>& a = elements.array<coeff_t>(i);
      if (std::any_of(a.data, a.data + a.size, is_zero)) return false;
    } else if (elements.kind(i) == ElementKind::kTerm) {
      const ArrayImpl<TermImpl>& a = elements.array<TermImpl>(i);
      bool all_have_variables = true;
      for (uint64_t at = 0; at < a.size; ++at) {
        if (is_zero(a[at].coeff)) return false;
        all_have_variables = all_have_variables && a[at].vars.degree_capped_at_3() > 0;
      }
      has_variables = has_variables || all_have_variables;
    }
  }
  return has_variables;
}

// One product of variables: always a term, with the coefficient 1.
class VarProduct {
 public:
  explicit VarProduct(const Elements& elements) : literals_(elements.count()) {
    for (size_t i = 0; i < elements.count(); ++i) runs_.push_back(elements.array<uint32_t>(i).data);
  }

  bool load(const std::vector<uint64_t>& offsets) {
    for (size_t i = 0; i < runs_.size(); ++i) literals_[i] = runs_[i][offsets[i]];
    return true;
  }
  bool has_variables() const { return true; }
  const coeff_t& coeff() const { return one_; }
  void construct(TermImpl* raw) const {
    construct_copy(&raw->coeff, one_);
    if (literals_.size() == 2) {
      new (&raw->vars) VarList(literals_[0], literals_[1]);
    } else {
      new (&raw->vars) VarList(literals_.data(), static_cast<uint32_t>(literals_.size()));
    }
  }

 private:
  const coeff_t one_ = 1;
  std::vector<const uint32_t*> runs_;
  std::vector<uint32_t> literals_;
};

// One product of elements that are no expressions, built up factor by factor. Reused for many, so
// that none allocates but for the literals of a degree above 2.
class TermProduct {
 public:
  explicit TermProduct(const Elements& elements) : elements_(elements) {}

  // Returns false if the product is 0.
  bool load(const std::vector<uint64_t>& offsets) {
    literals_.clear();
    coeff_ = nullptr;
    for (size_t i = 0; i < offsets.size(); ++i) {
      if (elements_.kind(i) == ElementKind::kVar) {
        literals_.push_back(elements_.var(i, offsets[i]));
      } else if (elements_.kind(i) == ElementKind::kInt) {
        multiply(elements_.integer(i, offsets[i]));
      } else {
        const TermImpl& term = elements_.term(i, offsets[i]);
        multiply(term.coeff);
        for (const uint32_t literal : term.vars) literals_.push_back(literal);
      }
      if (coeff_ != nullptr && is_zero(*coeff_)) return false;
    }
    return true;
  }

  bool has_variables() const { return !literals_.empty(); }
  const coeff_t& coeff() const { return coeff_ == nullptr ? one_ : *coeff_; }
  void construct(TermImpl* raw) const {
    construct_copy(&raw->coeff, coeff());
    new (&raw->vars) VarList(literals_.data(), static_cast<uint32_t>(literals_.size()));
  }

 private:
  void multiply(const coeff_t& factor) {
    if (coeff_ == nullptr) {
      coeff_ = &factor;
    } else {
      product_ = *coeff_ * factor;
      coeff_ = &product_;
    }
  }

  const Elements& elements_;
  const coeff_t one_ = 1;
  std::vector<uint32_t> literals_;
  const coeff_t* coeff_ = nullptr;  // a single factor, or the product of several; null for 1
  coeff_t product_;
};

struct PartialSum {
  static constexpr uint64_t kNone = UINT64_MAX;

  ExprImpl sum;
  uint64_t leader = kNone;  // where the first product that begins with a term was added

  // Moves the leading entry to the first slot, which is free.
  void open_first() {
    TermList& list = sum.list;
    list.first = std::move(list.terms[leader]);
    std::move(list.terms + leader + 1, list.terms + list.count, list.terms + leader);
    --list.count;
  }
};

class Contraction {
 public:
  Contraction(const EinsumPlan& plan, const std::vector<EinsumInput>& inputs)
      : plan_(plan),
        elements_(inputs),
        is_wide_(num_threads() >= 2 && plan.outputs <= kMaxWideOutputs &&
                 plan.products > kMaxNarrowProducts),
        has_exprs_(elements_.has(ElementKind::kExpr)),
        has_vars_only_(elements_.has_only(ElementKind::kVar)),
        always_gives_terms_(!has_exprs_ && always_gives_terms(elements_)) {}

  // An array of contract(i, threads), where `threads` is how many an element may use.
  template <typename T, typename Contract>
  ArrayImpl<T> run(Contract contract) const {
    if (!is_wide_) {
      return make_array<T>(
          plan_.output.extents, [&](uint64_t i) { return contract(i, 1); },
          std::min<uint64_t>(plan_.products, kSerialItems));
    }
    ArrayImpl<T> result(plan_.output.extents);
    for (; result.size < plan_.outputs; ++result.size) {
      new (result.data + result.size) T(contract(result.size, num_threads()));
    }
    return result;
  }

  coeff_t integer(uint64_t output, uint32_t threads) const {
    const Chunking chunking(plan_.products, threads);
    std::vector<coeff_t> sums(chunking.chunks);
    for_each_chunk(output, chunking, threads, [&](uint64_t c, auto& walk) {
      CoeffSum sum;
      walk([&](const std::vector<uint64_t>& offsets) { sum += integer_product(offsets); });
      sums[c] = sum.total();
    });
    coeff_t total;
    for (const coeff_t& sum : sums) total += sum;
    return total;
  }

  ExprImpl expression(uint64_t output, uint32_t threads) const {
    if (has_exprs_) return sum_of_products(output, threads);
    return has_vars_only_ ? sum_of_terms<VarProduct>(output, threads)
                          : sum_of_terms<TermProduct>(output, threads);
  }

 private:
  // Calls f(c, walk) for each chunk of the products of one output; walk(body) then calls
  // body(offsets) for each product of the chunk.
  template <typename F>
  void for_each_chunk(uint64_t output, const Chunking& chunking, uint32_t threads, F f) const {
    Position base(plan_.output, std::vector<uint64_t>(elements_.count()));
    base.move_to(output);
    for_chunks_on_fresh_threads(chunking, threads,
                                [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                  const auto walk = [&](auto body) {
                                    if (begin == end) return;
                                    Position position(plan_.summed, base.offsets());
                                    position.move_to(begin);
                                    body(position.offsets());
                                    for (uint64_t k = begin + 1; k < end; ++k) {
                                      position.step();
                                      body(position.offsets());
                                    }
                                  };
                                  f(c, walk);
                                });
  }

  coeff_t integer_product(const std::vector<uint64_t>& offsets) const {
    coeff_t product = elements_.integer(0, offsets[0]);
    for (size_t i = 1; i < offsets.size(); ++i) product *= elements_.integer(i, offsets[i]);
    return product;
  }

  // The slot at which each chunk's terms begin, and one end.
  std::vector<uint64_t> place_terms(uint64_t output, const Chunking& chunking,
                                    uint32_t threads) const {
    std::vector<uint64_t> starts(chunking.chunks + 1);
    if (always_gives_terms_) {
      for (uint64_t c = 0; c < chunking.chunks; ++c) starts[c + 1] = chunking.end(c);
      return starts;
    }
    for_each_chunk(output, chunking, threads, [&](uint64_t c, auto& walk) {
      TermProduct product(elements_);
      uint64_t terms = 0;
      walk([&](const std::vector<uint64_t>& offsets) {
        terms += product.load(offsets) && product.has_variables();
      });
      starts[c + 1] = terms;
    });
    for (uint64_t c = 0; c < chunking.chunks; ++c) starts[c + 1] += starts[c];
    return starts;
  }

  template <typename Product>
  ExprImpl sum_of_terms(uint64_t output, uint32_t threads) const {
    const Chunking chunking(plan_.products, threads);
    const std::vector<uint64_t> starts = place_terms(output, chunking, threads);
    std::vector<coeff_t> constants(chunking.chunks);
    ExprImpl sum;
    sum.list.allocate_slots(starts.back());
    for_each_chunk(output, chunking, threads, [&](uint64_t c, auto& walk) {
      Product product(elements_);
      uint64_t slot = starts[c];
      CoeffSum constant;
      walk([&](const std::vector<uint64_t>& offsets) {
        if (!product.load(offsets)) return;
        if (product.has_variables()) {
          product.construct(sum.list.slot(slot++));
        } else {
          constant += product.coeff();
        }
      });
      constants[c] = constant.total();
    });
    sum.list.commit_slots(starts.back());
    for (const coeff_t& constant : constants) sum.constant += constant;
    return sum;
  }

  ExprImpl multiply_out(const std::vector<uint64_t>& offsets) const {
    ExprImpl product(coeff_t(1));
    for (size_t i = 0; i < offsets.size(); ++i) {
      const uint64_t at = offsets[i];
      switch (elements_.kind(i)) {
        case ElementKind::kVar:
          product = mul_var(product, elements_.var(i, at));
          break;
        case ElementKind::kInt:
          imul_int(product, elements_.integer(i, at));
          break;
        case ElementKind::kTerm:
          product = mul_term(product, elements_.term(i, at));
          break;
        case ElementKind::kExpr:
          product = mul(product, elements_.expr(i, at));
          break;
      }
    }
    return product;
  }

  // Only the first of all products that begins with a term fills the first slot of the sum. Parts
  // cannot know whether one came before them, so the later ones keep their first slot closed.
  ExprImpl sum_of_products(uint64_t output, uint32_t threads) const {
    Chunking parts(plan_.products, 1);
    parts.chunk_items = kProductsPerPart;
    parts.chunks = (plan_.products + kProductsPerPart - 1) / kProductsPerPart;
    std::vector<PartialSum> sums(parts.chunks);
    for_each_chunk(output, parts, threads, [&](uint64_t c, auto& walk) {
      PartialSum& part = sums[c];
      TermList& list = part.sum.list;
      if (c > 0) list.first.coeff = 1;
      walk([&](const std::vector<uint64_t>& offsets) {
        const ExprImpl product = multiply_out(offsets);
        if (part.leader == PartialSum::kNone && product.list.has_first()) part.leader = list.count;
        add_poly(part.sum, product);
      });
      if (c > 0) list.first = TermImpl();
    });
    if (sums.size() == 1) return std::move(sums[0].sum);
    const auto leading = std::find_if(sums.begin(), sums.end(), [](const PartialSum& part) {
      return part.leader != PartialSum::kNone;
    });
    if (leading != sums.begin() && leading != sums.end()) leading->open_first();
    return sum_of_exprs(sums.size(), [&](uint64_t c) -> ExprImpl& { return sums[c].sum; });
  }

  const EinsumPlan& plan_;
  const Elements elements_;
  const bool is_wide_;
  const bool has_exprs_;
  const bool has_vars_only_;
  const bool always_gives_terms_;
};

}  // namespace

ArrayImpl<coeff_t> einsum_int(const char* subscript, const std::vector<EinsumInput>& inputs,
                              uint64_t out_dim) {
  const EinsumPlan plan = plan_einsum(subscript, inputs, out_dim);
  for (size_t i = 0; i < inputs.size(); ++i) {
    if (static_cast<ElementKind>(inputs[i].kind) != ElementKind::kInt) {
      fatal("einsum: int output requires all inputs to be coeff_t (input ", i, " has type tag ",
            inputs[i].kind, ")");
    }
  }
  const Contraction contraction(plan, inputs);
  return contraction.run<coeff_t>(
      [&](uint64_t i, uint32_t threads) { return contraction.integer(i, threads); });
}

ArrayImpl<ExprImpl> einsum_expr(const char* subscript, const std::vector<EinsumInput>& inputs,
                                uint64_t out_dim) {
  const EinsumPlan plan = plan_einsum(subscript, inputs, out_dim);
  const Contraction contraction(plan, inputs);
  return contraction.run<ExprImpl>(
      [&](uint64_t i, uint32_t threads) { return contraction.expression(i, threads); });
}

}  // namespace zorv
