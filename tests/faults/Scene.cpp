#include "tests/faults/Scene.h"

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "core/LogCheck.h"
#include "platform/CodePage.h"
#include "seals/Verifier.h"
#include "tests/Paths.h"

namespace varnlog::faults {

namespace {

namespace fs = std::filesystem;

/// Long enough for the files of before to count as given up by everybody.
constexpr int kMuchLater = 60;

const char* const kInformed = "Dr. Neu";

tools::Exposure ExposureOf(int patient) {
  const auto digits = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  const std::string time =
      digits(8 + patient / 3600 % 12) + ":" + digits(patient / 60 % 60) + ":" + digits(patient % 60);
  return cli::NewExposure("Patient " + std::to_string(patient), "XI", "01.03.2004", time);
}

/// A journal that is empty or without a beginning counts for nothing and goes with the next change.
bool IsFinishedJournal(const fs::path& file) {
  return file.string().ends_with("-journal") && !ReadFile(file).starts_with('\xd9');
}

/// The file that was moved aside is known to the next run as done when all of it was read.
bool IsDoneWith(const fs::path& taken) {
  const std::string name = taken.filename().string();
  const std::size_t dash = name.rfind('-');
  return name.ends_with(".taken") && dash != std::string::npos &&
         std::stoull(name.substr(dash + 1)) >= fs::file_size(taken);
}

}  // namespace

Scene::Scene(const Scenario& scenario)
    : scenario_(scenario),
      suite_("Fehler " + scenario.name),
      arrival_(suite_.suite().parent_path() / "arrival"),
      trace_(suite_.suite().parent_path() / "trace"),
      count_(suite_.suite().parent_path() / "count") {
  scenario_.prepare(*this);
  if (scenario_.arrives || scenario_.held) {
    const int before = patients_;
    arriving_ = Records(3);
    late_ = patients_ - before;
  }
  beginning_ = ReadFolder(folder());
  atFirst_ = patients_;
  fs::remove(arrival_);
  if (scenario_.arrives) arrives_ = Arrival(scenario_.arguments);
  BeginAnew();
  recorded_ = Traced(scenario_.arguments, arrives_);
  BeginAnew();
  undisturbed_ = Runs();
  allocations_ = std::stoull(ReadFile(count_));
  const std::string wrong = WrongWith(undisturbed_);
  if (undisturbed_.status != 0 || !wrong.empty())
    throw std::runtime_error(scenario.name + " undisturbed: " + undisturbed_.out + undisturbed_.err + wrong);
}

Scene::~Scene() = default;

std::string Scene::Records(int count) {
  const platform::CodePage oem(850);
  std::string records;
  for (int i = 0; i < count; ++i) tools::AppendRecord(ExposureOf(patients_++), oem, records);
  return records;
}

void Scene::Informs() {
  tools::Exposure exposure = ExposureOf(0);
  exposure.kind = tools::Exposure::Kind::kInformation;
  exposure.responsible = kInformed;
  std::string record;
  tools::AppendRecord(exposure, platform::CodePage(850), record);
  AppendFile(exchange(), record);
  informed_ = 1;
}

void Scene::Settles() {
  for (int minute = 0; minute < 5; ++minute) {
    const Outcome run = Runs("update", {}, minute * kMuchLater);
    if (run.status != 0) throw std::runtime_error("cannot prepare: " + run.err);
    if (ReadFolder(folder()).size() == 1) return;
  }
  throw std::runtime_error("cannot prepare: files are left");
}

FaultPlan Scene::Arrival(const std::string& arguments) {
  const Files before = ReadFolder(folder());
  const std::vector<Step> run = Traced(arguments, {});
  Has(before);
  return FaultPlan().ArriveAt(Find(run, Call::kCreate, "-journal"));
}

void Scene::IsCutOffBefore(Call call, const std::string& ending, int nth, const std::string& arguments) {
  const Files before = ReadFolder(folder());
  const std::string arriving = ReadFile(arrival_);
  FaultPlan plan;
  if (!arriving.empty()) plan = Arrival(arguments);
  const std::uint64_t number = Find(Traced(arguments, plan), call, ending, nth);
  Has(before);
  WriteFile(arrival_, arriving);
  if (Runs(arguments, plan.KillAt(number)).signal != SIGKILL)
    throw std::runtime_error("cannot prepare: the run was not cut off");
}

void Scene::DamagesAPageThatCostsNoRow() {
  constexpr std::size_t kPage = 16384;
  constexpr std::size_t kDamage = 300;
  const std::string sound = ReadFile(suite_.log());
  for (std::size_t page = kPage; page < sound.size(); page += kPage) {
    std::string damaged = sound;
    damaged.replace(page + kPage / 2, kDamage, kDamage, '\x55');
    WriteFolder(folder(), {{suite_.log().filename().string(), damaged}});
    const bool noticed = Runs("check").status == 1;
    if (noticed && Runs("repair").status == 0 && WrongInLog(suite_, {patients_}).empty()) {
      WriteFolder(folder(), {{suite_.log().filename().string(), damaged}});
      return;
    }
  }
  throw std::runtime_error("cannot prepare: every page costs rows");
}

void Scene::BeginAnew() {
  Has(beginning_);
  patients_ = atFirst_;
  corrected_ = 0;
  if (!arriving_.empty()) WriteFile(arrival_, arriving_);
}

std::vector<Step> Scene::Records(const FaultPlan& plan) {
  BeginAnew();
  return Traced(scenario_.arguments, plan);
}

int Scene::BeginsAfterPowerCut(const Files& found, const std::vector<Step>& run, std::uint64_t after) {
  BeginAnew();
  WriteFolder(folder(), found);
  for (const Step& step : run) {
    if (step.number > after) break;
    if (step.call == Call::kArrive) fs::remove(arrival_);
    if (step.path.ends_with(kAcknowledged)) ++corrected_;
  }
  std::ofstream nobody;
  if (!arriving_.empty()) ArriveAfterAll(nobody);
  return corrected_;
}

std::vector<Step> Scene::Traced(const std::string& arguments, const FaultPlan& plan) {
  fs::remove(trace_);
  traces_ = true;
  static_cast<void>(Runs(arguments, plan));
  traces_ = false;
  return ReadTrace(trace_);
}

Outcome Scene::Runs(const FaultPlan& plan) {
  std::ofstream held;
  if (scenario_.held) held.open(exchange(), std::ios::binary | std::ios::app);
  const std::string arrives = arrives_.Text();
  const bool both = !arrives.empty() && !plan.Text().empty();
  const Outcome outcome = Runs(scenario_.arguments, FaultPlan(arrives + (both ? ";" : "") + plan.Text()));
  if (!arriving_.empty()) ArriveAfterAll(held);
  return outcome;
}

/// The suite reports what it has to report, whether or not the run came to the point.
void Scene::ArriveAfterAll(std::ofstream& held) {
  if (!fs::exists(arrival_)) return;
  if (held.is_open()) {
    held << ReadFile(arrival_) << std::flush;
  } else {
    AppendFile(exchange(), ReadFile(arrival_));
  }
  fs::remove(arrival_);
}

Outcome Scene::Runs(const std::string& arguments, const FaultPlan& plan, int later) {
  Launch launch{.arguments = arguments,
                .program = suite_.program(),
                .folder = folder(),
                .output = suite_.suite().parent_path() / "run",
                .environment = {{"LD_PRELOAD", VARNLOG_TEST_PROGRAMS "/libfaultshim.so"},
                                {env::kRoot, suite_.suite().string()},
                                {env::kPlan, plan.Text()},
                                {env::kLater, std::to_string(later)},
                                {env::kCount, count_.string()},
                                {env::kArrival, arrival_.string()},
                                {env::kExchange, exchange().string()}}};
  if (traces_) launch.environment[env::kTrace] = trace_.string();
  return Run(launch);
}

std::string Scene::WrongWithShown(const Outcome& outcome) const {
  if (ReadFolder(folder()) != beginning_) return "a file was changed";
  return outcome.status == 0 && outcome.out != undisturbed_.out ? "status 0 with another output" : "";
}

std::string Scene::WrongWith(const Outcome& outcome) {
  if (scenario_.promise == Promise::kCorrected)
    corrected_ = static_cast<int>(std::ranges::count(outcome.out, '\n'));
  const std::string ending = WrongEnding(outcome);
  if (!ending.empty() || outcome.signal != 0) return ending;
  for (const auto& [name, bytes] : ReadFolder(folder())) {
    const bool isNew = name.find(".damaged") != std::string::npos && !beginning_.contains(name);
    if (isNew && scenario_.arguments != "repair") return "called damaged: " + name;
  }
  if (scenario_.promise == Promise::kShown) return WrongWithShown(outcome);
  if (outcome.status != 0) return "";
  if (scenario_.promise == Promise::kTaken && NothingWasRemoved()) return "status 0, but nothing was removed";
  if (scenario_.promise == Promise::kCorrected && corrected_ != kCorrections)
    return "status 0, but " + std::to_string(corrected_) + " corrections";
  const std::string wrong = scenario_.promise == Promise::kConverted
                                ? WrongWithConverted()
                                : WrongInLog(suite_, {patients_ - late_, corrected_, informed_});
  return wrong.empty() ? "" : "status 0, but " + wrong;
}

bool Scene::NothingWasRemoved() const {
  const auto before = beginning_.find(exchange().filename().string());
  return before != beginning_.end() && ReadFile(exchange()).starts_with(before->second);
}

std::string Scene::WrongWithConverted() {
  const std::string log = scenario_.arguments == "adopt" ? "Varnlog.mdb" : "New.mdb";
  const Outcome rows = Runs("list --format csv --file " + log);
  if (rows.status != 0) return "the new log cannot be read: " + rows.err;
  if (converted_.empty()) converted_ = rows.out;
  if (rows.out != converted_) return "other rows than in an undisturbed conversion";
  const Files files = ReadFolder(folder());
  const std::string& old = beginning_.begin()->second;
  return std::ranges::any_of(files, [&](const auto& file) { return file.second == old; })
             ? ""
             : "the old log is gone";
}

std::string Scene::LeftOvers() const {
  std::string left;
  for (const auto& entry : fs::directory_iterator(folder())) {
    const std::string name = entry.path().filename().string();
    const bool isKept =
        entry.path() == suite_.log() || IsDoneWith(entry.path()) || IsFinishedJournal(entry.path()) ||
        (scenario_.arguments == "repair" && name.find(".damaged") != std::string::npos) ||
        name == "out.pdf" || name == "Old.mdb" || name.starts_with("New.mdb") || name == "Varnlog.jet.mdb";
    if (!isKept) left += "left over: " + name + "; ";
  }
  return left;
}

std::string Scene::WrongInTheEnd() {
  const bool takes = scenario_.promise == Promise::kTaken || scenario_.promise == Promise::kCorrected;
  const Outcome next = Runs(takes ? "update" : scenario_.arguments, {}, kMuchLater);
  if (next.status != 0)
    return "the next run failed with " + std::to_string(next.status) + ": " + next.out + next.err;
  const std::string wrong = scenario_.promise == Promise::kCorrected ? "" : WrongWith(next);
  if (!wrong.empty()) return "next run: " + wrong;
  if (scenario_.promise == Promise::kConverted) return LeftOvers();
  return WrongInLog(suite_, {patients_, corrected_, informed_}) + LeftOvers();
}

namespace {

/// What is wrong with one row.
std::string WrongInRow(std::size_t patient, dao::Recordset& row, const Expected& expected) {
  const std::string name = "Patient " + std::to_string(patient);
  if (patient < static_cast<std::size_t>(expected.corrected) &&
      !row.Fields("tXraySComment").Text().starts_with("corrected"))
    return "correction of " + name + " lost; ";
  if (patient < static_cast<std::size_t>(expected.informed) && row.Fields("tXraySDr").Text() != kInformed)
    return "information on " + name + " lost; ";
  return "";
}

}  // namespace

std::string WrongInLog(const cli::Installation& suite, const Expected& expected) {
  if (!fs::exists(suite.log())) return expected.patients == 0 ? "" : "there is no log";
  std::vector<int> found(static_cast<std::size_t>(expected.patients));
  std::string wrong;
  try {
    suite.WithLog(false, [&](dao::Database& log) {
      const auto rows = log.OpenRecordset("TXray", dao::RecordsetType::kTable);
      for (; !rows->IsEOF(); rows->MoveNext()) {
        const std::size_t number = std::stoul(std::string(rows->Fields("tXraySName").Text()).substr(8));
        if (number < found.size()) ++found[number];
        wrong += WrongInRow(number, *rows, expected);
      }
      for (const std::string& finding : log.Check()) wrong += "check: " + finding + "; ";
      for (const std::string& finding : core::CheckLog(log)) wrong += "check: " + finding + "; ";
      const seals::Verification seals = seals::Verify(log);
      if (!seals.IsSound()) wrong += "seals: " + std::to_string(seals.allFindings) + " findings; ";
    });
  } catch (const std::exception& error) {
    return std::string("the log cannot be read: ") + error.what();
  }
  for (std::size_t i = 0; i < found.size() && wrong.size() < 100; ++i) {
    if (found[i] != 1) wrong += "Patient " + std::to_string(i) + ": " + std::to_string(found[i]) + "; ";
  }
  return wrong;
}

}  // namespace varnlog::faults
