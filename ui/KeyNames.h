#pragma once

#include <QTranslator>

#include "core/TextLookup.h"

namespace varnlog::ui {

/// The names of keys in menus and tooltips, as they stand on keyboards and in the help. `texts` outlives it.
class KeyNames final : public QTranslator {
 public:
  explicit KeyNames(const core::TextLookup& texts) : texts_(texts) {}

  [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                  int n) const override;
  [[nodiscard]] bool isEmpty() const override { return false; }

 private:
  const core::TextLookup& texts_;
};

}  // namespace varnlog::ui
