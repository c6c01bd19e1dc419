#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "tests/faults/Sweep.h"

namespace varnlog::faults {
namespace {

/// Files as bad disks and bad people make them: bytes flipped, overwritten, cut off, doubled, numbers at
/// their limits.
class Vandal {
 public:
  explicit Vandal(std::uint64_t seed) : random_(seed) {}

  [[nodiscard]] std::size_t Below(std::size_t limit) { return random_() % std::max<std::size_t>(limit, 1); }

  void Damage(std::string& bytes) {
    for (std::size_t blows = 1 + Below(4); blows > 0 && !bytes.empty(); --blows) Strike(bytes);
  }

 private:
  void Strike(std::string& bytes) {
    // Most of what is decided on stands at the beginning of a file or a page.
    const std::size_t place = Below(Below(3) == 0 ? std::min<std::size_t>(bytes.size(), 200) : bytes.size());
    const std::size_t length = Below(std::min<std::size_t>(bytes.size() - place, 600));
    switch (Below(6)) {
      case 0:
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << Below(8)));
        break;
      case 1:
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(place), length,
                    static_cast<char>(Below(256)));
        break;
      case 2:
        bytes.resize(place);
        break;
      case 3:
        bytes.insert(place, bytes.substr(place, length));
        break;
      default:
        constexpr std::uint32_t kLimits[] = {0, 1, 0x7f, 0xff, 0x7fff, 0xffff, 0x7fffffff, 0xffffffff};
        for (std::size_t i = 0, number = kLimits[Below(std::size(kLimits))];
             i < 4 && place + i < bytes.size(); ++i, number >>= 8U)
          bytes[place + i] = static_cast<char>(number);
    }
  }
  std::mt19937_64 random_;
};

/// One file of the scenario's beginning is damaged: whatever is made of it, no command crashes, hangs or
/// fails without a word.
std::string Suffers(Scene& scene, std::uint64_t seed) {
  Vandal vandal(seed);
  Files files = scene.Beginning();
  auto victim = files.begin();
  std::advance(victim, vandal.Below(files.size()));
  vandal.Damage(victim->second);
  scene.BeginAnew();
  scene.Has(files);
  for (const std::string command :
       {"check", "list", "update", "compact", "repair", "update",
        "convert --overwrite --partial Old.mdb New.mdb", "check --file Old.mdb"}) {
    if (command.find("Old.mdb") != std::string::npos && !files.contains("Old.mdb")) continue;
    const std::string wrong = WrongEnding(scene.Runs(command));
    if (!wrong.empty()) return victim->first + ", " + command + ": " + wrong;
  }
  return "";
}

class HostileFilesTest : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Faults, HostileFilesTest,
                         testing::Values("update_new", "update_after_removal", "update_after_shift_moved",
                                         "update_late_in_taken", "convert"),
                         [](const auto& name) { return name.param; });

TEST_P(HostileFilesTest, HarmNoCommand) {
  Scene scene(ScenarioNamed(GetParam()));
  ExpectOfSeeds(Findings(std::string("hostile files ") + GetParam()), 600, 8,
                [&](std::uint64_t seed) { return Suffers(scene, seed); });
}

}  // namespace
}  // namespace varnlog::faults
