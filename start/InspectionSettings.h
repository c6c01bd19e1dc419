#pragma once

#include "core/SettingsStore.h"

namespace varnlog::start {

/// The settings of a run that looks at a log and leaves no trace: they are read, and what is written is
/// forgotten.
class InspectionSettings final : public core::SettingsStore {
 public:
  /// `settings` must outlive it.
  explicit InspectionSettings(const core::SettingsStore& settings) : settings_(settings) {}

  [[nodiscard]] std::int16_t ReadInteger(std::string_view section, std::string_view key,
                                         std::string_view file) const override {
    return settings_.ReadInteger(section, key, file);
  }
  [[nodiscard]] std::string ReadString(std::string_view section, std::string_view key,
                                       std::string_view file) const override {
    return settings_.ReadString(section, key, file);
  }
  bool WriteString(std::string_view /*section*/, std::string_view /*key*/, std::string_view /*value*/,
                   std::string_view /*file*/) override {
    return true;
  }

 private:
  const core::SettingsStore& settings_;
};

}  // namespace varnlog::start
