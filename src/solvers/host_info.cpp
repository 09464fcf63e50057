#include "solvers/host_info.h"

#include <dlfcn.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "solvers/cpu_parts.h"
#include "solvers/search_result.h"

namespace zorv {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::size_t kCommandLineBytes = 256;
constexpr std::size_t kGpuNameBytes = 256;

std::string trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return std::string(text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1));
}

// The trimmed text behind the first `mark`, or nothing if there is no mark.
std::optional<std::string> text_after(std::string_view line, char mark) {
  const std::size_t at = line.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  return trim(line.substr(at + 1));
}

std::optional<unsigned long> parse_code(const std::string& text) {
  try {
    return std::stoul(text, nullptr, 0);
  } catch (const std::logic_error&) {  // no number, or one too large
    return std::nullopt;
  }
}

template <typename Number>
std::optional<Number> read_number(const std::string& path) {
  std::ifstream file(path);
  Number number = 0;
  if (!(file >> number)) return std::nullopt;
  return number;
}

std::string print(const char* format, double number) {
  char text[64];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

struct PipeCloser {
  void operator()(FILE* pipe) const { pclose(pipe); }
};

std::string first_output_line(const char* command) {
  const std::unique_ptr<FILE, PipeCloser> pipe(popen(command, "r"));
  char line[kCommandLineBytes];
  if (!pipe || std::fgets(line, sizeof line, pipe.get()) == nullptr) return {};
  const std::string_view text = line;
  return std::string(text.substr(0, text.find('\n')));
}

std::string unquote(std::string value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

bool names_a_cpu(const std::string& line) {
  return line.starts_with("model name") || line.starts_with("Hardware") ||
         line.starts_with("Processor");
}

// The name that /proc/cpuinfo spells out, or the one behind its ID numbers. Where the cores differ
// the last one listed counts, which is a large one on the usual mixed chips.
std::string name_in_cpuinfo(std::istream&& cpuinfo) {
  std::optional<unsigned long> implementer;
  std::optional<unsigned long> part;
  for (std::string raw; std::getline(cpuinfo, raw);) {
    const std::string line = trim(raw);
    const std::optional<std::string> value = text_after(line, ':');
    if (!value) continue;
    if (names_a_cpu(line)) {
      std::string name = value->substr(0, value->find(" @ "));
      if (!name.empty()) return name;
    } else if (line.starts_with("CPU implementer")) {
      if (const auto code = parse_code(*value)) implementer = code;
    } else if (line.starts_with("CPU part")) {
      if (const auto code = parse_code(*value)) part = code;
    }
  }
  return implementer && part ? std::string(cpu_part_name(*implementer, *part)) : std::string();
}

std::string name_in_devicetree(std::istream&& model) {
  std::string line;
  std::getline(model, line);
  if (!line.empty() && line.back() == '\0') line.pop_back();
  return line;
}

// What lscpu says behind the label, or an empty text.
std::string ask_lscpu(const HostSources& sources, const std::string& label) {
  const std::string command = "LC_ALL=C LANG=C lscpu 2>/dev/null | grep -i '" + label + "'";
  return text_after(sources.first_line_of(command.c_str()), ':').value_or("");
}

double largest_mhz_in_cpuinfo(std::istream&& cpuinfo) {
  double largest = 0;
  for (std::string raw; std::getline(cpuinfo, raw);) {
    const std::string line = trim(raw);
    if (!line.starts_with("cpu MHz")) continue;
    largest = std::max(largest, std::strtod(text_after(line, ':').value_or("").c_str(), nullptr));
  }
  return largest;
}

std::size_t cores_in_topology(long cpus, const std::string& root) {
  std::set<std::pair<long, long>> cores;
  for (long cpu = 0; cpu < cpus; ++cpu) {
    const std::string folder =
        root + "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/";
    const auto package = read_number<long>(folder + "physical_package_id");
    const auto core = read_number<long>(folder + "core_id");
    if (package && core) cores.emplace(*package, *core);
  }
  return cores.size();
}

std::size_t cores_in_cpuinfo(std::istream&& cpuinfo) {
  std::set<std::pair<unsigned long, unsigned long>> cores;
  std::optional<unsigned long> package;
  std::optional<unsigned long> core;
  const auto end_block = [&] {
    if (package && core) cores.emplace(*package, *core);
    package = core = std::nullopt;
  };
  for (std::string raw; std::getline(cpuinfo, raw);) {
    const std::string line = trim(raw);
    if (line.empty()) end_block();
    const std::optional<std::string> value = text_after(line, ':');
    if (value && line.starts_with("physical id")) package = parse_code(*value);
    if (value && line.starts_with("core id")) core = parse_code(*value);
  }
  end_block();
  return cores.size();
}

struct LibraryCloser {
  void operator()(void* library) const { dlclose(library); }
};
using LoadedLibrary = std::unique_ptr<void, LibraryCloser>;

template <typename Function>
bool bind(const LoadedLibrary& library, const char* symbol, Function** function) {
  *function = reinterpret_cast<Function*>(dlsym(library.get(), symbol));
  return *function != nullptr;
}

bool bind_all(const LoadedLibrary& library, GpuLibrary* gpu) {
  return bind(library, "nvmlInit_v2", &gpu->init) &&
         bind(library, "nvmlShutdown", &gpu->shutdown) &&
         bind(library, "nvmlDeviceGetCount_v2", &gpu->device_count) &&
         bind(library, "nvmlDeviceGetHandleByIndex_v2", &gpu->device_by_index) &&
         bind(library, "nvmlDeviceGetName", &gpu->device_name);
}

}  // namespace

HostSources::HostSources() : first_line_of(&first_output_line) {}

std::string host_name() {
  const long limit = sysconf(_SC_HOST_NAME_MAX);
  std::string name(limit < 1 ? 256 : static_cast<std::size_t>(limit) + 1, '\0');
  if (gethostname(name.data(), name.size()) != 0) return "(unknown)";
  name.back() = '\0';
  return name.c_str();
}

std::string ram_info() {
  struct sysinfo memory = {};
  if (sysinfo(&memory) != 0) return "(unknown)";
  const double bytes = static_cast<double>(memory.totalram) * memory.mem_unit;
  return bytes == 0 ? "(unknown)" : print("%.3f GiB", bytes / (1 << 30));
}

long online_cpu_count() { return sysconf(_SC_NPROCESSORS_ONLN); }

std::string os_info(const HostSources& sources) {
  std::ifstream release(sources.root + "/etc/os-release");
  std::map<std::string, std::string> values;
  for (std::string raw; std::getline(release, raw);) {
    const std::string line = trim(raw);
    if (line.empty() || line.front() == '#') continue;
    const std::optional<std::string> value = text_after(line, '=');
    if (value) values[trim(line.substr(0, line.find('=')))] = unquote(*value);
  }
  if (!values["PRETTY_NAME"].empty()) return values["PRETTY_NAME"];
  const std::string name = values.contains("NAME") ? values["NAME"] : "Linux";
  return values["VERSION"].empty() ? name : name + " " + values["VERSION"];
}

std::string cpu_name(const HostSources& sources) {
  std::string name = name_in_cpuinfo(std::ifstream(sources.root + "/proc/cpuinfo"));
  if (name.empty()) name = ask_lscpu(sources, "Model name");
  if (name.empty()) {
    name = name_in_devicetree(std::ifstream(sources.root + "/sys/firmware/devicetree/base/model"));
  }
  return name.empty() ? "(unknown CPU)" : name;
}

std::optional<double> cpu_max_ghz(const HostSources& sources) {
  const std::string folder = sources.root + "/sys/devices/system/cpu/cpu0/cpufreq/";
  for (const char* file : {"cpuinfo_max_freq", "scaling_max_freq"}) {
    if (const auto khz = read_number<long long>(folder + file))
      return static_cast<double>(*khz) / 1e6;
  }
  double mhz = std::strtod(ask_lscpu(sources, "CPU max MHz").c_str(), nullptr);
  if (!(mhz > 0)) mhz = largest_mhz_in_cpuinfo(std::ifstream(sources.root + "/proc/cpuinfo"));
  if (!(mhz > 0)) return std::nullopt;
  return mhz / 1000;
}

std::optional<std::size_t> physical_core_count(long cpus, const HostSources& sources) {
  std::size_t cores = cores_in_topology(cpus, sources.root);
  if (cores == 0) cores = cores_in_cpuinfo(std::ifstream(sources.root + "/proc/cpuinfo"));
  if (cores == 0) return std::nullopt;
  return cores;
}

std::string cpu_text(const std::string& name, std::optional<double> max_ghz,
                     std::optional<std::size_t> cores, long cpus) {
  std::string text = name + "  (max " + (max_ghz ? print("%.2f", *max_ghz) : "(unknown)") + " GHz";
  text += ", " + (cores ? std::to_string(*cores) : "(unknown)") + " cores";
  if (cpus > 0) text += ", " + std::to_string(cpus) + " threads";
  return text + ")";
}

std::string cpu_info() {
  const long cpus = online_cpu_count();
  return cpu_text(cpu_name(), cpu_max_ghz(), physical_core_count(cpus), cpus);
}

std::string gpu_text(const std::vector<std::string>& names) {
  std::map<std::string, unsigned> counts;
  for (const std::string& name : names) ++counts[name];
  std::string text;
  for (const auto& [name, count] : counts) {
    if (!text.empty()) text += ", ";
    text += name + " x" + std::to_string(count);
  }
  return text.empty() ? "(none)" : text;
}

std::vector<std::string> gpu_names(const GpuLibrary& library) {
  std::vector<std::string> names;
  if (library.init() != 0) return names;
  unsigned count = 0;
  if (library.device_count(&count) != 0) count = 0;
  for (unsigned index = 0; index < count; ++index) {
    void* device = nullptr;
    char name[kGpuNameBytes] = {};
    if (library.device_by_index(index, &device) != 0) continue;
    if (library.device_name(device, name, sizeof name) != 0) continue;
    name[sizeof name - 1] = '\0';
    names.emplace_back(name);
  }
  library.shutdown();
  return names;
}

std::string gpu_info() {
  LoadedLibrary library(dlopen("libnvidia-ml.so.1", RTLD_LAZY));
  if (!library) library.reset(dlopen("libnvidia-ml.so", RTLD_LAZY));
  GpuLibrary gpu = {};
  if (!library || !bind_all(library, &gpu)) return "(none)";
  return gpu_text(gpu_names(gpu));
}

void add_host_info(SearchResult& result) {
  struct HostFacts {
    const std::string os = os_info(), cpu = cpu_info(), gpu = gpu_info(), ram = ram_info();
  };
  // Never destroyed, so that a search may run as late as another object's destruction.
  static const HostFacts& facts = *new HostFacts;
  add_info(result, "os", facts.os);
  add_info(result, "cpu", facts.cpu);
  add_info(result, "gpu", facts.gpu);
  add_info(result, "ram", facts.ram);
}

}  // namespace zorv
