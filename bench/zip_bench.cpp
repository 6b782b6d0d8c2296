// Reading one member out of a ZIP file of 1,000 members, as a thumbnail does.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "archive/al_memory.h"
#include "archive/al_pk_archive.h"
#include "archive/al_pk_engine.h"
#include "archive/zip_member.h"

namespace fennick {
namespace {

constexpr int kMembers = 1000;
constexpr size_t kMemberSize = 4096;

std::string MemberName(int index) { return "designs/design" + std::to_string(index) + ".dst"; }

// The archive is made once in one Create, its members deflated.
std::string BuildArchive() {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("fennick-zip-bench-" + std::to_string(getpid()) + ".zip")).string();
  std::vector<std::vector<uint8_t>> contents(kMembers, std::vector<uint8_t>(kMemberSize));
  ALEntryList list;
  for (int i = 0; i < kMembers; ++i) {
    for (size_t j = 0; j < kMemberSize; ++j) contents[i][j] = static_cast<uint8_t>((i * 7 + j * j) % 251);
    list.Add(std::make_unique<ALMemory>(MemberName(i), std::span<uint8_t>(contents[i])),
             std::make_unique<ALPkCompressor>(), std::make_unique<ALPkDecompressor>());
  }
  ALPkArchive archive(path);
  if (archive.Create(list) != kMembers) std::fprintf(stderr, "zip bench: %s\n", archive.status.GetStatusDetail());
  return path;
}

void BM_ZipReadOneOfThousand(benchmark::State& state) {
  const std::string path = BuildArchive();
  DesignPath member;
  member.SetZipFile(path);
  member.SplitName(MemberName(kMembers / 2));
  std::vector<uint8_t> bytes;
  for (auto _ : state) {
    if (ReadZipMember(member, bytes) != 0) state.SkipWithError("member not read");
    benchmark::DoNotOptimize(bytes.data());
  }
  std::filesystem::remove(path);
}
BENCHMARK(BM_ZipReadOneOfThousand)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace fennick
