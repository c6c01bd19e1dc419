#include "logview/Columns.h"

namespace varnlog::logview {

const std::array<Column, kColumnCount> kColumns = {{
    {"RS_NR", "RS_TIP_NR", "", "", "", "", ""},
    {"RS_DATE", "RS_TIP_DATE", "", "", "", "ORDER BY TXray.tXrayTs;", "ORDER BY TXray.tXrayTs DESC;"},
    {"RS_PATIENT", "RS_TIP_PATIENT", "", "", "",
     "ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;",
     "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayDBirthday DESC;"},
    {"RS_PREGNANCY", "RS_TIP_PREGNANCY", "", "tXraySPreg", "tXrayBEdPreg", "ORDER BY TXray.tXraySPreg;",
     "ORDER BY TXray.tXraySPreg DESC;"},
    {"RS_TYPE", "RS_TIP_TYPE", "", "tXraySType", "tXrayBEdType", "ORDER BY TXray.tXraySType;",
     "ORDER BY TXray.tXraySType DESC;"},
    {"RS_REGION", "RS_TIP_REGION", "", "tXraySRegio", "tXrayBEdRegio", "ORDER BY TXray.tXraySRegio;",
     "ORDER BY TXray.tXraySRegio DESC;"},
    {"RS_MS", "RS_TIP_MS", "", "tXraySRadDur", "tXrayBEdRadDur", "ORDER BY TXray.tXraySRadDur;",
     "ORDER BY TXray.tXraySRadDur DESC;"},
    {"RS_KV", "RS_TIP_KV", "", "tXraySVolt", "tXrayBEdVolt", "ORDER BY TXray.tXraySVolt;",
     "ORDER BY TXray.tXraySVolt DESC;"},
    {"RS_MA", "RS_TIP_MA", "", "tXraySCur", "tXrayBEdCur", "ORDER BY TXray.tXraySCur;",
     "ORDER BY TXray.tXraySCur DESC;"},
    {"", "RS_TIP_DOSE", "mGycm2", "tXraySDose", "tXrayBEdDose", "ORDER BY TXray.tXraySDose;",
     "ORDER BY TXray.tXraySDose DESC;"},
    {"RS_NOTDIAG", "RS_TIP_NOTDIAG", "", "tXraySDiagRetry", "tXrayBEdDiagRetry",
     "ORDER BY TXray.tXraySDiagRetry;", "ORDER BY TXray.tXraySDiagRetry DESC;"},
    {"RS_PERSCHARGE", "RS_TIP_PERSCHARGE", "", "tXraySDr", "tXrayBEdDr", "ORDER BY TXray.tXraySDr;",
     "ORDER BY TXray.tXraySDr DESC;"},
    {"RS_COMMENT", "RS_TIP_COMMENT", "", "tXraySComment", "", "ORDER BY TXray.tXraySComment;",
     "ORDER BY TXray.tXraySComment DESC;"},
}};

std::string ColumnHeading(int column, const core::TextLookup& texts) {
  if (column < 0 || column >= kColumnCount) return {};
  const Column& shown = kColumns[static_cast<std::size_t>(column)];
  if (shown.headingKey.empty()) return std::string(shown.heading);
  return texts.GetText(core::TextKey(shown.headingKey));
}

}  // namespace varnlog::logview
