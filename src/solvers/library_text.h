// Answers to constant questions about the library and the machine it runs on.
#pragma once

#include <string>

namespace zorv {

// Keys: "compilation_date", "author", "version", "cpu_name", "cpu_threads", "total_ram",
// "hostname". Any other key, or null, gives "Invalid string parameter".
std::string library_text(const char* key);

}  // namespace zorv
