#include "solvers/host_info.h"

#include <gtest/gtest.h>
#include <regex.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "solvers/cpu_parts.h"
#include "solvers/library_text.h"
#include "solvers/search_result.h"
#include "zorv/zorv.h"

namespace zorv {
namespace {

using namespace std::string_literals;

using Files = std::vector<std::pair<std::string, std::string>>;  // path, text

std::string no_answer(const char*) { return {}; }

// Sources with files of their own, and no lscpu unless the test brings one.
class FakeHost {
 public:
  explicit FakeHost(const Files& files, std::string (*lscpu)(const char*) = no_answer) {
    std::string pattern = (std::filesystem::temp_directory_path() / "zorv_host_XXXXXX").string();
    sources_.root = mkdtemp(pattern.data());
    sources_.first_line_of = lscpu;
    for (const auto& [path, text] : files) {
      const std::filesystem::path file = sources_.root + path;
      std::filesystem::create_directories(file.parent_path());
      std::ofstream(file) << text;
    }
  }
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;
  ~FakeHost() { std::filesystem::remove_all(sources_.root); }

  operator const HostSources&() const { return sources_; }

 private:
  HostSources sources_;
};

bool matches(const std::string& text, const std::string& pattern) {
  regex_t compiled;
  if (regcomp(&compiled, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) abort();
  const bool hit = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return hit;
}

FakeHost with_file(const char* path, const char* text) { return FakeHost(Files{{path, text}}); }

TEST(HostInfo, OsComesFromTheReleaseFile) {
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {
      {"PRETTY_NAME=\"Debian 12\"\nNAME=Debian\n", "Debian 12"},
      {"NAME=\"X\"\nVERSION=\"1\"\n", "X 1"},
      {"NAME=X\n", "X"},
      {"VERSION='1 (one)'\n", "Linux 1 (one)"},
      {"NAME=X\nPRETTY_NAME=\nVERSION=\"\"\n", "X"},            // empty values do not count
      {"# NAME=no\n\n  NAME = \t'X Y' \r\n no sign\n", "X Y"},  // blanks, comments, other lines
      {"NAME=X\nNAME=Y\n", "Y"},                                // the later one
      {"NAME=\"X'\nVERSION=a=b\n", "\"X' a=b"},                 // unlike quotes, the first sign
      {"NAME=\"\nVERSION=''\n", "\""},                          // one quote is no pair
      {"", "Linux"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(os_info(with_file("/etc/os-release", row.text)), row.expected) << row.text;
  }
  EXPECT_EQ(os_info(FakeHost(Files())), "Linux");
}

TEST(HostInfo, CpuNameComesFromCpuinfo) {
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {
      {"processor\t: 0\nmodel name\t: Some CPU @ 2.40GHz\n", "Some CPU"},
      {"model name : A@B\nmodel name : C\n", "A@B"},
      {"  model name no colon\n  Hardware : BCM2835: rev 2\n", "BCM2835: rev 2"},
      {"Processor : ARMv7 rev 4 (v7l)\n", "ARMv7 rev 4 (v7l)"},
      {"CPU implementer : 0x41\nCPU part : 0xd08\n", "ARM Cortex-A72"},
      {"CPU implementer : 65\nCPU part : 0xd08\nmodel name : Named\n", "Named"},
      {"CPU implementer : 0x41\nCPU part : 0xd05\n\nCPU implementer : 0x41\nCPU part : 0xd0b\n",
       "ARM Cortex-A76"},
      {"CPU implementer : 0x41\nCPU part : 0xd08\nCPU part : odd\n", "ARM Cortex-A72"},
      {"CPU implementer : 0x41\nCPU part : 99999999999999999999999\n", "(unknown CPU)"},
      {"CPU part : 0xd08\n", "(unknown CPU)"},
      {"CPU implementer : 0x41\nCPU part : 0xfff\n", "(unknown CPU)"},
      {"model name :\n", "(unknown CPU)"},
      {"", "(unknown CPU)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(cpu_name(with_file("/proc/cpuinfo", row.text)), row.expected) << row.text;
  }
}

TEST(HostInfo, CpuNameFallsBackToLscpuAndThenToTheDeviceTree) {
  const auto lscpu = [](const char* command) {
    const bool asked = command == "LC_ALL=C LANG=C lscpu 2>/dev/null | grep -i 'Model name'"s;
    return asked ? "Model name:   From: lscpu "s : ""s;
  };
  const Files board = {{"/sys/firmware/devicetree/base/model", "Board 4\0"s}};
  EXPECT_EQ(cpu_name(FakeHost(board, lscpu)), "From: lscpu");
  EXPECT_EQ(cpu_name(FakeHost(board, [](const char*) { return "no colon"s; })), "Board 4");
  EXPECT_EQ(cpu_name(FakeHost(board)), "Board 4");
  EXPECT_EQ(cpu_name(FakeHost(Files())), "(unknown CPU)");
}

TEST(HostInfo, CpuPartsAreFoundByBothNumbers) {
  const struct {
    unsigned long implementer, part;
    const char* name;
  } rows[] = {
      {0x41, 0xD03, "ARM Cortex-A53"},
      {0x41, 0xD0C, "ARM Neoverse-N1"},
      {0x41, 0xD40, "ARM Neoverse-V1"},
      {0x41, 0xD49, "ARM Neoverse-N2"},
      {0x41, 0xD4F, "ARM Neoverse-V2"},
      {0x41, 0xD84, "ARM Neoverse-V3"},
      {0x41, 0xD87, "ARM Cortex-A725"},
      {0x51, 0x800, "Qualcomm Kryo 260"},
      {0x51, 0x805, "Qualcomm Kryo 680"},
      {0x61, 0x22, "Apple Icestorm-M1"},
      {0x61, 0x31, "Apple Everest-M3"},
      {0xC0, 0xAC3, "Ampere Altra"},
      {0xC0, 0xAC4, "Ampere Altra Max"},
      {0x41, 0xAC3, ""},
      {0xC0, 0xD03, ""},
      {0, 0, ""},
  };
  for (const auto& row : rows) EXPECT_EQ(cpu_part_name(row.implementer, row.part), row.name);

  std::set<std::string_view> names;
  for (unsigned long part = 0; part <= 0xFFF; ++part) names.insert(cpu_part_name(0x41, part));
  EXPECT_EQ(names.size(), 31u);  // thirty different ones and the empty text
}

TEST(HostInfo, MaxClockTakesTheFirstSourceThatAnswers) {
  const std::string folder = "/sys/devices/system/cpu/cpu0/cpufreq/";
  const Files cpuinfo = {{"/proc/cpuinfo", "cpu MHz : 800.0\n\ncpu MHz\t: 3200.5\ncpu MHz : x\n"}};
  Files scaling = cpuinfo;
  scaling.emplace_back(folder + "scaling_max_freq", "2000000\n");
  Files both = scaling;
  both.emplace_back(folder + "cpuinfo_max_freq", "3400000\n");
  Files broken = scaling;
  broken.emplace_back(folder + "cpuinfo_max_freq", "unknown\n");
  const auto lscpu = [](const char*) { return "CPU max MHz:  4100.0000"s; };
  const auto zero = [](const char*) { return "CPU max MHz: 0"s; };

  EXPECT_DOUBLE_EQ(cpu_max_ghz(FakeHost(both, lscpu)).value(), 3.4);
  EXPECT_DOUBLE_EQ(cpu_max_ghz(FakeHost(scaling, lscpu)).value(), 2.0);
  EXPECT_DOUBLE_EQ(cpu_max_ghz(FakeHost(broken, lscpu)).value(), 2.0);
  EXPECT_DOUBLE_EQ(cpu_max_ghz(FakeHost(cpuinfo, lscpu)).value(), 4.1);
  EXPECT_DOUBLE_EQ(cpu_max_ghz(FakeHost(cpuinfo, zero)).value(), 3.2005);
  EXPECT_FALSE(cpu_max_ghz(FakeHost(Files())).has_value());
}

TEST(HostInfo, CoresAreDifferentPairsOfPackageAndCore) {
  Files topology;
  const auto add_cpu = [&](int cpu, const std::string& package, const std::string& core) {
    const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/";
    topology.emplace_back(folder + "physical_package_id", package);
    topology.emplace_back(folder + "core_id", core);
  };
  add_cpu(0, "0\n", "0\n");
  add_cpu(1, "0\n", "0\n");  // the second thread of a core
  add_cpu(2, "0\n", "1\n");
  add_cpu(3, "1\n", "0\n");
  add_cpu(4, "1\n", "?\n");
  add_cpu(5, "2\n", "7\n");
  const FakeHost host(topology);
  EXPECT_EQ(physical_core_count(5, host), 3u);
  EXPECT_EQ(physical_core_count(3, host), 2u);
  EXPECT_FALSE(physical_core_count(0, host).has_value());
  EXPECT_FALSE(physical_core_count(-1, host).has_value());

  const struct {
    const char* text;
    std::size_t cores;
  } rows[] = {
      {"physical id : 0\ncore id : 0\n\nphysical id : 0\ncore id : 1\n", 2},
      {"core id : 0\nphysical id : 0\n\nphysical id : 0\ncore id : 0\n\n", 1},
      {"physical id : 0\n\ncore id : 1\n\nphysical id : 3\ncore id : 1\n", 1},  // halves of blocks
  };
  for (const auto& row : rows) {
    EXPECT_EQ(physical_core_count(8, with_file("/proc/cpuinfo", row.text)), row.cores) << row.text;
  }
  EXPECT_FALSE(physical_core_count(8, with_file("/proc/cpuinfo", "core id : 1\n")).has_value());
}

TEST(HostInfo, CpuTextNamesWhatIsUnknown) {
  EXPECT_EQ(cpu_text("CPU", 3.4, 4, 8), "CPU  (max 3.40 GHz, 4 cores, 8 threads)");
  EXPECT_EQ(cpu_text("CPU", {}, {}, 8), "CPU  (max (unknown) GHz, (unknown) cores, 8 threads)");
  EXPECT_EQ(cpu_text("CPU", 2.999, 1, 0), "CPU  (max 3.00 GHz, 1 cores)");
  EXPECT_EQ(cpu_text("CPU", 2.0, 1, -1), "CPU  (max 2.00 GHz, 1 cores)");
}

TEST(HostInfo, EqualGpusAreCounted) {
  EXPECT_EQ(gpu_text({"B", "A", "A"}), "A x2, B x1");
  EXPECT_EQ(gpu_text({"A"}), "A x1");
  EXPECT_EQ(gpu_text({}), "(none)");
}

TEST(HostInfo, GpusWithAnErrorAreSkippedAndTheLibraryIsShutDown) {
  static int open = 0;
  static int devices[4];
  GpuLibrary library = {};
  library.init = [] { return ++open, 0; };
  library.shutdown = [] { return --open, 0; };
  library.device_count = [](unsigned* count) { return *count = 4, 0; };
  library.device_by_index = [](unsigned index, void** device) {
    *device = &devices[index];
    return index == 1 ? 999 : 0;
  };
  library.device_name = [](void* device, char* name, unsigned capacity) {
    EXPECT_EQ(capacity, 256u);
    if (device == &devices[2]) return 999;
    // The last device fills the buffer and leaves no room for the end.
    std::memset(name, device == &devices[3] ? 'x' : 0, capacity);
    if (device == &devices[0]) std::strcpy(name, "GPU");
    return 0;
  };
  EXPECT_EQ(gpu_names(library), (std::vector<std::string>{"GPU", std::string(255, 'x')}));
  EXPECT_EQ(open, 0);

  library.device_count = [](unsigned* count) { return *count = 4, 1; };
  EXPECT_TRUE(gpu_names(library).empty());
  EXPECT_EQ(open, 0);

  library.init = [] { return 1; };  // then there is nothing to shut down
  EXPECT_TRUE(gpu_names(library).empty());
  EXPECT_EQ(open, 0);
}

TEST(HostInfo, ResultsListTheHostInAFixedOrder) {
  SearchResult result;
  add_info(result, "run_time", "1.0");
  add_host_info(result);
  ASSERT_EQ(result.info.size(), 5u);
  const char* const keys[] = {"run_time", "os", "cpu", "gpu", "ram"};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(result.info[i].key, keys[i]);
    EXPECT_FALSE(result.info[i].value.empty()) << keys[i];
  }
  EXPECT_TRUE(matches(result.info[4].value, "[0-9]+\\.[0-9]{3} GiB"));
  EXPECT_TRUE(matches(result.info[2].value, ".*  \\(max .* GHz, .* cores.*\\)"));
}

TEST(HostInfo, OnlyTheFirstResultStartsProcesses) {
  SearchResult first, second;
  add_host_info(first);
  rusage before, after;
  getrusage(RUSAGE_CHILDREN, &before);
  add_host_info(second);
  getrusage(RUSAGE_CHILDREN, &after);
  EXPECT_EQ(before.ru_minflt, after.ru_minflt);  // every child touches pages
  EXPECT_EQ(first.info[1].value, second.info[1].value);
}

TEST(LibraryText, AnswersItsKeysAndRefusesOthers) {
  const struct {
    const char* key;
    std::string pattern;  // of the answer
  } rows[] = {
      {"compilation_date", "[A-Z][a-z]{2} [ 123][0-9] 20[0-9]{2}"},
      {"author", "The zorv developers"},
      {"version", "20[0-9]{2}\\.[0-9]{2}\\.[0-9]{2}"},
      {"cpu_name", ".+"},
      {"cpu_threads", std::to_string(sysconf(_SC_NPROCESSORS_ONLN))},
      {"total_ram", "[0-9]+\\.[0-9]{3} GiB"},
      {"hostname", ".+"},
      {"", "Invalid string parameter"},
      {"Version", "Invalid string parameter"},
      {"version ", "Invalid string parameter"},
      {nullptr, "Invalid string parameter"},
  };
  for (const auto& row : rows) {
    EXPECT_TRUE(matches(library_text(row.key), row.pattern))
        << (row.key ? row.key : "null") << ": " << library_text(row.key);
    EXPECT_EQ(zorv_const_str(row.key), library_text(row.key));
  }
}

TEST(LibraryText, EachThreadKeepsItsOwnText) {
  const char* here = zorv_const_str("author");
  std::thread([] { EXPECT_STREQ(zorv_const_str(nullptr), "Invalid string parameter"); }).join();
  EXPECT_STREQ(here, "The zorv developers");
}

}  // namespace
}  // namespace zorv
