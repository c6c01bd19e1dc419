#include "start/VerifyText.h"

#include <algorithm>
#include <array>

namespace varnlog::start {

using namespace core::literals;

namespace {

// In the order of seals::Fault.
constexpr std::array kFindingKeys = {"SF_NOSEALS"_key,      "SF_RULES"_key,         "SF_XRCHANGED"_key,
                                     "SF_VALUECHANGED"_key, "SF_XRDELETED"_key,     "SF_XRINSERTED"_key,
                                     "SF_XRSWAPPED"_key,    "SF_XRUNSEALED"_key,    "SF_ENTRYCHANGED"_key,
                                     "SF_ENTRYDELETED"_key, "SF_ENTRYUNSEALED"_key, "SF_ENTRYFORBIDDEN"_key,
                                     "SF_SEALCHANGED"_key,  "SF_SEALDELETED"_key,   "SF_SEALROWS"_key,
                                     "SF_SEALENTRIES"_key,  "SF_ANCHOR"_key};
// In the order of seals::Note::What.
constexpr std::array kNoteKeys = {"VN_CLOCK"_key, "VN_FOUND"_key, "VN_WENTON"_key, "VN_REPAIRED"_key};
// In the order of seals::Loss::What.
constexpr std::array kLossKeys = {"VN_LOSTXR"_key, "VN_LOSTENTRIES"_key, "VN_LOSTSEALS"_key};

std::string Describe(const seals::Note& note, const core::TextLookup& texts) {
  return core::FilledText(texts, kNoteKeys.at(static_cast<std::size_t>(note.what)),
                          {{"lngNumber", std::to_string(note.seal)}});
}

std::string Describe(const seals::Loss& loss, const core::TextLookup& texts) {
  return core::FilledText(texts, kLossKeys.at(static_cast<std::size_t>(loss.what)),
                          {{"lngNumber", std::to_string(loss.seal)}, {"strNumbers", loss.numbers}});
}

/// What is gone is told by its loss.
bool IsLoss(const seals::Finding& finding) {
  using enum seals::Fault;
  return finding.fault == kExposureDeleted || finding.fault == kEntryDeleted || finding.fault == kSealDeleted;
}

core::TextKey OutcomeOf(const seals::Verification& result) {
  if (result.isCancelled) return "VF_CANCELLED"_key;
  if (result.allFindings > 0) return "VF_BROKEN"_key;
  return result.losses.empty() && result.known.empty() ? "VF_SOUND"_key : "VF_MENDED"_key;
}

}  // namespace

std::string Describe(const seals::Finding& finding, const core::TextLookup& texts) {
  return core::FilledText(texts, kFindingKeys.at(static_cast<std::size_t>(finding.fault)),
                          {{"lngNumber", std::to_string(finding.number)},
                           {"lngOther", std::to_string(finding.other)},
                           {"strField", finding.field}});
}

std::vector<std::string> VerifyLines(const seals::Verification& result, const core::TextLookup& texts) {
  std::vector<std::string> lines;
  for (const seals::Finding& finding : result.findings) lines.push_back(Describe(finding, texts));
  const auto told = static_cast<std::int64_t>(result.findings.size());
  if (told < result.allFindings)
    lines.push_back(
        core::FilledText(texts, "VF_MORE"_key, {{"lngCount", std::to_string(result.allFindings - told)}}));
  for (const seals::Note& note : result.notes) lines.push_back(Describe(note, texts));
  for (const seals::Loss& loss : result.losses) lines.push_back(Describe(loss, texts));
  for (const seals::Finding& finding : result.known)
    if (!IsLoss(finding))
      lines.push_back(core::FilledText(texts, "VN_KNOWN"_key, {{"strFinding", Describe(finding, texts)}}));
  return lines;
}

std::string VerifyText(const seals::Verification& result, const std::optional<seals::Anchor>& anchor,
                       const core::TextLookup& texts) {
  const auto line = [&](core::TextKey key, const core::Placeholders& values) {
    return core::FilledText(texts, key, values) + "\r";
  };
  std::string text = line(OutcomeOf(result), {{"lngCount", std::to_string(result.allFindings)}});
  for (const std::string& each : VerifyLines(result, texts)) text += each + "\r";
  if (result.isCancelled) return text;
  const bool isMissing = std::any_of(
      result.findings.begin(), result.findings.end(),
      [](const seals::Finding& finding) { return finding.fault == seals::Fault::kAnchorMissing; });
  if (anchor && !isMissing) text += line("VF_HOLDS"_key, {{"lngNumber", std::to_string(anchor->seal)}});
  text += "\r" + line("VF_COUNTS"_key, {{"lngExposures", std::to_string(result.exposures)},
                                        {"lngEntries", std::to_string(result.entries)},
                                        {"lngSeals", std::to_string(result.seals)}});
  if (result.head.number == 0) return text;
  return text +
         line("VF_HEAD"_key, {{"strAnchor", seals::PrintedAnchor(result.head)},
                              {"strDigest", std::to_string(result.head.number) + "-" + result.head.digest}});
}

}  // namespace varnlog::start
