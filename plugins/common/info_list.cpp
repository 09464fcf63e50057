#include "common/info_list.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace zorv::plugin {

namespace {

void* allocate(size_t bytes) {
  void* block = std::malloc(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

char* copy_text(const std::string& text) {
  const size_t bytes = text.size() + 1;
  return static_cast<char*>(std::memcpy(allocate(bytes), text.c_str(), bytes));
}

}  // namespace

InfoPair* make_info_list(const Facts& facts) {
  auto* list = static_cast<InfoPair*>(allocate((facts.size() + 1) * sizeof(InfoPair)));
  InfoPair* pair = list;
  for (const auto& [key, value] : facts) *pair++ = {copy_text(key), copy_text(value)};
  *pair = {nullptr, nullptr};
  return list;
}

void free_info_list(InfoPair* list) {
  for (InfoPair* pair = list; pair != nullptr && pair->key != nullptr; ++pair) {
    std::free(pair->key);
    std::free(pair->value);
  }
  std::free(list);
}

}  // namespace zorv::plugin
