#pragma once

#include <string_view>

namespace varnlog::exports {

/// Where a writer's text goes. What cannot be written is thrown.
class TextSink {
 public:
  virtual ~TextSink() = default;
  virtual void Write(std::string_view text) = 0;
};

}  // namespace varnlog::exports
