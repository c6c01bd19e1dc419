#include <memory>

#include <QApplication>
#include <QStyleFactory>
#include <gtest/gtest.h>

namespace {

/// One application for all tests, drawn off the screen in a style that is the same everywhere.
class GuiEnvironment final : public ::testing::Environment {
 public:
  void SetUp() override {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(argc_, argv_);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
  }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

}  // namespace
