#include "report/ReportErrors.h"

#include "report/BandLayout.h"
#include "report/ReportDesign.h"

namespace varnlog::report {

using core::ReplacePlaceholder;
using core::literals::operator""_key;

namespace {

std::string ErrorText(const core::TextLookup& texts, core::TextKey key, std::string_view name,
                      std::string_view value, const std::exception& error) {
  const std::string text = ReplacePlaceholder(texts.GetText(key), "strError", error.what());
  return ReplacePlaceholder(text, name, value);
}

}  // namespace

std::string ReportErrorText(const core::TextLookup& texts, const std::exception& error) {
  if (const auto* save = dynamic_cast<const SaveError*>(&error))
    return ErrorText(texts, "DRS_ERR_SAVE"_key, "strFile", save->file(), error);
  if (const auto* formula = dynamic_cast<const NamedFormulaError*>(&error))
    return ErrorText(texts, "DRS_ERR_FORMULA"_key, "strFormula", formula->name(), error);
  if (dynamic_cast<const DesignError*>(&error) != nullptr)
    return ErrorText(texts, "DRS_ERR_DESIGN"_key, "strFile", kStoredDesignName, error);
  if (dynamic_cast<const PrintError*>(&error) != nullptr)
    return ReplacePlaceholder(texts.GetText("DRS_ERR_PRINT"_key), "strError", error.what());
  return error.what();
}

}  // namespace varnlog::report
