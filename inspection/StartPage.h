#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnlog::inspection {

/// A page that opens in every browser and needs nothing but itself.
struct StartPage {
  std::string_view language;  // as in the settings
  std::string title;
  std::vector<std::pair<std::string, std::string>> facts;  // label and value
  std::vector<std::pair<std::string, std::string>> files;  // name and what it is
};

/// As HTML; whatever the texts look like, they stay texts.
[[nodiscard]] std::string ToHtml(const StartPage& page);

}  // namespace varnlog::inspection
