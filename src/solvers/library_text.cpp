#include "solvers/library_text.h"

#include <string_view>

#include "solvers/host_info.h"

namespace zorv {

namespace {

struct Answer {
  std::string_view key;
  std::string (*text)();
};

constexpr Answer kAnswers[] = {
    {"compilation_date", [] { return std::string(__DATE__); }},
    {"author", [] { return std::string("The zorv developers"); }},
    {"version", [] { return std::string(ZORV_VERSION); }},
    {"cpu_name", [] { return cpu_name(); }},
    {"cpu_threads", [] { return std::to_string(online_cpu_count()); }},
    {"total_ram", [] { return ram_info(); }},
    {"hostname", [] { return host_name(); }},
};

}  // namespace

std::string library_text(const char* key) {
  if (key != nullptr) {
    for (const Answer& answer : kAnswers) {
      if (answer.key == key) return answer.text();
    }
  }
  return "Invalid string parameter";
}

}  // namespace zorv
