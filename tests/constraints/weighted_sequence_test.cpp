#include "constraints/weighted_sequence.h"

#include <gtest/gtest.h>

#include "support/random.h"

namespace zorv::test {
namespace {

using Plain = std::vector<std::pair<uint32_t, coeff_t>>;

TEST(WeightedSequence, IsAVectorThatSharesWhatItCan) {
  Random random(1);
  SequenceTable table("full");
  std::vector<std::pair<Sequence, Plain>> built(1);
  for (int step = 0; step < 2000; ++step) {
    auto [sequence, plain] = built[below(random, built.size())];
    const auto& [other, other_plain] = built[below(random, built.size())];
    const uint64_t nodes = table.node_count();
    uint64_t most_new = 1;
    switch (below(random, 4)) {
      case 0:
        if (plain.size() + other_plain.size() > 300) continue;
        most_new = std::min(plain.size(), other_plain.size());
        sequence = table.joined(sequence, other);
        plain.insert(plain.end(), other_plain.begin(), other_plain.end());
        break;
      case 1:
        most_new = plain.size();
        sequence = table.scaled(sequence, -3);
        for (auto& [what, weight] : plain) weight *= -3;
        break;
      default:
        sequence = table.pushed(sequence, static_cast<uint32_t>(step % 5), step % 3);
        plain.emplace_back(step % 5, step % 3);
    }
    EXPECT_LE(table.node_count() - nodes, most_new);
    Plain read;
    table.for_each(sequence,
                   [&](const SequenceNode& item) { read.emplace_back(item.what, item.weight); });
    ASSERT_EQ(read, plain);
    ASSERT_EQ(table.length(sequence), plain.size());
    for (uint64_t i = 0; i < plain.size(); ++i) {
      ASSERT_EQ(table.at(sequence, i).what, plain[i].first);
      ASSERT_EQ(table.at(sequence, i).weight, plain[i].second);
    }
    built.emplace_back(sequence, std::move(plain));
  }
}

}  // namespace
}  // namespace zorv::test
