#include "core/EngineMessages.h"

#include <algorithm>
#include <array>

namespace varnlog::core {

namespace {

using enum dao::ErrorNumber;

struct Meaning {
  dao::ErrorNumber number;
  TextKey key;
  bool tellsReason = false;  // in the words of whoever gave it, after the meaning
};

constexpr auto kMeanings = std::to_array<Meaning>({
    {kObjectNotFound, "GL_ERR_3011"_key},
    {kUpdateWithoutEdit, "GL_ERR_3020"_key},
    {kNoCurrentRecord, "GL_ERR_3021"_key},
    {kDuplicateKey, "GL_ERR_3022"_key},
    {kFileNotFound, "GL_ERR_3024"_key},
    {kNotEnoughDiskSpace, "GL_ERR_3026"_key},
    {kReadOnlyDatabase, "GL_ERR_3027"_key},
    {kWorkgroupFileMissing, "GL_ERR_3028"_key},
    {kBadAccount, "GL_ERR_3029"_key},
    {kNoPermission, "GL_ERR_3033"_key},
    {kInvalidTransaction, "GL_ERR_3034"_key},
    {kFileReplaced, "GL_ERR_3043"_key},
    {kInvalidPath, "GL_ERR_3044"_key},
    {kFileInUse, "GL_ERR_3045"_key},
    {kDamaged, "GL_ERR_3049"_key},
    {kCannotOpen, "GL_ERR_3051"_key},
    {kDiskError, "GL_ERR_3056"_key},
    {kCancelled, "GL_ERR_3059"_key},
    {kTooFewParameters, "GL_ERR_3061"_key},
    {kSyntaxError, "GL_ERR_3075"_key},
    {kTableNotFound, "GL_ERR_3078"_key},
    {kConnectionLost, "GL_ERR_3146"_key},
    {kServerUnreachable, "GL_ERR_3151"_key, true},
    {kServerDatabaseMissing, "GL_ERR_3152"_key, true},
    {kServerNotTrusted, "GL_ERR_3153"_key, true},
    {kServerLibraryMissing, "GL_ERR_3154"_key, true},
    {kOutcomeUnknown, "GL_ERR_3155"_key},
    {kTooLongForField, "GL_ERR_3163"_key},
    {kRecordDeleted, "GL_ERR_3167"_key},
    {kDataChanged, "GL_ERR_3197"_key},
    {kFileExists, "GL_ERR_3204"_key},
    {kServersOwn, "GL_ERR_3219"_key},
    {kNotSupported, "GL_ERR_3251"_key},
    {kItemNotFound, "GL_ERR_3265"_key},
    {kRuleViolated, "GL_ERR_3317"_key},
    {kUnrecognisedFormat, "GL_ERR_3343"_key},
    {kObjectInvalid, "GL_ERR_3420"_key},
});

}  // namespace

std::string EngineErrorText(const TextLookup& texts, dao::ErrorNumber number, std::string_view detail,
                            const std::string& consequence) {
  const auto* const meaning =
      std::ranges::find_if(kMeanings, [number](const Meaning& each) { return each.number == number; });
  const bool isKnown = meaning != kMeanings.end();
  std::string text =
      std::to_string(static_cast<int>(number)) + ": " +
      FilledText(texts, isKnown ? meaning->key : "GL_ERR_3000"_key, {{"strDetail", std::string(detail)}});
  if (!consequence.empty()) text.append("\n\n").append(consequence);
  return isKnown && meaning->tellsReason ? WithDetail(texts, text, detail) : text;
}

std::string WithDetail(const TextLookup& texts, const std::string& text, std::string_view detail) {
  return text + "\n\n" + FilledText(texts, "GL_ERR_DETAIL"_key, {{"strDetail", std::string(detail)}});
}

std::string EngineErrorText(const TextLookup& texts, const dao::EngineError& error) {
  return EngineErrorText(texts, error.number(), error.what());
}

std::string EngineErrorText(const TextLookup& texts, const db::CJetEngine& engine) {
  return EngineErrorText(texts, TrappedError(engine));
}

dao::EngineError TrappedError(const db::CJetEngine& engine) {
  return {static_cast<dao::ErrorNumber>(engine.LastNumber()), engine.LastError()};
}

bool IsServerAway(dao::ErrorNumber number) {
  switch (number) {
    case kBadAccount:
    case kCancelled:
    case kConnectionLost:
    case kOutcomeUnknown:
    case kServerDatabaseMissing:
    case kServerNotTrusted:
    case kServerUnreachable:
      return true;
    default:
      return false;
  }
}

}  // namespace varnlog::core
