#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace varnlog::report {

/// One line of a design file taken apart: WHAT NAME SETTING=VALUE ..., or WHAT NAME = anything.
class DesignLine {
 public:
  /// Throws DesignError.
  DesignLine(std::string_view text, int number);

  /// Blank or a comment.
  [[nodiscard]] bool IsEmpty() const { return what_.empty(); }
  [[nodiscard]] std::string_view What() const { return what_; }
  [[nodiscard]] const std::string& Name() const { return name_; }
  /// What stands behind NAME =.
  [[nodiscard]] const std::string& Rest() const { return rest_; }

  /// "" when the setting is not given.
  [[nodiscard]] std::string Text(std::string_view setting) const;
  /// Throws DesignError for what is no number of 0 to 10000.
  [[nodiscard]] double Number(std::string_view setting, double missing = 0) const;

  /// A setting that nobody asked for is a mistake: throws DesignError.
  void RequireAllUsed() const;
  [[noreturn]] void Fail(const std::string& what) const;

 private:
  void ReadSettings(std::string_view text);

  int number_;
  std::string what_;
  std::string name_;
  std::string rest_;
  std::map<std::string, std::string, std::less<>> settings_;
  mutable std::set<std::string, std::less<>> used_;
};

}  // namespace varnlog::report
