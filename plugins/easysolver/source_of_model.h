// From a model as it arrived to the lists of terms that the engine starts from.
#pragma once

#include "common/binary_model.h"
#include "easysolver/source.h"

namespace zorv::plugin::easy {

// Whether a constraint is multiplied out into pairs: a linear body that is to have one value, with
// the square of the violation as its penalty. As pairs it costs a flip nothing but more neighbours,
// where as a constraint it costs every candidate a look. Above some number of pairs it stays.
std::vector<bool> folded_constraints(const BinaryModel& model);

// How large the engine's numbers get; `folded` come from folded_constraints.
SearchBound<Coeff> engine_bound(const BinaryModel& model, const std::vector<bool>& folded);

// E is int64_t, where the bound above allows it, or Coeff. `constant` is what is not in the lists.
template <typename E>
Source<E> source_of(const BinaryModel& model, const std::vector<bool>& folded, Coeff& constant);

extern template Source<int64_t> source_of(const BinaryModel&, const std::vector<bool>&, Coeff&);
extern template Source<Coeff> source_of(const BinaryModel&, const std::vector<bool>&, Coeff&);

}  // namespace zorv::plugin::easy
