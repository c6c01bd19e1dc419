#include "start/SupportText.h"

#include "core/EngineMessages.h"
#include "core/LogLayout.h"
#include "core/Numbers.h"
#include "db/dao/DBEngine.h"
#include "platform/Files.h"
#include "seals/SealTables.h"
#include "start/StartUp.h"

namespace varnlog::start {

using namespace core::literals;

namespace {

constexpr std::string_view kVerified = "Verified";
constexpr std::string_view kSound = " ok";

std::string BytesOf(const core::TextLookup& texts, const std::string& file) {
  const auto size = platform::FileSize(platform::ToPath(file));
  return size ? core::Grouped(texts, std::to_string(*size)) : std::string("-");
}

std::string LastVerified(const core::Globals& globals, const core::SettingsStore& ini,
                         const core::TextLookup& texts) {
  std::string noted = ini.ReadString(globals.strDataFileGl, kVerified, globals.IniFileGl);
  if (noted.empty()) return texts.GetText("AB_NOTVERIFIED"_key);
  const bool isSound = noted.ends_with(kSound);
  if (isSound) noted.resize(noted.size() - kSound.size());
  return noted + ", " + texts.GetText(isSound ? "AB_SOUND"_key : "AB_NOTSOUND"_key);
}

/// What only an open log can tell.
void AddContent(std::string& text, dao::Database& log, const core::TextLookup& texts) {
  const std::int64_t rows = log.OpenRecordset(std::string(core::kExposureTable))->RecordCount();
  text += texts.GetText("PP_ROWS"_key) + ' ' + core::Grouped(texts, std::to_string(rows)) + '\n';
  if (!seals::HasSealTables(log)) return;
  const seals::Head head = seals::ReadHead(log);
  text += texts.GetText("AB_SEAL"_key) + ' ' + std::to_string(head.number) + ' ' + head.digest + '\n';
}

}  // namespace

void NoteVerified(const core::Globals& globals, core::SettingsStore& ini, const platform::Clock& clock,
                  bool isSound) {
  BeginSettings(globals, ini);
  ini.WriteString(globals.strDataFileGl, kVerified,
                  clock.Now().ToIso().append(isSound ? kSound : std::string_view()), globals.IniFileGl);
}

std::string SupportText(const core::Globals& globals, const core::SettingsStore& ini,
                        const core::TextLookup& texts, std::span<const std::string> versions) {
  std::string text;
  const auto add = [&](core::TextKey label, const std::string& value) {
    text += texts.GetText(label) + ' ' + value + '\n';
  };
  for (const std::string& version : versions) text += version + '\n';
  add("PP_PROGRAMFOLDER"_key, globals.ProgramFolderGl);
  add("AB_SETTINGS"_key, globals.IniFileGl);
  add("PP_EXCHANGEFILE"_key, globals.ExchangeFileGl + " (" + BytesOf(texts, globals.ExchangeFileGl) + ')');
  add("PP_PATH"_key, globals.strDataFileGl + " (" + BytesOf(texts, globals.strDataFileGl) + ')');
  const auto log = globals.LogEngineGl ? globals.LogEngineGl->Database() : nullptr;
  if (!log) return text;
  add("PP_DBVERSION"_key, globals.DBVersionGl);
  try {
    AddContent(text, *log, texts);
  } catch (const dao::EngineError& error) {
    text += core::EngineErrorText(texts, error) + '\n';
  }
  add("AB_LASTVERIFIED"_key, LastVerified(globals, ini, texts));
  return text;
}

}  // namespace varnlog::start
