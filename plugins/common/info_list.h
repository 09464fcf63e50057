// Facts about a search as the contract wants them: lists in blocks of malloc.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "zorv/solver_abi.h"

namespace zorv::plugin {

using Facts = std::vector<std::pair<std::string, std::string>>;

// A list that ends with a null key, and its release; null is accepted there.
InfoPair* make_info_list(const Facts& facts);
void free_info_list(InfoPair* list);

}  // namespace zorv::plugin
