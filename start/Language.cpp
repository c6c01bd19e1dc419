#include "start/Language.h"

#include "core/Installation.h"
#include "core/Languages.h"

namespace varnlog::start {

Language::Language(core::Globals& globals) : globals_(globals) {}

Language::~Language() {
  CloseLanguage();
}

bool Language::InitLanguage() {
  globals_.LangEngineGl = std::make_unique<db::CJetEngine>();
  db::CJetEngine& engine = *globals_.LangEngineGl;
  engine.SetWorkgroupPath(core::DeliveredFile(globals_, core::kWorkgroupFile));
  engine.OpenWorkspace("LangWs", "Admin", "");
  bool opened = false;
  if (!engine.WorkspaceName().empty()) {
    const std::string file = core::DeliveredFile(globals_, core::kLanguageDatabase);
    // The texts are only read, so a program folder without write permission is good enough.
    opened =
        engine.OpenDBInWorkspace(file, false, false) == 0 || engine.OpenDBInWorkspace(file, false, true) == 0;
  }
  if (!opened) {
    initError_ = engine.LastError();
    return false;
  }
  SetLanguage("D");
  return true;
}

bool Language::SetLanguage(std::string_view code) {
  const core::LanguageName* const known = core::FindLanguage(code);
  globals_.LanguageGl = (known != nullptr ? *known : core::kLanguages.front()).code;
  return known != nullptr;
}

bool Language::CloseLanguage() {
  if (!globals_.LangEngineGl) return false;
  const bool wasOpen = globals_.LangEngineGl->Database() != nullptr;
  if (wasOpen) globals_.LangEngineGl->CloseDBInWorkspace();
  if (!globals_.LangEngineGl->WorkspaceName().empty()) globals_.LangEngineGl->CloseWorkspace();
  globals_.LangEngineGl.reset();
  return wasOpen;
}

std::string Language::GetText(core::TextKey key) const {
  if (!globals_.LangEngineGl || !globals_.LangEngineGl->Database()) return {};
  std::string sql = "SELECT TRes.TResSText FROM TRes WHERE (TRes.TResSLangKey='";
  sql.append(globals_.LanguageGl).append("') AND (TRes.TResSTextKey='").append(key.name()).append("')");
  try {
    const auto rows = globals_.LangEngineGl->Database()->OpenRecordset(sql, dao::RecordsetType::kSnapshot);
    if (rows->IsEOF()) return {};
    const std::string text = core::ReplacePlaceholder(rows->Fields(std::size_t{0}).Text(), "CR", "\r");
    return core::ReplacePlaceholder(text, "TAB", "\t");
  } catch (const dao::EngineError&) {
    return {};
  }
}

}  // namespace varnlog::start
