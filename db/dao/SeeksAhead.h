#pragma once

#include <span>

#include "platform/DateTime.h"

namespace varnlog::dao {

/// What a record set of a table is, too, where each row that is sought for costs a way to a server and back.
class SeeksAhead {
 public:
  virtual ~SeeksAhead() = default;
  /// Seek will be asked for rows with these dates next, in this order, and those with the dates `changed`
  /// will be changed then. The index has one date by which its rows are stored. Throws EngineError.
  virtual void Expect(std::span<const platform::DateTime> dates,
                      std::span<const platform::DateTime> changed) = 0;

 protected:
  SeeksAhead() = default;
  SeeksAhead(const SeeksAhead&) = default;
  SeeksAhead& operator=(const SeeksAhead&) = default;
};

}  // namespace varnlog::dao
