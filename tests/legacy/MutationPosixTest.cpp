#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <sys/resource.h>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/LogExamination.h"
#include "tests/legacy/Samples.h"

namespace varnlog::legacy {
namespace {

using Random = std::mt19937_64;

std::size_t Below(Random& random, std::size_t end) {
  return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
}

// Ways in which disks, networks and people damage a file.
class Damage {
 public:
  Damage(std::string& content, Random& random)
      : content_(content), random_(random), pageSize_(content[0x14] == 0 ? 2048 : 4096) {}

  // True when the file was cut.
  bool Do() {
    switch (Below(random_, 8)) {
      case 0:
        return Truncate();
      case 1:
        return FlipBits(0, content_.size(), 1 + Below(random_, 60));
      case 2:
        return Overwrite(PageStart(), 16);
      case 3:
        return FlipBits(DefinitionStart(), pageSize_, 1 + Below(random_, 8));
      case 4:
        return SetNumber(Below(random_, content_.size() / 4) * 4);
      case 5:
        return ZeroPage();
      case 6:
        return SwapPages();
      default:
        return SetNumber(DefinitionStart() + Below(random_, 128));
    }
  }

 private:
  std::size_t PageStart() { return Below(random_, content_.size() / pageSize_) * pageSize_; }

  // One of the pages that define something, when chance finds one.
  std::size_t DefinitionStart() {
    std::size_t start = PageStart();
    for (int i = 0; i < 50 && content_[start] != 2; ++i) start = PageStart();
    return start;
  }

  bool Truncate() {
    content_.resize(Below(random_, content_.size()));
    return true;
  }

  bool FlipBits(std::size_t start, std::size_t length, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      content_[start + Below(random_, length)] ^= static_cast<char>(1U << Below(random_, 8));
    }
    return false;
  }

  bool Overwrite(std::size_t start, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) content_[start + i] = static_cast<char>(Below(random_, 256));
    return false;
  }

  bool SetNumber(std::size_t at) {
    constexpr std::uint32_t kNumbers[] = {0,      1,          0x7f,       0xff,      0x7fff,
                                          0xffff, 0x80000000, 0x7fffffff, 0xffffffff};
    const std::uint32_t number = kNumbers[Below(random_, std::size(kNumbers))];
    const std::size_t width = 1 + Below(random_, 4);
    for (std::size_t i = 0; i < width && at + i < content_.size(); ++i) {
      content_[at + i] = static_cast<char>(number >> (8 * i));
    }
    return false;
  }

  bool ZeroPage() {
    std::fill_n(content_.begin() + static_cast<std::ptrdiff_t>(PageStart()), pageSize_, '\0');
    return false;
  }

  bool SwapPages() {
    const auto a = content_.begin() + static_cast<std::ptrdiff_t>(PageStart());
    const auto b = content_.begin() + static_cast<std::ptrdiff_t>(PageStart());
    if (a != b) std::swap_ranges(a, a + static_cast<std::ptrdiff_t>(pageSize_), b);
    return false;
  }

  std::string& content_;
  Random& random_;
  std::size_t pageSize_;
};

// Reads everything there is, also what is no log.
LogExamination ReadAll(const std::string& content) {
  if (const auto database = JetDatabase::Open(samples::AsBytes(content))) {
    for (const std::string& name : database->TableNames()) {
      FaultList faults;
      if (const auto table = database->Table(name)) {
        database->Read(
            *table, [](const JetRow&) { return true; }, faults);
      }
    }
  }
  return Examine(samples::AsBytes(content));
}

long MutationCount() {
  const char* count = std::getenv("VARNLOG_MUTATIONS");
  return count == nullptr ? 2000 : std::strtol(count, nullptr, 10);
}

// Kilobytes at most resident so far.
long PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

struct Original {
  std::string name;
  std::string content;
  std::uint64_t rows = 0;
};

std::vector<Original> Originals() {
  std::vector<Original> originals;
  for (const auto& entry : std::filesystem::directory_iterator(samples::Folder())) {
    if (entry.path().extension() != ".mdb") continue;
    Original original{entry.path().filename().string(), samples::Read(entry.path())};
    original.rows = Examine(samples::AsBytes(original.content)).exposures.read;
    if (IsJet(samples::AsBytes(original.content))) originals.push_back(std::move(original));
  }
  std::sort(originals.begin(), originals.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return originals;
}

TEST(Mutations, NeitherCrashNorHangNorEatMemoryNorPassForSoundWhenCut) {
  const std::vector<Original> originals = Originals();
  ASSERT_GE(originals.size(), 13U);
  [[maybe_unused]] const long memoryBefore = PeakMemory();
  std::chrono::duration<double> longest{};
  for (long seed = 0; seed < MutationCount(); ++seed) {
    Random random(static_cast<std::uint64_t>(seed));
    const Original& original = originals[static_cast<std::size_t>(seed) % originals.size()];
    std::string content = original.content;
    const bool isCut = Damage(content, random).Do();
    const auto start = std::chrono::steady_clock::now();
    const LogExamination found = ReadAll(content);
    longest = std::max(longest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start));
    if (isCut && found.verdict == LogExamination::Verdict::kSound) {
      EXPECT_EQ(found.exposures.read, original.rows) << original.name << ", seed " << seed;
    }
  }
  EXPECT_LT(longest.count(), 1.0);
  // The sanitizers keep freed memory back on purpose.
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LT(PeakMemory() - memoryBefore, 64 * 1024);
#endif
}

}  // namespace
}  // namespace varnlog::legacy
