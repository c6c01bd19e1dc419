#pragma once

#include "intake/CodeMappings.h"

namespace varnlog::test {

class FakeToothScheme final : public intake::ToothScheme {
 public:
  explicit FakeToothScheme(bool isUS = false) : isUS_(isUS) {}
  [[nodiscard]] bool SchemeUS() const override { return isUS_; }

 private:
  bool isUS_;
};

}  // namespace varnlog::test
