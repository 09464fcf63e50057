#include "solvers/cpu_parts.h"

#include <algorithm>
#include <iterator>

namespace zorv {

namespace {

struct CpuPart {
  unsigned long implementer;
  unsigned long part;
  std::string_view name;
};

constexpr CpuPart kCpuParts[] = {
    {0x41, 0xD03, "ARM Cortex-A53"},    {0x41, 0xD04, "ARM Cortex-A35"},
    {0x41, 0xD05, "ARM Cortex-A55"},    {0x41, 0xD07, "ARM Cortex-A57"},
    {0x41, 0xD08, "ARM Cortex-A72"},    {0x41, 0xD09, "ARM Cortex-A73"},
    {0x41, 0xD0A, "ARM Cortex-A75"},    {0x41, 0xD0B, "ARM Cortex-A76"},
    {0x41, 0xD0C, "ARM Neoverse-N1"},   {0x41, 0xD0D, "ARM Cortex-A77"},
    {0x41, 0xD40, "ARM Neoverse-V1"},   {0x41, 0xD41, "ARM Cortex-A78"},
    {0x41, 0xD42, "ARM Cortex-A78AE"},  {0x41, 0xD44, "ARM Cortex-X1"},
    {0x41, 0xD46, "ARM Cortex-A510"},   {0x41, 0xD47, "ARM Cortex-A710"},
    {0x41, 0xD48, "ARM Cortex-X2"},     {0x41, 0xD49, "ARM Neoverse-N2"},
    {0x41, 0xD4A, "ARM Neoverse-E1"},   {0x41, 0xD4B, "ARM Cortex-A78C"},
    {0x41, 0xD4C, "ARM Cortex-X1C"},    {0x41, 0xD4D, "ARM Cortex-A715"},
    {0x41, 0xD4E, "ARM Cortex-X3"},     {0x41, 0xD4F, "ARM Neoverse-V2"},
    {0x41, 0xD80, "ARM Cortex-A520"},   {0x41, 0xD81, "ARM Cortex-A720"},
    {0x41, 0xD82, "ARM Cortex-X4"},     {0x41, 0xD84, "ARM Neoverse-V3"},
    {0x41, 0xD85, "ARM Cortex-X925"},   {0x41, 0xD87, "ARM Cortex-A725"},
    {0x51, 0x800, "Qualcomm Kryo 260"}, {0x51, 0x801, "Qualcomm Kryo 280"},
    {0x51, 0x802, "Qualcomm Kryo 385"}, {0x51, 0x803, "Qualcomm Kryo 485"},
    {0x51, 0x804, "Qualcomm Kryo 585"}, {0x51, 0x805, "Qualcomm Kryo 680"},
    {0x61, 0x22, "Apple Icestorm-M1"},  {0x61, 0x23, "Apple Firestorm-M1"},
    {0x61, 0x28, "Apple Blizzard-M2"},  {0x61, 0x29, "Apple Avalanche-M2"},
    {0x61, 0x30, "Apple Sawtooth-M3"},  {0x61, 0x31, "Apple Everest-M3"},
    {0xC0, 0xAC3, "Ampere Altra"},      {0xC0, 0xAC4, "Ampere Altra Max"},
};

}  // namespace

std::string_view cpu_part_name(unsigned long implementer, unsigned long part) {
  const auto hit = std::find_if(
      std::begin(kCpuParts), std::end(kCpuParts),
      [&](const CpuPart& row) { return row.implementer == implementer && row.part == part; });
  return hit == std::end(kCpuParts) ? std::string_view() : hit->name;
}

}  // namespace zorv
