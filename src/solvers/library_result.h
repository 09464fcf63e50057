// What solver libraries hand back: output records with their storage, and the result made of them.
#pragma once

#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

#include "core/coeff_wire.h"
#include "solvers/host_info.h"
#include "solvers/search_result.h"
#include "zorv/solver_abi.h"

namespace zorv {

// An empty output record for a solution of `variables` bits. What the library stores in it is freed
// with it.
class SolutionBuffer {
 public:
  using Record = SolutionOut;

  explicit SolutionBuffer(uint64_t variables)
      : nbits_(static_cast<uint32_t>(variables)),
        nwords_(static_cast<uint32_t>((variables + 63) / 64)),
        bits_(nwords_) {}
  SolutionBuffer(const SolutionBuffer&) = delete;
  SolutionBuffer& operator=(const SolutionBuffer&) = delete;
  ~SolutionBuffer() { std::free(energy_.limbs); }

  Record* record() { return &record_; }
  coeff_t energy() const { return read_wire(&energy_); }
  double tts() const { return tts_; }
  std::vector<uint64_t> take_bits() { return std::move(bits_); }

 private:
  uint32_t nbits_, nwords_;
  CoeffWire energy_ = {0, 0, nullptr};
  std::vector<uint64_t> bits_;
  double tts_ = 0.0;
  Record record_ = {&nbits_, &nwords_, &energy_, bits_.data(), &tts_};
};

// The same in the form of the klb5 family, which also carries facts about the search.
class Klb5SolutionBuffer {
 public:
  using Record = Klb5SolutionOut;

  explicit Klb5SolutionBuffer(uint64_t variables)
      : bits_((variables + 63) / 64),
        record_{{0, 0, nullptr}, bits_.data(), 0.0, nullptr, static_cast<uint32_t>(bits_.size())} {}
  Klb5SolutionBuffer(const Klb5SolutionBuffer&) = delete;
  Klb5SolutionBuffer& operator=(const Klb5SolutionBuffer&) = delete;
  ~Klb5SolutionBuffer();

  Record* record() { return &record_; }
  coeff_t energy() const { return read_wire(&record_.energy); }
  double tts() const { return record_.tts; }
  const InfoPair* info() const { return record_.info; }
  std::vector<uint64_t> take_bits() { return std::move(bits_); }

 private:
  std::vector<uint64_t> bits_;
  Record record_;
};

// Appends the pairs of a list that ends with a null key; null is an empty list.
void add_info_list(SearchResult& result, const InfoPair* list);
// The facts that a library of the first two families tells through functions, both of which may be
// missing.
void add_reported_info(SearchResult& result, void* solver, InfoPair* (*get_info)(void*),
                       void (*free_info)(InfoPair*));

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Best solution and scale of a result.
template <typename Buffer>
SearchResult result_of(Buffer& best, const ModelImpl& model) {
  SearchResult result;
  result.energy = best.energy();
  result.tts = best.tts();
  result.scale = model.scale;
  result.bits = best.take_bits();
  return result;
}

// The `count` further solutions, each filled in by get(i, record).
template <typename Buffer, typename Get>
void add_topk(SearchResult& result, const ModelImpl& model, uint64_t count, Get get) {
  for (uint64_t i = 0; i < count; ++i) {
    Buffer entry(model.variables.size());
    get(i, entry.record());
    result.topk.push_back({entry.energy(), entry.tts(), entry.take_bits(), {}});
  }
}

// What a binary search of the first two families came to: its best solution, the list that it
// returned, which is destroyed, and the facts that its library tells.
template <typename Table>
SearchResult binary_result(const Table& library, const ModelImpl& model, void* solver,
                           SolutionBuffer& best, void* list, double seconds) {
  SearchResult result = result_of(best, model);
  if (list != nullptr) {
    add_topk<SolutionBuffer>(
        result, model, library.sol_list_count(list),
        [&](uint64_t i, SolutionOut* out) { library.sol_list_get(list, i, out); });
    library.sol_list_destroy(list);
  }
  add_run_time(result, seconds);
  add_reported_info(result, solver, library.get_info, library.free_info);
  add_host_info(result);
  return result;
}

}  // namespace zorv
