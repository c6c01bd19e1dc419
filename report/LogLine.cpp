#include "report/LogLine.h"

namespace varnlog::report {

FormulaValue LogLine::Field(std::string_view name) const {
  if (name == "laterEntry") return entry_;
  const dao::Field& field = FieldOf(name);
  if (rows_.IsEOF() || rows_.IsBOF() || field.IsNull()) return std::string();
  switch (field.Type()) {
    case dao::FieldType::kDate:
      return field.Date();
    case dao::FieldType::kLong:
      return static_cast<double>(field.Number());
    default:
      return std::string(field.Text());
  }
}

const dao::Field& LogLine::FieldOf(std::string_view name) const {
  if (const auto known = fields_.find(name); known != fields_.end()) return *known->second;
  try {
    return *fields_.emplace(name, &rows_.Fields(name)).first->second;
  } catch (const dao::EngineError& error) {
    throw FormulaError("{dao." + std::string(name) + "}: " + error.what());
  }
}

}  // namespace varnlog::report
