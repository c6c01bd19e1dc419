#include "report/ReportErrors.h"

#include "core/EngineMessages.h"
#include "report/BandLayout.h"

namespace varnlog::report {

using core::FilledText;
using core::literals::operator""_key;

std::string ReportErrorText(const core::TextLookup& texts, const std::exception& error) {
  if (const auto* save = dynamic_cast<const SaveError*>(&error))
    return FilledText(texts, "DRS_ERR_SAVE"_key, {{"strFile", save->file()}, {"strError", error.what()}});
  if (const auto* formula = dynamic_cast<const NamedFormulaError*>(&error))
    return FilledText(texts, "DRS_ERR_FORMULA"_key,
                      {{"strFormula", formula->name()}, {"strError", error.what()}});
  if (dynamic_cast<const PrintError*>(&error) != nullptr)
    return FilledText(texts, "DRS_ERR_PRINT"_key, {{"strError", error.what()}});
  if (const auto* engine = dynamic_cast<const dao::EngineError*>(&error))
    return core::EngineErrorText(texts, *engine);
  return error.what();
}

}  // namespace varnlog::report
