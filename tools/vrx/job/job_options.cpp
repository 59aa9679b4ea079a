#include "tools/vrx/job/job_options.h"

#include <cstdlib>

#include "tools/vrx/base/command.h"

namespace vrx::tool {

std::string JobOptions::File() const {
  if (!file.empty()) return file;
  const char* const named = std::getenv("VRX_JOB");
  return named != nullptr ? named : "";
}

std::string RefuseNegative(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  return end != text.c_str() && number >= 0 ? "" : "must be 0 or more";
}

void AddJobOptions(Command& owner, JobOptions& options) {
  Command command = owner.Group("Job");
  command.AddOption("--job", options.file, "File of the job; otherwise the one that VRX_JOB names")
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
  return store::OpenStore(file, options.wait);
}

}  // namespace vrx::tool
