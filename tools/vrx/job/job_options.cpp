#include "tools/vrx/job/job_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <system_error>

#include <vrxio/text/path.h>
#include <vrxstore/job_address.h>
#include <vrxstore/records/stored_form.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/text.h"

namespace vrx::tool {

std::string JobOptions::File() const {
  if (!file.empty()) return file;
  const char* const named = std::getenv("VRX_JOB");
  return named != nullptr ? named : "";
}

std::string JobOptions::Shown() const {
  return store::ShownJob(File());
}

std::string RefuseNegative(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  return end != text.c_str() && number >= 0 ? "" : "must be 0 or more";
}

void AddJobOptions(Command& owner, JobOptions& options) {
  Command command = owner.Group("Job");
  command
      .AddOption("--job", options.file,
                 "File of the job, or its URL on a server (postgresql://user@host/database); "
                 "otherwise the one that VRX_JOB names")
      .ReadsFile()
      .Shows("FILE");
  command.AddOption("--wait", options.wait, "Wait as long as this for others that write into the job")
      .Shows("SECONDS [60]")
      .Check(RefuseNegative);
}

void AddJobChangeOptions(Command& owner, JobOptions& options) {
  AddJobOptions(owner, options);
  Command command = owner.Group("Job");
  command.AddOption("--by", options.by, "Who makes the change, for the trail").Shows("NAME");
  command.AddOption("--why", options.why, "Why, for the trail").Shows("TEXT");
}

std::unique_ptr<store::Store> OpenJob(const JobOptions& options) {
  const std::string file = options.File();
  if (file.empty()) throw InputError("no job is named: use --job FILE, or set VRX_JOB");
  return OpenJobFile(file, options.wait);
}

std::unique_ptr<store::Store> OpenJobFile(const std::string& file, double wait) {
  auto job = store::OpenStore(file, wait);
  if (!job->Notice().empty()) PrintMessage(job->Notice());
  return job;
}

std::optional<int64_t> NumberInJob(std::string_view text) {
  int64_t number = 0;
  if (!text.starts_with('#')) return std::nullopt;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data() + 1, end, number);
  if (error != std::errc() || stopped != end || number < 1) return std::nullopt;
  return number;
}

bool IsJobFile(const std::string& file) {
  if (store::IsOnServer(file)) return true;
  using std::string_view_literals::operator""sv;
  constexpr std::string_view kSignature = "SQLite format 3\0"sv;
  std::array<char, kSignature.size()> begin{};
  std::ifstream stream(io::PathOf(file), std::ios::binary);
  return stream.read(begin.data(), begin.size()) &&
         std::string_view(begin.data(), begin.size()) == kSignature;
}

store::MeasuredCurve MeasuredCurveOf(const CurveReader& curves, const CurveRow& row) {
  store::MeasuredCurve curve;
  curve.geometry = row.geometry;
  std::copy_n(row.curve.begin(), curve.samples.size(), curve.samples.begin());
  const MeasuringConditions& conditions = curves.Conditions();
  curve.date = row.date.empty() ? conditions.date : row.date;
  curve.measuring = store::MeasuringText(conditions);
  return curve;
}

}  // namespace vrx::tool
