#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "platform/Files.h"
#include "platform/Process.h"
#include "platform/SharedLibrary.h"
#include "tests/Paths.h"

namespace varnlog::platform {
namespace {

TEST(SystemLauncher, StartsWithoutWaiting) {
  const std::filesystem::path mark =
      std::filesystem::temp_directory_path() / ("gestartet mit Ä " + std::to_string(std::rand()));
  SystemLauncher launcher;
  const auto before = std::chrono::steady_clock::now();
  ASSERT_TRUE(launcher.Start({"sh", "-c", "sleep 1; : > \"$0\"", mark.string()}));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
  for (int i = 0; i < 100 && !std::filesystem::exists(mark); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(std::filesystem::remove(mark));
}

TEST(SystemLauncher, SaysWhenThereIsNoSuchProgram) {
  SystemLauncher launcher;
  EXPECT_FALSE(launcher.Start({"no such program anywhere"}));
  EXPECT_FALSE(launcher.Start({}));
}

}  // namespace
}  // namespace varnlog::platform
