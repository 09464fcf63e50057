#include "solvers/library_result.h"

namespace zorv {

Klb5SolutionBuffer::~Klb5SolutionBuffer() {
  std::free(record_.energy.limbs);
  if (record_.info == nullptr) return;
  for (InfoPair* pair = record_.info; pair->key != nullptr; ++pair) {
    std::free(pair->key);
    std::free(pair->value);
  }
  std::free(record_.info);
}

void add_info_list(SearchResult& result, const InfoPair* list) {
  if (list == nullptr) return;
  for (; list->key != nullptr; ++list) {
    add_info(result, list->key, list->value != nullptr ? list->value : "");
  }
}

void add_reported_info(SearchResult& result, void* solver, InfoPair* (*get_info)(void*),
                       void (*free_info)(InfoPair*)) {
  if (get_info == nullptr) return;
  InfoPair* list = get_info(solver);
  if (list == nullptr) return;
  add_info_list(result, list);
  if (free_info != nullptr) free_info(list);
}

}  // namespace zorv
