#include "model/dense_index.h"

#include "core/fatal.h"
#include "core/var_registry.h"
#include "integer/int_var.h"
#include "model/chunk_loop.h"

namespace zorv {

UsedVariables::UsedVariables()
    : vars_(var_count(), 0), atoms_(IntVarRegistry::instance().next_index, 0) {}

void UsedVariables::check_and_mark(uint32_t literal) {
  if (const char* text = complaint(literal)) fatal(text);
  mark(literal);
}

void number_variables(const UsedVariables& used, uint32_t threads, ModelImpl& m) {
  const std::vector<uint8_t>& flags = used.vars();
  m.index_map.assign(flags.size(), kNoLiteral);

  const Chunking chunking(flags.size(), threads);
  std::vector<uint32_t> start(chunking.chunks + 1, 0);
  for_each_chunk(chunking, [&](uint64_t c) {
    uint32_t n = 0;
    for (uint64_t id = chunking.begin(c); id < chunking.end(c); ++id) n += flags[id];
    start[c + 1] = n;
  });
  for (uint64_t c = 0; c < chunking.chunks; ++c) start[c + 1] += start[c];

  m.variables.resize(start.back());
  for_each_chunk(chunking, [&](uint64_t c) {
    uint32_t next = start[c];
    for (uint64_t id = chunking.begin(c); id < chunking.end(c); ++id) {
      if (flags[id] == 0) continue;
      m.index_map[id] = next;
      m.variables[next] = static_cast<uint32_t>(id);
      ++next;
    }
  });
}

void number_atoms(const UsedVariables& used, ModelImpl& m) {
  const std::vector<uint8_t>& flags = used.atoms();
  m.int_index_map.assign(flags.size(), kNoLiteral);
  for (uint32_t atom = 0; atom < flags.size(); ++atom) {
    if (flags[atom] == 0) continue;
    const IntVarGroup* group = IntVarRegistry::instance().find(atom);
    if (group == nullptr) fatal("Model: integer variable bounds lookup failed.");
    m.int_index_map[atom] = static_cast<uint32_t>(m.int_atoms.size());
    m.int_atoms.push_back(atom);
    m.int_lo.push_back(group->lo);
    m.int_hi.push_back(group->hi);
  }
}

}  // namespace zorv
