// Sorting records by a number of few bits: the least significant digit first, 8 to 11 bits at a
// time, by all threads. Each pass counts the digits of every chunk, works out from the counts where
// each chunk's records of each digit go, and moves them there; equal records keep their order.
// (Knuth, The Art of Computer Programming, volume 3, 5.2.5.)
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "core/parallel.h"

namespace zorv {

// Sorts records[0 .. n) by the lowest `bits` bits of their member `key`; higher ones are 0. Returns
// where the sorted records lie: in `records`, or in `buffer`, which has room for n. Records are
// moved as bytes.
template <typename Record>
Record* radix_sort(Record* records, Record* buffer, uint64_t n, uint32_t bits) {
  constexpr uint32_t kMaxDigitBits = 11;
  const uint32_t passes = std::max(1u, (bits + kMaxDigitBits - 1) / kMaxDigitBits);
  const uint32_t digit_bits = std::max(1u, (bits + passes - 1) / passes);
  const uint64_t digits = uint64_t{1} << digit_bits;
  const uint32_t threads = n > kSerialItems ? num_threads() : 1;
  const uint64_t chunk_count = std::max(1u, threads);
  const auto chunk_begin = [=](uint64_t c) { return n * c / chunk_count; };
  Chunking chunks(chunk_count, 1);
  chunks.chunks = chunk_count;
  chunks.chunk_items = 1;

  std::vector<uint64_t> places(chunk_count * digits);
  for (uint32_t pass = 0; pass < passes; ++pass) {
    const uint32_t shift = pass * digit_bits;
    const auto digit_of = [=](const Record& record) { return record.key >> shift & (digits - 1); };
    for_chunks_on_fresh_threads(chunks, threads, [&](uint32_t, uint64_t c, uint64_t, uint64_t) {
      uint64_t* const counts = &places[c * digits];
      std::fill_n(counts, digits, 0);
      for (uint64_t i = chunk_begin(c), end = chunk_begin(c + 1); i < end; ++i) {
        ++counts[digit_of(records[i])];
      }
    });
    uint64_t next = 0;
    bool is_sorted = false;  // all records have the same digit
    for (uint64_t digit = 0; digit < digits; ++digit) {
      const uint64_t begin = next;
      for (uint64_t c = 0; c < chunk_count; ++c) {
        next += std::exchange(places[c * digits + digit], next);
      }
      is_sorted = is_sorted || next - begin == n;
    }
    if (is_sorted) continue;
    for_chunks_on_fresh_threads(chunks, threads, [&](uint32_t, uint64_t c, uint64_t, uint64_t) {
      uint64_t* const to = &places[c * digits];
      for (uint64_t i = chunk_begin(c), end = chunk_begin(c + 1); i < end; ++i) {
        std::memcpy(static_cast<void*>(buffer + to[digit_of(records[i])]++),
                    static_cast<const void*>(records + i), sizeof(Record));
      }
    });
    std::swap(records, buffer);
  }
  return records;
}

}  // namespace zorv
