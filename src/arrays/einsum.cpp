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
  Position(const LabelledAxes& axes, size_t inputs)
      : axes_(axes), coordinates_(axes.extents.size()), offsets_(inputs) {}

  // Index `flat` of the axes, with the inputs standing at `base` for index 0.
  void set(const std::vector<uint64_t>& base, uint64_t flat) {
    offsets_ = base;
    std::fill(coordinates_.begin(), coordinates_.end(), 0);
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

// Goes through the products of outputs, one output after the other. Reused for many outputs, so
// that none of them allocates.
class ProductWalk {
 public:
  ProductWalk(const EinsumPlan& plan, size_t inputs)
      : origin_(inputs), output_(plan.output, inputs), summed_(plan.summed, inputs) {}

  void set_output(uint64_t output) {
    if (output == next_output_) {
      output_.step();
    } else {
      output_.set(origin_, output);
    }
    next_output_ = output + 1;
  }
  // Calls body(offsets) for each of the products [begin, end) of the output, in order.
  template <typename Body>
  void for_each(uint64_t begin, uint64_t end, Body body) {
    if (begin == end) return;
    summed_.set(output_.offsets(), begin);
    body(summed_.offsets());
    for (uint64_t k = begin + 1; k < end; ++k) {
      summed_.step();
      body(summed_.offsets());
    }
  }

 private:
  const std::vector<uint64_t> origin_;
  Position output_, summed_;
  uint64_t next_output_ = UINT64_MAX;  // the one behind the current one
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
      if (std::any_of(a.data, a.data + a.size, [](const coeff_t& c) { return is_zero(c); })) {
        return false;
      }
    } else if (elements.kind(i) == ElementKind::kTerm) {
      const ArrayImpl<TermImpl>& a = elements.array<TermImpl>(i);
      bool all_have_variables = true;
      for (uint64_t at = 0; at < a.size; ++at) {
        if (is_zero(a[at].coeff)) return false;
        all_have_variables = all_have_variables && a[at].vars.degree() > 0;
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
  CompactCoeff coeff() const { return 1; }
  void construct(TermImpl* raw) const {
    new (raw) TermImpl(1, VarList(literals_.data(), static_cast<uint32_t>(literals_.size())));
  }

 private:
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
    coeff_ = 1;
    for (size_t i = 0; i < offsets.size(); ++i) {
      if (elements_.kind(i) == ElementKind::kVar) {
        literals_.push_back(elements_.var(i, offsets[i]));
      } else if (elements_.kind(i) == ElementKind::kInt) {
        coeff_ *= elements_.integer(i, offsets[i]);
      } else {
        const TermImpl& term = elements_.term(i, offsets[i]);
        coeff_ *= term.coeff;
        for (const uint32_t literal : term.vars) literals_.push_back(literal);
      }
      if (is_zero(coeff_)) return false;
    }
    return true;
  }

  bool has_variables() const { return !literals_.empty(); }
  const CompactCoeff& coeff() const { return coeff_; }
  void construct(TermImpl* raw) const {
    new (raw) TermImpl(coeff_, VarList(literals_.data(), static_cast<uint32_t>(literals_.size())));
  }

 private:
  const Elements& elements_;
  CompactCoeff coeff_;
  std::vector<uint32_t> literals_;
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
        wide_threads_(plan.outputs <= kMaxWideOutputs && plan.products > kMaxNarrowProducts
                          ? num_threads()
                          : 1),
        always_gives_terms_(!elements_.has(ElementKind::kExpr) && always_gives_terms(elements_)) {}

  ArrayImpl<coeff_t> integers() const {
    if (wide_threads_ > 1) {
      return one_by_one<coeff_t>([&](uint64_t output) { return wide_integer(output); });
    }
    return spread<coeff_t>([&] { return new_walk(); },
                           [&](ProductWalk& walk, uint64_t output) {
                             walk.set_output(output);
                             return sum_integers(walk, 0, plan_.products);
                           });
  }

  ArrayImpl<ExprImpl> expressions() const {
    if (elements_.has(ElementKind::kExpr)) return multiplied_out();
    return elements_.has_only(ElementKind::kVar) ? sums_of<VarProduct>() : sums_of<TermProduct>();
  }

 private:
  ProductWalk new_walk() const { return ProductWalk(plan_, elements_.count()); }

  // The two ways through the outputs.
  template <typename T, typename Contract>
  ArrayImpl<T> one_by_one(Contract contract) const {
    return make_array<T>(plan_.output.extents, contract, kInOrder);
  }
  template <typename T, typename NewScratch, typename Contract>
  ArrayImpl<T> spread(NewScratch new_scratch, Contract contract) const {
    return make_array_with<T>(new_scratch, plan_.output.extents, contract,
                              std::min<uint64_t>(plan_.products, kSerialItems));
  }

  // Calls f(c, walk, begin, end) for each chunk of the products of one output.
  template <typename F>
  void for_each_chunk(uint64_t output, const Chunking& chunking, F f) const {
    for_chunks_on_fresh_threads(chunking, wide_threads_,
                                [&](uint32_t, uint64_t c, uint64_t begin, uint64_t end) {
                                  ProductWalk walk = new_walk();
                                  walk.set_output(output);
                                  f(c, walk, begin, end);
                                });
  }

  // Integers
  // ---------------------------------------------------------------------------------------

  coeff_t integer_product(const std::vector<uint64_t>& offsets) const {
    coeff_t product = elements_.integer(0, offsets[0]);
    for (size_t i = 1; i < offsets.size(); ++i) product *= elements_.integer(i, offsets[i]);
    return product;
  }

  coeff_t sum_integers(ProductWalk& walk, uint64_t begin, uint64_t end) const {
    CoeffSum sum;
    walk.for_each(begin, end,
                  [&](const std::vector<uint64_t>& offsets) { sum += integer_product(offsets); });
    return sum.total();
  }

  coeff_t wide_integer(uint64_t output) const {
    const Chunking chunking(plan_.products, wide_threads_);
    std::vector<coeff_t> sums(chunking.chunks);
    for_each_chunk(output, chunking,
                   [&](uint64_t c, ProductWalk& walk, uint64_t begin, uint64_t end) {
                     sums[c] = sum_integers(walk, begin, end);
                   });
    coeff_t total;
    for (const coeff_t& sum : sums) total += sum;
    return total;
  }

  // Products that are terms
  // ------------------------------------------------------------------------

  template <typename Product>
  struct TermScratch {
    ProductWalk walk;
    Product product;
  };

  template <typename Product>
  ArrayImpl<ExprImpl> sums_of() const {
    if (wide_threads_ > 1) {
      return one_by_one<ExprImpl>([&](uint64_t output) { return wide_sum<Product>(output); });
    }
    return spread<ExprImpl>(
        [&] {
          return TermScratch<Product>{new_walk(), Product(elements_)};
        },
        [&](TermScratch<Product>& scratch, uint64_t output) {
          scratch.walk.set_output(output);
          const uint64_t terms = count_terms(scratch.walk, scratch.product, 0, plan_.products);
          ExprImpl sum;
          sum.list.allocate_slots(terms);
          sum.constant = put_terms(scratch.walk, scratch.product, 0, plan_.products, sum.list, 0);
          sum.list.commit_slots(terms);
          return sum;
        });
  }

  template <typename Product>
  uint64_t count_terms(ProductWalk& walk, Product& product, uint64_t begin, uint64_t end) const {
    if (always_gives_terms_) return end - begin;
    uint64_t terms = 0;
    walk.for_each(begin, end, [&](const std::vector<uint64_t>& offsets) {
      terms += product.load(offsets) && product.has_variables();
    });
    return terms;
  }

  // Makes exactly those terms from `slot` on; returns the sum of the products without variables.
  template <typename Product>
  coeff_t put_terms(ProductWalk& walk, Product& product, uint64_t begin, uint64_t end, TermList& to,
                    uint64_t slot) const {
    CoeffSum constant;
    walk.for_each(begin, end, [&](const std::vector<uint64_t>& offsets) {
      if (!product.load(offsets)) return;
      if (product.has_variables()) {
        product.construct(to.slot(slot++));
      } else {
        constant += product.coeff();
      }
    });
    return constant.total();
  }

  template <typename Product>
  ExprImpl wide_sum(uint64_t output) const {
    const Chunking chunking(plan_.products, wide_threads_);
    std::vector<uint64_t> starts(chunking.chunks + 1);
    for_each_chunk(output, chunking,
                   [&](uint64_t c, ProductWalk& walk, uint64_t begin, uint64_t end) {
                     Product product(elements_);
                     starts[c + 1] = count_terms(walk, product, begin, end);
                   });
    for (uint64_t c = 0; c < chunking.chunks; ++c) starts[c + 1] += starts[c];
    ExprImpl sum;
    sum.list.allocate_slots(starts.back());
    std::vector<coeff_t> constants(chunking.chunks);
    for_each_chunk(output, chunking,
                   [&](uint64_t c, ProductWalk& walk, uint64_t begin, uint64_t end) {
                     Product product(elements_);
                     constants[c] = put_terms(walk, product, begin, end, sum.list, starts[c]);
                   });
    sum.list.commit_slots(starts.back());
    for (const coeff_t& constant : constants) sum.constant += constant;
    return sum;
  }

  // Products of expressions
  // ------------------------------------------------------------------------

  ArrayImpl<ExprImpl> multiplied_out() const {
    const auto contract = [&](uint64_t output) { return sum_of_products(output); };
    if (wide_threads_ > 1) return one_by_one<ExprImpl>(contract);
    return make_array<ExprImpl>(plan_.output.extents, contract,
                                std::min<uint64_t>(plan_.products, kSerialItems));
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
  ExprImpl sum_of_products(uint64_t output) const {
    Chunking parts(plan_.products, 1);
    parts.chunk_items = kProductsPerPart;
    parts.chunks = (plan_.products + kProductsPerPart - 1) / kProductsPerPart;
    std::vector<PartialSum> sums(parts.chunks);
    for_each_chunk(output, parts, [&](uint64_t c, ProductWalk& walk, uint64_t begin, uint64_t end) {
      PartialSum& part = sums[c];
      TermList& list = part.sum.list;
      if (c > 0) list.first.coeff = 1;
      walk.for_each(begin, end, [&](const std::vector<uint64_t>& offsets) {
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
  const uint32_t wide_threads_;  // for one output; 1 unless few outputs are long sums
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
  return Contraction(plan, inputs).integers();
}

ArrayImpl<ExprImpl> einsum_expr(const char* subscript, const std::vector<EinsumInput>& inputs,
                                uint64_t out_dim) {
  const EinsumPlan plan = plan_einsum(subscript, inputs, out_dim);
  return Contraction(plan, inputs).expressions();
}

}  // namespace zorv
