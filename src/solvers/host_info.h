// What a search result tells about the machine that computed it.
//
// Every query asks the operating system afresh. A source that is missing or unreadable is passed
// over, and where no source is left the answer is a fixed word, so no query ever fails. Some start
// `lscpu` or load the GPU vendor's library, which takes many times as long as a short search: what
// all results tell is asked for once a process.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zorv {

struct SearchResult;

// Where the queries look. The defaults are the machine itself; tests bring files of their own.
struct HostSources {
  std::string root;  // put before every path that is read
  // The first line that a shell command writes, without its end; empty if it writes none.
  std::string (*first_line_of)(const char* command);

  HostSources();
};

// The entry points of the GPU vendor's management library. Each call returns 0 for success.
struct GpuLibrary {
  int (*init)();
  int (*shutdown)();
  int (*device_count)(unsigned* count);
  int (*device_by_index)(unsigned index, void** device);
  int (*device_name)(void* device, char* name, unsigned capacity);
};

std::string host_name();                                // or "(unknown)"
std::string ram_info();                                 // "15.615 GiB", or "(unknown)"
long online_cpu_count();                                // as the system says it, so -1 if it cannot
std::string os_info(const HostSources& sources = {});   // distribution and version, or "Linux"
std::string cpu_name(const HostSources& sources = {});  // or "(unknown CPU)"
std::optional<double> cpu_max_ghz(const HostSources& sources = {});

// Counts the different pairs of package and core among the logical CPUs 0 to `cpus` - 1.
std::optional<std::size_t> physical_core_count(long cpus, const HostSources& sources = {});

// "NAME  (max 3.40 GHz, 4 cores, 8 threads)"; a count of threads below 1 is left out.
std::string cpu_text(const std::string& name, std::optional<double> max_ghz,
                     std::optional<std::size_t> cores, long cpus);
std::string cpu_info();

// Equal names are counted and sorted: "A x2, B x1"; "(none)" without a GPU.
std::string gpu_text(const std::vector<std::string>& names);
std::vector<std::string> gpu_names(const GpuLibrary& library);
std::string gpu_info();

// Appends "os", "cpu", "gpu" and "ram", in this order, as they were when the first result was made.
void add_host_info(SearchResult& result);

}  // namespace zorv
